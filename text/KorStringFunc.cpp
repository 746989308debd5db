#include "text/KorStringFunc.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr char WHITE_SPACE[] = " \t\n\v\f\r";

} // namespace

std::string KorStrRTrim(const char* pszText)
{
    std::string strText = pszText != nullptr ? pszText : "";
    strText.erase(strText.find_last_not_of(WHITE_SPACE) + 1);
    return strText;
}

std::string KorStrLTrim(const char* pszText)
{
    return pszText != nullptr ? pszText + std::strspn(pszText, WHITE_SPACE) : "";
}

std::string KorStrTrim(const char* pszText)
{
    return KorStrLTrim(KorStrRTrim(pszText).c_str());
}

void KorDeQuoteString(std::string& strText)
{
    if (strText.size() > 1 && strText.front() == '"' && strText.back() == '"')
        strText = strText.substr(1, strText.size() - 2);
}

void KorQuoteString(std::string& strText, bool bOnlyIfWhiteSpace)
{
    KorDeQuoteString(strText);
    if (bOnlyIfWhiteSpace && strText.find_first_of(WHITE_SPACE) == std::string::npos)
        return;
    strText.insert(strText.begin(), '"');
    strText += '"';
}

std::vector<std::string> KorGetParameterList(const char* pszText, char cSeparator)
{
    std::vector<std::string> vecItems;
    if (pszText == nullptr)
        return vecItems;

    vecItems.emplace_back();
    for (; *pszText != '\0'; ++pszText) {
        if (*pszText == cSeparator)
            vecItems.emplace_back();
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
