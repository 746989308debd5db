#pragma once

#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>

/// Opens a file that started programs do not inherit, on a descriptor above 2: where standard error
/// was closed the file would take its place and receive whatever is printed there.
/// @return the descriptor, or -1 with errno
inline int KorOpenAboveStandard(const char* pszName, int nFlags, mode_t nMode)
{
    const int hFile = open(pszName, nFlags | O_CLOEXEC | O_NOCTTY, nMode);
    if (hFile == -1 || hFile > STDERR_FILENO)
        return hFile;
    const int hAbove = fcntl(hFile, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(hFile);
    return hAbove;
}

/// The name from the root, so that it stays the same file's when the working directory changes.
/// A null name is the empty one.
inline std::string KorNameFromRoot(const char* pszName)
{
    std::string strName = pszName != nullptr ? pszName : "";
    char szDir[PATH_MAX];
    if (strName.empty() || strName.front() == '/' || getcwd(szDir, sizeof szDir) == nullptr)
        return strName;
    return std::string(szDir) + "/" + strName;
}
