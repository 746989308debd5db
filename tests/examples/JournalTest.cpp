#include "tests/examples/JournalTest.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(Journal, GivesBackInOrderWhatWasWritten)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        Fill(oJournal, 7, 20);
        EXPECT_EQ(14U, oJournal.Count());
    }
    Journal oAgain;
    ASSERT_TRUE(oAgain.Open(oDir.File("j"), JOURNAL_SIZE));
    EXPECT_EQ(14U, oAgain.Count());
    EXPECT_EQ(20U, oAgain.Newest());
    JournalRecord oRecord;
    for (std::uint64_t n = 7; n <= 20; ++n) {
        ASSERT_TRUE(oAgain.FindAfter(n - 1, oRecord));
        EXPECT_EQ(n, oRecord.m_nSequence);
        EXPECT_EQ(Content(n), oRecord.m_strContent);
    }
    EXPECT_FALSE(oAgain.FindAfter(20, oRecord));
    EXPECT_EQ(0U, oAgain.Damaged());
}

TEST(Journal, WritesAllThatWasAppendedAtOnce)
{
    const ScratchDir oDir;
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), 200000));
    for (std::uint64_t n = 1; n <= 900; ++n)
        ASSERT_TRUE(oJournal.Append({n, Content(n)}));
    ASSERT_TRUE(oJournal.Write());
    EXPECT_EQ(900U, All(oJournal).size());
}

TEST(Journal, LetsTheOldestGiveWayAndCountsThem)
{
    const ScratchDir oDir;
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
    Fill(oJournal, 1, 1000);
    EXPECT_EQ(1000U, oJournal.Dropped() + oJournal.Count());
    EXPECT_EQ(oJournal.Dropped(), oJournal.NewestDropped());
    EXPECT_GT(oJournal.Count(), 80U);
    const JournalRecords mapRecords = All(oJournal);
    EXPECT_EQ(oJournal.Count(), mapRecords.size());
    EXPECT_EQ(oJournal.Dropped() + 1, mapRecords.begin()->first);
    EXPECT_EQ(1000U, mapRecords.rbegin()->first);
    EXPECT_EQ(0U, oJournal.Damaged());
    EXPECT_LE(std::filesystem::file_size(oDir.File("j")), JOURNAL_SIZE);
}

TEST(Journal, GoesOnBehindTheNewestRecordWhenItIsOpenedAgain)
{
    const ScratchDir oDir;
    std::uint64_t nNext = 1;
    for (int nRound = 0; nRound < 40; ++nRound) {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        Fill(oJournal, nNext, nNext + 30);
        nNext += 31;
        ASSERT_TRUE(oJournal.SetMarks({oJournal.NewestDropped(), 0, 0}));
        EXPECT_EQ(0U, oJournal.Missing(oJournal.NewestDropped()));
    }
    const JournalRecords mapRecords = AllIn(oDir.File("j"));
    EXPECT_EQ(nNext - 1, mapRecords.rbegin()->first);
    EXPECT_EQ(mapRecords.size(), nNext - mapRecords.begin()->first);
    EXPECT_GT(mapRecords.size(), 80U);
    for (const auto& [nSequence, strContent] : mapRecords)
        EXPECT_EQ(Content(nSequence), strContent);
}

TEST(Journal, ForgetsForGoodWhatItsMarksSay)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        EXPECT_FALSE(oJournal.HasMarks());
        Fill(oJournal, 1, 10);
        ASSERT_TRUE(oJournal.SetMarks({4, 77, 5}));
        oJournal.Forget(4);
        EXPECT_EQ(6U, oJournal.Count());
    }
    Journal oAgain;
    ASSERT_TRUE(oAgain.Open(oDir.File("j"), JOURNAL_SIZE));
    EXPECT_TRUE(oAgain.HasMarks());
    EXPECT_EQ(4U, oAgain.Marks().m_nDone);
    EXPECT_EQ(77U, oAgain.Marks().m_nReserved);
    EXPECT_EQ(5U, oAgain.Marks().m_nBoot);
    EXPECT_EQ(5U, All(oAgain).begin()->first);
    EXPECT_EQ(0U, oAgain.Damaged());
}

TEST(Journal, KeepsTheFormerMarksWhenTheNewOnesWereTorn)
{
    const ScratchDir oDir;
    for (int nLast = 3; nLast <= 4; ++nLast) {
        {
            Journal oJournal;
            ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
            for (std::uint64_t n = 1; n <= static_cast<std::uint64_t>(nLast); ++n)
                ASSERT_TRUE(oJournal.SetMarks({n, 0, 0}));
        }
        std::string strBytes = ReadFile(oDir.File("j"));
        strBytes[(nLast % 2 == 0 ? 0 : JOURNAL_MARKS_SPACING) + 14] ^= 1;
        WriteFile(oDir.File("j"), strBytes);
        Journal oAgain;
        ASSERT_TRUE(oAgain.Open(oDir.File("j"), JOURNAL_SIZE));
        EXPECT_EQ(static_cast<std::uint64_t>(nLast) - 1, oAgain.Marks().m_nDone);
        std::filesystem::remove(oDir.File("j"));
    }
}

TEST(Journal, IsForOneProcessAtATime)
{
    const ScratchDir oDir;
    Journal oFirst;
    ASSERT_TRUE(oFirst.Open(oDir.File("j"), JOURNAL_SIZE));
    Journal oSecond;
    EXPECT_FALSE(oSecond.Open(oDir.File("j"), JOURNAL_SIZE));
    EXPECT_EQ(EBUSY, errno);
}

TEST(Journal, RefusesWhatIsNoRegularFile)
{
    Journal oJournal;
    EXPECT_FALSE(oJournal.Open("/dev/null", JOURNAL_SIZE));
    EXPECT_EQ(EINVAL, errno);
    const ScratchDir oDir;
    std::filesystem::create_symlink(oDir.File("target"), oDir.File("link"));
    EXPECT_FALSE(oJournal.Open(oDir.File("link"), JOURNAL_SIZE));
    EXPECT_FALSE(std::filesystem::exists(oDir.File("target")));
}

TEST(Journal, RefusesARecordThatIsTooLong)
{
    const ScratchDir oDir;
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), 1000000));
    EXPECT_TRUE(oJournal.Append({1, std::string(JOURNAL_MAX_CONTENT, 'x')}));
    EXPECT_FALSE(oJournal.Append({2, std::string(JOURNAL_MAX_CONTENT + 1, 'x')}));
    EXPECT_TRUE(oJournal.Write());
    EXPECT_EQ(1U, All(oJournal).size());
}

TEST(Journal, ReadsAFileOfAnotherSizeLimit)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        Fill(oJournal, 1, 500);
    }
    const std::size_t nCount = AllIn(oDir.File("j")).size();
    for (const std::uint32_t nSize : {JOURNAL_SIZE / 2, JOURNAL_SIZE * 2}) {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), nSize));
        EXPECT_EQ(nCount, All(oJournal).size());
    }
    Journal oSmaller;
    ASSERT_TRUE(oSmaller.Open(oDir.File("j"), JOURNAL_SIZE / 2));
    Fill(oSmaller, 501, 900);
    EXPECT_EQ(900U, All(oSmaller).rbegin()->first);
    oSmaller.Forget(900);
    Fill(oSmaller, 901, 901);
    EXPECT_LE(std::filesystem::file_size(oDir.File("j")), JOURNAL_SIZE / 2);
}

TEST(Journal, CountsNoGapInFrontOfAnotherRun)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        Fill(oJournal, JOURNAL_RUN + 1, JOURNAL_RUN + 3);
        Fill(oJournal, 2 * JOURNAL_RUN, 2 * JOURNAL_RUN + 3);
    }
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
    EXPECT_EQ(7U, oJournal.Count());
    EXPECT_EQ(0U, oJournal.Missing(JOURNAL_RUN));
    EXPECT_EQ(0U, oJournal.Missing(0));
}

} // namespace
