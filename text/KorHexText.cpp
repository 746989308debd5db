#include "text/KorHexText.h"

#include "text/KorStringDetail.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr char DIGITS[] = "0123456789ABCDEF";
constexpr unsigned int USUAL_WIDTH = 16;
constexpr int NO_DIGIT = -1;

int DigitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return NO_DIGIT;
}

void AppendByte(std::string& strText, char cByte)
{
    const unsigned char nByte = static_cast<unsigned char>(cByte);
    strText += DIGITS[nByte >> 4];
    strText += DIGITS[nByte & 0xF];
}

const char* SkipWhiteSpace(const char* pText, const char* pEnd)
{
    while (pText != pEnd && KorIsWhiteSpace(*pText))
        ++pText;
    return pText;
}

/// Skips what may stand between two pairs.
const char* SkipSeparator(const char* pText, const char* pEnd)
{
    pText = SkipWhiteSpace(pText, pEnd);
    if (pText != pEnd && (*pText == ':' || *pText == '-' || *pText == ','))
        pText = SkipWhiteSpace(pText + 1, pEnd);
    return pText;
}

void AppendOffset(std::string& strText, unsigned int nOffset)
{
    int nShift = 12;
    while (nShift < 28 && nOffset >> (nShift + 4) != 0)
        nShift += 4;
    for (; nShift >= 0; nShift -= 4)
        strText += DIGITS[nOffset >> nShift & 0xF];
}

void AppendLine(std::string& strText, const char* pData, unsigned int nLength, unsigned int nWidth)
{
    for (unsigned int i = 0; i < nLength; ++i) {
        strText += ' ';
        AppendByte(strText, pData[i]);
    }
    strText.append(std::size_t(3) * (nWidth - nLength) + 2, ' ');
    for (unsigned int i = 0; i < nLength; ++i)
        strText += pData[i] >= 0x20 && pData[i] <= 0x7E ? pData[i] : '.';
    strText += '\n';
}

} // namespace

std::string KorToHexText(const char* pData, unsigned int nLength, char cSeparator)
{
    std::string strText;
    if (pData == nullptr)
        return strText;
    for (unsigned int i = 0; i < nLength; ++i) {
        if (i != 0 && cSeparator != '\0')
            strText += cSeparator;
        AppendByte(strText, pData[i]);
    }
    return strText;
}

bool KorFromHexText(const std::string& strHex, std::string& rstrData)
{
    std::string strData;
    const char* pText = strHex.data();
    const char* const pEnd = pText + strHex.size();
    while (pText != pEnd) {
        if (!strData.empty())
            pText = SkipSeparator(pText, pEnd);
        if (pEnd - pText < 2 || DigitValue(pText[0]) == NO_DIGIT ||
            DigitValue(pText[1]) == NO_DIGIT)
            return false;
        strData += static_cast<char>(DigitValue(pText[0]) << 4 | DigitValue(pText[1]));
        pText += 2;
    }
    rstrData = std::move(strData);
    return true;
}

std::string KorToHexDump(const char* pData, unsigned int nLength, unsigned int nPerLine)
{
    std::string strText;
    if (pData == nullptr)
        return strText;
    // A short line is filled up, but never beyond the data's own length: nPerLine may be anything.
    const unsigned int nWidth =
        std::min(nPerLine == 0 ? USUAL_WIDTH : nPerLine, std::max(nLength, USUAL_WIDTH));
    unsigned int nCount = 0;
    for (unsigned int nOffset = 0; nOffset < nLength; nOffset += nCount) {
        nCount = std::min(nWidth, nLength - nOffset);
        AppendOffset(strText, nOffset);
        strText += ' ';
        AppendLine(strText, pData + nOffset, nCount, nWidth);
    }
    return strText;
}
