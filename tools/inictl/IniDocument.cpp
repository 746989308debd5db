#include "IniDocument.h"

#include "config/KorIniFile.h"
#include "text/KorStringFunc.h"

#include <fstream>
#include <memory>
#include <sstream>

CIniDocument::CIniDocument(CKorIniFile& oFile) : CKorIniOptionExchange(&oFile, true) {}

bool CIniDocument::HasSection(const std::string& strSection)
{
    return FindOption(strSection.c_str(), nullptr) != m_apOptionLines.end();
}

bool CIniDocument::HasOption(const std::string& strSection, const std::string& strOption)
{
    return FindOption(strSection.c_str(), strOption.c_str()) != m_apOptionLines.end();
}

bool CIniDocument::Save()
{
    WriteIniOptions();
    return FileContent(m_pIniFile->GetIniFileName()) == Text();
}

std::string CIniDocument::Text() const
{
    std::string strText;
    for (const SOptionLine* pLine : m_apOptionLines)
        strText += (pLine->m_bSection ? "\n" : "") + CreateIniLine(*pLine) + "\n";
    return strText;
}

bool CanStandInIniFile(const std::string& strSection, const std::string& strOption,
                       const std::string& strValue)
{
    using SOptionLine = CKorIniOptionExchange::SOptionLine;

    std::string strWritten = strValue;
    KorQuoteString(strWritten, true);
    CKorIniOptionExchange oReader;
    std::string strReadSection;
    const std::unique_ptr<SOptionLine> pHeader(
        oReader.CreateOptionLine("[" + strSection + "]", strReadSection));
    const std::unique_ptr<SOptionLine> pOption(
        oReader.CreateOptionLine(strOption + "=" + strWritten, strReadSection));
    std::string strRead = pOption->m_strValue;
    KorDeQuoteString(strRead);
    return (strSection + strOption + strValue).find('\n') == std::string::npos &&
           strReadSection == strSection && pOption->m_strOption == strOption &&
           strRead == strValue && pOption->m_strComment.empty();
}

std::string FileContent(const std::string& strFile)
{
    std::ifstream oFile(strFile);
    std::ostringstream oContent;
    oContent << oFile.rdbuf();
    return oContent.str();
}
