// The calls for files, in place of the C library's. No header of the C library that declares one
// of them may be included.

#include "tests/failing/DecideOnCall.h"
#include "tests/support/PassCall.h"

#include <stdint.h>
#include <string.h>

extern "C" ssize_t readlink(const char* pszName, char* pszTarget, size_t nSize) noexcept;

namespace
{

/// Whether a handle is an event's: what is added to one or taken from it is a number in memory,
/// which no system fails.
bool IsEvent(int hFile)
{
    char szName[32] = "/proc/self/fd/";
    char* pEnd = szName + strlen(szName);
    int nScale = 1;
    while (hFile / nScale >= 10)
        nScale *= 10;
    for (; nScale > 0; nScale /= 10)
        *pEnd++ = static_cast<char>('0' + hFile / nScale % 10);
    char szTarget[32] = {};
    return readlink(szName, szTarget, sizeof szTarget - 1) > 0 && strstr(szTarget, "eventfd");
}

/// An empty name fails in every system.
const char* KindOfOpen(const char* pszName)
{
    return *pszName != '\0' ? "open" : nullptr;
}

} // namespace

extern "C" {

int open(const char* pszName, int nFlags, unsigned int nMode)
{
    return Pass<int>(DecideOnCall(KindOfOpen(pszName)), "open", pszName, nFlags, nMode);
}

int open64(const char* pszName, int nFlags, unsigned int nMode)
{
    return Pass<int>(DecideOnCall(KindOfOpen(pszName)), "open64", pszName, nFlags, nMode);
}

ssize_t read(int hFile, void* pBuffer, size_t nSize)
{
    return Pass<ssize_t>(DecideOnCall(IsEvent(hFile) ? nullptr : "read"), "read", hFile, pBuffer,
                         nSize);
}

ssize_t pread(int hFile, void* pBuffer, size_t nSize, long nPosition)
{
    return Pass<ssize_t>(DecideOnCall("read"), "pread", hFile, pBuffer, nSize, nPosition);
}

ssize_t pread64(int hFile, void* pBuffer, size_t nSize, int64_t nPosition)
{
    return Pass<ssize_t>(DecideOnCall("read"), "pread64", hFile, pBuffer, nSize, nPosition);
}

ssize_t write(int hFile, const void* pBuffer, size_t nSize)
{
    return Pass<ssize_t>(DecideOnCall(IsEvent(hFile) ? nullptr : "write"), "write", hFile, pBuffer,
                         nSize);
}

ssize_t pwrite(int hFile, const void* pBuffer, size_t nSize, long nPosition)
{
    return Pass<ssize_t>(DecideOnCall("write"), "pwrite", hFile, pBuffer, nSize, nPosition);
}

ssize_t pwrite64(int hFile, const void* pBuffer, size_t nSize, int64_t nPosition)
{
    return Pass<ssize_t>(DecideOnCall("write"), "pwrite64", hFile, pBuffer, nSize, nPosition);
}

int fsync(int hFile)
{
    return Pass<int>(DecideOnCall("fsync"), "fsync", hFile);
}

int fdatasync(int hFile)
{
    return Pass<int>(DecideOnCall("fsync"), "fdatasync", hFile);
}

int rename(const char* pszFrom, const char* pszTo)
{
    return Pass<int>(DecideOnCall("rename"), "rename", pszFrom, pszTo);
}
}
