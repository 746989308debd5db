#include "IniChecker.h"

#include "text/KorStringFunc.h"

#include <algorithm>
#include <memory>

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

void CheckCharacters(const std::string& strLine, const std::string& strOption,
                     const std::string& strValue, Remarks& vecRemarks)
{
    if (strOption.front() == ';')
        vecRemarks.push_back("\";\" starts no comment: this is the option " + Quoted(strOption));

    const size_t nHash = strLine.find('#');
    if (nHash == std::string::npos)
        return;
    const auto itHash = strLine.begin() + static_cast<std::ptrdiff_t>(nHash);
    if (std::count(strLine.begin(), itHash, '"') % 2 == 1)
        vecRemarks.push_back("\"#\" starts a comment inside quotes too: the value is " + strValue);
    else if (!strValue.empty() && strValue.back() == strLine[nHash - 1])
        vecRemarks.push_back("\"#\" starts a comment wherever it stands: the value is " + strValue);
}

} // namespace

CIniChecker::CIniChecker(CKorIniFile& oFile)
{
    m_pIniFile = &oFile;
}

CIniChecker::Remarks CIniChecker::CheckLine(const std::string& strLine)
{
    ++m_nLine;
    Remarks vecRemarks;
    const std::unique_ptr<SOptionLine> pLine(CreateOptionLine(strLine, m_strSection));
    if (pLine == nullptr)
        return vecRemarks;

    const std::string& strOption = pLine->m_strOption;
    const std::string strOpened =
        "section " + Quoted(m_strSection) + " was opened in " + LineOf("");
    const std::string strSet = "option " + Quoted(strOption) + " is set in " + LineOf(strOption);

    const size_t nLines = m_apOptionLines.size();
    AddOptionLine(strLine, m_strSection);
    const SOptionLine& oPlaced = *m_apOptionLines.back();
    m_mapLineNumbers[&oPlaced] = m_nLine;

    if (pLine->m_bSection) {
        CheckBrackets(strLine, m_strSection, vecRemarks);
        if (!oPlaced.m_bSection)
            vecRemarks.push_back(strOpened + ": this header becomes a comment");
    } else if (!strOption.empty()) {
        CheckCharacters(strLine, strOption, pLine->m_strValue, vecRemarks);
        if (m_apOptionLines.size() > nLines + 1) {
            // A zero byte in a name ends it for the search, which then finds nothing.
            const auto itCopy = FindOption(m_strSection.c_str(), strOption.c_str());
            if (itCopy != m_apOptionLines.end())
                m_mapLineNumbers[*itCopy] = m_nLine;
            vecRemarks.push_back(strOpened + ": option " + Quoted(strOption) + " moves there");
        } else if (oPlaced.m_strOption.empty()) {
            vecRemarks.push_back(strSet + ": this line becomes a comment");
        }
    } else if (pLine->m_strComment.front() != '#') {
        vecRemarks.emplace_back("no option: kept as it is");
    }
    return vecRemarks;
}

/// Where the option is that was read last in the current section; where the section began for an
/// empty name.
std::string CIniChecker::LineOf(const std::string& strOption)
{
    const auto itLine = FindOption(m_strSection.c_str(), strOption.c_str());
    return itLine != m_apOptionLines.end() ? "line " + std::to_string(m_mapLineNumbers[*itLine])
                                           : "an earlier line";
}
