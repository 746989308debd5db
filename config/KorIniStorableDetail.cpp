#include "config/KorIniEditDetail.h"
#include "text/KorStringDetail.h"

namespace
{

bool Holds(std::string_view strText, char c)
{
    return strText.find(c) != std::string_view::npos;
}

/// Why a part of a line cannot be kept; empty when it can.
/// @param cEnd   the character that would end the part
/// @param bTrim  whether white space at its ends is lost
std::string WhyNot(std::string_view strPart, std::string_view strText, char cEnd, bool bTrim)
{
    const char* pszWhy = nullptr;
    if (Holds(strText, cEnd) && cEnd != '#')
        return KorConcat({strPart, " holds \"", {&cEnd, 1}, "\", where it would end"});
    if (Holds(strText, '#'))
        pszWhy = " holds \"#\", which begins a comment";
    else if (Holds(strText, '\n') || Holds(strText, '\0'))
        pszWhy = " holds a line feed or a NUL byte";
    else if (bTrim && KorTrim(strText).size() != strText.size())
        pszWhy = " has white space at an end";
    return pszWhy != nullptr ? KorConcat({strPart, pszWhy}) : std::string();
}

} // namespace

std::string KorIniWhyNotStorable(const SKorIniName& oName, std::string_view strValue)
{
    std::string strWhy = WhyNot("the section's name", oName.m_strSection, ']', false);
    if (!strWhy.empty())
        return strWhy;
    if (oName.m_strOption.empty())
        return "the option has no name";
    if (oName.m_strOption.front() == '[')
        return "the option's name begins with \"[\", as a header does";
    strWhy = WhyNot("the option's name", oName.m_strOption, '=', true);
    return !strWhy.empty() ? strWhy : WhyNot("the value", strValue, '#', true);
}
