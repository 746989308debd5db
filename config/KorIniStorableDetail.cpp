#include "config/KorIniEditDetail.h"
#include "text/KorStringDetail.h"

namespace
{

constexpr std::string_view NUL("\0", 1);

bool Holds(std::string_view strText, std::string_view strPart)
{
    return strText.find(strPart) != std::string_view::npos;
}

bool HasBlankEnd(std::string_view strText)
{
    return KorLTrim(KorRTrim(strText)).size() != strText.size();
}

const char* WhyNotSection(std::string_view strSection)
{
    if (Holds(strSection, "]"))
        return "the section's name holds \"]\", where it would end";
    if (Holds(strSection, "#"))
        return "the section's name holds \"#\", which begins a comment";
    if (Holds(strSection, "\n") || Holds(strSection, NUL))
        return "the section's name holds a line feed or a NUL byte";
    return nullptr;
}

const char* WhyNotOption(std::string_view strOption)
{
    if (strOption.empty())
        return "the option has no name";
    if (strOption.front() == '[')
        return "the option's name begins with \"[\", as a header does";
    if (Holds(strOption, "="))
        return "the option's name holds \"=\", where it would end";
    if (Holds(strOption, "#"))
        return "the option's name holds \"#\", which begins a comment";
    if (Holds(strOption, "\n") || Holds(strOption, NUL))
        return "the option's name holds a line feed or a NUL byte";
    return HasBlankEnd(strOption) ? "the option's name has white space at an end" : nullptr;
}

const char* WhyNotValue(std::string_view strValue)
{
    if (Holds(strValue, "#"))
        return "the value holds \"#\", which begins a comment";
    if (Holds(strValue, "\n") || Holds(strValue, NUL))
        return "the value holds a line feed or a NUL byte";
    return HasBlankEnd(strValue) ? "the value has white space at an end" : nullptr;
}

} // namespace

const char* KorIniWhyNotStorable(const SKorIniChange& oChange)
{
    if (oChange.m_eKind != SKorIniChange::CHANGE_SET)
        return nullptr;
    const char* pszWhy = WhyNotSection(oChange.m_strSection);
    if (pszWhy == nullptr)
        pszWhy = WhyNotOption(oChange.m_strOption);
    return pszWhy != nullptr ? pszWhy : WhyNotValue(oChange.m_strValue);
}
