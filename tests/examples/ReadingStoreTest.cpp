#include "examples/gateway/ReadingStore.h"
#include "tests/support/Confinement.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace
{

/// Directories for both journals of a store.
class StorePlace
{
public:
    StorePlace()
    {
        m_oSettings.m_strFile = m_oDisk.File("readings");
        m_oSettings.m_strMemoryDir = m_oMemory.Path();
        m_oSettings.m_nMaxSize = 200000;
    }

    /// What is on the disk alone, as after a power cut.
    void CutPower() const
    {
        for (const auto& oEntry : std::filesystem::directory_iterator(m_oMemory.Path()))
            std::filesystem::remove(oEntry.path());
    }

    ScratchDir m_oDisk;
    ScratchDir m_oMemory;
    StoreSettings m_oSettings;
};

/// Numbered contents of some length.
void Append(ReadingStore& rStore, int nFirst, int nLast, std::size_t nLength = 0)
{
    for (int n = nFirst; n <= nLast; ++n)
        rStore.Append(std::to_string(n) + std::string(nLength, ' '));
}

/// The numbers that wait, in order.
std::vector<int> Waiting(ReadingStore& rStore)
{
    std::vector<int> vecNumbers;
    JournalRecord oRecord;
    for (std::uint64_t nLast = 0; rStore.FindAfter(nLast, oRecord); nLast = oRecord.m_nSequence)
        vecNumbers.push_back(std::stoi(oRecord.m_strContent));
    return vecNumbers;
}

std::vector<int> Range(int nFirst, int nLast)
{
    std::vector<int> vecNumbers;
    for (int n = nFirst; n <= nLast; ++n)
        vecNumbers.push_back(n);
    return vecNumbers;
}

TEST(ReadingStore, KeepsReadingsUntilTheyAreAcknowledged)
{
    const StorePlace oPlace;
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    const std::uint64_t nFirst = oStore.NextSequence();
    Append(oStore, 1, 5);
    EXPECT_EQ(nFirst + 5, oStore.NextSequence());
    EXPECT_EQ(Range(1, 5), Waiting(oStore));
    oStore.Acknowledge(nFirst + 2);
    EXPECT_EQ(Range(4, 5), Waiting(oStore));
    EXPECT_EQ(2U, oStore.Count());
    EXPECT_EQ(nFirst + 2, oStore.Acknowledged());
}

// A process that is killed does no more than one whose objects are destroyed without a word.
TEST(ReadingStore, LosesNothingAndRepeatsNothingWhenItsProcessIsKilled)
{
    const StorePlace oPlace;
    std::uint64_t nNext = 0;
    {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        Append(oStore, 1, 3);
        ASSERT_TRUE(oStore.Flush(true));
        Append(oStore, 4, 6);
        oStore.Acknowledge(oStore.NextSequence() - 5); // the second one, which is on disk
        nNext = oStore.NextSequence();
    }
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    EXPECT_EQ(Range(3, 6), Waiting(oStore));
    EXPECT_EQ(nNext, oStore.NextSequence());
    EXPECT_EQ(0U, oStore.Damaged());
}

TEST(ReadingStore, LeavesNothingInMemoryAfterAnOrderlyEnd)
{
    const StorePlace oPlace;
    std::uint64_t nNext = 0;
    {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        Append(oStore, 1, 3);
        nNext = oStore.NextSequence();
        oStore.Close();
    }
    EXPECT_TRUE(std::filesystem::is_empty(oPlace.m_oMemory.Path()));
    {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        EXPECT_EQ(Range(1, 3), Waiting(oStore));
        EXPECT_EQ(nNext, oStore.NextSequence());
        Append(oStore, 4, 4);
    }
    oPlace.CutPower();
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    EXPECT_GT(oStore.NextSequence(), nNext + 1) << "that end was not an orderly one";
}

TEST(ReadingStore, LosesOnlyWhatCameAfterTheLastWriteWhenThePowerIsCut)
{
    const StorePlace oPlace;
    std::uint64_t nNext = 0;
    {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        Append(oStore, 1, 3);
        ASSERT_TRUE(oStore.Flush(true));
        Append(oStore, 4, 6);
        nNext = oStore.NextSequence();
    }
    oPlace.CutPower();
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    EXPECT_EQ(Range(1, 3), Waiting(oStore));
    EXPECT_GT(oStore.NextSequence(), nNext) << "numbers must not come twice";
    Append(oStore, 7, 8);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 7, 8}), Waiting(oStore));
}

TEST(ReadingStore, NeverGivesANumberTwiceThroughPowerCutsWithoutAWrite)
{
    const StorePlace oPlace;
    std::uint64_t nNext = 0;
    for (int nCut = 0; nCut < 5; ++nCut) {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        EXPECT_GE(oStore.NextSequence(), nNext);
        Append(oStore, 1, 100);
        nNext = oStore.NextSequence();
        oPlace.CutPower();
    }
}

TEST(ReadingStore, WritesNothingToTheDiskBetweenTwoFlushes)
{
    const StorePlace oPlace;
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    const std::string strBefore = ReadFile(oPlace.m_oSettings.m_strFile);
    Append(oStore, 1, 100);
    oStore.Acknowledge(oStore.NextSequence() - 50);
    EXPECT_EQ(strBefore, ReadFile(oPlace.m_oSettings.m_strFile));
    EXPECT_TRUE(oStore.IsFlushDue());
    EXPECT_TRUE(oStore.Flush(true));
    EXPECT_NE(strBefore, ReadFile(oPlace.m_oSettings.m_strFile));
    EXPECT_FALSE(oStore.IsFlushDue());
}

TEST(ReadingStore, HasNothingToWriteWhenAllIsAcknowledged)
{
    const StorePlace oPlace;
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    Append(oStore, 1, 10);
    oStore.Acknowledge(oStore.NextSequence() - 1);
    EXPECT_FALSE(oStore.IsFlushDue());
    Append(oStore, 11, 11);
    ASSERT_TRUE(oStore.Flush(true));
    oStore.Acknowledge(oStore.NextSequence() - 1);
    EXPECT_TRUE(oStore.IsFlushDue()) << "the disk does not know yet what was acknowledged";
}

TEST(ReadingStore, LetsTheOldestGiveWayWhenItIsFull)
{
    const StorePlace oPlace;
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    for (int nFirst = 1; nFirst <= 1000; nFirst += 100) {
        Append(oStore, nFirst, nFirst + 99, 1000);
        ASSERT_TRUE(oStore.Flush(false));
    }
    const std::vector<int> vecWaiting = Waiting(oStore);
    EXPECT_EQ(Range(vecWaiting.front(), 1000), vecWaiting);
    EXPECT_GT(vecWaiting.size(), 150U);
    EXPECT_EQ(1000U, vecWaiting.size() + oStore.Dropped());
    EXPECT_EQ(0U, oStore.Damaged());
    EXPECT_LE(std::filesystem::file_size(oPlace.m_oSettings.m_strFile), 200000U);
}

TEST(ReadingStore, CountsWhatItCannotReadBackAndGivesTheRest)
{
    const StorePlace oPlace;
    {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        Append(oStore, 1, 20);
        ASSERT_TRUE(oStore.Flush(true));
        Append(oStore, 21, 25);
    }
    std::string strBytes = ReadFile(oPlace.m_oSettings.m_strFile);
    for (const char* const pszContent : {"7", "8", "20"})
        strBytes[strBytes.find(pszContent, JOURNAL_HEADER + 20)] = '?';
    WriteFile(oPlace.m_oSettings.m_strFile, strBytes);
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    EXPECT_EQ(oStore.Count(), Waiting(oStore).size());
    EXPECT_GT(oStore.Damaged(), 0U);
    EXPECT_EQ(25U, oStore.Damaged() + oStore.Count());
    EXPECT_EQ(25, Waiting(oStore).back());
}

TEST(ReadingStore, IsForOneProcessAtATime)
{
    const StorePlace oPlace;
    ReadingStore oFirst(oPlace.m_oSettings);
    ASSERT_TRUE(oFirst.Open());
    ReadingStore oSecond(oPlace.m_oSettings);
    EXPECT_FALSE(oSecond.Open());
    EXPECT_EQ(EBUSY, errno);
}

TEST(ReadingStore, KeepsReadingsInTheProcessWithoutAFile)
{
    ReadingStore oStore((StoreSettings()));
    ASSERT_TRUE(oStore.Open());
    Append(oStore, 1, 400, 1000);
    EXPECT_TRUE(oStore.Flush(true));
    const std::vector<int> vecWaiting = Waiting(oStore);
    EXPECT_EQ(Range(vecWaiting.front(), 400), vecWaiting);
    EXPECT_EQ(400U, vecWaiting.size() + oStore.Dropped());
    EXPECT_GT(vecWaiting.size(), 250U);
    oStore.Acknowledge(oStore.NextSequence() - 1);
    EXPECT_EQ(0U, oStore.Count());
}

TEST(ReadingStore, KeepsTheYoungBesideTheOldWhereThereIsNoMemoryDirectory)
{
    StorePlace oPlace;
    oPlace.m_oSettings.m_strMemoryDir = "/nowhere/at/all";
    {
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        Append(oStore, 1, 3);
    }
    EXPECT_TRUE(std::filesystem::exists(oPlace.m_oSettings.m_strFile + ".young"));
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    EXPECT_EQ(Range(1, 3), Waiting(oStore));
}

TEST(ReadingStore, DropsAReadingThatIsTooLong)
{
    const StorePlace oPlace;
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    Append(oStore, 1, 1, JOURNAL_MAX_CONTENT);
    Append(oStore, 2, 2);
    EXPECT_EQ(Range(2, 2), Waiting(oStore));
    EXPECT_EQ(1U, oStore.Dropped());
}

TEST(ReadingStore, FindsADirectoryThatComesLater)
{
    StorePlace oPlace;
    oPlace.m_oSettings.m_strFile = oPlace.m_oDisk.File("later/readings");
    ReadingStore oStore(oPlace.m_oSettings);
    ASSERT_TRUE(oStore.Open());
    Append(oStore, 1, 3);
    EXPECT_FALSE(oStore.Flush(true));
    EXPECT_NE(std::string::npos, oStore.LastError().find("No such file"));
    EXPECT_EQ(Range(1, 3), Waiting(oStore));
    std::filesystem::create_directory(oPlace.m_oDisk.File("later"));
    EXPECT_TRUE(oStore.Flush(true));
    EXPECT_EQ("", oStore.LastError());
    EXPECT_EQ(Range(1, 3), Waiting(oStore));
}

TEST(ReadingStore, KeepsReadingsWhileItsDiskIsFullAndWritesThemWhenThereIsRoom)
{
    InChild([] {
        StorePlace oPlace;
        if (!MountSmallDisk(oPlace.m_oDisk.Path()))
            return; // the machine lets nobody mount
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        WriteFile(oPlace.m_oDisk.File("filler"), std::string(40000, 'f'));
        Append(oStore, 1, 100, 1000);
        EXPECT_FALSE(oStore.Flush(true));
        EXPECT_NE(std::string::npos, oStore.LastError().find("No space left"));
        EXPECT_EQ(Range(1, 100), Waiting(oStore));
        Append(oStore, 101, 110, 1000);
        EXPECT_FALSE(oStore.Flush(true));
        EXPECT_EQ(Range(1, 110), Waiting(oStore));
        oStore.Acknowledge(oStore.NextSequence() - 31);
        std::filesystem::remove(oPlace.m_oDisk.File("filler"));
        EXPECT_TRUE(oStore.Flush(true)) << oStore.LastError();
        EXPECT_EQ(Range(81, 110), Waiting(oStore));
        EXPECT_EQ(0U, oStore.Dropped());
        EXPECT_EQ(0U, oStore.Damaged());
    });
}

TEST(ReadingStore, TakesASizeLimitOfTheProcessForAFullDisk)
{
    InChild([] {
        const StorePlace oPlace;
        ReadingStore oStore(oPlace.m_oSettings);
        ASSERT_TRUE(oStore.Open());
        rlimit oLimit = {};
        getrlimit(RLIMIT_FSIZE, &oLimit);
        oLimit.rlim_cur = 20000;
        setrlimit(RLIMIT_FSIZE, &oLimit);
        Append(oStore, 1, 150, 1000);
        EXPECT_FALSE(oStore.Flush(true));
        EXPECT_EQ(Range(1, 150), Waiting(oStore));
        Append(oStore, 151, 500, 1000);
        const std::vector<int> vecWaiting = Waiting(oStore);
        EXPECT_EQ(500U, vecWaiting.size() + oStore.Dropped());
        EXPECT_EQ(500, vecWaiting.back());
        oLimit.rlim_cur = oLimit.rlim_max;
        setrlimit(RLIMIT_FSIZE, &oLimit);
        EXPECT_TRUE(oStore.Flush(true));
        EXPECT_EQ(0U, oStore.Damaged());
        EXPECT_EQ(500, Waiting(oStore).back());
    });
}

} // namespace
