#include "config/KorIniReportDetail.h"

#include "config/KorIniTextDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <system_error>

std::string KorIniLabel(const SKorIniName& oName)
{
    std::string strLabel;
    if (!oName.m_strSection.empty())
        strLabel.append("[").append(oName.m_strSection).append("]");
    if (!strLabel.empty() && !oName.m_strOption.empty())
        strLabel += ' ';
    strLabel += oName.m_strOption;
    std::replace_if(
        strLabel.begin(), strLabel.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; },
        '?');
    return strLabel;
}

SKorIniFinding KorIniNotStorable(const SKorIniName& oName, const char* pszWhy)
{
    return {SKorIniFinding::FINDING_NOT_STORABLE, 0, std::string(oName.m_strSection),
            std::string(oName.m_strOption),
            KorConcat({KorIniLabel(oName), " cannot be stored: ", pszWhy})};
}

SKorIniFinding KorIniFailure(const char* pszDoing, int nError)
{
    SKorIniFinding oFinding;
    oFinding.m_eKind = SKorIniFinding::FINDING_IO_ERROR;
    oFinding.m_strText =
        KorConcat({"the file cannot be ", pszDoing, ": ", std::generic_category().message(nError)});
    return oFinding;
}

void KorIniAddLineNumbers(std::string_view strText, CKorIniNameRule oRule,
                          std::vector<SKorIniFinding>& rvecFindings)
{
    CKorIniNameList oNames(oRule);
    for (const SKorIniFinding& oFinding : rvecFindings)
        oNames.Add({oFinding.m_strSection, oFinding.m_strOption});
    std::vector<unsigned int> vecLines(oNames.Size());
    CKorIniText oLine(strText);
    while (!rvecFindings.empty() && oLine.Next()) {
        if (!oLine.Is(EKorIniLine::OPTION))
            continue;
        const size_t nName = oNames.Find({oLine.Section(), oLine.Parts().m_strName});
        if (nName != CKorIniNameList::NONE && vecLines[nName] == 0)
            vecLines[nName] = oLine.Number();
    }
    for (SKorIniFinding& oFinding : rvecFindings) {
        const size_t nName = oNames.Find({oFinding.m_strSection, oFinding.m_strOption});
        if (oFinding.m_nLine == 0)
            oFinding.m_nLine = vecLines[nName];
    }
}

void KorIniAddUnknown(std::string_view strText, CKorIniNameRule oRule,
                      const CKorIniNameList& oKnown, std::vector<SKorIniFinding>& rvecFindings)
{
    CKorIniNameList oSeen(oRule);
    CKorIniText oLine(strText);
    while (oLine.Next()) {
        const SKorIniName oName{oLine.Section(), oLine.Parts().m_strName};
        if (!oLine.Is(EKorIniLine::OPTION) || oKnown.Find(oName) != CKorIniNameList::NONE ||
            oSeen.Find(oName) != CKorIniNameList::NONE)
            continue;
        oSeen.Add(oName);
        rvecFindings.push_back({SKorIniFinding::FINDING_UNKNOWN_OPTION, oLine.Number(),
                                std::string(oName.m_strSection), std::string(oName.m_strOption),
                                KorConcat({KorIniLabel(oName), " is no option of this program"})});
    }
}
