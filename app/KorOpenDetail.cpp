#include "app/KorOpenDetail.h"

#include "text/KorStringDetail.h"

#include <climits>

int KorMoveAboveStandard(int nHandle)
{
    if (nHandle == -1 || nHandle > STDERR_FILENO)
        return nHandle;
    const int nAbove = fcntl(nHandle, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(nHandle);
    return nAbove;
}

int KorOpenAboveStandard(const char* pszName, int nFlags, mode_t nMode)
{
    return KorMoveAboveStandard(open(pszName, nFlags | O_CLOEXEC | O_NOCTTY, nMode));
}

std::string KorNameFromRoot(const char* pszName)
{
    const std::string_view strName = KorText(pszName);
    char szDir[PATH_MAX];
    const bool bRelative =
        !strName.empty() && strName.front() != '/' && getcwd(szDir, sizeof szDir) != nullptr;
    return bRelative ? KorConcat({szDir, "/", strName}) : std::string(strName);
}
