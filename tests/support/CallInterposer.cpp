// The calls for files as this program defines them, in place of the C library's: the library under
// test arrives here. No header of the C library that declares one of them may be included.

#include "tests/support/PassCall.h"

/// Decides on a call of the running thread: 0 lets it pass, anything else is the `errno` of its
/// failure. It is set before main.
int (*g_pDecideOnCall)(const char* pszCall) = nullptr;

namespace
{

int Decide(const char* pszCall)
{
    return g_pDecideOnCall != nullptr ? g_pDecideOnCall(pszCall) : 0;
}

} // namespace

extern "C" {

int open(const char* pszName, int nFlags, unsigned int nMode)
{
    return Pass<int>(Decide("open"), "open", pszName, nFlags, nMode);
}

int open64(const char* pszName, int nFlags, unsigned int nMode)
{
    return Pass<int>(Decide("open"), "open64", pszName, nFlags, nMode);
}

ssize_t read(int hFile, void* pBuffer, size_t nSize)
{
    return Pass<ssize_t>(Decide("read"), "read", hFile, pBuffer, nSize);
}

ssize_t write(int hFile, const void* pBuffer, size_t nSize)
{
    return Pass<ssize_t>(Decide("write"), "write", hFile, pBuffer, nSize);
}

int fsync(int hFile)
{
    return Pass<int>(Decide("fsync"), "fsync", hFile);
}

int fchown(int hFile, uid_t nUser, gid_t nGroup)
{
    return Pass<int>(Decide("fchown"), "fchown", hFile, nUser, nGroup);
}

int rename(const char* pszFrom, const char* pszTo)
{
    return Pass<int>(Decide("rename"), "rename", pszFrom, pszTo);
}
}
