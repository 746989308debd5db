#pragma once

/// @file
/// An INI file that survives what happens to a board.
///
/// For every new program; CKorIniFile is what existing ones are compiled against. A program changes
/// the base class of its options and keeps its `DoOptionExchange`:
///
///     class CMyOptions : public CKorSafeIniFile
///     {
///     public:
///         CMyOptions() : CKorSafeIniFile("gateway.ini", PATH_PROGRAM_DIR) {}
///         using CKorSafeIniFile::DoOptionExchange;
///         void DoOptionExchange(CKorIniOptionExchange* pExchange) override
///         {
///             IOX_Std<std::string>(pExchange, "Port", "Device", m_strDevice, "/dev/ttyAM0");
///         }
///         std::string m_strDevice;
///     };
///
/// Both classes read the same from every file, and each reads what the other has written. The text
/// format has a page of its own, `docs/ini-format.md`.

#include "config/KorIniFile.h"
#include "config/KorIniFinding.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// @addtogroup settings
/// @{

class CKorIniWatch;
class CKorLockedFile;
struct SKorFileImage;
struct SKorIniChange;

/// The options of a program in an INI file that is edited, not rewritten.
///
/// - The file is at every moment a whole old or a whole new one, through SIGKILL, power loss, a
///   full disk, a size limit and several writers. Readers never wait. See KorReplaceFile() for how,
///   for which files are refused, and for the name of what SIGKILL may leave behind.
/// - Only the value of an option that was set changes; every other byte stays, comments, blank
///   lines, duplicates, line ends and a byte order mark among them. A new option goes behind the
///   last one of its section's first block, one of the section without a name to the start of the
///   file when it is its first; a new section goes to the end behind a blank line.
/// - Nothing is written when that would change no byte, when the file could not be read for any
///   reason but that there is none, or when the program's exchange throws.
/// - Writers of one file, in threads or processes, take turns: what one has set is applied to what
///   the file holds when its turn comes, so that different options all keep their changes. A writer
///   waits 2 s at most. The program's exchange runs outside these turns. Who changes the file out of
///   turn, with an editor, is noticed up to the last look at it, right before the new file takes
///   its name.
/// - What the format cannot hold is refused: a name of an option that is empty, begins with "[",
///   has white space at an end or holds "=", "#", a line feed or a NUL byte; a name of a section
///   with "]", "#", a line feed or a NUL byte; a value with white space at an end, "#", a line feed
///   or a NUL byte. All that is accepted reads back equal.
/// - false of an operation that writes comes with GetLastError() or a finding, and with an
///   unchanged file, but for the one case that WasWritten() tells.
///
/// These doors lead around all of that, since the operations of the base class are not virtual:
/// ReadOption(), WriteOption(), ReadAllSections() and ReadAllSectionEntries() called through a
/// `CKorIniFile&` or with the base class's name, and a CKorIniOptionExchange that the program
/// itself makes for this object. They rewrite the file in place, run the program's exchange, and
/// know nothing of these findings and errors.
///
/// Inside `DoOptionExchange` the operations of the exchange work on a copy of the file's lines;
/// what counts of it afterwards is what was set, and what was removed by name. An object serves one
/// thread at a time. A null text reads as the empty text.
class TARVO_EXT_API CKorSafeIniFile : public CKorIniFile
{
public:
    /// Names the file, as CKorIniFile does; it is not opened yet.
    /// @param pszName  the file's name; null or empty for "Konfig.ini"
    /// @param nMode    where the name belongs
    CKorSafeIniFile(const char* pszName, EPathMode nMode);

    ~CKorSafeIniFile() override;

    /// Reads all options of the program from the file, or sets each that its exchange names.
    /// @param bWriteBack  true writes
    /// @return reading: false when the file cannot be read, with the program's variables as they
    ///         were; a missing file is one without options, with `ENOENT` kept. Writing: false when
    ///         nothing was written although something should have been, or with WasWritten().
    bool UpdateOptions(bool bWriteBack) override;

    /// Reads one option, without the program's exchange.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name
    /// @param pszDefault  the result when there is no such option, or no reading of the file
    /// @return the value as it is stored, enclosing quotes included
    std::string ReadOption(const char* pszSection, const char* pszOption, const char* pszDefault);

    /// Sets one option, without the program's exchange.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name
    /// @param pszValue    the value, stored as it is; quoting is the caller's business
    /// @return whether the file holds it for good
    bool WriteOption(const char* pszSection, const char* pszOption, const char* pszValue);

    /// Removes every line of an option, with the comment in it; no header.
    /// @return whether the file is without it for good; true for one that is not there
    bool RemoveOption(const char* pszSection, const char* pszOption);

    /// Removes a section: each of its headers, with what stands from there to the last option below
    /// it and the blank lines that follow. The lines behind those, comments mostly, stay. Of the
    /// lines before the first header it is those from the first option on.
    /// @return whether the file is without it for good; true for one that is not there
    bool RemoveSection(const char* pszSection);

    /// Tells whether the file has an option, an empty one too.
    /// @return false too when the file cannot be read
    bool HasOption(const char* pszSection, const char* pszOption);

    /// Lists the file's sections, without the program's exchange.
    /// @param vecSections  receives the names, ascending by bytes; none of a file that cannot be
    ///                     read
    void ReadAllSections(std::vector<std::string>& vecSections);

    /// Lists the options of a section, without the program's exchange.
    /// @param pszSection  the section
    /// @param vecOptions  receives the names, ascending by bytes; none of a file that cannot be
    ///                    read
    void ReadAllSectionEntries(const char* pszSection, std::vector<std::string>& vecOptions);

    /// Whether the last operation replaced the file. Together with a false of that operation it
    /// means that the directory could not be synced: the file is a whole new one, which a power
    /// loss might turn back into the whole old one.
    bool WasWritten() const { return m_bWritten; }

    /// `errno` of the last operation; 0 when all went well.
    ///
    /// | `errno`  | Reason                                                                   |
    /// |----------|--------------------------------------------------------------------------|
    /// | `ENOENT` | there is no file (nor, where one was to be written, a directory for it)  |
    /// | `EBUSY`  | other writers held the file's directory for 2 s                          |
    /// | `ESTALE` | somebody changed the file, out of turn, while it was being replaced      |
    /// | `EINVAL` | a name or a value was refused, see GetFindings(); or it is no file       |
    /// | others   | as KorReadFile() and KorReplaceFile()                                    |
    int GetLastError() const { return m_nLastError; }

    /// What the last operation found: values that the program's exchange could not take, options
    /// that it does not know, names and values that were refused, failures of the system. They come
    /// without a value that was refused, which may be a secret. KorCheckIniFile() checks the lines
    /// themselves.
    const std::vector<SKorIniFinding>& GetFindings() const { return m_vecFindings; }

    /// Makes UpdateOptions() report the options in the file that the program's exchange never asked
    /// for; not so after construction.
    void SetReportUnknown(bool bReport) { m_bReportUnknown = bReport; }

    /// Whether the file is another one, or another content, than at the end of the last operation.
    /// Device, inode, size and the times of modification and change tell. Before the first
    /// operation: whether there is a file.
    bool HasChangedOnDisk() const;

protected:
    bool m_bWritten;                           ///< the last operation replaced the file
    int m_nLastError;                          ///< `errno` of the last operation
    bool m_bReportUnknown;                     ///< unknown options are findings
    std::vector<SKorIniFinding> m_vecFindings; ///< of the last operation
    std::array<int64_t, 7> m_anState;          ///< the file at the end of the last operation

private:
    TARVO_EXT_LOCAL void Begin();
    TARVO_EXT_LOCAL bool Fail(const char* pszDoing, int nError);
    TARVO_EXT_LOCAL bool Read(SKorFileImage& roImage);
    TARVO_EXT_LOCAL void TakeFindings(CKorIniWatch& roWatch, const SKorFileImage& oRead);
    TARVO_EXT_LOCAL bool Look(const char* pszSection, const char* pszOption,
                              std::string* pstrValue);
    TARVO_EXT_LOCAL void List(bool bSections, const char* pszSection,
                              std::vector<std::string>& rvecNames);
    TARVO_EXT_LOCAL bool Apply(int nKind, const char* pszSection, const char* pszOption,
                               const char* pszValue);
    TARVO_EXT_LOCAL bool Check(const SKorFileImage& oRead, const SKorIniChange& oChange);
    TARVO_EXT_LOCAL bool Write(const SKorFileImage& oRead,
                               const std::vector<SKorIniChange>& vecChanges);
    TARVO_EXT_LOCAL bool Replace(CKorLockedFile& roFile, const SKorFileImage& oNow,
                                 const std::string& strEdited);
};

/// @}
