#pragma once

// The index of an INI document: the first line of each name. Not installed.

#include "config/KorIniNamesDetail.h"
#include "config/KorIniTableDetail.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// Finds the first line of a name in a list of lines that it is told of from the first to the
/// last. The names lie in the lines.
/// @tparam TLine  CKorIniOptionExchange::SOptionLine or a record with its members
template <class TLine>
class CKorIniIndex
{
public:
    struct SSection
    {
        TLine* m_pFirst;      ///< its first line
        size_t m_nFirst;      ///< the place of that in the list
        uint32_t m_nHash;     ///< of its name
        size_t m_nNewest = 0; ///< for the user
    };

    /// Whether the index knows all lines.
    bool IsComplete() const { return m_bComplete; }

    /// Becomes the complete index of an empty list.
    void Start(CKorIniNameRule oRule);

    /// Forgets all lines.
    void Drop();

    /// Adds the line behind all others.
    void Append(TLine* pLine, size_t nPlace);

    /// Adds a line behind the first one of its section, which is the latest that was found.
    void AddOption(TLine* pLine);

    /// The section with the name, or null when no line has it.
    SSection* Section(std::string_view strSection);

    /// All sections, in the order of their first lines.
    std::vector<SSection>& Sections() { return m_vecSections; }

    /// The first line with the name, or null.
    TLine* Find(const SKorIniName& oName);

private:
    TLine* FindOption(uint32_t nHash, const SKorIniName& oName) const;

    CKorIniNameRule m_oRule = CKorIniNameRule(false);
    bool m_bComplete = false;
    std::vector<SSection> m_vecSections;
    CKorIniTable m_oSections; ///< of 1 + places in m_vecSections
    CKorIniTable m_oOptions;  ///< of lines
    uint32_t m_nLatest = 0;   ///< the section found last, as in m_oSections
};

template <class TLine>
void CKorIniIndex<TLine>::Start(CKorIniNameRule oRule)
{
    Drop();
    m_oRule = oRule;
    m_bComplete = true;
}

template <class TLine>
void CKorIniIndex<TLine>::Drop()
{
    m_bComplete = false;
    m_vecSections.clear();
    m_oSections.Clear();
    m_oOptions.Clear();
    m_nLatest = 0;
}

template <class TLine>
void CKorIniIndex<TLine>::Append(TLine* pLine, size_t nPlace)
{
    // Memory may run out before the line is known.
    m_bComplete = false;
    if (Section(pLine->m_strSection) == nullptr) {
        const uint32_t nHash = m_oRule.Hash(pLine->m_strSection, 0);
        m_vecSections.push_back({pLine, nPlace, nHash});
        m_nLatest = static_cast<uint32_t>(m_vecSections.size());
        m_oSections.Insert({nHash, m_nLatest});
    }
    AddOption(pLine);
}

template <class TLine>
void CKorIniIndex<TLine>::AddOption(TLine* pLine)
{
    m_bComplete = false;
    if (!pLine->m_strOption.empty()) {
        const uint32_t nHash =
            m_oRule.Hash(pLine->m_strOption, m_vecSections[m_nLatest - 1].m_nHash);
        if (FindOption(nHash, {pLine->m_strSection, pLine->m_strOption}) == nullptr)
            m_oOptions.Insert({nHash, reinterpret_cast<uintptr_t>(pLine)});
    }
    m_bComplete = true;
}

template <class TLine>
typename CKorIniIndex<TLine>::SSection* CKorIniIndex<TLine>::Section(std::string_view strSection)
{
    if (m_nLatest == 0 || m_vecSections[m_nLatest - 1].m_pFirst->m_strSection != strSection) {
        const uintptr_t nSection = m_oSections.Find(m_oRule.Hash(strSection, 0), [&](uintptr_t n) {
            return m_oRule.Equal(m_vecSections[n - 1].m_pFirst->m_strSection, strSection);
        });
        if (nSection == 0)
            return nullptr;
        m_nLatest = static_cast<uint32_t>(nSection);
    }
    return &m_vecSections[m_nLatest - 1];
}

template <class TLine>
TLine* CKorIniIndex<TLine>::Find(const SKorIniName& oName)
{
    if (oName.m_strOption.empty()) {
        const SSection* const pSection = Section(oName.m_strSection);
        return pSection != nullptr ? pSection->m_pFirst : nullptr;
    }
    return FindOption(m_oRule.Hash(oName.m_strOption, m_oRule.Hash(oName.m_strSection, 0)), oName);
}

template <class TLine>
TLine* CKorIniIndex<TLine>::FindOption(uint32_t nHash, const SKorIniName& oName) const
{
    return reinterpret_cast<TLine*>(m_oOptions.Find(nHash, [&](uintptr_t n) {
        const TLine& oLine = *reinterpret_cast<const TLine*>(n);
        return m_oRule.Equal(oLine.m_strOption, oName.m_strOption) &&
               m_oRule.Equal(oLine.m_strSection, oName.m_strSection);
    }));
}
