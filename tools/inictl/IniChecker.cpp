#include "IniChecker.h"

#include "text/KorStringFunc.h"

#include <algorithm>

namespace
{

using Remarks = CIniChecker::Remarks;

std::string Quoted(const std::string& strText)
{
    return "\"" + strText + "\"";
}

void CheckBrackets(const std::string& strLine, const std::string& strSection, Remarks& vecRemarks)
{
    const std::string strText = strLine.substr(0, strLine.find('#'));
    const size_t nClose = strText.find(']');
    if (nClose == std::string::npos) {
        vecRemarks.push_back("no \"]\": the section is " + Quoted(strSection));
        return;
    }
    const std::string strBehind = KorStrTrim(strText.c_str() + nClose + 1);
    if (!strBehind.empty())
        vecRemarks.push_back("text behind \"]\" is lost in a rewrite: " + strBehind);
}

void CheckCharacters(const std::string& strLine, const SKorIniParts& oParts, Remarks& vecRemarks)
{
    const std::string strValue(oParts.m_strValue);
    if (oParts.m_strName.front() == ';')
        vecRemarks.push_back("\";\" starts no comment: this is the option " +
                             Quoted(std::string(oParts.m_strName)));

    const size_t nHash = strLine.find('#');
    if (nHash == std::string::npos)
        return;
    const auto itHash = strLine.begin() + static_cast<std::ptrdiff_t>(nHash);
    if (std::count(strLine.begin(), itHash, '"') % 2 == 1)
        vecRemarks.push_back("\"#\" starts a comment inside quotes too: the value is " + strValue);
    else if (!strValue.empty() && strValue.back() == strLine[nHash - 1])
        vecRemarks.push_back("\"#\" starts a comment wherever it stands: the value is " + strValue);
}

constexpr char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";

} // namespace

CIniChecker::CIniChecker(bool bCaseSensitive) : m_oRule(bCaseSensitive), m_oDocument(m_apLines)
{
    m_oDocument.Clear(m_oRule);
}

CIniChecker::Remarks CIniChecker::CheckLine(const std::string& strLine)
{
    ++m_nLine;
    Remarks vecRemarks;
    if (m_nLine == 1 && strLine.compare(0, 3, BYTE_ORDER_MARK) == 0)
        vecRemarks.emplace_back("a byte order mark stands before the line and is a part of it");

    const Document::SPlaced oPlaced = m_oDocument.Place(strLine, m_strSection);
    if (oPlaced.m_ePlace == Document::PLACE_END || oPlaced.m_ePlace == Document::PLACE_ABOVE)
        oPlaced.m_pLine->m_nLine = m_nLine;
    const SKorIniParts oParts = KorIniParse(strLine);
    if (oParts.m_eKind == EKorIniLine::HEADER)
        CheckBrackets(strLine, m_strSection, vecRemarks);
    else if (oParts.m_eKind == EKorIniLine::OPTION)
        CheckCharacters(strLine, oParts, vecRemarks);
    else if (oParts.m_eKind == EKorIniLine::OTHER && oParts.m_strComment.front() != '#')
        vecRemarks.emplace_back("no option: kept as it is");
    CheckPlace(oParts, oPlaced, vecRemarks);
    CheckHeaderAbove(oPlaced, vecRemarks);
    return vecRemarks;
}

void CIniChecker::CheckPlace(const SKorIniParts& oParts, const Document::SPlaced& oPlaced,
                             Remarks& vecRemarks) const
{
    const std::string strOption = Quoted(std::string(oParts.m_strName));
    const std::string strSection = "section " + Quoted(m_strSection) + " was opened in line ";
    if (oPlaced.m_ePlace == Document::PLACE_ABOVE)
        vecRemarks.push_back(strSection + std::to_string(oPlaced.m_pOpened->m_nLine) + ": option " +
                             strOption + " moves there");
    if (oPlaced.m_ePlace != Document::PLACE_COMMENT)
        return;
    const std::string strLine = std::to_string(oPlaced.m_pLine->m_nLine);
    if (oParts.m_eKind == EKorIniLine::HEADER)
        vecRemarks.push_back(strSection + strLine + ": this header becomes a comment");
    else
        vecRemarks.push_back("option " + strOption + " is set in line " + strLine +
                             ": this line becomes a comment");
}

/// A repeated header becomes a comment, so that what stays below it has another one above.
void CIniChecker::CheckHeaderAbove(const Document::SPlaced& oPlaced, Remarks& vecRemarks)
{
    if (oPlaced.m_ePlace != Document::PLACE_END)
        return;
    const SLine& oLine = *oPlaced.m_pLine;
    if (oLine.m_bSection)
        m_strHeaderAbove = oLine.m_strSection;
    else if (!oLine.m_strOption.empty() && !m_oRule.Equal(oLine.m_strSection, m_strHeaderAbove))
        vecRemarks.push_back("option " + Quoted(oLine.m_strOption) + " moves to section " +
                             Quoted(m_strHeaderAbove) + " in a rewrite");
}
