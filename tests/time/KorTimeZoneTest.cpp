#include "time/KorTimeZone.h"

#include "tests/support/ScratchDir.h"
#include "tests/time/ZoneFile.h"
#include "tests/time/ZoneSupport.h"
#include "time/KorLocalTime.h"

#include <limits>
#include <sys/stat.h>
#include <thread>

namespace
{

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
