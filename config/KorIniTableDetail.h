#pragma once

// A hash table that only grows. Not installed.

#include <cstddef>
#include <cstdint>
#include <vector>

/// Slots in a power of two of places, each slot at the place that its hash names or at the next
/// free ones behind it.
/// @tparam TSlot  has a hash m_nHash and IsFree(), true when made by default
template <class TSlot>
class CKorIniTable
{
public:
    /// The first slot inserted with the hash that @p fnSame takes, or null.
    template <class TSame>
    const TSlot* Find(uint32_t nHash, TSame fnSame) const
    {
        if (m_vecSlots.empty())
            return nullptr;
        for (size_t n = nHash;; ++n) {
            const TSlot& oSlot = m_vecSlots[n & (m_vecSlots.size() - 1)];
            if (oSlot.IsFree())
                return nullptr;
            if (oSlot.m_nHash == nHash && fnSame(oSlot))
                return &oSlot;
        }
    }

    void Insert(const TSlot& oSlot)
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
    TSlot& FreeSlot(uint32_t nHash)
    {
        size_t n = nHash;
        while (!m_vecSlots[n & (m_vecSlots.size() - 1)].IsFree())
            ++n;
        return m_vecSlots[n & (m_vecSlots.size() - 1)];
    }

    void Grow()
    {
        constexpr size_t FEWEST = 16;
        std::vector<TSlot> vecOld(m_vecSlots.empty() ? FEWEST : 2 * m_vecSlots.size());
        vecOld.swap(m_vecSlots);
        for (const TSlot& oSlot : vecOld) {
            if (!oSlot.IsFree())
                FreeSlot(oSlot.m_nHash) = oSlot;
        }
    }

    std::vector<TSlot> m_vecSlots;
    size_t m_nUsed = 0;
};
