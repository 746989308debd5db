// Hexadecimal texts against a reader that looks at one character after the other, and back.

#include "tests/fuzz/Fuzz.h"
#include "text/KorHexText.h"

#include <algorithm>
#include <cstring>

namespace
{

bool IsOneOf(char c, const char* pszSet)
{
    return c != '\0' && std::strchr(pszSet, c) != nullptr;
}

constexpr char BLANKS[] = " \t\n\v\f\r";
constexpr char SEPARATORS[] = " \t\n\v\f\r:-,";
constexpr char DIGITS[] = "0123456789abcdef0123456789ABCDEF";

/// Reads pair after pair, with at most one mark and any blanks between two of them.
bool ModelRead(const std::string& strText, std::string& strBytes)
{
    bool bMayMark = false; // a pair came before
    bool bNeedsPair = false;
    for (std::size_t i = 0; i < strText.size(); ++i) {
        if (IsOneOf(strText[i], SEPARATORS)) {
            const bool bMark = !IsOneOf(strText[i], BLANKS);
            if (strBytes.empty() || (bMark && !bMayMark))
                return false;
            bMayMark = bMayMark && !bMark;
            bNeedsPair = true;
            continue;
        }
        if (i + 1 == strText.size() || !IsOneOf(strText[i], DIGITS) ||
            !IsOneOf(strText[i + 1], DIGITS))
            return false;
        const auto nHigh = (std::strchr(DIGITS, strText[i]) - DIGITS) % 16;
        const auto nLow = (std::strchr(DIGITS, strText[i + 1]) - DIGITS) % 16;
        strBytes += static_cast<char>(nHigh * 16 + nLow);
        ++i;
        bMayMark = true;
        bNeedsPair = false;
    }
    return !bNeedsPair;
}

void CheckReading(const std::string& strText)
{
    std::string strExpected;
    std::string strRead = "unchanged";
    const bool bExpected = ModelRead(strText, strExpected);
    ExpectEqual(bExpected, KorFromHexText(strText, strRead), "the text is read or refused");
    ExpectEqual(bExpected ? strExpected : std::string("unchanged"), strRead, "the bytes read");
    std::string strSame = strText;
    KorFromHexText(strSame, strSame);
    ExpectEqual(bExpected ? strExpected : strText, strSame, "text and bytes may be one string");
}

void CheckWriting(const std::string& strBytes, char cSeparator)
{
    const auto nLength = static_cast<unsigned int>(strBytes.size());
    const std::string strText = KorToHexText(strBytes.data(), nLength, cSeparator);
    std::string strRead;
    if (cSeparator == '\0' || IsOneOf(cSeparator, " :-,\t")) {
        Expect(KorFromHexText(strText, strRead), "what was written reads", strText);
        ExpectEqual(strBytes, strRead, "what was written reads back");
    }
    const std::size_t nGaps = cSeparator == '\0' || strBytes.empty() ? 0 : strBytes.size() - 1;
    ExpectEqual(strBytes.size() * 2 + nGaps, strText.size(), "two digits a byte and separators");
}

/// The bytes in the columns of a dump.
void CheckDump(const std::string& strBytes, unsigned int nPerLine)
{
    const auto nLength = static_cast<unsigned int>(strBytes.size());
    const std::string strDump = KorToHexDump(strBytes.data(), nLength, nPerLine);
    const std::size_t nColumns = // lines of little data need not be filled up
        std::min<std::size_t>(nPerLine == 0 ? 16 : nPerLine, std::max<std::size_t>(nLength, 16));
    std::string strFound;
    std::size_t nPos = 0;
    while (nPos < strDump.size()) {
        const std::size_t nEnd = strDump.find('\n', nPos);
        Expect(nEnd != std::string::npos, "each line of a dump ends with a line feed");
        const std::string strLine = strDump.substr(nPos, nEnd - nPos);
        ExpectEqual(strFound.size(), std::size_t{std::stoul(strLine, nullptr, 16)}, "offsets");
        const std::size_t nCount = std::min(nColumns, strBytes.size() - strFound.size());
        const std::size_t nFirst = strLine.find("  ") + 2;
        std::string strPart;
        Expect(KorFromHexText(strLine.substr(nFirst, nCount * 3 - 1), strPart), "bytes", strLine);
        ExpectEqual(nCount, strLine.size() - (nFirst + nColumns * 3 + 1), "characters at the end");
        strFound += strPart;
        nPos = nEnd + 1;
    }
    ExpectEqual(strBytes, strFound, "a dump shows all bytes");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const char cSeparator = oInput.PickValueInArray({'\0', ' ', ':', '-', ',', '\t', '0', '\xFF'});
    const auto nPerLine = oInput.ConsumeIntegralInRange<unsigned int>(0, 40);
    const std::string strText = oInput.ConsumeRemainingBytesAsString();
    CheckReading(strText);
    CheckWriting(strText, cSeparator);
    CheckDump(strText, nPerLine);
    return 0;
}
