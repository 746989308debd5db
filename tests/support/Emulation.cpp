#include "tests/support/Emulation.h"

#include <climits>
#include <string>
#include <unistd.h>

namespace
{

std::string LinkTarget(const char* pszLink)
{
    char acTarget[PATH_MAX];
    const ssize_t nLength = readlink(pszLink, acTarget, sizeof acTarget);
    return nLength > 0 ? std::string(acTarget, static_cast<size_t>(nLength)) : "";
}

} // namespace

// An emulator answers for the link that names the running program, but only when it is spelt as
// usual; any other spelling reaches the kernel, which names the emulator.
bool UnderEmulation()
{
    return LinkTarget("/proc/self/exe") != LinkTarget("/proc/./self/exe");
}
