#pragma once

// How a call that stands in place of the C library's goes on to it. Declares no call itself.

#include <dlfcn.h>
#include <errno.h>
#include <stddef.h>
#include <sys/types.h>

/// Counts a call.
/// @param pszKind  its kind; null for one that always passes
/// @return 0 to let it pass, or the `errno` of its failure
int DecideOnCall(const char* pszKind);

/// The function as the next library defines it.
inline void* NextCall(const char* pszSymbol)
{
    return dlsym(RTLD_NEXT, pszSymbol);
}

/// Calls the function as the next library defines it, unless the call is to fail.
template <typename TResult, typename... TArgs>
TResult Pass(const char* pszKind, const char* pszSymbol, TArgs... args)
{
    const int nError = DecideOnCall(pszKind);
    if (nError != 0) {
        errno = nError;
        return -1;
    }
    return reinterpret_cast<TResult (*)(TArgs...)>(NextCall(pszSymbol))(args...);
}
