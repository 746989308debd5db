#include "time/KorLocalTime.h"

#include "tests/time/TimeZoneScope.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

int ZoneIn(const std::string& strZone)
{
    const TimeZoneScope oScope(strZone);
    return CKorLocalTime::GetCurrentTimezone();
}

TEST(KorLocalTime, KnowsZonesWithoutDaylightSaving)
{
    EXPECT_EQ(0, ZoneIn("UTC0"));
    EXPECT_EQ(1, ZoneIn("CET-1"));
    EXPECT_EQ(9, ZoneIn("JST-9"));
    EXPECT_EQ(-5, ZoneIn("EST5"));
    EXPECT_EQ(-11, ZoneIn("SST11"));
    EXPECT_EQ(14, ZoneIn("LINT-14"));
}

TEST(KorLocalTime, CutsHalfHoursTowardGreenwich)
{
    EXPECT_EQ(5, ZoneIn("IST-5:30"));
    EXPECT_EQ(5, ZoneIn("NPT-5:45"));
    EXPECT_EQ(-9, ZoneIn("MART9:30"));
    EXPECT_EQ(0, ZoneIn("ZZZ-0:30"));
    EXPECT_EQ(0, ZoneIn("ZZZ0:30"));
}

TEST(KorLocalTime, AddsAnHourWhileDaylightSavingIsInForce)
{
    EXPECT_EQ(2, ZoneIn(ZoneWithDaylight("CET-1CEST", true)));
    EXPECT_EQ(1, ZoneIn(ZoneWithDaylight("CET-1CEST", false)));
    EXPECT_EQ(-4, ZoneIn(ZoneWithDaylight("EST5EDT", true)));
    EXPECT_EQ(-5, ZoneIn(ZoneWithDaylight("EST5EDT", false)));
    EXPECT_EQ(1, ZoneIn(ZoneWithDaylight("GMT0BST", true)));
    EXPECT_EQ(0, ZoneIn(ZoneWithDaylight("GMT0BST", false)));
    EXPECT_EQ(0, ZoneIn(ZoneWithDaylight("AZOT1AZOST", true)));
    EXPECT_EQ(-2, ZoneIn(ZoneWithDaylight("NST3:30NDT", true)));
    EXPECT_EQ(-3, ZoneIn(ZoneWithDaylight("NST3:30NDT", false)));
}

TEST(KorLocalTime, KnowsDaylightSavingThatIsNotOneHourForward)
{
    EXPECT_EQ(0, ZoneIn(ZoneWithDaylight("IST-1GMT0", true)));
    EXPECT_EQ(1, ZoneIn(ZoneWithDaylight("IST-1GMT0", false)));
    EXPECT_EQ(11, ZoneIn(ZoneWithDaylight("LHST-10:30LHDT-11", true)));
    EXPECT_EQ(10, ZoneIn(ZoneWithDaylight("LHST-10:30LHDT-11", false)));
}

} // namespace
