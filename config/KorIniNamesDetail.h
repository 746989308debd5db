#pragma once

// Names of sections and options, and how they compare. Not installed.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The name of an option, or of a section when the option is empty.
struct SKorIniName
{
    std::string_view m_strSection;
    std::string_view m_strOption;
};

/// The case rule: compares names and, with the same result for equal ones, hashes them.
class CKorIniNameRule
{
public:
    explicit CKorIniNameRule(bool bCaseSensitiv) : m_bCaseSensitiv(bCaseSensitiv) {}

    bool operator==(const CKorIniNameRule& oOther) const
    {
        return m_bCaseSensitiv == oOther.m_bCaseSensitiv;
    }

    bool Equal(std::string_view strLeft, std::string_view strRight) const;

    /// @param nSeed  the hash of the section for an option, 0 for a section
    uint32_t Hash(std::string_view strName, uint32_t nSeed) const;

private:
    uint64_t Folded(uint64_t nWord) const;

    bool m_bCaseSensitiv;
};

/// Each name once by the case rule, in the form that comes first, ascending by bytes.
std::vector<std::string> KorIniSortedOnce(const std::vector<std::string_view>& vecNames,
                                          CKorIniNameRule oRule);
