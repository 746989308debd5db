#include "fs/KorSpawnDetail.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr int FIRST = STDERR_FILENO + 1;

/// The number of close_range() on every processor; older headers do not know it.
constexpr long CLOSE_RANGE = 436;

bool CloseRange(int nFirst, unsigned int nLast)
{
    return static_cast<unsigned int>(nFirst) > nLast || syscall(CLOSE_RANGE, nFirst, nLast, 0) == 0;
}

/// The number that a name consists of, -1 for any other name. (The C library's functions are not
/// safe here, or they allocate.)
int NumberOf(const char* pszName)
{
    int nNumber = 0;
    for (; *pszName >= '0' && *pszName <= '9'; ++pszName)
        nNumber = nNumber * 10 + (*pszName - '0');
    return *pszName == '\0' ? nNumber : -1;
}

/// Closes what one piece of a directory's listing names. An entry of the kernel is its length at
/// offset 16 and its name at offset 19.
void CloseEntries(const char* pEntries, long nSize, int hKept, int hList)
{
    constexpr long LENGTH_OFFSET = 16;
    constexpr long NAME_OFFSET = 19;
    std::uint16_t nLength = 0;
    for (long nEntry = 0; nEntry < nSize; nEntry += nLength) {
        std::memcpy(&nLength, pEntries + nEntry + LENGTH_OFFSET, sizeof nLength);
        const int nHandle = NumberOf(pEntries + nEntry + NAME_OFFSET);
        if (nHandle >= FIRST && nHandle != hKept && nHandle != hList)
            close(nHandle);
    }
}

bool CloseListed(int hKept)
{
    const int hList = open("/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (hList == -1)
        return false;
    char acEntries[2048];
    long nSize = 0;
    while ((nSize = syscall(SYS_getdents64, hList, acEntries, sizeof acEntries)) > 0)
        CloseEntries(acEntries, nSize, hKept, hList);
    close(hList);
    return nSize == 0;
}

void CloseEach(int hKept)
{
    rlimit oLimit = {};
    getrlimit(RLIMIT_NOFILE, &oLimit);
    for (int nHandle = FIRST; static_cast<rlim_t>(nHandle) < oLimit.rlim_cur; ++nHandle) {
        if (nHandle != hKept)
            close(nHandle);
    }
}

} // namespace

void KorCloseAllBut(int hKept)
{
    const bool bClosed =
        CloseRange(FIRST, static_cast<unsigned int>(hKept) - 1) && CloseRange(hKept + 1, ~0U);
    if (!bClosed && !CloseListed(hKept))
        CloseEach(hKept);
}
