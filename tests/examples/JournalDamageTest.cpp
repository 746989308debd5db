// Journals the files of which were damaged or cut off.

#include "tests/examples/JournalTest.h"
#include "tests/support/Seed.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>

namespace
{

TEST(JournalDamage, LosesTheLastRecordAloneWhenTheFileEndsAnywhereInIt)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        Fill(oJournal, 1, 9);
    }
    const std::string strBytes = ReadFile(oDir.File("j"));
    const std::size_t nLast = Places(strBytes)[9].first;
    for (std::size_t n = nLast; n < nLast + Places(strBytes)[9].second; ++n) {
        WriteFile(oDir.File("j"), strBytes.substr(0, n));
        EXPECT_EQ(8U, AllIn(oDir.File("j")).size()) << n;
    }
    Journal oGoesOn;
    ASSERT_TRUE(oGoesOn.Open(oDir.File("j"), JOURNAL_SIZE));
    Fill(oGoesOn, 9, 12);
    EXPECT_EQ(12U, All(oGoesOn).size());
}

TEST(JournalDamage, TakesNoCopyOfARecordForARecord)
{
    const ScratchDir oDir;
    {
        Journal oJournal;
        ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
        const std::string strCopy = EncodeJournalRecord(JOURNAL_HEADER, 5, "forged");
        ASSERT_TRUE(oJournal.Append({1, strCopy + strCopy}));
        ASSERT_TRUE(oJournal.Append({2, "two"}) && oJournal.Write());
    }
    std::string strBytes = ReadFile(oDir.File("j"));
    strBytes[JOURNAL_HEADER] = '?';
    WriteFile(oDir.File("j"), strBytes);
    EXPECT_EQ((JournalRecords{{2, "two"}}), AllIn(oDir.File("j")));
}

/// A journal that went round several times, with its bytes.
std::string FullJournal(const std::string& strFile, std::uint64_t nDone, std::uint64_t nLast)
{
    {
        Journal oJournal;
        EXPECT_TRUE(oJournal.Open(strFile, JOURNAL_SIZE));
        Fill(oJournal, 1, nLast);
        EXPECT_TRUE(oJournal.SetMarks({nDone, 0, 0}));
        EXPECT_TRUE(oJournal.SetMarks({nDone, 0, 0}));
    }
    return ReadFile(strFile);
}

TEST(JournalDamage, GivesBackEveryRecordThatRandomDamageLeftWholeAndNoOther)
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
        JournalRecords mapExpected;
        for (const auto& [nSequence, oPlace] : mapPlaces) {
            const auto iHit = setHit.lower_bound(oPlace.first);
            if (nSequence > 250 && (iHit == setHit.end() || *iHit >= oPlace.first + oPlace.second))
                mapExpected[nSequence] = Content(nSequence);
        }
        // A byte that was hit twice may be as before: nothing but whole records may come.
        JournalRecords mapFound = AllIn(strFile);
        for (const auto& [nSequence, strContent] : mapFound)
            ASSERT_EQ(Content(nSequence), strContent) << nRound;
        for (const auto& [nSequence, strContent] : mapExpected)
            ASSERT_EQ(1U, mapFound.count(nSequence)) << nRound << " lost " << nSequence;
    }
}

TEST(JournalDamage, CountsTheRecordsThatDamageTook)
{
    const ScratchDir oDir;
    std::string strBytes = FullJournal(oDir.File("j"), 300, 400);
    const auto mapPlaces = Places(strBytes);
    for (const std::uint64_t nHit : {301, 350, 351})
        strBytes[mapPlaces.at(nHit).first + 18] ^= 0x40;
    WriteFile(oDir.File("j"), strBytes);
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
    EXPECT_EQ(97U, All(oJournal).size());
    EXPECT_EQ(3U, oJournal.Missing(300));
}

TEST(JournalDamage, PassesOverWhatIsDamagedWhileItIsOpen)
{
    const ScratchDir oDir;
    const std::string strBytes = FullJournal(oDir.File("j"), 300, 400);
    Journal oJournal;
    ASSERT_TRUE(oJournal.Open(oDir.File("j"), JOURNAL_SIZE));
    std::string strDamaged = strBytes;
    strDamaged[Places(strBytes).at(310).first + 18] ^= 0x40;
    WriteFile(oDir.File("j"), strDamaged);
    EXPECT_EQ(99U, All(oJournal).size());
    EXPECT_EQ(1U, oJournal.Damaged());
    EXPECT_EQ(99U, oJournal.Count());
}

// After a power cut each sector written since the last sync is the old or the new one.
TEST(JournalDamage, KeepsWhatWasSyncedAndNotOverwrittenThroughAPowerCut)
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
            ASSERT_TRUE(oJournal.Open(strFile, JOURNAL_SIZE));
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
        const JournalRecords mapFound = AllIn(strFile);
        for (const auto& [nSequence, strContent] : mapFound)
            ASSERT_EQ(Content(nSequence), strContent);
        for (const auto& [nSequence, oPlace] : Places(strOld))
            ASSERT_TRUE(nSequence <= nDropped || mapFound.count(nSequence) == 1) << nSequence;
    }
}

} // namespace
