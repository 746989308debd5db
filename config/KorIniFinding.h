#pragma once

/// @file
/// What is wrong with an INI file, told to a person.
///
/// CKorIniFile reads every file and reports nothing. A program that has a log takes
/// CKorSafeIniFile, which keeps the findings of each operation, and a tool checks a file whole:
///
///     std::vector<SKorIniFinding> vecFindings;
///     if (!KorCheckIniFile("gateway.ini", false, vecFindings))
///         return 1;
///     for (const SKorIniFinding& oFinding : vecFindings)
///         std::printf("%u: %s\n", oFinding.m_nLine, oFinding.m_strText.c_str());

#include "KorExport.h"

#include <string>
#include <vector>

/// @addtogroup settings
/// @{

class CKorIniOptionExchange;

/// One remark about an INI file or about an operation on it.
struct SKorIniFinding
{
    /// What was found.
    enum EKind
    {
        FINDING_SYNTAX,           ///< a line that means nothing, or a header with a flaw
        FINDING_DUPLICATE,        ///< an option that an earlier line has set already
        FINDING_REPEATED_SECTION, ///< a section that an earlier line has opened already
        FINDING_HASH_IN_QUOTES, ///< a "#" in a quoted value, where it begins a comment all the same
        FINDING_BYTE_ORDER_MARK, ///< the file begins with one, which belongs to its first line
        FINDING_BAD_VALUE,       ///< a value that is none of its option's type
        FINDING_OUT_OF_RANGE,    ///< a value beyond its option's limits
        FINDING_UNKNOWN_OPTION,  ///< an option that the program never asked for
        FINDING_NOT_STORABLE,    ///< a name or a value that the format cannot hold
        FINDING_IO_ERROR         ///< the file could not be read or replaced
    };
    EKind m_eKind = FINDING_SYNTAX; ///< what was found
    unsigned int m_nLine = 0;       ///< the line, counted from 1; 0 for none
    std::string m_strSection;       ///< the section that it concerns, or empty
    std::string m_strOption;        ///< the option that it concerns, or empty
    std::string m_strText;          ///< one sentence for a person, without the line number
};

/// Checks the lines of a file, as CKorIniFile and CKorSafeIniFile read it.
/// @param pszName        the file; null reads as the empty name
/// @param bCaseSensitiv  whether names that differ in case are different names
/// @param rvecFindings   receives the findings in the order of their lines, without the earlier
///                       content; of a file that cannot be read the one that says why
/// @return false with `errno` when the file cannot be read, also when there is none
TARVO_EXT_API bool KorCheckIniFile(const char* pszName, bool bCaseSensitiv,
                                   std::vector<SKorIniFinding>& rvecFindings);

/// Adds a finding to those of the operation that an exchange belongs to: what an exchange of a
/// program's own type calls for a value that it cannot take. A finding in a writing exchange keeps
/// the file unchanged and makes CKorSafeIniFile::UpdateOptions() false.
/// @param pExchange  the exchange that runs
/// @param oFinding   the finding; its line number is looked up for an option that has a line
/// @return false, without effect, for an exchange that no CKorSafeIniFile runs
TARVO_EXT_API bool KorReportIniFinding(CKorIniOptionExchange* pExchange,
                                       const SKorIniFinding& oFinding);

/// @}
