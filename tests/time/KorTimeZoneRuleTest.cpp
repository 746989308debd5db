#include "tests/support/ScratchDir.h"
#include "tests/time/ZoneSupport.h"

#include <limits>

namespace
{

TEST(KorTimeZoneRule, ReadsNamesAndOffsetsOfRules)
{
    EXPECT_EQ(-18000, OffsetAt(Zone("EST5"), 0));
    EXPECT_EQ(-18000, OffsetAt(Zone("EST+5"), 0));
    EXPECT_EQ(18000, OffsetAt(Zone("EST-5"), 0));
    EXPECT_EQ(-(5 * 3600 + 30 * 60), OffsetAt(Zone("EST05:30"), 0));
    EXPECT_EQ(5 * 3600 + 30 * 60 + 15, OffsetAt(Zone("EST-005:30:15"), 0));
    EXPECT_EQ(-(24 * 3600 + 59 * 60 + 59), OffsetAt(Zone("EST24:59:59"), 0));
    EXPECT_EQ(24 * 3600, OffsetAt(Zone("EST-24"), 0));
    EXPECT_EQ("<-03>", "<" + Zone("<-03>3").GetAbbreviation(TimeOfUnix(0)) + ">");
    EXPECT_EQ("A1+", Zone("<A1+>3").GetAbbreviation(TimeOfUnix(0)));
    EXPECT_EQ("Longer", Zone("Longer3").GetAbbreviation(TimeOfUnix(0)));
}

TEST(KorTimeZoneRule, ReadsSummerTimeOfRules)
{
    const CKorTimeZone oHour = Zone("AAA3BBB,J1,J365/24");
    EXPECT_EQ(-7200, OffsetAt(oHour, JULY_2024)) << "one hour ahead without a word";
    EXPECT_EQ("BBB", oHour.GetAbbreviation(TimeOfUnix(JULY_2024)));
    EXPECT_TRUE(oHour.IsSummerTime(TimeOfUnix(JULY_2024)));
    EXPECT_EQ(-9000, OffsetAt(Zone("AAA3BBB2:30,J1,J365/24"), JULY_2024));
    EXPECT_EQ(-14400, OffsetAt(Zone("AAA3<+04>+4,J1,J365/24"), JULY_2024));
}

TEST(KorTimeZoneRule, CountsDaysOfRulesFromOneWithoutLeapDays)
{
    // 1 March at 2:00 of standard time to 31 December at 2:00 of summer time.
    const CKorTimeZone oZone = Zone("AAA0BBB,J60,J365");
    for (const int nYear : {2023, 2024}) {
        EXPECT_EQ(0, OffsetAt(oZone, Utc(nYear, 3, 1, 1, 59, 59))) << nYear;
        EXPECT_EQ(3600, OffsetAt(oZone, Utc(nYear, 3, 1, 2))) << nYear;
        EXPECT_EQ(3600, OffsetAt(oZone, Utc(nYear, 12, 31, 0, 59, 59))) << nYear;
        EXPECT_EQ(0, OffsetAt(oZone, Utc(nYear, 12, 31, 1))) << nYear;
    }
    EXPECT_EQ(3600, OffsetAt(Zone("AAA0BBB,J59,J365"), Utc(2024, 2, 28, 2)));
    EXPECT_EQ(0, OffsetAt(Zone("AAA0BBB,J59,J365"), Utc(2024, 2, 28, 1)));
}

TEST(KorTimeZoneRule, CountsDaysOfRulesFromZeroWithLeapDays)
{
    const CKorTimeZone oZone = Zone("AAA0BBB,59/0,365/0");
    EXPECT_EQ(0, OffsetAt(oZone, Utc(2023, 3, 1) - 1));
    EXPECT_EQ(3600, OffsetAt(oZone, Utc(2023, 3, 1)));
    EXPECT_EQ(0, OffsetAt(oZone, Utc(2024, 2, 29) - 1));
    EXPECT_EQ(3600, OffsetAt(oZone, Utc(2024, 2, 29)));
    EXPECT_EQ(3600, OffsetAt(oZone, Utc(2024, 12, 30, 22, 59, 59)));
    EXPECT_EQ(0, OffsetAt(oZone, Utc(2024, 12, 30, 23)));
    EXPECT_EQ(3600, OffsetAt(oZone, Utc(2023, 12, 31, 22, 59, 59))) << "the day behind the year";
    EXPECT_EQ(0, OffsetAt(oZone, Utc(2023, 12, 31, 23)));
    EXPECT_EQ(3600, OffsetAt(Zone("AAA0BBB,0/0,J2/0"), Utc(2023, 1, 1)));
}

TEST(KorTimeZoneRule, FindsTheDaysOfWeeksOfRules)
{
    // 2024-09-01 is a Sunday; September has 30 days.
    const std::pair<const char*, int> aDays[] = {
        {"M9.1.0", 1}, {"M9.2.0", 8},  {"M9.4.0", 22}, {"M9.5.0", 29}, {"M9.1.1", 2},
        {"M9.1.6", 7}, {"M9.4.6", 28}, {"M9.5.6", 28}, {"M9.5.1", 30}, {"M9.5.2", 24}};
    for (const auto& oDay : aDays) {
        const CKorTimeZone oZone = Zone((std::string("AAA0BBB,") + oDay.first + "/0,J365").c_str());
        EXPECT_EQ(0, OffsetAt(oZone, Utc(2024, 9, oDay.second) - 1)) << oDay.first;
        EXPECT_EQ(3600, OffsetAt(oZone, Utc(2024, 9, oDay.second))) << oDay.first;
    }
    EXPECT_EQ(3600, OffsetAt(Zone("AAA0BBB,M2.5.4/0,J365"), Utc(2024, 2, 29)));
    EXPECT_EQ(3600, OffsetAt(Zone("AAA0BBB,M2.5.2/0,J365"), Utc(2023, 2, 28)));
}

TEST(KorTimeZoneRule, ReadsTimesOfRulesUpTo167HoursEitherWay)
{
    const CKorTimeZone oZone = Zone("AAA0BBB,J100/-167:59:59,J200/+167:30");
    const std::int64_t nBegin = Utc(2023, 1, 1) + 99 * DAY - (167 * 3600 + 59 * 60 + 59);
    const std::int64_t nEnd = Utc(2023, 1, 1) + 199 * DAY + 167 * 3600 + 30 * 60 - 3600;
    EXPECT_EQ(0, OffsetAt(oZone, nBegin - 1));
    EXPECT_EQ(3600, OffsetAt(oZone, nBegin));
    EXPECT_EQ(3600, OffsetAt(oZone, nEnd - 1));
    EXPECT_EQ(0, OffsetAt(oZone, nEnd));
    EXPECT_EQ(3600, OffsetAt(Zone("AAA0BBB,J1/-0:00:01,J200"), Utc(2022, 12, 31, 23, 59, 59)));
}

TEST(KorTimeZoneRule, TakesTheDatesOfTheUnitedStatesForARuleWithoutAny)
{
    const ScratchDir oNoFiles;
    const VariableScope oScope("TZDIR", oNoFiles.Path());
    const CKorTimeZone oZone = Zone("EST5EDT");
    EXPECT_EQ(-18000, OffsetAt(oZone, Utc(2024, 3, 10, 7) - 1));
    EXPECT_EQ(-14400, OffsetAt(oZone, Utc(2024, 3, 10, 7)));
    EXPECT_EQ(-14400, OffsetAt(oZone, Utc(2024, 11, 3, 6) - 1));
    EXPECT_EQ(-18000, OffsetAt(oZone, Utc(2024, 11, 3, 6)));
    EXPECT_EQ(-14400, OffsetAt(Zone("EST5EDT4"), JULY_2024));
}

TEST(KorTimeZoneRule, HasSummerOverNewYearInTheSouth)
{
    const CKorTimeZone oZone = Zone("NZST-12NZDT,M9.5.0,M4.1.0/3");
    EXPECT_EQ(13 * 3600, OffsetAt(oZone, JANUARY_2024));
    EXPECT_EQ(12 * 3600, OffsetAt(oZone, JULY_2024));
    EXPECT_EQ(13 * 3600, OffsetAt(oZone, Utc(2023, 12, 31, 23, 59, 59)));
}

TEST(KorTimeZoneRule, MayHaveSummerTimeAllYearLong)
{
    for (const char* pszRule : {"EST5EDT,0/0,J365/25", "ZZZ3EDT4,0/0,J365/23"}) {
        const CKorTimeZone oZone = Zone(pszRule);
        for (std::int64_t n = Utc(2022, 12, 25); n < Utc(2025, 1, 10); n += 1800)
            ASSERT_EQ(-14400, OffsetAt(oZone, n)) << pszRule << " " << n;
        EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 1, 1, 0, 0, 0)) << pszRule;
    }
}

TEST(KorTimeZoneRule, RefusesTextsThatAreNoRules)
{
    for (const char* pszRule : {"A",
                                "AA1",
                                "AAA",
                                "1",
                                "AAA+",
                                "AAA-",
                                "AAA--1",
                                "AAA25",
                                "AAA-25",
                                "AAA1:60",
                                "AAA1:00:60",
                                "AAA1:",
                                "AAA1:00:",
                                "AAA1:00:00:00",
                                "AAA1x",
                                "AAA1 ",
                                "<AA>1",
                                "<AAA1",
                                "<A A>1",
                                "<>1",
                                "A1A1",
                                "AA+1",
                                "AAA1BB",
                                "AAA1BBB25",
                                "AAA1BBB,",
                                "AAA1BBB,J1",
                                "AAA1BBB,J1,",
                                "AAA1BBB,J1,J2,",
                                "AAA1BBB,J1,J2,J3",
                                "AAA1BBB,J0,J2",
                                "AAA1BBB,J366,J2",
                                "AAA1BBB,366,J2",
                                "AAA1BBB,-1,J2",
                                "AAA1BBB,M0.1.0,J2",
                                "AAA1BBB,M13.1.0,J2",
                                "AAA1BBB,M3.0.0,J2",
                                "AAA1BBB,M3.6.0,J2",
                                "AAA1BBB,M3.1.7,J2",
                                "AAA1BBB,M3.1,J2",
                                "AAA1BBB,M3,J2",
                                "AAA1BBB,J1/,J2",
                                "AAA1BBB,J1/168,J2",
                                "AAA1BBB,J1/-168,J2",
                                "AAA1BBB,J1/2:60,J2",
                                "AAA1BBB,j1,J2",
                                "AAA1BBB;J1,J2",
                                "AAA1BBB,J1,J2/",
                                "AAA1BBB J1,J2",
                                "AAA1BBB,J1,J99999999999999999999",
                                "AAA99999999999999999999",
                                "\xC3\x84\xC3\x84\xC3\x84"
                                "1"})
        EXPECT_FALSE(CKorTimeZone().Load(pszRule)) << pszRule;
}

TEST(KorTimeZoneRule, FollowsItsRuleAtAnyInstant)
{
    const CKorTimeZone oRule = Zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const CKorTimeZone oFile = Zone("Europe/Berlin");
    for (const int nYear : {-2922, -401, -1, 0, 1, 1582, 1969, 1970, 2000, 2037, 2038, 2100, 2400,
                            2437, 2438, 2900, 2922}) {
        int nSunday = 31;
        while ((Utc(nYear, 3, nSunday) / DAY % 7 + 7) % 7 != 3) // 1970-01-04 was a Sunday
            --nSunday;
        const std::int64_t nChange = Utc(nYear, 3, nSunday, 1);
        EXPECT_EQ(3600, OffsetAt(oRule, nChange - 1)) << nYear;
        EXPECT_EQ(7200, OffsetAt(oRule, nChange)) << nYear;
        EXPECT_EQ(CKorTimeZone::KIND_NEVER, oRule.GetKind(nYear, 3, nSunday, 2, 30, 0)) << nYear;
        EXPECT_EQ(nYear < 1996 ? OffsetAt(oFile, nChange - 1) : 3600, OffsetAt(oFile, nChange - 1));
        EXPECT_EQ(nYear < 1996 ? OffsetAt(oFile, nChange) : 7200, OffsetAt(oFile, nChange))
            << nYear;
    }
    for (const std::int64_t nTicks :
         {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
        const int nOffset = oRule.GetOffset(TimeOfTicks(nTicks));
        EXPECT_TRUE(nOffset == 3600 || nOffset == 7200) << nTicks;
    }
    EXPECT_EQ(3208, oFile.GetOffset(TimeOfTicks(std::numeric_limits<std::int64_t>::min())));
}

TEST(KorTimeZoneRule, RepeatsItselfAfter400Years)
{
    constexpr std::int64_t CYCLE = 146097 * DAY;
    const CKorTimeZone oZone = Zone("CET-1CEST,M3.5.0,M10.5.0/3");
    RandomTicks oRandom;
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t nSeconds = oRandom.Next(0, CYCLE);
        for (const std::int64_t nCycles : {-12, -5, -1, 1})
            ASSERT_EQ(OffsetAt(oZone, nSeconds), OffsetAt(oZone, nSeconds + nCycles * CYCLE))
                << nSeconds;
    }
}

} // namespace
