// The C library's memory, counted and made to fail. No header that declares these functions may be
// included.

#include "tests/failing/DecideOnCall.h"
#include "tests/support/PassCall.h"

namespace
{

long s_nBlocks = 0;

using Free = void (*)(void*);
using Allocate = void* (*)(size_t);
using AllocateMany = void* (*)(size_t, size_t);
using Change = void* (*)(void*, size_t);

/// A function of the next library, looked up once.
template <typename TFunction>
TFunction Next(void*& rpFound, const char* pszName)
{
    void* pFound = __atomic_load_n(&rpFound, __ATOMIC_ACQUIRE);
    if (pFound == nullptr) {
        pFound = NextCall(pszName);
        __atomic_store_n(&rpFound, pFound, __ATOMIC_RELEASE);
    }
    return reinterpret_cast<TFunction>(pFound);
}

bool Fails()
{
    const int nError = DecideOnCall("memory");
    if (nError != 0)
        errno = nError;
    return nError != 0;
}

void* Count(void* pBlock)
{
    if (pBlock != nullptr)
        __atomic_add_fetch(&s_nBlocks, 1, __ATOMIC_RELAXED);
    return pBlock;
}

void *s_pMalloc, *s_pCalloc, *s_pRealloc, *s_pFree, *s_pAligned;

} // namespace

extern "C" {

void* malloc(size_t nSize)
{
    return Fails() ? nullptr : Count(Next<Allocate>(s_pMalloc, "malloc")(nSize));
}

void* calloc(size_t nCount, size_t nSize)
{
    return Fails() ? nullptr : Count(Next<AllocateMany>(s_pCalloc, "calloc")(nCount, nSize));
}

void* aligned_alloc(size_t nAlignment, size_t nSize)
{
    return Fails() ? nullptr
                   : Count(Next<AllocateMany>(s_pAligned, "aligned_alloc")(nAlignment, nSize));
}

void* realloc(void* pBlock, size_t nSize)
{
    if (Fails())
        return nullptr;
    void* const pNew = Next<Change>(s_pRealloc, "realloc")(pBlock, nSize);
    return pBlock == nullptr ? Count(pNew) : pNew;
}

void free(void* pBlock)
{
    if (pBlock != nullptr)
        __atomic_sub_fetch(&s_nBlocks, 1, __ATOMIC_RELAXED);
    Next<Free>(s_pFree, "free")(pBlock);
}

long FailCallsBlocks()
{
    return __atomic_load_n(&s_nBlocks, __ATOMIC_RELAXED);
}
}
