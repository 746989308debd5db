#pragma once

// How a call that stands in place of the C library's goes on to it. Declares no call itself.

#include <dlfcn.h>
#include <errno.h>
#include <stddef.h>
#include <sys/types.h>

/// The function as the next library defines it.
inline void* NextCall(const char* pszSymbol)
{
    return dlsym(RTLD_NEXT, pszSymbol);
}

/// Calls the function as the next library defines it, unless the call is to fail.
/// @param nError  the `errno` of its failure; 0 lets it pass
template <typename TResult, typename... TArgs>
TResult Pass(int nError, const char* pszSymbol, TArgs... args)
{
    if (nError != 0) {
        errno = nError;
        return -1;
    }
    return reinterpret_cast<TResult (*)(TArgs...)>(NextCall(pszSymbol))(args...);
}
