#include "config/KorIniNameListDetail.h"

uint32_t CKorIniNameList::Hash(const SKorIniName& oName) const
{
    return m_oRule.Hash(oName.m_strOption, m_oRule.Hash(oName.m_strSection, 0));
}

size_t CKorIniNameList::Add(const SKorIniName& oName)
{
    const size_t nFound = Find(oName);
    if (nFound != NONE)
        return nFound;
    m_vecNames.push_back({std::string(oName.m_strSection), std::string(oName.m_strOption), 0});
    m_oTable.Insert({Hash(oName), m_vecNames.size()});
    return m_vecNames.size() - 1;
}

size_t CKorIniNameList::Find(const SKorIniName& oName) const
{
    const uintptr_t nNumber = m_oTable.Find(Hash(oName), [&](uintptr_t n) {
        const SName& oListed = m_vecNames[n - 1];
        return m_oRule.Equal(oListed.m_strOption, oName.m_strOption) &&
               m_oRule.Equal(oListed.m_strSection, oName.m_strSection);
    });
    return nNumber - 1; // NONE when it was not found
}
