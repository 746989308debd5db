#pragma once

#include "KorAtomicDetail.h"

#include <ios>

/// Takes a word of all streams and publishes its index.
inline int KorTakeStreamSlot(int& nIndex)
{
    const int nSlot = std::ios_base::xalloc();
    KorAtomicStore(nIndex, nSlot);
    return nSlot;
}

/// The word of a stream at an index of std::ios_base::xalloc(); 0 while there is no index.
inline long KorStreamSlot(std::ios_base& oStream, const int& nIndex)
{
    const int nSlot = KorAtomicLoad(nIndex);
    return nSlot < 0 ? 0 : oStream.iword(nSlot);
}
