#include "config/KorIniNamesDetail.h"

#include "config/KorIniNameListDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace
{

char Fold(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Folds eight characters at once. A byte's top bit takes part in no comparison: the sums tell in
/// it whether the other seven bits are at least 'A', and beyond 'Z'.
uint64_t FoldWord(uint64_t nWord)
{
    constexpr uint64_t EACH = 0x0101010101010101U;
    const uint64_t nLow = nWord & (0x7F * EACH);
    const uint64_t nFromA = nLow + 0x3F * EACH;
    const uint64_t nBeyondZ = nLow + 0x25 * EACH;
    return nWord | ((nFromA & ~nBeyondZ & ~nWord & (0x80 * EACH)) >> 2);
}

template <class TWord>
uint64_t Load(const char* pBytes)
{
    TWord nWord = 0;
    std::memcpy(&nWord, pBytes, sizeof nWord);
    return nWord;
}

/// At most eight characters as one number, some of them twice.
uint64_t WordOf(std::string_view strText)
{
    if (strText.size() >= 4)
        return Load<uint32_t>(strText.data()) | Load<uint32_t>(strText.data() + strText.size() - 4)
                                                    << 32;
    uint64_t nWord = 0;
    for (const char c : strText)
        nWord = (nWord << 8) | static_cast<unsigned char>(c);
    return nWord;
}

// The first product keeps the halves of a word, which are alike in a name of four characters, from
// cancelling each other out.
uint64_t Mix(uint64_t nHash, uint64_t nWord)
{
    constexpr uint64_t GOLDEN_RATIO = 0x9E3779B97F4A7C15U;
    nHash = (nHash ^ nWord) * GOLDEN_RATIO;
    nHash = (nHash ^ (nHash >> 32)) * GOLDEN_RATIO;
    return nHash ^ (nHash >> 32);
}

/// For qsort(): two views of names.
int CompareNames(const void* pLeft, const void* pRight)
{
    return static_cast<const std::string_view*>(pLeft)->compare(
        *static_cast<const std::string_view*>(pRight));
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

// The last character of each name is only added, so that numbered options, and those of numbered
// sections, lie near each other in a table: names that follow one another in a large file find
// their slots in the processor's caches. The factor keeps them from lying side by side in a row.
uint32_t CKorIniNameRule::Hash(std::string_view strName, uint32_t nSeed) const
{
    const uint32_t nNear = (nSeed & 127U) << 6;
    uint64_t nHash = Mix(nSeed >> 7, strName.size());
    if (strName.empty())
        return static_cast<uint32_t>(nHash) + nNear;
    const char cLast = m_bCaseSensitiv ? strName.back() : Fold(strName.back());
    strName.remove_suffix(1);
    for (; strName.size() > 8; strName.remove_prefix(8))
        nHash = Mix(nHash, Folded(Load<uint64_t>(strName.data())));
    nHash = Mix(nHash, Folded(WordOf(strName)));
    return static_cast<uint32_t>(nHash) + nNear + 5U * static_cast<unsigned char>(cLast);
}

uint64_t CKorIniNameRule::Folded(uint64_t nWord) const
{
    return m_bCaseSensitiv ? nWord : FoldWord(nWord);
}

std::vector<std::string> KorIniSortedOnce(const std::vector<std::string_view>& vecNames,
                                          CKorIniNameRule oRule)
{
    CKorIniNameList oSeen(oRule);
    for (const std::string_view strName : vecNames)
        oSeen.Add({strName, {}});
    std::vector<std::string_view> vecOnce;
    for (size_t i = 0; i < oSeen.Size(); ++i)
        KorAdd(vecOnce, oSeen.Section(i));
    // The template of the C++ library is half a KiB for this one use.
    if (!vecOnce.empty())
        std::qsort(vecOnce.data(), vecOnce.size(), sizeof(std::string_view), &CompareNames);
    std::vector<std::string> vecSorted;
    for (const std::string_view strName : vecOnce)
        KorAdd(vecSorted, strName);
    return vecSorted;
}
