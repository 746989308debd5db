#pragma once

/// @file
/// An INI document: reading, looking up, editing, writing; and the exchange of single options.
///
/// The text format has a page of its own, `docs/ini-format.md`.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#ini-files

#include "config/KorConfigBase.h"

#include <memory>
#include <string>
#include <vector>

/// @addtogroup settings
/// @{

class CKorIniFile;
class CKorIniWatch;

/// The lines of an INI file, for one exchange of options.
///
/// Construction reads the whole file; destruction writes it back when the exchange was made for
/// writing and an option was set. Comments and lines that mean nothing to the reader are kept
/// through a rewrite, duplicates are commented out, and no line is ever reported as an error. A file
/// that cannot be opened is an empty document. Where reading fails, the document ends, and it is
/// not written then. A file that cannot be opened for writing stays as it was; when writing fails
/// later, it is left shortened.
///
/// Looking up or setting an option takes the same time in a document of any size, as long as
/// nobody but this class can have changed the lines: neither a derived class nor who called
/// FindOption(). Otherwise it looks at line after line.
///
/// Section and option names compare as the file source says at the time
/// (CKorIniFile::IsCaseSensitiv()): byte for byte, or without regard to the case of ASCII
/// letters, whatever the locale. A null text reads as the empty text.
class TARVO_EXT_API CKorIniOptionExchange : public CKorConfigExchange
{
public:
    /// One line of the document: a header (#m_bSection set), an option (#m_strOption not empty)
    /// or a line that is kept as it is (only #m_strComment carries text).
    struct SOptionLine
    {
        std::string m_strSection; ///< section of the line; a header's own name; empty before the
                                  ///< first header
        std::string m_strOption;  ///< option name; empty for all other lines
        std::string m_strValue;   ///< option value without white space around it, with its quotes
        std::string m_strComment; ///< comment from its "#" on, a header's with one more blank; or
                                  ///< the text of a line that is kept as it is
        bool m_bSection = false;  ///< the line is a section header
    };

    /// Reads the file.
    /// @param pIniFile    gives the file's name and the case rule; not owned, must outlive the
    ///                    exchange; null reads and writes nothing
    /// @param bWriteBack  true writes the file on destruction when an option was set
    CKorIniOptionExchange(CKorIniFile* pIniFile, bool bWriteBack);

    /// An empty document without a file, which compares names without regard to case.
    CKorIniOptionExchange();

    /// Writes the file if that is due, see WriteIniOptions(). Without memory it stays as it was.
    ~CKorIniOptionExchange() override;

    CKorIniOptionExchange(const CKorIniOptionExchange&) = delete;
    CKorIniOptionExchange& operator=(const CKorIniOptionExchange&) = delete;

    /// Replaces the document by the content of the file and marks it unmodified. Lines may have
    /// any length and hold any byte; where reading fails, the document ends.
    void ReadIniOptions();

    /// Replaces the content of the file by the document and marks it unmodified, whether or not
    /// the file could be written. Every line, and an empty one before each header, is flushed on
    /// its own. The file is truncated first: a failure on the way leaves a shortened file.
    /// Nothing is written when reading failed behind the opening of the file, since the document
    /// holds only a part of it.
    void WriteIniOptions();

    /// Searches a line from the start of the document. The line may be changed; a look-up by name
    /// takes time linear in the number of lines from then on, until the file is read again.
    /// @param pszSection  the line's section
    /// @param pszOption   the option's name; null or empty finds the first line of the section,
    ///                    of any kind, which normally is its header
    /// @return the line's position, or the end of #m_apOptionLines
    std::vector<SOptionLine*>::iterator FindOption(const char* pszSection, const char* pszOption);

    /// Looks up a value.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name; null or empty gives the value of the first line of
    ///                    the section, which is empty for a header
    /// @param strValue    receives the value with its quotes; unchanged when there is no such line
    /// @return whether there is such a line
    bool GetOptionString(const char* pszSection, const char* pszOption, std::string& strValue);

    /// Lists the names of all sections, those without options too.
    /// @param vecSections  receives each name once, as first written, ascending by bytes
    void GetSections(std::vector<std::string>& vecSections);

    /// Lists the names of all options of a section.
    /// @param pszSection  the section; the empty text for the lines before the first header
    /// @param vecOptions  receives each name once, as first written, ascending by bytes
    void GetOptions(const char* pszSection, std::vector<std::string>& vecOptions);

    /// Sets a value and marks the document modified, also when the value was the same. The
    /// comment of an existing line stays. A new option becomes the first one of its section; a
    /// new section is appended to the document.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name
    /// @param pszValue    the value, stored as it is: quoting is the caller's business. A "#" or a
    ///                    line feed in it ends the value when the file is read again.
    void SetOptionString(const char* pszSection, const char* pszOption, const char* pszValue);

    /// Removes one line, without effect when there is none. This alone does not mark the document
    /// modified and so does not cause the file to be written.
    /// @param pszSection  the option's section
    /// @param pszOption   the option's name; null or empty removes the first line of the section.
    ///                    When that is its header, its options fall to the section before.
    void RemoveOption(const char* pszSection, const char* pszOption);

    /// Interprets the text of one line.
    /// @param strLine            the text without its line feed
    /// @param strCurrentSection  receives the name of the section when the line is a header
    /// @return a new line, owned by the caller, whose m_strSection is still empty; null for a
    ///         blank line
    SOptionLine* CreateOptionLine(const std::string& strLine, std::string& strCurrentSection);

    /// Interprets the text of one line and places it, as reading does. Repeated headers and
    /// options are commented out; a new option of a section that was opened before moves up behind
    /// the first line of that section. An option of a section without any line is appended.
    /// @param strLine            the text without its line feed
    /// @param strCurrentSection  the section that the line stands in; receives the name of the
    ///                           section when the line is a header
    void AddOptionLine(const std::string& strLine, std::string& strCurrentSection);

    /// Turns a line into a comment, "## COMMENTED ## " and its text, that belongs to no section.
    void CommentOptionLine(SOptionLine& oLine) const;

    /// The text of a line as it is written, without its line feed.
    std::string CreateIniLine(const SOptionLine& oLine) const;

protected:
    CKorIniFile* m_pIniFile;                   ///< the file source, not owned, may be null
    std::vector<SOptionLine*> m_apOptionLines; ///< the document's lines, owned

private:
    struct SDocument;

    TARVO_EXT_LOCAL bool IsCaseSensitiv() const;
    TARVO_EXT_LOCAL SDocument& Document();

    std::unique_ptr<SDocument> m_pDocument; ///< places and finds the lines

    /// Notes what a program does with the exchange of a CKorSafeIniFile.
    friend class CKorIniWatch;
};

/// Exchanges one option with a variable: the step of which a program's `DoOptionExchange` is
/// made. A reading exchange sets the variable to the option's value, or to the default when there
/// is no such option; a writing exchange sets the option to the variable.
///
/// A new program takes IOX_Value() of `config/KorTypedOptions.h`, which knows more types and tells
/// what it could not read. The library brings the two specialisations below; a call for any other
/// type does not compile. A program adds its own for other types:
///
///     template <>
///     void IOX_Std<int>(CKorIniOptionExchange* pExchange, const char* pszSection,
///                       const char* pszOption, int& nValue, const int& nDefault)
///     {
///         std::string strValue = std::to_string(nValue);
///         IOX_Std<std::string>(pExchange, pszSection, pszOption, strValue,
///                              std::to_string(nDefault));
///         if (!pExchange->IsWriteBack())
///             nValue = std::atoi(strValue.c_str());
///     }
///
/// @param pExchange     the exchange, whose direction decides
/// @param pszSection    the option's section
/// @param pszOption     the option's name
/// @param value         the variable
/// @param defaultValue  what to read when there is no such option
template <typename T>
void IOX_Std(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
             T& value, const T& defaultValue);

template <typename T>
void IOX_Std(CKorIniOptionExchange*, const char*, const char*, T&, const T&)
{
    static_assert(sizeof(T) == 0, "IOX_Std has no specialisation for this type: declare one before "
                                  "the call, or call IOX_Value of config/KorTypedOptions.h");
}

/// Exchanges a text. Reading removes a pair of enclosing double quotes, from the default too.
/// Writing encloses a text with white space in double quotes and leaves them in @p strValue; a "#"
/// or a line feed in it ends the value when the file is read again.
template <>
TARVO_EXT_API void IOX_Std<std::string>(CKorIniOptionExchange* pExchange, const char* pszSection,
                                        const char* pszOption, std::string& strValue,
                                        const std::string& strDefault);

/// Exchanges a text in a buffer, as IOX_Std<std::string>(). Reading copies the text and a
/// terminating zero to where @p pszValue points; the caller guarantees the room. Writing leaves
/// the buffer unchanged. A null @p pszValue writes the empty text and receives nothing.
template <>
TARVO_EXT_API void IOX_Std<char*>(CKorIniOptionExchange* pExchange, const char* pszSection,
                                  const char* pszOption, char*& pszValue, char* const& pszDefault);

/// @}
