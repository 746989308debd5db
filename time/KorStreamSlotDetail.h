#pragma once

#include <atomic>
#include <ios>

/// The word of a stream at an index of std::ios_base::xalloc(); 0 while there is no index.
inline long KorStreamSlot(std::ios_base& oStream, const std::atomic<int>& nIndex)
{
    const int nSlot = nIndex.load(std::memory_order_relaxed);
    return nSlot < 0 ? 0 : oStream.iword(nSlot);
}
