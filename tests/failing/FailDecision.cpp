// Whether a call fails. Nothing here may allocate, lock or call the system: the calls come from
// children of vfork() and from inside malloc() too.

#include "tests/failing/DecideOnCall.h"
#include "tests/failing/FailCalls.h"

#include <new>
#include <sys/mman.h>

namespace
{

SFailCalls* s_pCalls = nullptr;
// Not one that is made at its first use: that would allocate.
__attribute__((tls_model("initial-exec"))) thread_local int s_nPause = 0;

__attribute__((constructor)) void Begin()
{
    void* const pPage = mmap(nullptr, sizeof(SFailCalls), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (pPage == MAP_FAILED)
        return;
    s_pCalls = new (pPage) SFailCalls;
}

} // namespace

int DecideOnCall(const char* pszKind)
{
    if (pszKind == nullptr || s_pCalls == nullptr || !s_pCalls->m_bArmed || s_nPause != 0)
        return 0;
    const int nKind = FailKindOf(pszKind);
    const unsigned int nNumber = ++s_pCalls->m_anCounts[nKind];
    const bool bFails =
        nKind == s_pCalls->m_nKind &&
        (nNumber == s_pCalls->m_nNumber || (s_pCalls->m_bOn && nNumber > s_pCalls->m_nNumber));
    return bFails ? s_pCalls->m_nError : 0;
}

SFailCalls* FailCalls()
{
    return s_pCalls;
}

int* FailCallsPause()
{
    return &s_nPause;
}
