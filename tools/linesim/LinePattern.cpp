#include "tools/linesim/LinePattern.h"

#include "config/KorTextValue.h"
#include "text/KorHexText.h"
#include "tools/linesim/Crc16.h"

#include <algorithm>
#include <cctype>

namespace
{

constexpr std::size_t MAX_ITEMS = 65536;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

void SkipBlanks(const std::string& strText, std::size_t& nPos)
{
    while (nPos < strText.size() && IsBlank(strText[nPos]))
        ++nPos;
}

/// Whether the word stands at the position; moves behind it.
bool TakeWord(const std::string& strText, std::size_t& nPos, const char* pszWord)
{
    const std::size_t nLength = std::char_traits<char>::length(pszWord);
    if (strText.compare(nPos, nLength, pszWord) != 0)
        return false;
    nPos += nLength;
    return true;
}

/// The byte that has these two digits, or -1.
int TakeByte(const std::string& strText, std::size_t& nPos)
{
    std::string strByte;
    if (!KorFromHexText(strText.substr(nPos, 2), strByte) || strByte.size() != 1)
        return -1;
    nPos += 2;
    return static_cast<unsigned char>(strByte[0]);
}

/// The character that stands behind a backslash, or -1.
int TakeEscape(const std::string& strText, std::size_t& nPos)
{
    static constexpr char NAMES[] = "rnt0\\\"";
    static constexpr char VALUES[] = "\r\n\t\0\\\"";
    if (nPos >= strText.size())
        return -1;
    const char c = strText[nPos++];
    if (c == 'x')
        return TakeByte(strText, nPos);
    const std::size_t nName = std::string(NAMES).find(c);
    return nName == std::string::npos ? -1 : static_cast<unsigned char>(VALUES[nName]);
}

/// The bytes of a text in quotes, the first of which was taken.
bool TakeText(const std::string& strText, std::size_t& nPos, std::vector<int>& vecItems)
{
    while (nPos < strText.size() && strText[nPos] != '"') {
        int nByte = static_cast<unsigned char>(strText[nPos++]);
        if (nByte == '\\')
            nByte = TakeEscape(strText, nPos);
        if (nByte < 0)
            return false;
        vecItems.push_back(nByte);
    }
    return nPos++ < strText.size();
}

bool TakeDigits(const std::string& strText, std::size_t& nPos, std::vector<int>& vecItems)
{
    std::size_t nEnd = nPos;
    while (nEnd < strText.size() && std::isxdigit(static_cast<unsigned char>(strText[nEnd])) != 0)
        ++nEnd;
    std::string strBytes;
    if (nEnd == nPos || !KorFromHexText(strText.substr(nPos, nEnd - nPos), strBytes))
        return false;
    for (const char c : strBytes)
        vecItems.push_back(static_cast<unsigned char>(c));
    nPos = nEnd;
    return true;
}

/// The number in "{4}" when it stands at the position, and 1 when there is none; 0 when it cannot be
/// read.
std::size_t TakeTimes(const std::string& strText, std::size_t& nPos)
{
    if (!TakeWord(strText, nPos, "{"))
        return 1;
    const std::size_t nEnd = std::min(strText.find('}', nPos), strText.size());
    std::size_t nTimes = 0;
    const bool bRead = KorReadText(strText.substr(nPos, nEnd - nPos), nTimes);
    nPos = nEnd;
    return bRead && TakeWord(strText, nPos, "}") ? nTimes : 0;
}

} // namespace

bool LinePattern::Parse(const std::string& strText, std::string& strError)
{
    m_vecItems.clear();
    m_nGap = std::string::npos;
    std::size_t nPos = 0;
    for (SkipBlanks(strText, nPos); nPos < strText.size(); SkipBlanks(strText, nPos)) {
        if (!ParseItem(strText, nPos, strError))
            return false;
    }
    if (m_vecItems.empty())
        strError = "no bytes are given";
    else if (m_vecItems.back() == ITEM_GAP)
        strError = "nothing follows \"*\"";
    m_nGap = std::min(m_nGap, m_vecItems.size());
    return strError.empty();
}

bool LinePattern::ParseItem(const std::string& strText, std::size_t& nPos, std::string& strError)
{
    const std::size_t nStart = nPos;
    const std::size_t nFirst = m_vecItems.size();
    bool bRead = true;
    if (TakeWord(strText, nPos, "\"")) {
        bRead = TakeText(strText, nPos, m_vecItems);
    } else if (TakeWord(strText, nPos, "??")) {
        m_vecItems.push_back(ITEM_ANY);
    } else if (TakeWord(strText, nPos, "crc16")) {
        m_vecItems.insert(m_vecItems.end(), {ITEM_CRC_LOW, ITEM_CRC_HIGH});
    } else if (TakeWord(strText, nPos, "*")) {
        bRead = m_nGap == std::string::npos;
        m_nGap = nFirst;
        m_vecItems.push_back(ITEM_GAP);
    } else {
        bRead = TakeDigits(strText, nPos, m_vecItems);
    }
    if (!bRead || !Repeat(strText, nPos, nFirst))
        strError = "cannot read the bytes at '" + strText.substr(nStart, 20) + "'";
    return strError.empty();
}

// "{4}" behind an item takes it four times; behind the item stands a blank or nothing more.
bool LinePattern::Repeat(const std::string& strText, std::size_t& nPos, std::size_t nFirst)
{
    const std::size_t nLength = m_vecItems.size() - nFirst;
    const bool bGap = m_nGap == nFirst && TakeWord(strText, nPos, "{");
    const std::size_t nTimes = TakeTimes(strText, nPos);
    if (bGap || nTimes == 0 || nLength > MAX_ITEMS / nTimes)
        return false;
    for (std::size_t i = nLength; i < nLength * nTimes; ++i)
        m_vecItems.push_back(m_vecItems[nFirst + i - nLength]);
    return m_vecItems.size() <= MAX_ITEMS && (nPos == strText.size() || IsBlank(strText[nPos]));
}

bool LinePattern::IsExact() const
{
    return std::none_of(m_vecItems.begin(), m_vecItems.end(),
                        [](int nItem) { return nItem == ITEM_ANY || nItem == ITEM_GAP; });
}

std::string LinePattern::Bytes() const
{
    std::string strBytes;
    for (const int nItem : m_vecItems) {
        if (nItem == ITEM_CRC_LOW)
            strBytes += Crc16Text(strBytes);
        else if (nItem != ITEM_CRC_HIGH)
            strBytes += static_cast<char>(nItem);
    }
    return strBytes;
}

// How many items from nFirst on fit the bytes from nPos on. A CRC is that of the bytes from nPos
// on.
std::size_t LinePattern::FittingItems(const std::string& strBytes, std::size_t nPos,
                                      std::size_t nFirst, std::size_t nEnd) const
{
    std::size_t i = 0;
    for (; nFirst + i < nEnd && nPos + i < strBytes.size(); ++i) {
        int nWanted = m_vecItems[nFirst + i];
        if (nWanted == ITEM_CRC_LOW || nWanted == ITEM_CRC_HIGH) {
            const std::size_t nHigh = nWanted == ITEM_CRC_HIGH ? 1 : 0;
            nWanted =
                static_cast<unsigned char>(Crc16Text(strBytes.substr(nPos, i - nHigh))[nHigh]);
        }
        if (nWanted != ITEM_ANY && nWanted != static_cast<unsigned char>(strBytes[nPos + i]))
            break;
    }
    return i;
}

EMatch LinePattern::Match(const std::string& strBytes, std::size_t& nLength) const
{
    nLength = FittingItems(strBytes, 0, 0, m_nGap);
    if (nLength < m_nGap)
        return nLength == strBytes.size() ? EMatch::PARTIAL : EMatch::NO;
    return m_nGap == m_vecItems.size() ? EMatch::YES : MatchBehindGap(strBytes, nLength);
}

// The first place behind the gap where the rest fits. Where it fits up to the last byte that came,
// no later place can fit wholly.
EMatch LinePattern::MatchBehindGap(const std::string& strBytes, std::size_t& nLength) const
{
    const std::size_t nRest = m_vecItems.size() - m_nGap - 1;
    for (std::size_t nPos = m_nGap; nPos + nRest <= strBytes.size(); ++nPos) {
        if (FittingItems(strBytes, nPos, m_nGap + 1, m_vecItems.size()) == nRest) {
            nLength = nPos + nRest;
            return EMatch::YES;
        }
    }
    return EMatch::PARTIAL;
}
