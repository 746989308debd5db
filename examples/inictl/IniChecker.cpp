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

CIniChecker::CIniChecker(bool bCaseSensitive) : m_bCaseSensitive(bCaseSensitive) {}

CIniChecker::Remarks CIniChecker::CheckLine(const std::string& strLine)
{
    using SOptionLine = CKorIniOptionExchange::SOptionLine;

    ++m_nLine;
    Remarks vecRemarks;
    const std::unique_ptr<SOptionLine> pLine(m_oReader.CreateOptionLine(strLine, m_strSection));
    if (pLine == nullptr)
        return vecRemarks;

    if (pLine->m_bSection) {
        CheckBrackets(strLine, m_strSection, vecRemarks);
        CheckPlace("", vecRemarks);
    } else if (!pLine->m_strOption.empty()) {
        CheckCharacters(strLine, pLine->m_strOption, pLine->m_strValue, vecRemarks);
        CheckPlace(pLine->m_strOption, vecRemarks);
    } else {
        Place("");
        if (pLine->m_strComment.front() != '#')
            vecRemarks.emplace_back("no option: kept as it is");
    }
    return vecRemarks;
}

/// Places an option; a header for an empty name.
void CIniChecker::CheckPlace(const std::string& strOption, Remarks& vecRemarks)
{
    const size_t nOpened = LineOf("");
    const std::string strOpened =
        "section " + Quoted(m_strSection) + " was opened in line " + std::to_string(nOpened) + ": ";
    const size_t nSet = LineOf(strOption);

    if (nSet != 0 && strOption.empty()) {
        vecRemarks.push_back(strOpened + "this header becomes a comment");
    } else if (nSet != 0) {
        vecRemarks.push_back("option " + Quoted(strOption) + " is set in line " +
                             std::to_string(nSet) + ": this line becomes a comment");
    } else if (nOpened != 0 && m_strSection != m_strLastSection) {
        m_mapFirstLines[NameOf(strOption)] = m_nLine;
        vecRemarks.push_back(strOpened + "option " + Quoted(strOption) + " moves there");
    } else {
        Place(strOption);
    }
}

/// Takes the line as it stands.
void CIniChecker::Place(const std::string& strOption)
{
    m_mapFirstLines.try_emplace(NameOf(""), m_nLine);
    m_mapFirstLines.try_emplace(NameOf(strOption), m_nLine);
    if (!m_strSection.empty())
        m_strLastSection = m_strSection;
}

/// Where the option of the current section is, or where the section began for an empty name; 0
/// when it is nowhere.
size_t CIniChecker::LineOf(const std::string& strOption) const
{
    const auto itLine = m_mapFirstLines.find(NameOf(strOption));
    return itLine != m_mapFirstLines.end() ? itLine->second : 0;
}

CIniChecker::Name CIniChecker::NameOf(const std::string& strOption) const
{
    Name oName(m_strSection, strOption);
    if (m_bCaseSensitive)
        return oName;
    for (std::string* const pText : {&oName.first, &oName.second}) {
        for (char& c : *pText)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return oName;
}
