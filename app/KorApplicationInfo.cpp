#include "app/KorApplicationInfo.h"

#include "config/KorTextValue.h"
#include "text/KorStringDetail.h"

#include <climits>
#include <cstdlib>

namespace
{

const char* TextOr(const char* pszText, const char* pszDefault)
{
    return pszText != nullptr ? pszText : pszDefault;
}

/// Reads a number as a stream does: behind white space, with a sign, and nothing beyond the type.
/// @return the text behind it; null, with rnValue as it was, when there is none
const char* ReadNumber(const char* pszText, int& rnValue)
{
    char* pEnd = nullptr;
    const long long nRead = pszText != nullptr ? std::strtoll(pszText, &pEnd, 10) : 0;
    if (pEnd == pszText || nRead < INT_MIN || nRead > INT_MAX)
        return nullptr;
    rnValue = static_cast<int>(nRead);
    return pEnd;
}

/// Passes white space and one character behind it. @return null when there is none
const char* SkipSeparator(const char* pszText)
{
    while (pszText != nullptr && KorIsWhiteSpace(*pszText))
        ++pszText;
    return pszText != nullptr && *pszText != '\0' ? pszText + 1 : nullptr;
}

} // namespace

CKorApplicationInfo CKorApplicationInfo::m_oLibTarvoInfo("libTarvo", "1.0.10", "Quentor GmbH",
                                                         "Quentor libTarvo", "www.quentor.example",
                                                         "Copyright (C) 2009-2026");

CKorApplicationInfo::CKorApplicationInfo(const char* pszApplName, int nMajor, int nMinor,
                                         int nPatch, const char* pszVendorName,
                                         const char* pszApplDescription, const char* pszContact,
                                         const char* pszCopyright)
{
    SetVersion(nMajor, nMinor, nPatch);
    SetApplName(pszApplName);
    SetApplDescription(pszApplDescription);
    SetVendorName(pszVendorName);
    SetCopyright(pszCopyright);
    SetContact(pszContact);
}

CKorApplicationInfo::CKorApplicationInfo(const char* pszApplName, const char* pszVersion,
                                         const char* pszVendorName, const char* pszApplDescription,
                                         const char* pszContact, const char* pszCopyright)
    : CKorApplicationInfo(pszApplName, 0, 0, 0, pszVendorName, pszApplDescription, pszContact,
                          pszCopyright)
{
    SetVersion(pszVersion);
}

CKorApplicationInfo::~CKorApplicationInfo() = default;

void CKorApplicationInfo::SetApplName(const char* pszName)
{
    m_strApplName = TextOr(pszName, "");
}

void CKorApplicationInfo::SetApplDescription(const char* pszDescription)
{
    m_strApplDescription = TextOr(pszDescription, m_strApplName.c_str());
}

void CKorApplicationInfo::SetVendorName(const char* pszVendor)
{
    m_strVendorName = TextOr(pszVendor, "");
}

void CKorApplicationInfo::SetCopyright(const char* pszCopyright)
{
    m_strCopyright = TextOr(pszCopyright, "Copyright (C)");
}

void CKorApplicationInfo::SetContact(const char* pszContact)
{
    m_strContact = TextOr(pszContact, "");
}

void CKorApplicationInfo::SetVersion(int nMajor, int nMinor, int nPatch)
{
    m_nVersionMajor = nMajor;
    m_nVersionMinor = nMinor;
    m_nVersionPatch = nPatch;
}

void CKorApplicationInfo::SetVersion(const char* pszVersion)
{
    SetVersion(1, 0, 0);
    const char* pszRest = ReadNumber(TextOr(pszVersion, ""), m_nVersionMajor);
    pszRest = ReadNumber(SkipSeparator(pszRest), m_nVersionMinor);
    ReadNumber(SkipSeparator(pszRest), m_nVersionPatch);
}

std::string CKorApplicationInfo::GetVersion() const
{
    std::string strVersion;
    for (const int nPart : {m_nVersionMajor, m_nVersionMinor, m_nVersionPatch})
        strVersion.append(strVersion.empty() ? "" : ".").append(KorWriteSigned(nPart));
    return strVersion;
}

std::string CKorApplicationInfo::GetVersionString() const
{
    return std::string(m_strApplDescription).append(", Version ").append(GetVersion());
}

std::string CKorApplicationInfo::GetCopyrightString() const
{
    std::string strText = m_strCopyright;
    strText.append(" ").append(m_strVendorName);
    if (!m_strContact.empty())
        strText.append(" (").append(m_strContact).append(")");
    return strText;
}

CKorApplicationInfo& CKorApplicationInfo::GetLibraryInfo()
{
    return m_oLibTarvoInfo;
}
