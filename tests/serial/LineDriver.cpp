// ioctl() as this program defines it, in place of the C library's: the library under test arrives
// here. No header of the C library that declares it may be included.

#include <dlfcn.h>

/// Answers a call in place of the system's driver.
/// @return false to let the call pass
bool (*g_pfnDriver)(unsigned int nRequest, void* pArgument, int& rnResult) = nullptr;

namespace
{

int Answer(const char* pszSymbol, int hLine, unsigned long nRequest, void* pArgument)
{
    int nResult = 0;
    if (g_pfnDriver != nullptr &&
        g_pfnDriver(static_cast<unsigned int>(nRequest), pArgument, nResult))
        return nResult;
    using Function = int (*)(int, unsigned long, void*);
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, pszSymbol))(hLine, nRequest, pArgument);
}

} // namespace

extern "C" int ioctl(int hLine, unsigned long nRequest, void* pArgument)
{
    return Answer("ioctl", hLine, nRequest, pArgument);
}

/// Its name on 32-bit boards with 64-bit times.
extern "C" int __ioctl_time64(int hLine, unsigned long nRequest, void* pArgument)
{
    return Answer("__ioctl_time64", hLine, nRequest, pArgument);
}
