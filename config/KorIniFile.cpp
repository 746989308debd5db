#include "config/KorIniFile.h"

#include "config/KorOptionExchange.h"
#include "fs/KorFile.h"
#include "fs/KorPathFunc.h"
#include "text/KorStringDetail.h"

CKorIniFile::CKorIniFile(const char* pszName, EPathMode nMode)
    : m_strIniFileName(KorText(pszName)), m_bCaseSensitiv(false)
{
    if (m_strIniFileName.empty())
        m_strIniFileName = "Konfig.ini";
    if (nMode == PATH_PROGRAM_DIR || nMode == PATH_WORK_DIR) {
        const int nDirectory =
            nMode == PATH_PROGRAM_DIR ? CKorFile::WORKDIR_PROGRAM : CKorFile::WORKDIR_CURRENT;
        m_strIniFileName = MakePathAbsolute(m_strIniFileName.c_str(),
                                            CKorFile::GetCurrentWorkDir(nDirectory).c_str());
    }
}

CKorIniFile::CKorIniFile() : m_bCaseSensitiv(false) {}

CKorIniFile::~CKorIniFile() = default;

std::string CKorIniFile::GetIniFileName() const
{
    return m_strIniFileName;
}

void CKorIniFile::SetCasesensitiv(bool bCaseSensitiv)
{
    m_bCaseSensitiv = bCaseSensitiv;
}

bool CKorIniFile::IsCaseSensitiv() const
{
    return m_bCaseSensitiv;
}

bool CKorIniFile::UpdateOptions(bool bWriteBack)
{
    CKorIniOptionExchange oExchange(this, bWriteBack);
    DoOptionExchange(&oExchange);
    return true;
}

void CKorIniFile::DoOptionExchange(CKorConfigExchange* pExchange)
{
    DoOptionExchange(static_cast<CKorIniOptionExchange*>(pExchange));
}

void CKorIniFile::DoOptionExchange(CKorIniOptionExchange*) {}

// What the texts point to may change while the program exchanges its options.
std::string CKorIniFile::ReadOption(const char* pszSection, const char* pszOption,
                                    const char* pszDefault)
{
    const std::string strSection(KorText(pszSection));
    const std::string strOption(KorText(pszOption));
    std::string strValue(KorText(pszDefault));
    CKorIniOptionExchange oExchange(this, false);
    DoOptionExchange(&oExchange);
    oExchange.GetOptionString(strSection.c_str(), strOption.c_str(), strValue);
    return strValue;
}

void CKorIniFile::WriteOption(const char* pszSection, const char* pszOption, const char* pszValue)
{
    CKorIniOptionExchange oExchange(this, true);
    oExchange.SetOptionString(pszSection, pszOption, pszValue);
    DoOptionExchange(&oExchange);
}

void CKorIniFile::ReadAllSections(std::vector<std::string>& vecSections)
{
    CKorIniOptionExchange oExchange(this, false);
    DoOptionExchange(&oExchange);
    oExchange.GetSections(vecSections);
}

void CKorIniFile::ReadAllSectionEntries(const char* pszSection,
                                        std::vector<std::string>& vecOptions)
{
    const std::string strSection(KorText(pszSection));
    CKorIniOptionExchange oExchange(this, false);
    DoOptionExchange(&oExchange);
    oExchange.GetOptions(strSection.c_str(), vecOptions);
}
