#include "text/KorStringFunc.h"

#include "text/KorStringDetail.h"

#include <algorithm>

std::string KorStrRTrim(const char* pszText)
{
    return std::string(KorRTrim(KorText(pszText)));
}

std::string KorStrLTrim(const char* pszText)
{
    return std::string(KorLTrim(KorText(pszText)));
}

std::string KorStrTrim(const char* pszText)
{
    return std::string(KorTrim(KorText(pszText)));
}

void KorDeQuoteString(std::string& strText)
{
    if (strText.size() > 1 && strText.front() == '"' && strText.back() == '"')
        strText = strText.substr(1, strText.size() - 2);
}

void KorQuoteString(std::string& strText, bool bOnlyIfWhiteSpace)
{
    KorDeQuoteString(strText);
    if (bOnlyIfWhiteSpace && !KorHasWhiteSpace(strText))
        return;
    strText = KorConcat({"\"", strText, "\""});
}

std::vector<std::string> KorGetParameterList(const char* pszText, char cSeparator)
{
    std::vector<std::string> vecItems;
    if (pszText == nullptr)
        return vecItems;

    KorAdd(vecItems, {});
    for (; *pszText != '\0'; ++pszText) {
        if (*pszText == cSeparator)
            KorAdd(vecItems, {});
        else
            vecItems.back() += *pszText;
    }
    return vecItems;
}

std::string KorBigString(const std::string& strText)
{
    std::string strResult;
    strResult.reserve(strText.size() * 4);
    for (const char c : strText)
        strResult.append(1, c).append(" . ");
    return strResult;
}

template <>
bool KorFromString<std::string>(std::string& strValue, const std::string& strText)
{
    strValue = strText;
    return true;
}

template <>
bool KorFromString<char*>(char*& pszValue, const std::string& strText)
{
    if (pszValue != nullptr)
        std::copy_n(strText.c_str(), strText.size() + 1, pszValue);
    return true;
}
