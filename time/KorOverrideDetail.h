#pragma once

#include <cstdint>
#include <cstring>

/// The function that a virtual call of @p pOperation on this object reaches, told by its address.
///
/// C++ itself can only make the call. The C++ ABI of all compilers for Linux says where the address
/// stands: in the table whose address the object begins with, at the offset in bytes with which the
/// pointer to the operation begins, on most processors plus 1.
template <class TClass, class TOperation>
std::uintptr_t KorTargetOf(const TClass& oObject, TOperation TClass::*pOperation)
{
    const std::uintptr_t* pTable = nullptr;
    std::uintptr_t nOffset = 0;
    std::memcpy(&pTable, static_cast<const void*>(&oObject), sizeof pTable);
    std::memcpy(&nOffset, &pOperation, sizeof nOffset);
    return pTable[nOffset / sizeof *pTable];
}

/// Whether the object's class, which may be derived from TClass, overrides this virtual operation of
/// it. In doubt it does: a board may give one function two addresses.
template <auto pOperation, class TClass>
bool KorOverrides(const TClass& oObject)
{
    static const std::uintptr_t nOwn = KorTargetOf(TClass(), pOperation);
    return KorTargetOf(oObject, pOperation) != nOwn;
}
