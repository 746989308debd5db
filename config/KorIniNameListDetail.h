#pragma once

// A list of names of options. Not installed.

#include "config/KorIniNamesDetail.h"
#include "config/KorIniTableDetail.h"

#include <string>
#include <string_view>
#include <vector>

/// Names of options, each once by the case rule, numbered in the order in which they came.
class CKorIniNameList
{
public:
    static constexpr size_t NONE = static_cast<size_t>(-1);

    explicit CKorIniNameList(CKorIniNameRule oRule) : m_oRule(oRule) {}

    /// The name's number, which it has from now on at the latest.
    size_t Add(const SKorIniName& oName);

    /// The name's number, or #NONE.
    size_t Find(const SKorIniName& oName) const;

    size_t Size() const { return m_vecNames.size(); }
    const std::string& Section(size_t nName) const { return m_vecNames[nName].m_strSection; }
    const std::string& Option(size_t nName) const { return m_vecNames[nName].m_strOption; }

    /// What the user notes of the name; 0 at first.
    unsigned int& Note(size_t nName) { return m_vecNames[nName].m_nNote; }
    unsigned int Note(size_t nName) const { return m_vecNames[nName].m_nNote; }

private:
    struct SName
    {
        std::string m_strSection;
        std::string m_strOption;
        unsigned int m_nNote;
    };
    uint32_t Hash(const SKorIniName& oName) const;

    const CKorIniNameRule m_oRule;
    std::vector<SName> m_vecNames;
    CKorIniTable m_oTable; ///< of 1 + places in m_vecNames
};
