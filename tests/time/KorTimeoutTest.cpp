#include "time/KorTimeout.h"

#include <gtest/gtest.h>
#include <thread>
#include <type_traits>

namespace
{

void SleepMs(int nMilliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(nMilliseconds));
}

TEST(KorTimeout, ExpiresWhenItsTimeHasPassed)
{
    const CKorTimeout oTimeout(30);
    SleepMs(31);
    EXPECT_TRUE(oTimeout.IsExpired());
    EXPECT_EQ(0u, oTimeout.GetRemaining());
}

TEST(KorTimeout, TellsWhatIsLeftRoundedUp)
{
    const CKorTimeout oTimeout(100000);
    EXPECT_FALSE(oTimeout.IsExpired());
    const unsigned int nFirst = oTimeout.GetRemaining();
    EXPECT_GE(100000u, nFirst);
    EXPECT_LT(40000u, nFirst);
    SleepMs(3);
    EXPECT_GE(nFirst - 2, oTimeout.GetRemaining());
}

TEST(KorTimeout, HasSomethingLeftUntilItExpires)
{
    const CKorTimeout oTimeout(20);
    unsigned int nRemaining = 0;
    bool bExpired = false;
    do {
        nRemaining = oTimeout.GetRemaining();
        bExpired = oTimeout.IsExpired(); // asked later, so it may have expired meanwhile
    } while (nRemaining != 0);
    EXPECT_TRUE(bExpired);
}

// A call that waits for what is left must not come back before the time-out has expired.
TEST(KorTimeout, IsOverAfterWaitingForWhatIsLeft)
{
    for (int nTry = 0; nTry < 10; ++nTry) {
        const CKorTimeout oTimeout(3);
        SleepMs(1);
        SleepMs(static_cast<int>(oTimeout.GetRemaining()));
        EXPECT_TRUE(oTimeout.IsExpired());
    }
}

TEST(KorTimeout, OfNothingHasExpiredAtOnce)
{
    const CKorTimeout oTimeout(0);
    EXPECT_TRUE(oTimeout.IsExpired());
    EXPECT_EQ(0u, oTimeout.GetRemaining());
}

TEST(KorTimeout, OfAllOnesNeverExpires)
{
    const CKorTimeout oTimeout(0xFFFFFFFF);
    SleepMs(2);
    EXPECT_FALSE(oTimeout.IsExpired());
    EXPECT_EQ(0xFFFFFFFFu, oTimeout.GetRemaining());
    EXPECT_GE(0xFFFFFFFEu, CKorTimeout(0xFFFFFFFE).GetRemaining());
    EXPECT_LT(0xFFFFFF00u - 60000, CKorTimeout(0xFFFFFFFE).GetRemaining());
}

TEST(KorTimeout, BeginsAnew)
{
    const CKorTimeout oOther(60000);
    CKorTimeout oTimeout(60000);
    SleepMs(20);
    oTimeout.Restart();
    const unsigned int nRemaining = oTimeout.GetRemaining();
    EXPECT_GT(nRemaining, oOther.GetRemaining());
}

TEST(KorStopwatch, MeasuresInTicks)
{
    const CKorStopwatch oWatch;
    SleepMs(20);
    const CKorTimeDiff oElapsed = oWatch.GetElapsed();
    EXPECT_LE(20, oElapsed.GetTotalMilliSeconds());
    EXPECT_GT(60, oElapsed.GetTotalSeconds());
    SleepMs(1);
    EXPECT_LE(1000000, (oWatch.GetElapsed() - oElapsed).GetTotalNanoSeconds());
}

TEST(KorStopwatch, BeginsAnew)
{
    const CKorStopwatch oOther;
    CKorStopwatch oWatch;
    SleepMs(20);
    oWatch.Restart();
    const CKorTimeDiff oElapsed = oWatch.GetElapsed();
    EXPECT_LE(20000000, (oOther.GetElapsed() - oElapsed).GetTotalNanoSeconds());
}

TEST(KorStopwatch, CanBeDerivedFromAndIsNotCopied)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorTimeout>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorStopwatch>);
    EXPECT_FALSE(std::is_copy_constructible_v<CKorTimeout>);
    EXPECT_FALSE(std::is_copy_constructible_v<CKorStopwatch>);
    EXPECT_TRUE((std::is_convertible_v<unsigned int, CKorTimeout>))
        << "as the constructor is named";
}

} // namespace
