#include "config/KorIniGrammarDetail.h"

#include "text/KorStringDetail.h"

SKorIniParts KorIniParse(std::string_view strText)
{
    strText = KorLTrim(strText);
    if (strText.empty())
        return {};
    const std::string_view strHead = strText.substr(0, strText.find('#'));
    const std::string_view strComment = strText.substr(strHead.size());
    if (!strHead.empty() && strHead.front() == '[') {
        const std::string_view strName = strHead.substr(1);
        return {EKorIniLine::HEADER, strName.substr(0, strName.find(']')), {}, strComment};
    }
    const size_t nAssign = strHead.find('=');
    if (nAssign == std::string_view::npos || nAssign == 0)
        return {EKorIniLine::OTHER, {}, {}, strText};
    return {EKorIniLine::OPTION, KorRTrim(strHead.substr(0, nAssign)),
            KorLTrim(KorRTrim(strHead.substr(nAssign + 1))), strComment};
}

std::string KorIniRender(const SKorIniParts& oParts)
{
    std::string strLine;
    if (oParts.m_eKind == EKorIniLine::HEADER)
        strLine.append("[").append(oParts.m_strName).append("] ");
    else if (oParts.m_eKind == EKorIniLine::OPTION)
        strLine.append(oParts.m_strName).append("=").append(oParts.m_strValue).append(" ");
    return strLine.append(oParts.m_strComment);
}
