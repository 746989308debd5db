#include "time/KorDigitsDetail.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace
{

using KorDigits::CCursor;

TEST(KorDigits, WritesNumbersInAFixedWidth)
{
    for (unsigned nNumber = 0; nNumber <= 9999; ++nNumber) {
        char szExpected[24];
        char szActual[24] = {};
        std::snprintf(szExpected, sizeof szExpected, "%u%02u%03u%04u", nNumber % 10, nNumber % 100,
                      nNumber % 1000, nNumber);
        char* pEnd = KorDigits::PutOne(szActual, nNumber % 10);
        pEnd = KorDigits::PutTwo(pEnd, nNumber % 100);
        pEnd = KorDigits::PutThree(pEnd, nNumber % 1000);
        pEnd = KorDigits::PutFour(pEnd, nNumber);
        ASSERT_STREQ(szExpected, szActual);
        ASSERT_EQ(szActual + 10, pEnd);
    }
}

TEST(KorDigits, ReadsAtMostTheDigitsAskedFor)
{
    const std::string strText = "1234:";
    CCursor oCursor(strText.data(), strText.data() + strText.size());
    std::uint32_t nNumber = 7;
    EXPECT_EQ(0U, oCursor.TakeDigits(0, nNumber));
    EXPECT_EQ(0U, nNumber);
    EXPECT_EQ(3U, oCursor.TakeDigits(3, nNumber));
    EXPECT_EQ(123U, nNumber);
    EXPECT_EQ(1U, oCursor.TakeDigits(3, nNumber));
    EXPECT_EQ(4U, nNumber);
    EXPECT_EQ(0U, oCursor.TakeDigits(3, nNumber));
    EXPECT_EQ(0U, nNumber);
    EXPECT_EQ(':', oCursor.Peek());
}

TEST(KorDigits, TakesOnlyTheCharacterAskedFor)
{
    const std::string strText("\xE4\0", 2);
    CCursor oCursor(strText.data(), strText.data() + strText.size());
    EXPECT_EQ(0xE4, oCursor.Peek());
    EXPECT_FALSE(oCursor.Take('\0'));
    EXPECT_TRUE(oCursor.Take('\xE4'));
    EXPECT_TRUE(oCursor.Take('\0'));
    EXPECT_TRUE(oCursor.IsAtEnd());
    EXPECT_FALSE(oCursor.Take('\0'));
    EXPECT_EQ(CCursor::END, oCursor.Peek());
    std::uint32_t nNumber = 7;
    EXPECT_EQ(0U, oCursor.TakeDigits(2, nNumber));
    EXPECT_EQ(0U, nNumber);
}

} // namespace
