#include "text/KorStringDetail.h"

std::string KorConcat(std::initializer_list<std::string_view> lstParts)
{
    std::string strWhole;
    for (const std::string_view strPart : lstParts)
        strWhole.append(strPart);
    return strWhole;
}

void KorAdd(std::vector<std::string>& rvecTexts, std::string_view strText)
{
    rvecTexts.push_back(std::string(strText));
}

void KorAdd(std::vector<std::string_view>& rvecTexts, std::string_view strText)
{
    rvecTexts.push_back(strText);
}

std::string_view KorTrim(std::string_view strText)
{
    return KorLTrim(KorRTrim(strText));
}

bool KorHasWhiteSpace(std::string_view strText)
{
    for (const char c : strText) {
        if (KorIsWhiteSpace(c))
            return true;
    }
    return false;
}

char* KorPutDecimal(char* pLast, std::uint64_t nNumber)
{
    for (; nNumber > UINT32_MAX; nNumber /= 10)
        *--pLast = static_cast<char>('0' + nNumber % 10);
    // On from here in 32 bits, which is much cheaper on 32-bit boards.
    for (auto nRest = static_cast<std::uint32_t>(nNumber); nRest != 0; nRest /= 10)
        *--pLast = static_cast<char>('0' + nRest % 10);
    return pLast;
}

std::string KorDecimal(std::uint64_t nNumber)
{
    char acDigits[20];
    char* const pEnd = acDigits + sizeof acDigits;
    char* const pFirst = KorPutDecimal(pEnd, nNumber);
    return nNumber != 0 ? std::string(pFirst, static_cast<size_t>(pEnd - pFirst)) : "0";
}
