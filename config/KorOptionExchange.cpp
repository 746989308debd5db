#include "config/KorOptionExchange.h"

#include "config/KorIniFile.h"
#include "config/KorIniLinesDetail.h"
#include "text/KorStringDetail.h"
#include "text/KorStringFunc.h"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <unordered_set>

namespace
{

/// Each name once by the case rule, in the form that comes first, ascending by bytes.
std::vector<std::string> SortedOnce(const std::vector<std::string_view>& vecNames,
                                    CKorIniNameRule oRule)
{
    std::unordered_set<SKorIniName, CKorIniNameRule, CKorIniNameRule> setSeen(0, oRule, oRule);
    std::vector<std::string> vecOnce;
    for (const std::string_view strName : vecNames) {
        if (setSeen.insert({strName, {}}).second)
            vecOnce.emplace_back(strName);
    }
    std::sort(vecOnce.begin(), vecOnce.end());
    return vecOnce;
}

} // namespace

// Delegating makes the destructor free what was read when reading runs out of memory.
CKorIniOptionExchange::CKorIniOptionExchange(CKorIniFile* pIniFile, bool bWriteBack)
    : CKorIniOptionExchange()
{
    m_pIniFile = pIniFile;
    m_bWriteBack = bWriteBack;
    ReadIniOptions();
}

CKorIniOptionExchange::CKorIniOptionExchange() : CKorConfigExchange(false), m_pIniFile(nullptr) {}

CKorIniOptionExchange::~CKorIniOptionExchange()
{
    if (m_bWriteBack && m_bModified)
        WriteIniOptions();
    FreeLines();
}

void CKorIniOptionExchange::FreeLines()
{
    for (const SOptionLine* pLine : m_apOptionLines)
        delete pLine;
    m_apOptionLines.clear();
}

bool CKorIniOptionExchange::IsCaseSensitiv() const
{
    return m_pIniFile != nullptr && m_pIniFile->IsCaseSensitiv();
}

void CKorIniOptionExchange::ReadIniOptions()
{
    std::ifstream oFile;
    if (m_pIniFile != nullptr)
        oFile.open(m_pIniFile->GetIniFileName());
    m_bModified = false;
    FreeLines();

    CKorIniIndexedLines oLines(*this, CKorIniNameRule(IsCaseSensitiv()));
    std::string strCurrentSection;
    std::string strLine;
    // A read that fails in the middle of a line still yields the line's beginning.
    while (oFile.is_open() && oFile.good()) {
        std::getline(oFile, strLine);
        oLines.Place(strLine, strCurrentSection);
    }
    oLines.MoveTo(m_apOptionLines);
}

void CKorIniOptionExchange::WriteIniOptions()
{
    if (m_pIniFile != nullptr) {
        std::ofstream oFile(m_pIniFile->GetIniFileName());
        for (const SOptionLine* pLine : m_apOptionLines) {
            if (pLine->m_bSection)
                oFile << std::endl;
            oFile << CreateIniLine(*pLine) << std::endl;
        }
    }
    m_bModified = false;
}

std::vector<CKorIniOptionExchange::SOptionLine*>::iterator
CKorIniOptionExchange::FindOption(const char* pszSection, const char* pszOption)
{
    return KorIniFindLine(m_apOptionLines, CKorIniNameRule(IsCaseSensitiv()),
                          {KorText(pszSection), KorText(pszOption)});
}

bool CKorIniOptionExchange::GetOptionString(const char* pszSection, const char* pszOption,
                                            std::string& strValue)
{
    const auto itLine = FindOption(pszSection, pszOption);
    if (itLine == m_apOptionLines.end())
        return false;
    strValue = (*itLine)->m_strValue;
    return true;
}

void CKorIniOptionExchange::GetSections(std::vector<std::string>& vecSections)
{
    std::vector<std::string_view> vecNames;
    for (const SOptionLine* pLine : m_apOptionLines) {
        if (!pLine->m_strSection.empty())
            vecNames.emplace_back(pLine->m_strSection);
    }
    vecSections = SortedOnce(vecNames, CKorIniNameRule(IsCaseSensitiv()));
}

void CKorIniOptionExchange::GetOptions(const char* pszSection, std::vector<std::string>& vecOptions)
{
    const CKorIniNameRule oRule(IsCaseSensitiv());
    const std::string_view strSection = KorText(pszSection);
    std::vector<std::string_view> vecNames;
    for (const SOptionLine* pLine : m_apOptionLines) {
        if (!pLine->m_strOption.empty() && oRule.Equal(pLine->m_strSection, strSection))
            vecNames.emplace_back(pLine->m_strOption);
    }
    vecOptions = SortedOnce(vecNames, oRule);
}

void CKorIniOptionExchange::SetOptionString(const char* pszSection, const char* pszOption,
                                            const char* pszValue)
{
    const auto itLine = FindOption(pszSection, pszOption);
    if (itLine != m_apOptionLines.end()) {
        (*itLine)->m_strValue = KorText(pszValue);
    } else {
        auto pLine = std::make_unique<SOptionLine>();
        pLine->m_strSection = KorText(pszSection);
        pLine->m_strOption = KorText(pszOption);
        pLine->m_strValue = KorText(pszValue);

        auto itFirst = FindOption(pszSection, nullptr);
        if (itFirst == m_apOptionLines.end()) {
            auto pHeader = std::make_unique<SOptionLine>();
            pHeader->m_strSection = pLine->m_strSection;
            pHeader->m_bSection = true;
            itFirst = m_apOptionLines.insert(itFirst, nullptr);
            *itFirst = pHeader.release();
        }
        itFirst = m_apOptionLines.insert(itFirst + 1, nullptr);
        *itFirst = pLine.release();
    }
    m_bModified = true;
}

void CKorIniOptionExchange::RemoveOption(const char* pszSection, const char* pszOption)
{
    const auto itLine = FindOption(pszSection, pszOption);
    if (itLine == m_apOptionLines.end())
        return;
    delete *itLine;
    m_apOptionLines.erase(itLine);
}

CKorIniOptionExchange::SOptionLine*
CKorIniOptionExchange::CreateOptionLine(const std::string& strLine, std::string& strCurrentSection)
{
    auto pLine = std::make_unique<SOptionLine>();
    std::string_view strText = KorLTrim(strLine);
    const size_t nComment = strText.find('#');
    if (nComment != std::string_view::npos) {
        pLine->m_strComment = strText.substr(nComment);
        strText = strText.substr(0, nComment);
    }

    const size_t nAssign = strText.find('=');
    if (!strText.empty() && strText.front() == '[') {
        strText.remove_prefix(1);
        strCurrentSection = strText.substr(0, strText.find(']'));
        pLine->m_strComment += ' ';
        pLine->m_bSection = true;
    } else if (nAssign != std::string_view::npos && nAssign > 0) {
        pLine->m_strOption = KorRTrim(strText.substr(0, nAssign));
        pLine->m_strValue = KorLTrim(KorRTrim(strText.substr(nAssign + 1)));
    } else {
        pLine->m_strComment.insert(0, strText);
    }

    if (pLine->m_strComment.empty() && pLine->m_strOption.empty())
        return nullptr;
    return pLine.release();
}

void CKorIniOptionExchange::AddOptionLine(const std::string& strLine,
                                          std::string& strCurrentSection)
{
    CKorIniDocumentLines(*this, m_apOptionLines, CKorIniNameRule(IsCaseSensitiv()))
        .Place(strLine, strCurrentSection);
}

void CKorIniOptionExchange::CommentOptionLine(SOptionLine& oLine) const
{
    SOptionLine oComment;
    oComment.m_strComment = "## COMMENTED ## " + CreateIniLine(oLine);
    oLine = std::move(oComment);
}

std::string CKorIniOptionExchange::CreateIniLine(const SOptionLine& oLine) const
{
    std::string strLine;
    if (oLine.m_bSection)
        strLine = "[" + oLine.m_strSection + "] ";
    else if (!oLine.m_strOption.empty())
        strLine = oLine.m_strOption + "=" + oLine.m_strValue + " ";
    return strLine + oLine.m_strComment;
}

template <>
void IOX_Std<std::string>(CKorIniOptionExchange* pExchange, const char* pszSection,
                          const char* pszOption, std::string& strValue,
                          const std::string& strDefault)
{
    if (pExchange->IsWriteBack()) {
        KorQuoteString(strValue, true);
        pExchange->SetOptionString(pszSection, pszOption, strValue.c_str());
        // What was read with a zero byte in it is longer than a C string tells.
        if (strValue.find('\0') != std::string::npos)
            (*pExchange->FindOption(pszSection, pszOption))->m_strValue = strValue;
    } else {
        if (!pExchange->GetOptionString(pszSection, pszOption, strValue))
            strValue = strDefault;
        KorDeQuoteString(strValue);
    }
}

template <>
void IOX_Std<char*>(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
                    char*& pszValue, char* const& pszDefault)
{
    // A buffer that is about to be filled need not hold a text yet.
    std::string strValue(pExchange->IsWriteBack() ? KorText(pszValue) : std::string_view());
    const std::string strDefault(KorText(pszDefault));
    IOX_Std<std::string>(pExchange, pszSection, pszOption, strValue, strDefault);
    if (!pExchange->IsWriteBack())
        KorFromString<char*>(pszValue, strValue);
}
