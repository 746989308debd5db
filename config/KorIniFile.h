#pragma once

/// @file
/// An INI file as a source of options.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#ini-files

#include "config/KorConfigBase.h"

#include <string>
#include <vector>

/// @addtogroup settings
/// @{

class CKorIniOptionExchange;

/// The options of a program in an INI file.
///
/// Derive and override DoOptionExchange(CKorIniOptionExchange*) with one IOX_Std() call per
/// option; UpdateOptions() then moves all of them at once:
///
///     class CMyOptions : public CKorIniFile
///     {
///     public:
///         CMyOptions() : CKorIniFile("gateway.ini", PATH_PROGRAM_DIR) {}
///         using CKorIniFile::DoOptionExchange;
///         void DoOptionExchange(CKorIniOptionExchange* pExchange) override
///         {
///             IOX_Std<std::string>(pExchange, "Port", "Device", m_strDevice, "/dev/ttyAM0");
///         }
///         std::string m_strDevice;
///     };
///
/// The object holds no content of the file: each operation reads the file anew. Every operation,
/// also one for a single option, runs the program's whole exchange in the same direction: a
/// ReadOption() refreshes all of the program's variables, a WriteOption() stores all of them. For
/// the same reason UpdateOptions(), ReadOption(), WriteOption(), ReadAllSections() and
/// ReadAllSectionEntries() must not be called inside DoOptionExchange(): each of them calls it
/// again, without end. What is needed there, the exchange gives: GetOptionString() and the like.
///
/// No operation reports an error. A file that cannot be opened reads as empty; where reading
/// fails, the document ends, and it is not written then. Writing empties the file first and fills
/// it line by line: one that cannot be opened for writing stays as it was, but a full disk, a size
/// limit or the end of the process on the way leaves a shortened or an empty one, and so does a
/// second writer or a reader at the same time find it. A null text reads as the empty text.
class TARVO_EXT_API CKorIniFile : public CKorConfigBase
{
public:
    /// Where a file name belongs. Any other value counts as #PATH_UNCHANGED.
    ///
    /// | Name       | Program directory | `PATH_PROGRAM_DIR`    |
    /// |------------|-------------------|-----------------------|
    /// | null       | `/opt/app/`       | `/opt/app/Konfig.ini` |
    /// | `../x.ini` | `/opt/app/`       | `/opt/x.ini`          |
    /// | `/x.ini`   | `/opt/app/`       | `/opt/app/x.ini`      |
    ///
    /// A name is always joined to the directory; one that begins with a separator is no
    /// absolute path there.
    enum EPathMode : int
    {
        PATH_UNCHANGED = 0,   ///< the name as it is, relative to the working directory at each use
        PATH_PROGRAM_DIR = 1, ///< joined to the directory of the program file
        PATH_WORK_DIR = 2     ///< joined to what is the working directory at construction
    };

    /// Names the file; it is not opened yet. The resolved name stays for the object's life, also
    /// when the working directory changes later.
    /// @param pszName  the file's name; null or empty for "Konfig.ini"
    /// @param nMode    where the name belongs
    CKorIniFile(const char* pszName, EPathMode nMode);

    /// A source without a file, which reads as empty and cannot be written.
    CKorIniFile();

    ~CKorIniFile() override;

    /// The file's name as the constructor resolved it.
    std::string GetIniFileName() const;

    /// Sets how section and option names compare from now on: byte for byte, or, as after
    /// construction, without regard to the case of ASCII letters.
    void SetCasesensitiv(bool bCaseSensitiv);

    /// Tells how section and option names compare.
    bool IsCaseSensitiv() const;

    /// Reads all options of the program from the file, or writes them to it.
    /// @param bWriteBack  true writes the file when the program's exchange sets an option
    /// @return true
    bool UpdateOptions(bool bWriteBack) override;

    /// Passes the exchange on to the typed overload.
    /// @param pExchange  a CKorIniOptionExchange
    void DoOptionExchange(CKorConfigExchange* pExchange) override;

    /// Exchanges the program's options. Does nothing here.
    virtual void DoOptionExchange(CKorIniOptionExchange* pExchange);

    /// Reads all options of the program, then one more. The texts may be variables of the program:
    /// what they are when it is called counts.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name
    /// @param pszDefault  the result when there is no such option
    /// @return the value as it is stored, enclosing quotes included
    std::string ReadOption(const char* pszSection, const char* pszOption, const char* pszDefault);

    /// Writes one option, then all options of the program, whose own value prevails over a single
    /// one of the same name.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name
    /// @param pszValue    the value, stored as it is. A "#" or a line feed in it ends the value
    ///                    when the file is read again.
    void WriteOption(const char* pszSection, const char* pszOption, const char* pszValue);

    /// Reads all options of the program and lists the file's sections.
    /// @param vecSections  receives the names, ascending by bytes
    void ReadAllSections(std::vector<std::string>& vecSections);

    /// Reads all options of the program and lists the options of a section.
    /// @param pszSection  the section
    /// @param vecOptions  receives the names, ascending by bytes
    void ReadAllSectionEntries(const char* pszSection, std::vector<std::string>& vecOptions);

protected:
    std::string m_strIniFileName; ///< name of the file, resolved
    bool m_bCaseSensitiv;         ///< names compare byte for byte
};

/// @}
