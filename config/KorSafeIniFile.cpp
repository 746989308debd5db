#include "config/KorSafeIniFile.h"

#include "config/KorIniEditDetail.h"
#include "config/KorIniReportDetail.h"
#include "config/KorIniTextDetail.h"
#include "config/KorIniWatchDetail.h"
#include "config/KorOptionExchange.h"
#include "fs/KorLockedFileDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <cerrno>

namespace
{

/// Steps to the line in force of an option. @return false when there is none
bool Find(CKorIniText& roLine, CKorIniNameRule oRule, const SKorIniName& oName)
{
    while (roLine.Next()) {
        if (roLine.Is(EKorIniLine::OPTION) &&
            oRule.Equal(roLine.Parts().m_strName, oName.m_strOption) &&
            oRule.Equal(roLine.Section(), oName.m_strSection))
            return true;
    }
    return false;
}

/// What the program has done to the options in its exchange.
std::vector<SKorIniChange> ChangesOf(CKorIniOptionExchange& oExchange, const CKorIniWatch& oWatch)
{
    std::vector<SKorIniChange> vecChanges;
    const CKorIniNameList& oNames = oWatch.Names();
    const size_t nNames = oNames.Size();
    for (size_t i = 0; i < nNames; ++i) {
        std::string strValue;
        const bool bExists = oExchange.GetOptionString(oNames.Section(i).c_str(),
                                                       oNames.Option(i).c_str(), strValue);
        const unsigned int nUses = oWatch.Uses(i);
        if (bExists ? (nUses & CKorIniWatch::USE_SET) != 0 : nUses != CKorIniWatch::USE_ASKED)
            vecChanges.push_back(
                {bExists ? SKorIniChange::CHANGE_SET : SKorIniChange::CHANGE_REMOVE,
                 oNames.Section(i), oNames.Option(i), std::move(strValue)});
    }
    return vecChanges;
}

} // namespace

CKorSafeIniFile::CKorSafeIniFile(const char* pszName, EPathMode nMode)
    : CKorIniFile(pszName, nMode),
      m_bWritten(false),
      m_nLastError(0),
      m_bReportUnknown(false),
      m_anState{}
{
}

CKorSafeIniFile::~CKorSafeIniFile() = default;

bool CKorSafeIniFile::UpdateOptions(bool bWriteBack)
{
    Begin();
    SKorFileImage oImage;
    if (!Read(oImage))
        return false;

    CKorIniWatch oWatch(CKorIniNameRule(m_bCaseSensitiv), oImage.m_strContent);
    CKorIniFile oNoFile;
    oNoFile.SetCasesensitiv(m_bCaseSensitiv);
    CKorIniOptionExchange oExchange(&oNoFile, bWriteBack);
    oWatch.Attach(oExchange);
    DoOptionExchange(&oExchange);

    const bool bComplete = oWatch.Findings().empty();
    TakeFindings(oWatch, oImage);
    if (!bWriteBack)
        return true;
    m_nLastError = bComplete ? m_nLastError : EINVAL;
    return bComplete && Write(oImage, ChangesOf(oExchange, oWatch));
}

/// Takes over what the exchange found, with line numbers, and looks for unknown options if asked.
void CKorSafeIniFile::TakeFindings(CKorIniWatch& roWatch, const SKorFileImage& oRead)
{
    const CKorIniNameRule oRule(m_bCaseSensitiv);
    m_vecFindings = std::move(roWatch.Findings());
    KorIniAddLineNumbers(oRead.m_strContent, oRule, m_vecFindings);
    if (m_bReportUnknown)
        KorIniAddUnknown(oRead.m_strContent, oRule, roWatch.Names(), m_vecFindings);
}

std::string CKorSafeIniFile::ReadOption(const char* pszSection, const char* pszOption,
                                        const char* pszDefault)
{
    std::string strValue;
    if (!Look(pszSection, pszOption, &strValue))
        strValue = KorText(pszDefault);
    return strValue;
}

bool CKorSafeIniFile::HasOption(const char* pszSection, const char* pszOption)
{
    return Look(pszSection, pszOption, nullptr);
}

/// Looks an option up in the file.
/// @param pstrValue  receives its value, unless it is null
bool CKorSafeIniFile::Look(const char* pszSection, const char* pszOption, std::string* pstrValue)
{
    Begin();
    SKorFileImage oImage;
    Read(oImage);
    CKorIniText oLine(oImage.m_strContent);
    const bool bFound =
        Find(oLine, CKorIniNameRule(m_bCaseSensitiv), {KorText(pszSection), KorText(pszOption)});
    if (bFound && pstrValue != nullptr)
        *pstrValue = oLine.Parts().m_strValue;
    return bFound;
}

bool CKorSafeIniFile::WriteOption(const char* pszSection, const char* pszOption,
                                  const char* pszValue)
{
    return Apply(SKorIniChange::CHANGE_SET, pszSection, pszOption, pszValue);
}

bool CKorSafeIniFile::RemoveOption(const char* pszSection, const char* pszOption)
{
    return Apply(SKorIniChange::CHANGE_REMOVE, pszSection, pszOption, nullptr);
}

bool CKorSafeIniFile::RemoveSection(const char* pszSection)
{
    return Apply(SKorIniChange::CHANGE_REMOVE_SECTION, pszSection, nullptr, nullptr);
}

void CKorSafeIniFile::ReadAllSections(std::vector<std::string>& vecSections)
{
    List(true, nullptr, vecSections);
}

void CKorSafeIniFile::ReadAllSectionEntries(const char* pszSection,
                                            std::vector<std::string>& vecOptions)
{
    List(false, pszSection, vecOptions);
}

/// Lists all sections, or the options of one.
void CKorSafeIniFile::List(bool bSections, const char* pszSection,
                           std::vector<std::string>& rvecNames)
{
    Begin();
    SKorFileImage oImage;
    Read(oImage);
    const CKorIniNameRule oRule(m_bCaseSensitiv);
    std::vector<std::string_view> vecNames;
    CKorIniText oLine(oImage.m_strContent);
    while (oLine.Next()) {
        const bool bListed = bSections ? oLine.Is(EKorIniLine::HEADER) && !oLine.Section().empty()
                                       : oLine.Is(EKorIniLine::OPTION) &&
                                             oRule.Equal(oLine.Section(), KorText(pszSection));
        if (bListed)
            KorAdd(vecNames, oLine.Parts().m_strName);
    }
    rvecNames = KorIniSortedOnce(vecNames, oRule);
}

bool CKorSafeIniFile::HasChangedOnDisk() const
{
    return KorFileStateOf(m_strIniFileName.c_str()) != m_anState;
}

void CKorSafeIniFile::Begin()
{
    m_bWritten = false;
    m_nLastError = 0;
    m_vecFindings.clear();
}

bool CKorSafeIniFile::Fail(const char* pszDoing, int nError)
{
    m_nLastError = nError;
    KorIniAdd(m_vecFindings, KorIniFailure(pszDoing, nError));
    return false;
}

/// Reads the file; a missing one is an empty one.
bool CKorSafeIniFile::Read(SKorFileImage& roImage)
{
    if (roImage.Read(m_strIniFileName.c_str())) {
        m_anState = roImage.m_oState;
        return true;
    }
    const int nError = errno;
    m_anState = KorFileStateOf(m_strIniFileName.c_str());
    m_nLastError = nError;
    return nError == ENOENT || Fail("read", nError);
}

bool CKorSafeIniFile::Apply(int nKind, const char* pszSection, const char* pszOption,
                            const char* pszValue)
{
    Begin();
    SKorFileImage oImage;
    std::vector<SKorIniChange> vecChanges(1);
    vecChanges[0].m_eKind = static_cast<SKorIniChange::EKind>(nKind);
    vecChanges[0].m_strSection = KorText(pszSection);
    vecChanges[0].m_strOption = KorText(pszOption);
    vecChanges[0].m_strValue = KorText(pszValue);
    return Read(oImage) && Write(oImage, vecChanges);
}

/// Refuses what the format cannot hold, unless the file holds it already.
bool CKorSafeIniFile::Check(const SKorFileImage& oRead, const SKorIniChange& oChange)
{
    const SKorIniName oName{oChange.m_strSection, oChange.m_strOption};
    std::string strWhy;
    if (oChange.m_eKind == SKorIniChange::CHANGE_SET)
        strWhy = KorIniWhyNotStorable(oName, oChange.m_strValue);
    if (strWhy.empty())
        return true;
    CKorIniText oLine(oRead.m_strContent);
    if (Find(oLine, CKorIniNameRule(m_bCaseSensitiv), oName) &&
        oLine.Parts().m_strValue == oChange.m_strValue)
        return true;
    m_nLastError = EINVAL;
    KorIniAdd(m_vecFindings, KorIniNotStorable(oName, strWhy));
    return false;
}

/// Makes the changes in the file. What was read of it out of turn tells whether there is anything
/// to do, and spares a second edit where nobody came in between.
bool CKorSafeIniFile::Write(const SKorFileImage& oRead,
                            const std::vector<SKorIniChange>& vecChanges)
{
    bool bStorable = true;
    for (const SKorIniChange& oChange : vecChanges)
        bStorable = Check(oRead, oChange) && bStorable;
    const CKorIniNameRule oRule(m_bCaseSensitiv);
    std::string strEdited;
    if (!bStorable || !KorIniEdit(oRead.m_strContent, oRule, vecChanges, strEdited))
        return bStorable;

    CKorLockedFile oFile(m_strIniFileName.c_str());
    SKorFileImage oNow;
    if (!oFile.Lock())
        return Fail("locked", errno);
    if (!Read(oNow))
        return false;
    if (oNow.m_strContent != oRead.m_strContent &&
        !KorIniEdit(oNow.m_strContent, oRule, vecChanges, strEdited))
        return true;
    return Replace(oFile, oNow, strEdited);
}

bool CKorSafeIniFile::Replace(CKorLockedFile& roFile, const SKorFileImage& oNow,
                              const std::string& strEdited)
{
    const bool bDone = roFile.Replace(strEdited, &oNow);
    const int nError = errno;
    m_bWritten = roFile.WasReplaced();
    if (m_bWritten)
        m_anState = roFile.GetState();
    m_nLastError = 0;
    return bDone || Fail("replaced", nError);
}
