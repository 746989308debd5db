#include "event/KorEventTicketsDetail.h"

#include <climits>
#include <gtest/gtest.h>
#include <set>

namespace
{

constexpr int SIZE = 16; // of a table that never held more

TEST(KorEventTickets, NumbersBeginAgainBehindTheLastOne)
{
    CKorTicketTable oTable;
    for (int n = 1; n <= SIZE; ++n)
        EXPECT_EQ(n, oTable.Add(SKorTicket::KIND_TIMER, 0, 0, [] {}));
    for (int n = 1; n <= SIZE; ++n) {
        oTable.Remove(n);
        oTable[n].m_nTicket = INT_MAX - SIZE + 1 + n % SIZE; // the last one of this place
    }
    oTable[SIZE].m_nTicket -= SIZE; // one is left here
    std::set<int> setNumbers;
    for (int n = 1; n <= 2 * SIZE; ++n) {
        const int nTicket = oTable.Add(SKorTicket::KIND_TIMER, n, 0, [] {});
        EXPECT_LT(0, nTicket);
        EXPECT_TRUE(setNumbers.insert(nTicket).second) << nTicket;
        EXPECT_EQ(n, oTable.Find(nTicket)->m_nKey);
        oTable.Remove(nTicket);
    }
}

} // namespace
