#pragma once

/// @file
/// What the file system knows about a file.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#file-times-are-stamps

#include "KorExport.h"
#include "time/KorUTCTime.h"

#include <string>

/// @addtogroup files
/// @{

/// The record that CKorFile::GetStatus() fills. Its members are there to be read.
///
/// The times are stamps rather than dates: each is 1970-01-01 moved by 10 us, not by a second,
/// for each second that the file system counts since then, in a product of 32 bits. Another stamp
/// tells that the file was touched since; which of two is the later one does not show.
///
/// A plain record without locks.
class TARVO_EXT_API CKorFileStatus
{
public:
    /// No file: default times, which are not valid, no name, size and attributes 0.
    CKorFileStatus();
    /// Copies the record.
    CKorFileStatus(const CKorFileStatus&) = default;
    /// Copies the record.
    CKorFileStatus& operator=(const CKorFileStatus&) = default;
    virtual ~CKorFileStatus();

    CKorUTCTime m_oCTime;      ///< Stamp of the last change of the file's attributes.
    CKorUTCTime m_oMTime;      ///< Stamp of the last change of its content.
    CKorUTCTime m_oATime;      ///< Stamp of the last access.
    std::string m_strFullName; ///< A name for the program's own use; nothing here sets it.
    long long m_nSize;         ///< Size in bytes.
    unsigned int m_nAttribute; ///< Type and permission bits, as `st_mode` of `stat`.
};

/// @}
