#pragma once

/// @file
/// Files that are read and replaced as a whole.
///
/// For a new program that keeps a state, a key or a document in a file: the file is at every moment
/// a whole old or a whole new one. CKorFile reads and writes parts of files that exist. Settings
/// have a class of their own, CKorSafeIniFile.
///
///     std::string strState;
///     if (!KorReadFile("/var/lib/app/state", strState) && errno != ENOENT)
///         return errno;
///     strState += "one more line\n";
///     return KorReplaceFile("/var/lib/app/state", strState) ? 0 : errno;
///
/// Both functions may run in any number of threads and processes, for the same file too.

#include "KorExport.h"

#include <string>

/// @addtogroup files
/// @{

/// Reads a regular file from its start to its end. It never waits for another process.
/// @param pszName     the file; links are followed
/// @param rstrContent receives its bytes; unchanged on failure
/// @return false with `errno`: that of the system, or `EINVAL` for what is neither a regular file
///         nor a directory (`EISDIR`)
TARVO_EXT_API bool KorReadFile(const char* pszName, std::string& rstrContent);

/// Replaces the content of a file, or makes the file. Whatever happens, SIGKILL, power loss, a full
/// disk or a size limit, the file holds all of the new content or all of the old one; a reader sees
/// one of the two and never waits. After true the new content outlives a power loss.
///
/// The content is written to a new file in the same directory, which is synced to the disk, takes
/// the file's name, and then the directory is synced.
///
/// - An existing file's mode, owner and extended attributes, access control lists among them, are
///   kept, or the result is false. A new file has mode 0666 less the umask. No copy is ever
///   readable by more people than the file.
/// - The target of a symbolic link is replaced, or made; the link stays.
/// - The new file has the name `.NAME.kor-new` until it takes over, NAME being the file's own name,
///   cut to 240 bytes. Only SIGKILL or a power loss can leave it behind; the next call for the same
///   file removes it. Nothing else is ever removed.
/// - Calls for files of one directory take turns: each holds a lock (`flock`) of the directory,
///   which ends with the process at the latest and needs no file. Reading takes no lock.
///
/// @param pszName    the file
/// @param strContent its new content
/// @return whether the file has the new content for good. False with `errno`, the file unchanged:
///
/// | `errno`          | Reason                                                              |
/// |------------------|---------------------------------------------------------------------|
/// | `EACCES`         | this process may not write the file, or not make one in the directory |
/// | `EMLINK`         | the file has several hard links, which would part                   |
/// | `EINVAL`         | it is no regular file                                               |
/// | `EPERM`          | mode, owner or extended attributes cannot be kept                   |
/// | `EBUSY`          | other calls held the directory's lock for 2 s                       |
/// | `EFBIG`          | the content is longer than the process's size limit allows          |
/// | any other        | that of the system, `ENOSPC` for one                                |
///
///         After a false that comes from syncing the directory the file has its new content
///         already, but might lose it in a power loss.
TARVO_EXT_API bool KorReplaceFile(const char* pszName, const std::string& strContent);

/// @}
