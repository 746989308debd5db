// What is left of a file when replacing it fails or is cut short: always all of the old content or
// all of the new one.

#include "fs/KorWholeFile.h"
#include "tests/support/CallWatch.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Confinement.h"
#include "tests/support/Emulation.h"
#include "tests/support/EntriesOf.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <signal.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace
{

constexpr size_t SIZE = 50000;

/// A content that shows whether it is whole.
std::string Content(char c)
{
    return std::string(SIZE, c) + "end";
}

bool IsWhole(const std::string& strContent)
{
    return !strContent.empty() && strContent == Content(strContent[0]);
}

class KorWholeFileFault : public testing::Test
{
protected:
    /// Replaces the file for ever.
    int WriteForEver() const
    {
        for (char c = 'a';; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
            if (!KorReplaceFile(m_strFile.c_str(), Content(c)))
                return errno;
        }
    }

    std::string m_strNew; ///< what each look found
    ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("file");
};

TEST_F(KorWholeFileFault, EachCallThatFailsIsToldAndLeavesAWholeFile)
{
    bool bResult = false;
    int nError = 0;
    const auto fnRun = [&] {
        bResult = KorReplaceFile(m_strFile.c_str(), Content('1'));
        nError = bResult ? 0 : errno;
    };
    const auto fnLook = [&](const std::string& strFailed) {
        const std::string strNow = ReadFile(m_strFile);
        m_strNew += strNow == Content('1') ? "1" : strNow == Content('0') ? "0" : "?";
        EXPECT_EQ(strFailed.empty(), bResult) << strFailed;
        EXPECT_EQ(strFailed.empty() ? 0 : EIO, nError) << strFailed;
        EXPECT_EQ(1, EntriesOf(m_oDir.Path())) << strFailed;
    };
    WriteFile(m_strFile, Content('0'));
    EXPECT_EQ("open open open write fchown fsync rename fsync ", FailEachCall(EIO, fnRun, fnLook));
    // Only the last call, which syncs the directory, comes when the new content has its name.
    EXPECT_EQ("000000011", m_strNew);
}

TEST_F(KorWholeFileFault, AnInterruptedOrShortCallGoesOn)
{
    int nInterrupted = 0;
    const CallWatch oWatch([&](const std::string& strCall) {
        const bool bInterrupt =
            (strCall == "read" || strCall == "write") && nInterrupted++ % 2 == 0;
        return bInterrupt ? EINTR : 0;
    });
    EXPECT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('1')));
    std::string strRead;
    EXPECT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ(Content('1'), strRead);
    EXPECT_LE(4, nInterrupted);
}

TEST_F(KorWholeFileFault, AReadThatFailsHalfwayLeavesTheText)
{
    WriteFile(m_strFile, Content('0'));
    std::string strRead = "before";
    int nReads = 0;
    const CallWatch oWatch(
        [&](const std::string& strCall) { return strCall == "read" && nReads++ == 1 ? EIO : 0; });
    EXPECT_FALSE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ("before", strRead);
}

TEST_F(KorWholeFileFault, AFileThatGrowsMeanwhileIsReadToItsNewEnd)
{
    const std::string strOld(5000, 'a');
    const std::string strMore(100000, 'b');
    WriteFile(m_strFile, strOld);
    bool bGrown = false;
    const CallWatch oWatch([&](const std::string& strCall) {
        if (strCall == "read" && !std::exchange(bGrown, true))
            std::ofstream(m_strFile, std::ios::app) << strMore;
        return 0;
    });
    std::string strRead;
    EXPECT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_TRUE(strRead == strOld + strMore) << strRead.size();
}

TEST_F(KorWholeFileFault, AKilledWriterLeavesAWholeFileAndNothingThatStays)
{
    const int nRounds = UnderEmulation() ? 15 : 300;
    std::mt19937 oRandom(1);
    ASSERT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('a')));
    for (int i = 0; i < nRounds; ++i) {
        ChildProcess oChild([this] { return WriteForEver(); });
        std::this_thread::sleep_for(std::chrono::microseconds(oRandom() % 20000));
        oChild.Signal(SIGKILL);
        ASSERT_EQ(SIGKILL, oChild.Wait().nSignal);
        ASSERT_TRUE(IsWhole(ReadFile(m_strFile)));
        ASSERT_GE(2, EntriesOf(m_oDir.Path()));
    }
    EXPECT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('a')));
    EXPECT_EQ(1, EntriesOf(m_oDir.Path()));
}

TEST_F(KorWholeFileFault, AFullDiskIsTold)
{
    InChild([this] {
        // Where mounting is not permitted, the calls fail as on a full disk.
        const bool bSmall = MountSmallDisk(m_oDir.Path());
        ASSERT_TRUE(KorReplaceFile(m_strFile.c_str(), std::string(20000, 'a')));
        std::unique_ptr<CallWatch> pWatch;
        if (!bSmall) {
            pWatch = std::make_unique<CallWatch>(
                [](const std::string& strCall) { return strCall == "write" ? ENOSPC : 0; });
        }
        EXPECT_FALSE(KorReplaceFile(m_strFile.c_str(), std::string(60000, 'b')));
        EXPECT_EQ(ENOSPC, errno);
        pWatch.reset();
        EXPECT_EQ(std::string(20000, 'a'), ReadFile(m_strFile));
        EXPECT_EQ(1, EntriesOf(m_oDir.Path()));
        EXPECT_TRUE(KorReplaceFile(m_strFile.c_str(), std::string(30000, 'c')));
    });
}

TEST_F(KorWholeFileFault, ASizeLimitIsToldAndEndsNoProcess)
{
    ASSERT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('a')));
    InChild([this] {
        const struct rlimit oLimit = {SIZE + 3, SIZE + 3};
        ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &oLimit));
        EXPECT_FALSE(KorReplaceFile(m_strFile.c_str(), Content('b') + "x"));
        EXPECT_EQ(EFBIG, errno);
        EXPECT_EQ(Content('a'), ReadFile(m_strFile));
        EXPECT_EQ(1, EntriesOf(m_oDir.Path()));
        EXPECT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('b')));
    });
    EXPECT_EQ(Content('b'), ReadFile(m_strFile));
}

TEST_F(KorWholeFileFault, ReadersBesideFourWritersSeeWholeFiles)
{
    ASSERT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('0')));
    std::vector<std::unique_ptr<ChildProcess>> vecWriters;
    for (int i = 0; i < 4; ++i)
        vecWriters.push_back(std::make_unique<ChildProcess>([this] { return WriteForEver(); }));
    ASSERT_TRUE(WaitUntil([this] { return ReadFile(m_strFile) != Content('0'); }));
    for (int i = 0; i < 200; ++i) {
        std::string strRead;
        ASSERT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
        ASSERT_TRUE(IsWhole(strRead));
    }
}

TEST_F(KorWholeFileFault, WritersInThreadsTakeTurns)
{
    std::vector<std::thread> vecWriters;
    for (const char c : {'a', 'b', 'c', 'd'}) {
        vecWriters.emplace_back([this, c] {
            for (int i = 0; i < 20; ++i) {
                // A turn may take longer to come than a writer waits, but come it does.
                while (!KorReplaceFile(m_strFile.c_str(), Content(c)))
                    ASSERT_EQ(EBUSY, errno);
            }
        });
    }
    for (std::thread& oWriter : vecWriters)
        oWriter.join();
    EXPECT_TRUE(IsWhole(ReadFile(m_strFile)));
    EXPECT_EQ(1, EntriesOf(m_oDir.Path()));
}

TEST_F(KorWholeFileFault, NoCopyIsEverReadableByMorePeopleThanTheFile)
{
    ASSERT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('a')));
    std::filesystem::permissions(m_strFile, std::filesystem::perms::owner_write);
    const CallWatch oWatch([this](const std::string&) {
        for (const auto& oEntry : std::filesystem::directory_iterator(m_oDir.Path()))
            EXPECT_EQ(std::filesystem::perms::owner_write, oEntry.status().permissions());
        return 0;
    });
    EXPECT_TRUE(KorReplaceFile(m_strFile.c_str(), Content('b')));
}

} // namespace
