#include "examples/gateway/Journal.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/Seed.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{

constexpr std::uint32_t SIZE = 20000;

using Records = std::map<std::uint64_t, std::string>;

/// All that a journal has, by number.
Records All(Journal& rJournal)
{
    Records mapRecords;
    JournalRecord oRecord;
    for (std::uint64_t nLast = 0; rJournal.FindAfter(nLast, oRecord); nLast = oRecord.m_nSequence)
        mapRecords[oRecord.m_nSequence] = oRecord.m_strContent;
    return mapRecords;
}

/// What a fresh look at the file gives.
Records AllIn(const std::string& strFile)
{
    Journal oJournal;
    EXPECT_TRUE(oJournal.Open(strFile, SIZE));
    return All(oJournal);
}

/// A content that tells its number, of a length between 1 and 200.
std::string Content(std::uint64_t nSequence)
{
    return std::to_string(nSequence) +
           std::string(static_cast<std::size_t>(nSequence * 37 % 200), 'x');
}

/// Writes records nFirst to nLast.
void Fill(Journal& rJournal, std::uint64_t nFirst, std::uint64_t nLast)
{
    for (std::uint64_t n = nFirst; n <= nLast; ++n)
        ASSERT_TRUE(rJournal.Append({n, Content(n)}) && rJournal.Write());
}

/// Where the whole records of a file stand: number to place and size.
std::map<std::uint64_t, std::pair<std::size_t, std::size_t>> Places(const std::string& strBytes)
{
    std::map<std::uint64_t, std::pair<std::size_t, std::size_t>> mapPlaces;
    for (std::size_t n = JOURNAL_HEADER; n < strBytes.size(); n += JOURNAL_ALIGNMENT) {
        JournalRecord oRecord;
        const std::string_view strRest = std::string_view(strBytes).substr(n);
        if (DecodeJournalRecord(static_cast<std::uint32_t>(n), strRest, oRecord))
            mapPlaces[oRecord.m_nSequence] = {n,
                                              JOURNAL_RECORD_HEADER + oRecord.m_strContent.size()};
    }
    return mapPlaces;
}

TEST(Journal, GivesBackInOrderWhatWasWritten)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        Fill(oJournal, 7, 20);
        EXPECT_EQ(14U, oJournal.Count());
    }
    Journal oAgain;
    ASSERT_TRUE(oAgain.Open(oDir.File("j"), SIZE));
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
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
    Fill(oJournal, 1, 1000);
    EXPECT_EQ(1000U, oJournal.Dropped() + oJournal.Count());
    EXPECT_EQ(oJournal.Dropped(), oJournal.NewestDropped());
    EXPECT_GT(oJournal.Count(), 80U);
    const Records mapRecords = All(oJournal);
    EXPECT_EQ(oJournal.Count(), mapRecords.size());
    EXPECT_EQ(oJournal.Dropped() + 1, mapRecords.begin()->first);
    EXPECT_EQ(1000U, mapRecords.rbegin()->first);
    EXPECT_EQ(0U, oJournal.Damaged());
    EXPECT_LE(std::filesystem::file_size(oDir.File("j")), SIZE);
}

TEST(Journal, GoesOnBehindTheNewestRecordWhenItIsOpenedAgain)
{
    const ScratchDir oDir;
    std::uint64_t nNext = 1;
    for (int nRound = 0; nRound < 40; ++nRound) {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        Fill(oJournal, nNext, nNext + 30);
        nNext += 31;
        ASSERT_TRUE(oJournal.SetMarks({oJournal.NewestDropped(), 0, 0}));
        EXPECT_EQ(0U, oJournal.Missing(oJournal.NewestDropped()));
    }
    const Records mapRecords = AllIn(oDir.File("j"));
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
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        EXPECT_FALSE(oJournal.HasMarks());
        Fill(oJournal, 1, 10);
        ASSERT_TRUE(oJournal.SetMarks({4, 77, 5}));
        oJournal.Forget(4);
        EXPECT_EQ(6U, oJournal.Count());
    }
    Journal oAgain;
    ASSERT_TRUE(oAgain.Open(oDir.File("j"), SIZE));
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
            ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
            for (std::uint64_t n = 1; n <= static_cast<std::uint64_t>(nLast); ++n)
                ASSERT_TRUE(oJournal.SetMarks({n, 0, 0}));
        }
        std::string strBytes = ReadFile(oDir.File("j"));
        strBytes[(nLast % 2 == 0 ? 0 : JOURNAL_MARKS_SPACING) + 14] ^= 1;
        WriteFile(oDir.File("j"), strBytes);
        Journal oAgain;
        ASSERT_TRUE(oAgain.Open(oDir.File("j"), SIZE));
        EXPECT_EQ(static_cast<std::uint64_t>(nLast) - 1, oAgain.Marks().m_nDone);
        std::filesystem::remove(oDir.File("j"));
    }
}

TEST(Journal, LosesTheLastRecordAloneWhenTheFileEndsAnywhereInIt)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        Fill(oJournal, 1, 9);
    }
    const std::string strBytes = ReadFile(oDir.File("j"));
    const std::size_t nLast = Places(strBytes)[9].first;
    for (std::size_t n = nLast; n < nLast + Places(strBytes)[9].second; ++n) {
        WriteFile(oDir.File("j"), strBytes.substr(0, n));
        EXPECT_EQ(8U, AllIn(oDir.File("j")).size()) << n;
    }
    Journal oGoesOn;
    ASSERT_TRUE(oGoesOn.Open(oDir.File("j"), SIZE));
    Fill(oGoesOn, 9, 12);
    EXPECT_EQ(12U, All(oGoesOn).size());
}

TEST(Journal, TakesNoCopyOfARecordForARecord)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        const std::string strCopy = EncodeJournalRecord(JOURNAL_HEADER, 5, "forged");
        ASSERT_TRUE(oJournal.Append({1, strCopy + strCopy}));
        ASSERT_TRUE(oJournal.Append({2, "two"}) && oJournal.Write());
    }
    std::string strBytes = ReadFile(oDir.File("j"));
    strBytes[JOURNAL_HEADER] = '?';
    WriteFile(oDir.File("j"), strBytes);
    EXPECT_EQ((Records{{2, "two"}}), AllIn(oDir.File("j")));
}

TEST(Journal, IsForOneProcessAtATime)
{
    const ScratchDir oDir;
    Journal oFirst;
    ASSERT_TRUE(oFirst.Open(oDir.File("j"), SIZE));
    Journal oSecond;
    EXPECT_FALSE(oSecond.Open(oDir.File("j"), SIZE));
    EXPECT_EQ(EBUSY, errno);
}

TEST(Journal, RefusesWhatIsNoRegularFile)
{
    Journal oJournal;
    EXPECT_FALSE(oJournal.Open("/dev/null", SIZE));
    EXPECT_EQ(EINVAL, errno);
    const ScratchDir oDir;
    std::filesystem::create_symlink(oDir.File("target"), oDir.File("link"));
    EXPECT_FALSE(oJournal.Open(oDir.File("link"), SIZE));
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
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        Fill(oJournal, 1, 500);
    }
    const std::size_t nCount = AllIn(oDir.File("j")).size();
    for (const std::uint32_t nSize : {SIZE / 2, SIZE * 2}) {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), nSize));
        EXPECT_EQ(nCount, All(oJournal).size());
    }
    Journal oSmaller;
    ASSERT_TRUE(oSmaller.Open(oDir.File("j"), SIZE / 2));
    Fill(oSmaller, 501, 900);
    EXPECT_EQ(900U, All(oSmaller).rbegin()->first);
    oSmaller.Forget(900);
    Fill(oSmaller, 901, 901);
    EXPECT_LE(std::filesystem::file_size(oDir.File("j")), SIZE / 2);
}

/// A journal that went round several times, with its bytes.
std::string FullJournal(const std::string& strFile, std::uint64_t nDone, std::uint64_t nLast)
{
    {
        Journal oJournal;
        EXPECT_TRUE(oJournal.Open(strFile, SIZE));
        Fill(oJournal, 1, nLast);
        EXPECT_TRUE(oJournal.SetMarks({nDone, 0, 0}));
        EXPECT_TRUE(oJournal.SetMarks({nDone, 0, 0}));
    }
    return ReadFile(strFile);
}

TEST(Journal, GivesBackEveryRecordThatRandomDamageLeftWholeAndNoOther)
{
    std::mt19937 oDice(TestSeed());
    const ScratchDir oDir;
    const std::string strFile = oDir.File("j");
    const std::string strIntact = FullJournal(strFile, 250, 400);
    const auto mapPlaces = Places(strIntact);
    for (int nRound = 0; nRound < 300; ++nRound) {
        std::string strBytes = strIntact;
        std::set<std::size_t> setHit;
        for (auto nLeft = 1 + oDice() % 60; nLeft > 0; --nLeft) {
            const std::size_t nHit = JOURNAL_HEADER + oDice() % (strBytes.size() - JOURNAL_HEADER);
            strBytes[nHit] = static_cast<char>(strBytes[nHit] + 1 + oDice() % 255);
            setHit.insert(nHit);
        }
        WriteFile(strFile, strBytes);
        Records mapExpected;
        for (const auto& [nSequence, oPlace] : mapPlaces) {
            const auto iHit = setHit.lower_bound(oPlace.first);
            if (nSequence > 250 && (iHit == setHit.end() || *iHit >= oPlace.first + oPlace.second))
                mapExpected[nSequence] = Content(nSequence);
        }
        // A byte that was hit twice may be as before: nothing but whole records may come.
        Records mapFound = AllIn(strFile);
        for (const auto& [nSequence, strContent] : mapFound)
            ASSERT_EQ(Content(nSequence), strContent) << nRound;
        for (const auto& [nSequence, strContent] : mapExpected)
            ASSERT_EQ(1U, mapFound.count(nSequence)) << nRound << " lost " << nSequence;
    }
}

TEST(Journal, CountsTheRecordsThatDamageTook)
{
    const ScratchDir oDir;
    std::string strBytes = FullJournal(oDir.File("j"), 300, 400);
    const auto mapPlaces = Places(strBytes);
    for (const std::uint64_t nHit : {301, 350, 351})
        strBytes[mapPlaces.at(nHit).first + 18] ^= 0x40;
    WriteFile(oDir.File("j"), strBytes);
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
    EXPECT_EQ(97U, All(oJournal).size());
    EXPECT_EQ(3U, oJournal.Missing(300));
}

TEST(Journal, PassesOverWhatIsDamagedWhileItIsOpen)
{
    const ScratchDir oDir;
    const std::string strBytes = FullJournal(oDir.File("j"), 300, 400);
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
    std::string strDamaged = strBytes;
    strDamaged[Places(strBytes).at(310).first + 18] ^= 0x40;
    WriteFile(oDir.File("j"), strDamaged);
    EXPECT_EQ(99U, All(oJournal).size());
    EXPECT_EQ(1U, oJournal.Damaged());
    EXPECT_EQ(99U, oJournal.Count());
}

TEST(Journal, CountsNoGapInFrontOfAnotherRun)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
        Fill(oJournal, JOURNAL_RUN + 1, JOURNAL_RUN + 3);
        Fill(oJournal, 2 * JOURNAL_RUN, 2 * JOURNAL_RUN + 3);
    }
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), SIZE));
    EXPECT_EQ(7U, oJournal.Count());
    EXPECT_EQ(0U, oJournal.Missing(JOURNAL_RUN));
    EXPECT_EQ(0U, oJournal.Missing(0));
}

// After a power cut each sector written since the last sync is the old or the new one.
TEST(Journal, KeepsWhatWasSyncedAndNotOverwrittenThroughAPowerCut)
{
    constexpr std::size_t SECTOR = 512;
    std::mt19937 oDice(TestSeed());
    const ScratchDir oDir;
    const std::string strFile = oDir.File("j");
    for (int nRound = 0; nRound < 100; ++nRound) {
        std::filesystem::remove(strFile);
        const std::uint64_t nSynced = 20 + oDice() % 400;
        const std::string strOld = FullJournal(strFile, 0, nSynced);
        std::uint64_t nDropped = 0;
        {
            Journal oJournal;
            ASSERT_TRUE(oJournal.Open(strFile, SIZE));
            Fill(oJournal, nSynced + 1, nSynced + 1 + oDice() % 60);
            nDropped = oJournal.NewestDropped();
        }
        std::string strMixed = ReadFile(strFile);
        for (std::size_t n = 0; n < strMixed.size(); n += SECTOR) {
            if (oDice() % 2 == 0)
                strMixed.replace(n, SECTOR, strOld.substr(std::min(n, strOld.size()), SECTOR));
            strMixed.resize(std::max(strMixed.size(), n));
        }
        WriteFile(strFile, strMixed);
        const Records mapFound = AllIn(strFile);
        for (const auto& [nSequence, strContent] : mapFound)
            ASSERT_EQ(Content(nSequence), strContent);
        for (const auto& [nSequence, oPlace] : Places(strOld))
            ASSERT_TRUE(nSequence <= nDropped || mapFound.count(nSequence) == 1) << nSequence;
    }
}

} // namespace
