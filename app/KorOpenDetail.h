#pragma once

#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>

/// Moves a descriptor above 2: where standard error was closed the file would take its place and
/// receive whatever is printed there. Programs that are started do not inherit it.
/// @return the descriptor, or -1 with errno
inline int KorMoveAboveStandard(int nHandle)
{
    if (nHandle == -1 || nHandle > STDERR_FILENO)
        return nHandle;
    const int nAbove = fcntl(nHandle, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(nHandle);
    return nAbove;
}

/// Opens a file, as the system does, on a descriptor above 2 that started programs do not inherit.
inline int KorOpenAboveStandard(const char* pszName, int nFlags, mode_t nMode)
{
    return KorMoveAboveStandard(open(pszName, nFlags | O_CLOEXEC | O_NOCTTY, nMode));
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
