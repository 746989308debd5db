#include "config/KorIniTableDetail.h"

void CKorIniTable::Grow()
{
    constexpr size_t FEWEST = 16;
    std::vector<SKorIniSlot> vecOld(m_vecSlots.empty() ? FEWEST : 2 * m_vecSlots.size());
    vecOld.swap(m_vecSlots);
    for (const SKorIniSlot& oSlot : vecOld) {
        if (oSlot.m_nValue != 0)
            FreeSlot(oSlot.m_nHash) = oSlot;
    }
}
