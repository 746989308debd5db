#pragma once

#include "config/KorIniNameListDetail.h"

#include <string>
#include <string_view>
#include <vector>

/// What an INI file means: its sections and options in the order of the file, each with the value
/// that programs read.
class CIniListing
{
public:
    CIniListing(std::string_view strText, CKorIniNameRule oRule);

    /// One line for each option, "[Section] Option=value", and for each section without any.
    std::string Lines() const;

    /// An object of sections, each an object of options with their values as strings.
    std::string Json() const;

    /// The lines that this listing (with "-") and the other one (with "+") do not share; empty when
    /// both mean the same.
    std::string Difference(const CIniListing& oOther) const;

private:
    using Numbers = std::vector<size_t>;

    bool Add(const SKorIniName& oName);
    Numbers Items() const;
    std::string LineOf(size_t nItem) const;
    std::string JsonOf(size_t nSection) const;
    size_t Find(size_t nItem, const CIniListing& oOther) const;

    CKorIniNameList m_oNames;
    std::vector<std::string> m_vecValues; ///< beside the names, without enclosing quotes
    std::vector<Numbers> m_vecOptions;    ///< beside the names: the options of a section
    Numbers m_vecSections;
};
