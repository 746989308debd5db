#include "config/KorOptionExchange.h"

#include "config/KorIniFile.h"
#include "config/KorIniReaderDetail.h"
#include "config/KorOptionExchangeDetail.h"
#include "fs/KorDescriptorDetail.h"
#include "text/KorStringDetail.h"
#include "text/KorStringFunc.h"

#include <fcntl.h>
#include <new>
#include <string_view>
#include <typeinfo>

namespace
{

constexpr mode_t MODE_OF_NEW = 0666;

void WriteLines(const std::string& strFile,
                const std::vector<CKorIniOptionExchange::SOptionLine*>& apLines)
{
    std::string strText;
    for (const CKorIniOptionExchange::SOptionLine* pLine : apLines) {
        if (pLine->m_bSection)
            strText += '\n';
        strText.append(KorIniRender(KorIniPartsOf(*pLine))).append("\n");
    }
    const CKorDescriptor oFile(
        open(strFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, MODE_OF_NEW));
    KorWriteAll(oFile.Get(), strText);
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

CKorIniOptionExchange::CKorIniOptionExchange()
    : CKorConfigExchange(false),
      m_pIniFile(nullptr),
      m_pDocument(std::make_unique<SDocument>(m_apOptionLines))
{
}

CKorIniOptionExchange::~CKorIniOptionExchange()
{
    if (!m_bWriteBack || !m_bModified)
        return;
    try {
        WriteIniOptions();
    } catch (const std::bad_alloc&) {
        // The text is made before the file is opened. What leaves a destructor ends the process.
    }
}

bool CKorIniOptionExchange::IsCaseSensitiv() const
{
    return m_pIniFile != nullptr && m_pIniFile->IsCaseSensitiv();
}

/// The document, ready for an operation of this class.
CKorIniOptionExchange::SDocument& CKorIniOptionExchange::Document()
{
    // A derived class may have changed the lines at any time.
    const bool bDerived = &typeid(*this) != &typeid(CKorIniOptionExchange);
    m_pDocument->Use(CKorIniNameRule(IsCaseSensitiv()), bDerived);
    return *m_pDocument;
}

void CKorIniOptionExchange::ReadIniOptions()
{
    m_bModified = false;
    m_pDocument->m_bWhole = false;
    m_pDocument->Clear(CKorIniNameRule(IsCaseSensitiv()));
    if (m_pDocument->m_pWatch != nullptr) {
        CKorIniTextLines oLines = m_pDocument->m_pWatch->Lines();
        m_pDocument->PlaceAll(oLines);
    } else if (m_pIniFile != nullptr) {
        CKorIniReader oReader(m_pIniFile->GetIniFileName());
        m_pDocument->PlaceAll(oReader);
        m_pDocument->m_bWhole = !oReader.HasFailed();
    }
}

void CKorIniOptionExchange::WriteIniOptions()
{
    if (m_pIniFile != nullptr && m_pDocument->m_bWhole)
        WriteLines(m_pIniFile->GetIniFileName(), m_pDocument->Settled());
    m_bModified = false;
}

std::vector<CKorIniOptionExchange::SOptionLine*>::iterator
CKorIniOptionExchange::FindOption(const char* pszSection, const char* pszOption)
{
    const SKorIniName oName{KorText(pszSection), KorText(pszOption)};
    m_pDocument->Note(CKorIniWatch::USE_ASKED, oName);
    return Document().HandOut(oName);
}

bool CKorIniOptionExchange::GetOptionString(const char* pszSection, const char* pszOption,
                                            std::string& strValue)
{
    const SKorIniName oName{KorText(pszSection), KorText(pszOption)};
    m_pDocument->Note(CKorIniWatch::USE_ASKED, oName);
    const SOptionLine* const pLine = Document().Find(oName);
    if (pLine != nullptr)
        strValue = pLine->m_strValue;
    return pLine != nullptr;
}

void CKorIniOptionExchange::GetSections(std::vector<std::string>& vecSections)
{
    vecSections = Document().Sections();
}

void CKorIniOptionExchange::GetOptions(const char* pszSection, std::vector<std::string>& vecOptions)
{
    vecOptions = Document().Options(KorText(pszSection));
}

void CKorIniOptionExchange::SetOptionString(const char* pszSection, const char* pszOption,
                                            const char* pszValue)
{
    const SKorIniName oName{KorText(pszSection), KorText(pszOption)};
    m_pDocument->Note(CKorIniWatch::USE_SET, oName);
    Document().Set(oName, KorText(pszValue));
    m_bModified = true;
}

void CKorIniOptionExchange::RemoveOption(const char* pszSection, const char* pszOption)
{
    const SKorIniName oName{KorText(pszSection), KorText(pszOption)};
    m_pDocument->Note(CKorIniWatch::USE_REMOVED, oName);
    Document().Remove(oName);
}

CKorIniOptionExchange::SOptionLine*
CKorIniOptionExchange::CreateOptionLine(const std::string& strLine, std::string& strCurrentSection)
{
    const SKorIniParts oParts = KorIniParse(strLine);
    if (oParts.m_eKind == EKorIniLine::BLANK)
        return nullptr;
    std::unique_ptr<SOptionLine> pLine = KorIniMakeLine<SOptionLine>(oParts, {});
    if (pLine->m_bSection)
        strCurrentSection = oParts.m_strName;
    return pLine.release();
}

void CKorIniOptionExchange::AddOptionLine(const std::string& strLine,
                                          std::string& strCurrentSection)
{
    Document().Place(strLine, strCurrentSection);
}

void CKorIniOptionExchange::CommentOptionLine(SOptionLine& oLine) const
{
    KorIniCommentOut(oLine, {});
}

std::string CKorIniOptionExchange::CreateIniLine(const SOptionLine& oLine) const
{
    return KorIniRender(KorIniPartsOf(oLine));
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
