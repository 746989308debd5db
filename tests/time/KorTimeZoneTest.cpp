#include "time/KorTimeZone.h"

#include "tests/support/ScratchDir.h"
#include "tests/time/InstantSupport.h"
#include "tests/time/TimeZoneScope.h"
#include "tests/time/ZoneFile.h"
#include "time/KorLocalTime.h"
#include "time/KorUnixTime.h"

#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>
#include <thread>

namespace
{

constexpr std::int64_t JANUARY_2024 = 1704067200;
constexpr std::int64_t JULY_2024 = 1719792000;
constexpr std::int64_t DAY = 86400;

CKorTimeZone Zone(const char* pszName)
{
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load(pszName)) << pszName;
    return oZone;
}

int OffsetAt(const CKorTimeZone& oZone, std::int64_t nSeconds)
{
    return oZone.GetOffset(TimeOfUnix(nSeconds));
}

/// The Unix second at which UTC shows this.
std::int64_t Utc(int nYear, int nMonth, int nDay, int nHour = 0, int nMinute = 0, int nSecond = 0)
{
    return KorToUnixTime(CKorTimeZone().ToUtc(nYear, nMonth, nDay, nHour, nMinute, nSecond));
}

/// An environment variable for the length of a scope.
class VariableScope
{
public:
    VariableScope(const char* pszName, const std::string& strValue) : m_pszName(pszName)
    {
        setenv(pszName, strValue.c_str(), 1);
    }
    ~VariableScope() { unsetenv(m_pszName); }
    VariableScope(const VariableScope&) = delete;
    VariableScope& operator=(const VariableScope&) = delete;

private:
    const char* m_pszName;
};

TEST(KorTimeZone, IsUtcBeforeTheFirstLoad)
{
    const CKorTimeZone oZone;
    EXPECT_EQ(0, OffsetAt(oZone, JULY_2024));
    EXPECT_FALSE(oZone.IsSummerTime(TimeOfUnix(JULY_2024)));
    EXPECT_EQ("UTC", oZone.GetAbbreviation(TimeOfUnix(JULY_2024)));
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 3, 31, 2, 30, 0));
    EXPECT_EQ(TimeOfUnix(1709647629), oZone.ToUtc(2024, 3, 5, 14, 7, 9));
}

TEST(KorTimeZone, KnowsOffsetFlagAndAbbreviationAtAnInstant)
{
    const CKorTimeZone oZone = Zone("Europe/Berlin");
    EXPECT_EQ(3600, OffsetAt(oZone, JANUARY_2024));
    EXPECT_EQ(7200, OffsetAt(oZone, JULY_2024));
    EXPECT_FALSE(oZone.IsSummerTime(TimeOfUnix(JANUARY_2024)));
    EXPECT_TRUE(oZone.IsSummerTime(TimeOfUnix(JULY_2024)));
    EXPECT_EQ("CET", oZone.GetAbbreviation(TimeOfUnix(JANUARY_2024)));
    EXPECT_EQ("CEST", oZone.GetAbbreviation(TimeOfUnix(JULY_2024)));
    EXPECT_EQ(19800, OffsetAt(Zone("Asia/Kolkata"), JULY_2024));
    EXPECT_EQ("+0545", Zone("Asia/Kathmandu").GetAbbreviation(TimeOfUnix(JULY_2024)));
}

TEST(KorTimeZone, HasTheFlagOfTheDataInDublin)
{
    const CKorTimeZone oZone = Zone("Europe/Dublin");
    EXPECT_TRUE(oZone.IsSummerTime(TimeOfUnix(JANUARY_2024)));
    EXPECT_FALSE(oZone.IsSummerTime(TimeOfUnix(JULY_2024)));
    EXPECT_EQ(0, OffsetAt(oZone, JANUARY_2024));
    EXPECT_EQ(3600, OffsetAt(oZone, JULY_2024));
}

TEST(KorTimeZone, TakesTimesByTheirInstantValidOrNot)
{
    const CKorTimeZone oZone = Zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const CKorUTCTime oChange = TimeOfUnix(Utc(2024, 3, 31, 1));
    CKorLocalTime oLocal;
    oLocal.SetHighResolutionLocaltime(TicksOf(oChange));
    oLocal.ChangeTimezone(-5);
    ASSERT_FALSE(oLocal.IsTimeValid());
    EXPECT_EQ(7200, oZone.GetOffset(oLocal));
    EXPECT_TRUE(oZone.IsSummerTime(oLocal));
    EXPECT_EQ("CEST", oZone.GetAbbreviation(oLocal));
}

TEST(KorTimeZone, ChangesAtTheVeryTick)
{
    const CKorTimeZone oZone = Zone("Europe/Berlin");
    const std::int64_t nChange = TicksOf(TimeOfUnix(Utc(2024, 3, 31, 1)));
    EXPECT_EQ(3600, oZone.GetOffset(TimeOfTicks(nChange - 1)));
    EXPECT_EQ(7200, oZone.GetOffset(TimeOfTicks(nChange)));
}

TEST(KorTimeZone, IsACopyableValue)
{
    CKorTimeZone oZone = Zone("AAA-1");
    const CKorTimeZone oCopy = oZone;
    ASSERT_TRUE(oZone.Load("BBB-2"));
    EXPECT_EQ(3600, OffsetAt(oCopy, 0));
    EXPECT_EQ(7200, OffsetAt(oZone, 0));
    oZone = oCopy;
    EXPECT_EQ(3600, OffsetAt(oZone, 0));
    const CKorTimeZone oMoved = std::move(oZone);
    EXPECT_EQ(3600, OffsetAt(oMoved, 0));
}

TEST(KorTimeZone, IsUnchangedWhenALoadFails)
{
    CKorTimeZone oZone = Zone("AAA-1");
    for (const char* pszName :
         {"No/Such/Zone", "/no/such/file", "Europe", "AAA-25", "right/Europe/Berlin", ":",
          "::AAA-1", "../zoneinfo/UTC", "Europe/../UTC", "UTC/..", "..", "zone.tab", " AAA-1"})
        EXPECT_FALSE(oZone.Load(pszName)) << pszName;
    EXPECT_EQ(3600, OffsetAt(oZone, 0));
}

TEST(KorTimeZone, SkipsAColonInFront)
{
    EXPECT_EQ(3600, OffsetAt(Zone(":Europe/Berlin"), JANUARY_2024));
    EXPECT_EQ(3600, OffsetAt(Zone(":/usr/share/zoneinfo/Europe/Berlin"), JANUARY_2024));
    EXPECT_EQ(3600, OffsetAt(Zone(":AAA-1"), 0));
}

TEST(KorTimeZone, LooksForNamesInTheDirectoryOfTheEnvironment)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("Mine"), ZoneFile().Content());
    WriteFile(oDir.File("EST5EDT"), ZoneFile().Content());
    ASSERT_EQ(0, mkdir(oDir.File("AAA-1").c_str(), 0700));
    {
        const VariableScope oScope("TZDIR", oDir.Path());
        EXPECT_EQ(7200, OffsetAt(Zone("Mine"), 0));
        EXPECT_EQ(7200, OffsetAt(Zone("./Mine"), 0));
        EXPECT_EQ(7200, OffsetAt(Zone("EST5EDT"), 0)) << "a file comes before a rule";
        EXPECT_EQ(3600, OffsetAt(Zone("AAA-1"), 0)) << "a directory is no file";
        EXPECT_FALSE(CKorTimeZone().Load("Europe/Berlin"));
        EXPECT_EQ(3600, OffsetAt(Zone("/usr/share/zoneinfo/Europe/Berlin"), JANUARY_2024));
    }
    const VariableScope oScope("TZDIR", "");
    EXPECT_EQ(3600, OffsetAt(Zone("Europe/Berlin"), JANUARY_2024));
}

TEST(KorTimeZone, RefusesADamagedFileEvenIfItsNameIsARule)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("AAA-1"), "TZif");
    const VariableScope oScope("TZDIR", oDir.Path());
    EXPECT_FALSE(CKorTimeZone().Load("AAA-1"));
}

TEST(KorTimeZone, ReadsNamesAndOffsetsOfRules)
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

TEST(KorTimeZone, ReadsSummerTimeOfRules)
{
    const CKorTimeZone oHour = Zone("AAA3BBB,J1,J365/24");
    EXPECT_EQ(-7200, OffsetAt(oHour, JULY_2024)) << "one hour ahead without a word";
    EXPECT_EQ("BBB", oHour.GetAbbreviation(TimeOfUnix(JULY_2024)));
    EXPECT_TRUE(oHour.IsSummerTime(TimeOfUnix(JULY_2024)));
    EXPECT_EQ(-9000, OffsetAt(Zone("AAA3BBB2:30,J1,J365/24"), JULY_2024));
    EXPECT_EQ(-14400, OffsetAt(Zone("AAA3<+04>+4,J1,J365/24"), JULY_2024));
}

TEST(KorTimeZone, CountsDaysOfRulesFromOneWithoutLeapDays)
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

TEST(KorTimeZone, CountsDaysOfRulesFromZeroWithLeapDays)
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

TEST(KorTimeZone, FindsTheDaysOfWeeksOfRules)
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

TEST(KorTimeZone, ReadsTimesOfRulesUpTo167HoursEitherWay)
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

TEST(KorTimeZone, TakesTheDatesOfTheUnitedStatesForARuleWithoutAny)
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

TEST(KorTimeZone, HasSummerOverNewYearInTheSouth)
{
    const CKorTimeZone oZone = Zone("NZST-12NZDT,M9.5.0,M4.1.0/3");
    EXPECT_EQ(13 * 3600, OffsetAt(oZone, JANUARY_2024));
    EXPECT_EQ(12 * 3600, OffsetAt(oZone, JULY_2024));
    EXPECT_EQ(13 * 3600, OffsetAt(oZone, Utc(2023, 12, 31, 23, 59, 59)));
}

TEST(KorTimeZone, MayHaveSummerTimeAllYearLong)
{
    for (const char* pszRule : {"EST5EDT,0/0,J365/25", "XXX3EDT4,0/0,J365/23"}) {
        const CKorTimeZone oZone = Zone(pszRule);
        for (std::int64_t n = Utc(2022, 12, 25); n < Utc(2025, 1, 10); n += 1800)
            ASSERT_EQ(-14400, OffsetAt(oZone, n)) << pszRule << " " << n;
        EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 1, 1, 0, 0, 0)) << pszRule;
    }
}

TEST(KorTimeZone, RefusesTextsThatAreNoRules)
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

TEST(KorTimeZone, FollowsItsRuleAtAnyInstant)
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

TEST(KorTimeZone, RepeatsItselfAfter400Years)
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

TEST(KorTimeZone, TellsHowOftenAReadingOccurs)
{
    const CKorTimeZone oZone = Zone("Europe/Berlin");
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 3, 31, 1, 59, 59));
    EXPECT_EQ(CKorTimeZone::KIND_NEVER, oZone.GetKind(2024, 3, 31, 2, 0, 0));
    EXPECT_EQ(CKorTimeZone::KIND_NEVER, oZone.GetKind(2024, 3, 31, 2, 59, 59));
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 3, 31, 3, 0, 0));
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 10, 27, 1, 59, 59));
    EXPECT_EQ(CKorTimeZone::KIND_TWICE, oZone.GetKind(2024, 10, 27, 2, 0, 0));
    EXPECT_EQ(CKorTimeZone::KIND_TWICE, oZone.GetKind(2024, 10, 27, 2, 59, 59));
    EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(2024, 10, 27, 3, 0, 0));
}

TEST(KorTimeZone, GivesTheInstantOfAReading)
{
    const CKorTimeZone oZone = Zone("Europe/Berlin");
    EXPECT_EQ(TimeOfUnix(Utc(2024, 7, 1, 10, 20, 30)), oZone.ToUtc(2024, 7, 1, 12, 20, 30));
    EXPECT_TRUE(oZone.ToUtc(2024, 7, 1, 12, 20, 30).IsTimeValid());
    EXPECT_EQ(TimeOfUnix(Utc(2024, 10, 27, 0, 30)), oZone.ToUtc(2024, 10, 27, 2, 30, 0));
    EXPECT_EQ(TimeOfUnix(Utc(2024, 10, 27, 1, 30)),
              oZone.ToUtc(2024, 10, 27, 2, 30, 0, CKorTimeZone::CHOICE_LATER));
    EXPECT_EQ(TimeOfUnix(Utc(2024, 3, 31, 0, 30)), oZone.ToUtc(2024, 3, 31, 2, 30, 0));
    EXPECT_EQ(TimeOfUnix(Utc(2024, 3, 31, 1, 30)),
              oZone.ToUtc(2024, 3, 31, 2, 30, 0, CKorTimeZone::CHOICE_LATER));
}

TEST(KorTimeZone, SkipsAWholeDayWhereTheZoneDid)
{
    const CKorTimeZone oZone = Zone("Pacific/Apia"); // went over the date line in 2011
    EXPECT_EQ(CKorTimeZone::KIND_NEVER, oZone.GetKind(2011, 12, 30, 12, 0, 0));
    EXPECT_EQ(TimeOfUnix(Utc(2011, 12, 29, 22)), oZone.ToUtc(2011, 12, 30, 12, 0, 0));
    EXPECT_EQ(TimeOfUnix(Utc(2011, 12, 30, 22)),
              oZone.ToUtc(2011, 12, 30, 12, 0, 0, CKorTimeZone::CHOICE_LATER));
}

TEST(KorTimeZone, HasNoInstantForPartsOutOfRange)
{
    const int aanParts[][6] = {
        {2024, 0, 1, 0, 0, 0},         {2024, 13, 1, 0, 0, 0}, {2024, 1, 0, 0, 0, 0},
        {2024, 1, 32, 0, 0, 0},        {2023, 2, 29, 0, 0, 0}, {2024, 1, 1, -1, 0, 0},
        {2024, 1, 1, 24, 0, 0},        {2024, 1, 1, 0, -1, 0}, {2024, 1, 1, 0, 60, 0},
        {2024, 1, 1, 0, 0, -1},        {2024, 1, 1, 0, 0, 60}, {2024, -2147483647, 1, 0, 0, 0},
        {2024, 1, 2147483647, 0, 0, 0}};
    for (const CKorTimeZone& oZone : {CKorTimeZone(), Zone("Europe/Berlin")}) {
        for (const auto& n : aanParts) {
            EXPECT_FALSE(oZone.ToUtc(n[0], n[1], n[2], n[3], n[4], n[5]).IsTimeValid());
            EXPECT_EQ(CKorTimeZone::KIND_NEVER, oZone.GetKind(n[0], n[1], n[2], n[3], n[4], n[5]));
        }
        EXPECT_TRUE(oZone.ToUtc(2024, 2, 29, 23, 59, 59).IsTimeValid());
    }
}

TEST(KorTimeZone, HasTheNearestInstantThatIsNotValidForReadingsBeyondTheRange)
{
    for (const CKorTimeZone& oZone :
         {CKorTimeZone(), Zone("Europe/Berlin"), Zone("CET-1CEST,M3.5.0,M10.5.0/3")}) {
        for (const int nYear : {2923, 9999, 2147483647}) {
            const CKorUTCTime oTime = oZone.ToUtc(nYear, 7, 1, 0, 0, 0);
            EXPECT_FALSE(oTime.IsTimeValid());
            EXPECT_EQ(std::numeric_limits<std::int64_t>::max(), TicksOf(oTime)) << nYear;
            EXPECT_EQ(CKorTimeZone::KIND_UNIQUE, oZone.GetKind(nYear, 7, 1, 0, 0, 0));
        }
        for (const int nYear : {-2924, -9999, std::numeric_limits<int>::min()}) {
            const CKorUTCTime oTime = oZone.ToUtc(nYear, 7, 1, 0, 0, 0);
            EXPECT_FALSE(oTime.IsTimeValid());
            EXPECT_EQ(std::numeric_limits<std::int64_t>::min(), TicksOf(oTime)) << nYear;
        }
        EXPECT_TRUE(oZone.ToUtc(-2900, 1, 1, 0, 0, 0).IsTimeValid());
    }
}

TEST(KorTimeZone, GivesBackTheReadingOfAnyInstant)
{
    RandomTicks oRandom;
    for (const char* pszName : {"Europe/Berlin", "Asia/Kolkata", "America/St_Johns", "Pacific/Apia",
                                "Africa/Casablanca", "AAA-14BBB,M9.5.0/-100,M4.1.0/120"}) {
        const CKorTimeZone oZone = Zone(pszName);
        for (int i = 0; i < 3000; ++i) {
            const std::int64_t nSeconds = oRandom.Next(-150000000000, 30000000000);
            // UTC shows at this instant what the zone shows at the other one.
            const std::int64_t nReading = nSeconds + OffsetAt(oZone, nSeconds);
            std::int64_t nDays = nReading / DAY - (nReading % DAY < 0 ? 1 : 0);
            const auto nOfDay = static_cast<int>(nReading - nDays * DAY);
            // Within the first of 400 years, in which the core calendar knows the date.
            const std::int64_t nCycles = (nDays + 719528 + 7200000 * 146097LL) / 146097 - 7200000;
            int n[3] = {};
            TimeOfUnix((nDays - nCycles * 146097) * DAY).CalcDate(n[0], n[1], n[2]);
            const auto nYear = static_cast<int>(n[0] + 400 * nCycles);
            const CKorUTCTime oEarlier =
                oZone.ToUtc(nYear, n[1], n[2], nOfDay / 3600, nOfDay / 60 % 60, nOfDay % 60);
            const CKorUTCTime oLater =
                oZone.ToUtc(nYear, n[1], n[2], nOfDay / 3600, nOfDay / 60 % 60, nOfDay % 60,
                            CKorTimeZone::CHOICE_LATER);
            ASSERT_TRUE(KorToUnixTime(oEarlier) == nSeconds || KorToUnixTime(oLater) == nSeconds)
                << pszName << " " << nSeconds;
        }
    }
}

TEST(KorTimeZone, MayBeAskedByManyThreads)
{
    const CKorTimeZone oZone = Zone("Europe/Berlin");
    std::vector<std::thread> vecThreads;
    std::vector<int> vecSums(4, 0);
    for (int& nSum : vecSums) {
        vecThreads.emplace_back([&oZone, &nSum] {
            const CKorTimeZone oCopy = oZone;
            for (int nDay = 0; nDay < 2000; ++nDay)
                nSum += OffsetAt(oZone, nDay * DAY) - OffsetAt(oCopy, nDay * DAY) +
                        static_cast<int>(oZone.GetAbbreviation(TimeOfUnix(nDay * DAY)).size());
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(std::vector<int>(4, vecSums[0]), vecSums);
    EXPECT_GE(vecSums[0], 3 * 2000);
}

} // namespace
