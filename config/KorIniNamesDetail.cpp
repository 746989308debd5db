#include "config/KorIniNamesDetail.h"

#include "config/KorIniTableDetail.h"

#include <algorithm>
#include <cstring>

namespace
{

char Fold(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Folds four characters at once. A byte's top bit takes part in no comparison: the sums tell in
/// it whether the other seven bits are at least 'A', and beyond 'Z'.
uint32_t FoldWord(uint32_t nWord)
{
    const uint32_t nLow = nWord & 0x7F7F7F7FU;
    const uint32_t nFromA = nLow + 0x3F3F3F3FU;
    const uint32_t nBeyondZ = nLow + 0x25252525U;
    return nWord | ((nFromA & ~nBeyondZ & ~nWord & 0x80808080U) >> 2);
}

uint32_t Mix(uint32_t nHash, uint32_t nWord)
{
    nHash = (nHash ^ nWord) * 0x9E3779B1U;
    return nHash ^ (nHash >> 15);
}

} // namespace

bool CKorIniNameRule::Equal(std::string_view strLeft, std::string_view strRight) const
{
    if (strLeft.size() != strRight.size())
        return false;
    if (strLeft.empty())
        return true;
    // Numbered names differ at the end.
    if (Fold(strLeft.back()) != Fold(strRight.back()))
        return false;
    return std::memcmp(strLeft.data(), strRight.data(), strLeft.size()) == 0 ||
           (!m_bCaseSensitiv &&
            std::equal(strLeft.begin(), strLeft.end(), strRight.begin(),
                       [](char cLeft, char cRight) { return Fold(cLeft) == Fold(cRight); }));
}

uint32_t CKorIniNameRule::Hash(std::string_view strName, uint32_t nSeed) const
{
    uint32_t nHash = Mix(nSeed, static_cast<uint32_t>(strName.size()));
    for (size_t i = 0; i < strName.size(); i += sizeof(uint32_t)) {
        uint32_t nWord = 0;
        std::memcpy(&nWord, strName.data() + i, std::min(sizeof nWord, strName.size() - i));
        nHash = Mix(nHash, m_bCaseSensitiv ? nWord : FoldWord(nWord));
    }
    return nHash;
}

std::vector<std::string> KorIniSortedOnce(const std::vector<std::string_view>& vecNames,
                                          CKorIniNameRule oRule)
{
    struct SSlot
    {
        bool IsFree() const { return m_strName.data() == nullptr; }
        uint32_t m_nHash = 0;
        std::string_view m_strName;
    };
    CKorIniTable<SSlot> oSeen;
    std::vector<std::string> vecOnce;
    for (const std::string_view strName : vecNames) {
        const uint32_t nHash = oRule.Hash(strName, 0);
        const auto Same = [&](const SSlot& o) { return oRule.Equal(o.m_strName, strName); };
        if (oSeen.Find(nHash, Same) != nullptr)
            continue;
        oSeen.Insert({nHash, strName});
        vecOnce.emplace_back(strName);
    }
    std::sort(vecOnce.begin(), vecOnce.end());
    return vecOnce;
}
