#include "tests/support/ScratchDir.h"
#include "tests/time/InstantSupport.h"
#include "tests/time/TimeZoneScope.h"
#include "tests/time/ZoneFile.h"
#include "time/KorLocalTime.h"
#include "time/KorTimeZone.h"

#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <unistd.h>

namespace
{

constexpr std::int64_t JULY_2024 = 1719792000;
constexpr std::int64_t JULY_2100 = 4118083200;

int OffsetAt(std::int64_t nSeconds)
{
    return KorGetUtcOffset(TimeOfUnix(nSeconds));
}

/// What the C library says.
int OffsetOfLibrary(std::int64_t nSeconds)
{
    const auto nTime = static_cast<time_t>(nSeconds);
    tm oLocal = {};
    tzset();
    EXPECT_NE(nullptr, localtime_r(&nTime, &oLocal));
    return static_cast<int>(oLocal.tm_gmtoff);
}

TEST(KorProcessZone, IsTheOneThatTheEnvironmentNames)
{
    const TimeZoneScope oScope("Europe/Berlin");
    EXPECT_EQ(7200, OffsetAt(JULY_2024));
    EXPECT_EQ(3600, OffsetAt(0));
}

TEST(KorProcessZone, TakesALocalTimeByItsInstant)
{
    const TimeZoneScope oScope("CET-1CEST,M3.5.0,M10.5.0/3");
    CKorLocalTime oLocal;
    oLocal.SetHighResolutionLocaltime(TicksOf(TimeOfUnix(1711846800))); // 2024-03-31T01:00Z
    oLocal.ChangeTimezone(-5);
    EXPECT_EQ(7200, KorGetUtcOffset(oLocal));
}

TEST(KorProcessZone, FollowsAChangeOfTheEnvironment)
{
    const TimeZoneScope oScope("AAA-1");
    EXPECT_EQ(3600, OffsetAt(0));
    setenv("TZ", "AAA-2", 1);
    EXPECT_EQ(7200, OffsetAt(0));
    setenv("TZ", "", 1);
    EXPECT_EQ(0, OffsetAt(0));
    setenv("TZ", ":Asia/Kolkata", 1);
    EXPECT_EQ(19800, OffsetAt(JULY_2024));
}

TEST(KorProcessZone, IsThatOfTheSystemWithoutAWordInTheEnvironment)
{
    const TimeZoneScope oScope("AAA-7");
    EXPECT_EQ(7 * 3600, OffsetAt(JULY_2024));
    unsetenv("TZ");
    for (const std::int64_t nSeconds : {std::int64_t{0}, JULY_2024, std::int64_t{1704067200}})
        EXPECT_EQ(OffsetOfLibrary(nSeconds), OffsetAt(nSeconds));
}

TEST(KorProcessZone, AgreesWithTheLibraryOnAllKindsOfText)
{
    RandomTicks oRandom;
    for (const char* pszZone :
         {"Europe/Berlin", "America/St_Johns", "Asia/Kathmandu", "UTC", ":Europe/Dublin", "AAA3",
          "EST5EDT,M3.2.0,M11.1.0", "<-03>3<-02>,M3.5.0/-2,M10.5.0/-1", "AAA-1BBB,J60/0,J300/0",
          "NZST-12NZDT,M9.5.0,M4.1.0/3", "AAA-1BBB,59/0,300/0", "AAA0BBB-1:30:30,M2.5.4/24,J365/1",
          "No/Such/Zone", "Nonsense", "Etc/GMT+12", "AAA24:59:59", "", ":"}) {
        const TimeZoneScope oScope(pszZone);
        for (int i = 0; i < 300; ++i) {
            const std::int64_t nSeconds = oRandom.Next(0, 2145916800); // to the end of 2037
            ASSERT_EQ(OffsetOfLibrary(nSeconds), OffsetAt(nSeconds)) << pszZone << " " << nSeconds;
        }
    }
}

TEST(KorProcessZone, FollowsAFileThatIsReplaced)
{
    const ScratchDir oDir;
    const std::string strPath = oDir.File("zone");
    ZoneFile oFile;
    const TimeZoneScope oScope(strPath);
    for (std::int32_t nOffset = 1; nOffset < 20; ++nOffset) {
        oFile.vecTypes[1].nOffset = nOffset;
        if (nOffset % 2 == 0) {
            WriteFile(strPath, oFile.Content()); // in place, and of the same size
        } else {
            WriteFile(oDir.File("new"), oFile.Content());
            ASSERT_EQ(0, rename(oDir.File("new").c_str(), strPath.c_str()));
        }
        EXPECT_EQ(nOffset, OffsetAt(0));
    }
    ASSERT_EQ(0, unlink(strPath.c_str()));
    EXPECT_EQ(0, OffsetAt(0));
    WriteFile(strPath, oFile.Content());
    EXPECT_EQ(19, OffsetAt(0));
}

TEST(KorProcessZone, FollowsAFileThatIsWrittenFasterThanItsTimesTell)
{
    const ScratchDir oDir;
    ZoneFile oZone;
    WriteFile(oDir.File("zone"), oZone.Content());
    const TimeZoneScope oScope(oDir.File("zone"));
    const int nFile = open(oDir.File("zone").c_str(), O_WRONLY);
    for (std::int32_t nOffset = 1; nOffset < 300; ++nOffset) {
        oZone.vecTypes[1].nOffset = nOffset;
        const std::string strContent = oZone.Content();
        ASSERT_EQ(static_cast<ssize_t>(strContent.size()),
                  pwrite(nFile, strContent.data(), strContent.size(), 0));
        ASSERT_EQ(nOffset, OffsetAt(0));
    }
    close(nFile);
}

TEST(KorProcessZone, ReadsNewFileVersions)
{
    const ScratchDir oDir;
    ZoneFile oFile;
    oFile.cVersion = '4';
    oFile.strFooter = "\nAAA-1BBB,M3.5.0/-30,M10.5.0/30\n";
    WriteFile(oDir.File("zone"), oFile.Content());
    const TimeZoneScope oScope(oDir.File("zone"));
    EXPECT_EQ(7200, OffsetAt(JULY_2100));
}

TEST(KorProcessZone, HoldsInstantsThatTheLibraryCannot)
{
    const TimeZoneScope oScope("Europe/Berlin");
    EXPECT_EQ(7200, OffsetAt(JULY_2100));
    EXPECT_EQ(3208, KorGetUtcOffset(TimeOfTicks(std::numeric_limits<std::int64_t>::min())));
    EXPECT_EQ(7200, OffsetAt(29991513600)); // in May of 2920
}

TEST(KorProcessZone, LeavesToTheLibraryWhatOnlyThatCanRead)
{
    const TimeZoneScope oScope("right/Asia/Kolkata");
    EXPECT_EQ(OffsetOfLibrary(JULY_2024), OffsetAt(JULY_2024));
}

TEST(KorProcessZone, IsLoadedByAnEmptyName)
{
    const TimeZoneScope oScope("AAA-1BBB,J1,J365/24");
    for (const char* pszName : {static_cast<const char*>(nullptr), ""}) {
        CKorTimeZone oZone;
        EXPECT_TRUE(oZone.Load(pszName));
        EXPECT_EQ(7200, oZone.GetOffset(TimeOfUnix(JULY_2024)));
        EXPECT_EQ("BBB", oZone.GetAbbreviation(TimeOfUnix(JULY_2024)));
    }
}

TEST(KorProcessZone, StaysAsItWasInAZoneThatLoadedIt)
{
    CKorTimeZone oZone;
    const TimeZoneScope oScope("AAA-1");
    EXPECT_TRUE(oZone.Load(""));
    setenv("TZ", "BBB-2", 1);
    EXPECT_EQ(7200, OffsetAt(0));
    EXPECT_EQ(3600, oZone.GetOffset(TimeOfUnix(0)));
}

TEST(KorProcessZone, IsLoadedAsUtcWhenItsNameMeansNothing)
{
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load("AAA-1"));
    const TimeZoneScope oScope("No/Such/Zone");
    EXPECT_TRUE(oZone.Load(""));
    EXPECT_EQ("UTC", oZone.GetAbbreviation(TimeOfUnix(0)));
    setenv("TZ", "", 1);
    EXPECT_TRUE(oZone.Load(""));
    EXPECT_EQ("UTC", oZone.GetAbbreviation(TimeOfUnix(0)));
}

TEST(KorProcessZone, IsNotLoadedFromAFileThatIsRefused)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("zone"), "TZif");
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load("AAA-1"));
    for (const std::string& strName : {oDir.File("zone"), std::string("right/Europe/Berlin"),
                                       std::string("../zoneinfo/Europe/Berlin")}) {
        const TimeZoneScope oScope(strName);
        EXPECT_FALSE(oZone.Load("")) << strName;
        EXPECT_EQ(3600, oZone.GetOffset(TimeOfUnix(0)));
    }
}

TEST(KorProcessZone, LeavesTheEnvironmentAlone)
{
    const TimeZoneScope oScope("Europe/Berlin");
    const char* const pszBefore = getenv("TZ");
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load("Asia/Kolkata"));
    EXPECT_EQ(7200, OffsetAt(JULY_2024));
    EXPECT_EQ(pszBefore, getenv("TZ"));
    EXPECT_STREQ("Europe/Berlin", getenv("TZ"));
}

TEST(KorProcessZone, MayBeAskedByManyThreads)
{
    const TimeZoneScope oScope("Europe/Berlin");
    std::vector<std::thread> vecThreads;
    std::vector<int> vecOffsets(4, 0);
    for (int& nOffset : vecOffsets) {
        vecThreads.emplace_back([&nOffset] {
            for (int i = 0; i < 500; ++i)
                nOffset = OffsetAt(JULY_2024 + i);
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(std::vector<int>(4, 7200), vecOffsets);
}

} // namespace
