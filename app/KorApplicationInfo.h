#pragma once

/// @file
/// The identity record of an application or a library.

#include "KorExport.h"

#include <string>

/// @addtogroup daemons
/// @{

/// Name, description, vendor, contact, copyright and version of a program, and the banner lines
/// made of them.
///
///     CKorApplicationInfo oInfo("gw", "2.5.7", "Example Ltd", "Meter gateway", "gw.example",
///                               nullptr);
///     oInfo.GetVersionString();   // "Meter gateway, Version 2.5.7"
///     oInfo.GetCopyrightString(); // "Copyright (C) Example Ltd (gw.example)"
///
/// A plain record without locking: do not change it on one thread while another reads it.
class TARVO_EXT_API CKorApplicationInfo
{
public:
    /// Sets every field with the setters below: version, name, description, vendor, copyright,
    /// contact. So a null @p pszApplDescription copies @p pszApplName.
    CKorApplicationInfo(const char* pszApplName, int nMajor, int nMinor, int nPatch,
                        const char* pszVendorName, const char* pszApplDescription,
                        const char* pszContact, const char* pszCopyright);

    /// The same with the version given as text, see SetVersion(const char*).
    CKorApplicationInfo(const char* pszApplName, const char* pszVersion, const char* pszVendorName,
                        const char* pszApplDescription, const char* pszContact,
                        const char* pszCopyright);

    virtual ~CKorApplicationInfo();

    /// Copies every field.
    CKorApplicationInfo(const CKorApplicationInfo&) = default;
    /// Copies every field.
    CKorApplicationInfo& operator=(const CKorApplicationInfo&) = default;

    /// Sets the name; null sets the empty text.
    void SetApplName(const char* pszName);
    /// Sets the description; null copies the current name.
    void SetApplDescription(const char* pszDescription);
    /// Sets the vendor; null sets the empty text.
    void SetVendorName(const char* pszVendor);
    /// Sets the copyright text, which does not name the vendor; null sets "Copyright (C)".
    void SetCopyright(const char* pszCopyright);
    /// Sets the contact, for example a web address; null sets the empty text.
    void SetContact(const char* pszContact);

    /// Sets the three version numbers, unchecked.
    void SetVersion(int nMajor, int nMinor, int nPatch);

    /// Reads the version from a text such as "2.5.7": three numbers with one character of any
    /// kind between them. Reading stops at the first thing that does not fit; numbers not read
    /// are those of version 1.0.0, so "3" gives 3.0.0 and null gives 1.0.0.
    void SetVersion(const char* pszVersion);

    /// The name.
    const std::string& GetApplName() const { return m_strApplName; }
    /// The description.
    const std::string& GetApplDescription() const { return m_strApplDescription; }
    /// The vendor.
    const std::string& GetVendorName() const { return m_strVendorName; }
    /// The contact.
    const std::string& GetContact() const { return m_strContact; }
    /// The major version.
    int GetVersionMajor() const { return m_nVersionMajor; }
    /// The minor version.
    int GetVersionMinor() const { return m_nVersionMinor; }
    /// The patch level.
    int GetVersionPatch() const { return m_nVersionPatch; }

    /// The version numbers in decimal with dots between them: "2.5.7".
    std::string GetVersion() const;

    /// The description, ", Version " and GetVersion().
    std::string GetVersionString() const;

    /// The copyright text, a blank, the vendor and, when there is one, the contact in brackets.
    /// The blank is there also without a vendor.
    std::string GetCopyrightString() const;

    /// The record of this library itself. It exists from the loading of the library to its
    /// unloading.
    static CKorApplicationInfo& GetLibraryInfo();

protected:
    std::string m_strApplName;        ///< application (or library) name
    std::string m_strApplDescription; ///< description
    std::string m_strVendorName;      ///< vendor
    std::string m_strCopyright;       ///< copyright text without the vendor
    std::string m_strContact;         ///< contact
    int m_nVersionMajor;              ///< major version
    int m_nVersionMinor;              ///< minor version
    int m_nVersionPatch;              ///< patch level

    static CKorApplicationInfo m_oLibTarvoInfo; ///< the library's own record
};

/// @}
