#include "time/KorZoneFileDetail.h"

#include "text/KorSharedDetail.h"

#include "time/KorZoneRuleDetail.h"

#include <cstring>
#include <utility>

namespace
{

constexpr std::uint64_t TYPE_SIZE = 6;

struct SHeader
{
    char cVersion; ///< NUL (which is version 1), '2', '3' or '4'
    std::uint32_t nUtFlags;
    std::uint32_t nStandardFlags;
    std::uint32_t nLeapSeconds;
    std::uint32_t nChanges;
    std::uint32_t nTypes;
    std::uint32_t nChars;

    /// The length of the block behind the header, whose times have 4 or 8 bytes.
    std::uint64_t BlockSize(unsigned nTimeSize) const
    {
        return std::uint64_t{nChanges} * (nTimeSize + 1) + nTypes * TYPE_SIZE + nChars +
               std::uint64_t{nLeapSeconds} * (nTimeSize + 4) + nStandardFlags + nUtFlags;
    }
};

/// A signed number, most significant byte first.
std::int64_t Number(const char* pBytes, unsigned nSize)
{
    std::uint64_t nNumber = (*pBytes & 0x80) != 0 ? ~std::uint64_t{0} : 0;
    for (unsigned i = 0; i < nSize; ++i)
        nNumber = nNumber << 8 | static_cast<unsigned char>(pBytes[i]);
    return static_cast<std::int64_t>(nNumber);
}

class CZoneFile
{
public:
    explicit CZoneFile(const std::string& strContent)
        : m_pNext(strContent.data()), m_pEnd(m_pNext + strContent.size())
    {
    }

    std::shared_ptr<CKorZoneData> Read();

private:
    const char* Take(std::uint64_t nBytes);
    bool TakeHeader();
    bool TakeBlock(unsigned nTimeSize);
    bool TakeRule(CKorZoneRule& oRule, bool& rbHasRule);
    bool ReadChanges(const char* pTimes, unsigned nTimeSize);
    bool ReadTypes(const char* pTypes, const char* pChars);
    bool AreFlagsGood(const char* pStandard, const char* pUt) const;

    const char* m_pNext;
    const char* m_pEnd;
    SHeader m_oHeader = {};
    std::vector<SKorZoneType> m_vecTypes;
    std::vector<std::int64_t> m_vecChanges;
    std::vector<std::uint16_t> m_vecTypeOfPeriod;
};

std::shared_ptr<CKorZoneData> CZoneFile::Read()
{
    if (!TakeHeader())
        return nullptr;
    const char cVersion = m_oHeader.cVersion;
    const bool bVersion1 = cVersion == '\0';
    // The first block of a later version is there for readers of version 1.
    if (!bVersion1 && (Take(m_oHeader.BlockSize(4)) == nullptr || !TakeHeader() ||
                       m_oHeader.cVersion != cVersion))
        return nullptr;
    CKorZoneRule oRule;
    bool bHasRule = false;
    if (!TakeBlock(bVersion1 ? 4 : 8) || (!bVersion1 && !TakeRule(oRule, bHasRule)) ||
        m_pNext != m_pEnd)
        return nullptr;
    auto pData = KorMakeShared<CKorZoneData>(std::move(m_vecTypes), std::move(m_vecChanges),
                                             std::move(m_vecTypeOfPeriod));
    if (bHasRule)
        pData->Continue(oRule);
    return pData;
}

/// The next bytes, or null when there are fewer.
const char* CZoneFile::Take(std::uint64_t nBytes)
{
    if (static_cast<std::uint64_t>(m_pEnd - m_pNext) < nBytes)
        return nullptr;
    const char* const pTaken = m_pNext;
    m_pNext += nBytes;
    return pTaken;
}

bool CZoneFile::TakeHeader()
{
    constexpr unsigned SIZE = 44;
    constexpr unsigned COUNTS_AT = 20;
    const char* const pHeader = Take(SIZE);
    if (pHeader == nullptr || memcmp(pHeader, "TZif", 4) != 0)
        return false;
    const auto fnCount = [pHeader](std::size_t nIndex) {
        return static_cast<std::uint32_t>(Number(pHeader + COUNTS_AT + 4 * nIndex, 4));
    };
    const char cVersion = pHeader[4];
    m_oHeader = {cVersion, fnCount(0), fnCount(1), fnCount(2), fnCount(3), fnCount(4), fnCount(5)};
    return cVersion == '\0' || (cVersion >= '2' && cVersion <= '4');
}

bool CZoneFile::TakeBlock(unsigned nTimeSize)
{
    constexpr std::uint32_t MAX_TYPES = 256; // what an index of one byte can reach
    const auto fnIsFlagCount = [this](std::uint32_t n) { return n == 0 || n == m_oHeader.nTypes; };
    const char* const pTimes = Take(m_oHeader.BlockSize(nTimeSize));
    if (pTimes == nullptr || m_oHeader.nTypes < 1 || m_oHeader.nTypes > MAX_TYPES ||
        m_oHeader.nChars < 1 || m_oHeader.nLeapSeconds != 0 ||
        !fnIsFlagCount(m_oHeader.nStandardFlags) || !fnIsFlagCount(m_oHeader.nUtFlags))
        return false;
    // Within the block from here on, so that no product or sum can overflow.
    const char* const pTypes = pTimes + std::size_t{m_oHeader.nChanges} * (nTimeSize + 1);
    const char* const pChars = pTypes + m_oHeader.nTypes * TYPE_SIZE;
    const char* const pStandard = pChars + m_oHeader.nChars;
    return ReadChanges(pTimes, nTimeSize) && ReadTypes(pTypes, pChars) &&
           AreFlagsGood(pStandard, pStandard + m_oHeader.nStandardFlags);
}

bool CZoneFile::ReadChanges(const char* pTimes, unsigned nTimeSize)
{
    const char* const pIndices = pTimes + std::size_t{m_oHeader.nChanges} * nTimeSize;
    m_vecChanges = std::vector<std::int64_t>(m_oHeader.nChanges);
    m_vecTypeOfPeriod = std::vector<std::uint16_t>(m_oHeader.nChanges + 1); // 0 before the first
    for (std::uint32_t i = 0; i < m_oHeader.nChanges; ++i) {
        const std::int64_t nTime = Number(pTimes + std::size_t{i} * nTimeSize, nTimeSize);
        const auto nType = static_cast<unsigned char>(pIndices[i]);
        if (nType >= m_oHeader.nTypes || (i > 0 && nTime <= m_vecChanges[i - 1]))
            return false;
        m_vecChanges[i] = nTime;
        m_vecTypeOfPeriod[i + 1] = nType;
    }
    return true;
}

bool CZoneFile::ReadTypes(const char* pTypes, const char* pChars)
{
    // Every abbreviation ends with a NUL then.
    if (pChars[m_oHeader.nChars - 1] != '\0')
        return false;
    m_vecTypes = std::vector<SKorZoneType>(m_oHeader.nTypes);
    for (std::uint32_t i = 0; i < m_oHeader.nTypes; ++i, pTypes += TYPE_SIZE) {
        const auto nOffset = static_cast<std::int32_t>(Number(pTypes, 4));
        const char cSummerTime = pTypes[4];
        const auto nAbbreviation = static_cast<unsigned char>(pTypes[5]);
        if (nOffset == INT32_MIN || (cSummerTime & ~1) != 0 || nAbbreviation >= m_oHeader.nChars)
            return false;
        m_vecTypes[i] = {nOffset, cSummerTime != 0, pChars + nAbbreviation};
    }
    return true;
}

/// The flags tell how the changes were once written and matter to nobody; but a change that was
/// written in universal time was so in standard time too.
bool CZoneFile::AreFlagsGood(const char* pStandard, const char* pUt) const
{
    for (std::uint32_t i = 0; i < m_oHeader.nTypes; ++i) {
        const int nStandard = i < m_oHeader.nStandardFlags ? pStandard[i] : 0;
        const int nUt = i < m_oHeader.nUtFlags ? pUt[i] : 0;
        if ((nStandard & ~1) != 0 || (nUt & ~nStandard) != 0)
            return false;
    }
    return true;
}

/// Takes the text between two line feeds at the end of the file, which may be empty.
bool CZoneFile::TakeRule(CKorZoneRule& oRule, bool& rbHasRule)
{
    const char* const pBegin = Take(1);
    if (pBegin == nullptr || *pBegin != '\n')
        return false;
    const char* const pText = m_pNext;
    const void* const pLineEnd = memchr(pText, '\n', static_cast<std::size_t>(m_pEnd - pText));
    if (pLineEnd == nullptr)
        return false;
    const std::string strText(pText, static_cast<const char*>(pLineEnd));
    m_pNext += strText.size() + 1;
    rbHasRule = !strText.empty();
    return !rbHasRule || oRule.Parse(strText);
}

} // namespace

std::shared_ptr<const CKorZoneData> KorReadZoneFile(const std::string& strContent)
{
    return CZoneFile(strContent).Read();
}
