#include "config/KorIniReportDetail.h"

#include "config/KorIniTextDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <cstring>

void KorIniMakePrintable(std::string& rstrText)
{
    std::replace_if(
        rstrText.begin(), rstrText.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; },
        '?');
}

std::string KorIniLabel(const SKorIniName& oName)
{
    std::string strLabel;
    if (!oName.m_strSection.empty())
        strLabel.append("[").append(oName.m_strSection).append("]");
    if (!strLabel.empty() && !oName.m_strOption.empty())
        strLabel += ' ';
    strLabel += oName.m_strOption;
    KorIniMakePrintable(strLabel);
    return strLabel;
}

SKorIniFinding KorIniFindingOf(SKorIniFinding::EKind eKind, unsigned int nLine,
                               const SKorIniName& oName,
                               std::initializer_list<std::string_view> lstText)
{
    return {eKind, nLine, std::string(oName.m_strSection), std::string(oName.m_strOption),
            KorConcat(lstText)};
}

void KorIniAdd(std::vector<SKorIniFinding>& rvecFindings, SKorIniFinding oFinding)
{
    rvecFindings.push_back(std::move(oFinding));
}

SKorIniFinding KorIniNotStorable(const SKorIniName& oName, std::string_view strWhy)
{
    return KorIniFindingOf(SKorIniFinding::FINDING_NOT_STORABLE, 0, oName,
                           {KorIniLabel(oName), " cannot be stored: ", strWhy});
}

SKorIniFinding KorIniFailure(const char* pszDoing, int nError)
{
    return KorIniFindingOf(SKorIniFinding::FINDING_IO_ERROR, 0, {},
                           {"the file cannot be ", pszDoing, ": ", std::strerror(nError)});
}

void KorIniAddLineNumbers(std::string_view strText, CKorIniNameRule oRule,
                          std::vector<SKorIniFinding>& rvecFindings)
{
    CKorIniNameList oNames(oRule);
    for (const SKorIniFinding& oFinding : rvecFindings)
        oNames.Add({oFinding.m_strSection, oFinding.m_strOption});
    CKorIniText oLine(strText);
    while (!rvecFindings.empty() && oLine.Next()) {
        if (!oLine.Is(EKorIniLine::OPTION))
            continue;
        const size_t nName = oNames.Find({oLine.Section(), oLine.Parts().m_strName});
        if (nName != CKorIniNameList::NONE && oNames.Note(nName) == 0)
            oNames.Note(nName) = oLine.Number();
    }
    for (SKorIniFinding& oFinding : rvecFindings) {
        const size_t nName = oNames.Find({oFinding.m_strSection, oFinding.m_strOption});
        if (oFinding.m_nLine == 0)
            oFinding.m_nLine = oNames.Note(nName);
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
            oSeen.Note(oSeen.Add(oName))++ != 0)
            continue;
        KorIniAdd(rvecFindings,
                  KorIniFindingOf(SKorIniFinding::FINDING_UNKNOWN_OPTION, oLine.Number(), oName,
                                  {KorIniLabel(oName), " is no option of this program"}));
    }
}
