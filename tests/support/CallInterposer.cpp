// The calls for files as this program defines them, in place of the C library's: the library under
// test arrives here. No header of the C library that declares one of them may be included.

#include <dlfcn.h>
#include <errno.h>
#include <stddef.h>
#include <sys/types.h>

/// Decides on a call of the running thread: 0 lets it pass, anything else is the `errno` of its
/// failure. It is set before main.
int (*g_pDecideOnCall)(const char* pszCall) = nullptr;

namespace
{

/// Calls the function as the next library defines it, unless the call is to fail.
template <typename TResult, typename... TArgs>
TResult Pass(const char* pszCall, const char* pszSymbol, TArgs... args)
{
    const int nError = g_pDecideOnCall != nullptr ? g_pDecideOnCall(pszCall) : 0;
    if (nError != 0) {
        errno = nError;
        return -1;
    }
    return reinterpret_cast<TResult (*)(TArgs...)>(dlsym(RTLD_NEXT, pszSymbol))(args...);
}

} // namespace

extern "C" {

int open(const char* pszName, int nFlags, unsigned int nMode)
{
    return Pass<int>("open", "open", pszName, nFlags, nMode);
}

int open64(const char* pszName, int nFlags, unsigned int nMode)
{
    return Pass<int>("open", "open64", pszName, nFlags, nMode);
}

ssize_t read(int hFile, void* pBuffer, size_t nSize)
{
    return Pass<ssize_t>("read", "read", hFile, pBuffer, nSize);
}

ssize_t write(int hFile, const void* pBuffer, size_t nSize)
{
    return Pass<ssize_t>("write", "write", hFile, pBuffer, nSize);
}

int fsync(int hFile)
{
    return Pass<int>("fsync", "fsync", hFile);
}

int fchown(int hFile, uid_t nUser, gid_t nGroup)
{
    return Pass<int>("fchown", "fchown", hFile, nUser, nGroup);
}

int rename(const char* pszFrom, const char* pszTo)
{
    return Pass<int>("rename", "rename", pszFrom, pszTo);
}
}
