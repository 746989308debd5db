#pragma once

// A hash table that only grows. Not installed.

#include <cstddef>
#include <cstdint>
#include <vector>

/// A hash and what it leads to, in whatever form the user likes; free with 0.
struct SKorIniSlot
{
    uint32_t m_nHash = 0;
    uintptr_t m_nValue = 0;
};

/// Slots in a power of two of places, each slot at the place that its hash names or at the next
/// free ones behind it.
class CKorIniTable
{
public:
    /// What was inserted first with the hash and @p fnSame takes, or 0.
    template <class TSame>
    uintptr_t Find(uint32_t nHash, TSame fnSame) const
    {
        if (m_vecSlots.empty())
            return 0;
        for (size_t n = nHash;; ++n) {
            const SKorIniSlot& oSlot = m_vecSlots[n & (m_vecSlots.size() - 1)];
            if (oSlot.m_nValue == 0 || (oSlot.m_nHash == nHash && fnSame(oSlot.m_nValue)))
                return oSlot.m_nValue;
        }
    }

    void Insert(const SKorIniSlot& oSlot)
    {
        if (m_nUsed >= m_vecSlots.size() / 2)
            Grow();
        ++m_nUsed;
        FreeSlot(oSlot.m_nHash) = oSlot;
    }

    void Clear()
    {
        m_vecSlots.clear();
        m_nUsed = 0;
    }

private:
    SKorIniSlot& FreeSlot(uint32_t nHash)
    {
        size_t n = nHash;
        while (m_vecSlots[n & (m_vecSlots.size() - 1)].m_nValue != 0)
            ++n;
        return m_vecSlots[n & (m_vecSlots.size() - 1)];
    }

    void Grow();

    std::vector<SKorIniSlot> m_vecSlots;
    size_t m_nUsed = 0;
};
