#include "config/KorTextValue.h"

#include "config/KorIniNamesDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace
{

/// The value of a digit; more than 35 for any other character.
unsigned int ValueOf(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<unsigned int>(c - '0');
    const auto nLetter = static_cast<unsigned int>((c | 0x20) - 'a');
    return nLetter < 26 ? 10 + nLetter : 36;
}

/// Reads the digits of a number of a base.
bool ReadDigits(std::string_view strText, unsigned int nBase, unsigned long long& rnValue)
{
    unsigned long long nValue = 0;
    for (const char c : strText) {
        const unsigned int nDigit = ValueOf(c);
        if (nDigit >= nBase || __builtin_mul_overflow(nValue, nBase, &nValue) ||
            __builtin_add_overflow(nValue, nDigit, &nValue))
            return false;
    }
    if (!strText.empty())
        rnValue = nValue;
    return !strText.empty();
}

template <typename T>
bool ReadFloating(std::string_view strText, T& rnValue)
{
    const char* const pcEnd = strText.data() + strText.size();
    T nValue = 0;
    const std::from_chars_result oResult = std::from_chars(strText.data(), pcEnd, nValue);
    if (oResult.ec != std::errc() || oResult.ptr != pcEnd || !std::isfinite(nValue))
        return false;
    rnValue = nValue;
    return true;
}

template <typename T>
std::string WriteFloating(T nValue)
{
    char acText[32]; // the longest is "-2.2250738585072014e-308"
    if (!std::isfinite(nValue))
        return "";
    const char* const pcEnd = std::to_chars(acText, acText + sizeof acText, nValue).ptr;
    return std::string(acText, static_cast<size_t>(pcEnd - acText));
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// A part of a text without blanks in front and behind, where these are to go.
std::string_view Trimmed(std::string_view strText, bool bFront, bool bBehind)
{
    while (bFront && !strText.empty() && IsBlank(strText.front()))
        strText.remove_prefix(1);
    while (bBehind && !strText.empty() && IsBlank(strText.back()))
        strText.remove_suffix(1);
    return strText;
}

} // namespace

bool KorReadUnsigned(std::string_view strText, unsigned long long nMaximum,
                     unsigned long long& rnValue)
{
    const bool bHex = strText.substr(0, 2) == "0x";
    unsigned long long nValue = 0;
    if (!ReadDigits(strText.substr(bHex ? 2 : 0), bHex ? 16 : 10, nValue) || nValue > nMaximum)
        return false;
    rnValue = nValue;
    return true;
}

bool KorReadSigned(std::string_view strText, long long nMinimum, long long nMaximum,
                   long long& rnValue)
{
    const bool bNegative = strText.substr(0, 1) == "-";
    const unsigned long long nLimit = bNegative ? 0ULL - static_cast<unsigned long long>(nMinimum)
                                                : static_cast<unsigned long long>(nMaximum);
    unsigned long long nValue = 0;
    if (!KorReadUnsigned(strText.substr(bNegative ? 1 : 0), nLimit, nValue))
        return false;
    rnValue = static_cast<long long>(bNegative ? 0ULL - nValue : nValue);
    return true;
}

std::string KorWriteSigned(long long nValue)
{
    const auto nBits = static_cast<std::uint64_t>(nValue);
    return KorConcat({nValue < 0 ? "-" : "", KorDecimal(nValue < 0 ? 0 - nBits : nBits)});
}

std::string KorWriteUnsigned(unsigned long long nValue)
{
    return KorDecimal(nValue);
}

bool KorReadText(std::string_view strText, bool& rbValue)
{
    for (const char* pszTrue : {"true", "yes", "on", "1"}) {
        if (CKorIniNameRule(false).Equal(strText, pszTrue))
            return rbValue = true;
    }
    for (const char* pszFalse : {"false", "no", "off", "0"}) {
        if (CKorIniNameRule(false).Equal(strText, pszFalse)) {
            rbValue = false;
            return true;
        }
    }
    return false;
}

bool KorReadText(std::string_view strText, float& rnValue)
{
    return ReadFloating(strText, rnValue);
}

bool KorReadText(std::string_view strText, double& rnValue)
{
    return ReadFloating(strText, rnValue);
}

std::string KorSimpleText::Of(float nValue)
{
    return WriteFloating(nValue);
}

std::string KorSimpleText::Of(double nValue)
{
    return WriteFloating(nValue);
}

std::vector<std::string_view> KorSplitList(std::string_view strText)
{
    std::vector<std::string_view> vecItems;
    if (strText.empty())
        return vecItems;
    for (size_t nBegin = 0; nBegin <= strText.size();) {
        const size_t nEnd = std::min(strText.find(',', nBegin), strText.size());
        KorAdd(vecItems,
               Trimmed(strText.substr(nBegin, nEnd - nBegin), nBegin > 0, nEnd < strText.size()));
        nBegin = nEnd + 1;
    }
    return vecItems;
}

std::string KorJoinList(const std::vector<std::string>& vecItems)
{
    std::string strText;
    for (size_t i = 0; i < vecItems.size(); ++i)
        strText.append(i == 0 ? "" : ",").append(vecItems[i]);
    // The only way to be sure, whatever the items hold.
    const std::vector<std::string_view> vecRead = KorSplitList(strText);
    const bool bReadsBack =
        std::equal(vecRead.begin(), vecRead.end(), vecItems.begin(), vecItems.end());
    return bReadsBack ? strText : "";
}
