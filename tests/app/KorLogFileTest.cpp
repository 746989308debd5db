#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/app/LogFileTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

TEST_F(KorLogFile, IsCreatedAndAppendedTo)
{
    const mode_t nMask = umask(0);
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    umask(nMask);
    m_oLog.Write(CKorLog::LEVEL_WARNING, "one");
    struct stat oFile = {};
    stat(Name().c_str(), &oFile);
    EXPECT_EQ(0644u, oFile.st_mode & 07777u);
    CKorLog oNext;
    ASSERT_TRUE(oNext.UseFile(Name().c_str(), 0, 0));
    oNext.Write(CKorLog::LEVEL_INFO, "two");
    EXPECT_EQ("warning: one\ninfo: two\n", Messages(Name()));
}

TEST_F(KorLogFile, HasNoJournalPrefix)
{
    setenv("JOURNAL_STREAM", "1:1", 1);
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    WriteTen(m_oLog, 1);
    unsetenv("JOURNAL_STREAM");
    EXPECT_EQ(Numbers(1, 1), Messages(Name()));
}

TEST_F(KorLogFile, AFailureLeavesTheTargetAsItWas)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    for (const auto& [strName, nError] :
         {std::pair(m_oDir.File("none/log"), ENOENT), std::pair(m_oDir.Path(), EISDIR),
          std::pair(std::string(), ENOENT)}) {
        errno = 0;
        EXPECT_FALSE(m_oLog.UseFile(strName.c_str(), 0, 0));
        EXPECT_EQ(nError, errno);
    }
    EXPECT_FALSE(m_oLog.UseFile(nullptr, 0, 0));
    WriteTen(m_oLog, 1);
    EXPECT_EQ(Numbers(1, 1), Messages(Name()));
}

TEST_F(KorLogFile, StandardErrorIsUsedAgainWhenAskedFor)
{
    CapturedLog oCapture;
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    WriteTen(m_oLog, 1);
    m_oLog.UseStandardError();
    WriteTen(m_oLog, 2);
    EXPECT_EQ(Numbers(1, 1), Messages(Name()));
    EXPECT_EQ(Numbers(2, 2), oCapture.TakeMessages());
    EXPECT_TRUE(m_oLog.Reopen());
}

TEST_F(KorLogFile, IsFoundAgainWhenTheDirectoryChanges)
{
    ChildProcess oChild([this] {
        if (chdir(m_oDir.Path().c_str()) != 0 || !m_oLog.UseFile("log", LINE, 1) || chdir("/") != 0)
            return 1;
        WriteTen(m_oLog, 1);
        WriteTen(m_oLog, 2);
        return m_oLog.Reopen() ? 42 : 2;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ(Numbers(1, 2), WholeLog(1));
}

TEST_F(KorLogFile, ReopenFollowsTheName)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    WriteTen(m_oLog, 1);
    ASSERT_EQ(0, std::rename(Name().c_str(), m_oDir.File("moved").c_str()));
    WriteTen(m_oLog, 2);
    EXPECT_TRUE(m_oLog.Reopen());
    WriteTen(m_oLog, 3);
    EXPECT_EQ(Numbers(1, 2), Messages(m_oDir.File("moved")));
    EXPECT_EQ(Numbers(3, 3), Messages(Name()));
}

TEST_F(KorLogFile, AReopenThatFailsGoesOnInTheSameFile)
{
    const std::string strDir = m_oDir.File("dir");
    ASSERT_EQ(0, mkdir(strDir.c_str(), 0700));
    ASSERT_TRUE(m_oLog.UseFile((strDir + "/log").c_str(), 0, 0));
    WriteTen(m_oLog, 1);
    ASSERT_EQ(0, std::rename(strDir.c_str(), m_oDir.File("moved").c_str()));
    errno = 0;
    EXPECT_FALSE(m_oLog.Reopen());
    EXPECT_EQ(ENOENT, errno);
    WriteTen(m_oLog, 2);
    EXPECT_EQ(Numbers(1, 2), Messages(m_oDir.File("moved/log")));
}

TEST_F(KorLogFile, AFullDeviceDropsAndCounts)
{
    ASSERT_TRUE(m_oLog.UseFile("/dev/full", 100, 3));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(5u, m_oLog.GetLostCount());
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    WriteTen(m_oLog, 6);
    EXPECT_EQ("warning: 5 log lines were lost\n" + Numbers(6, 6), Messages(Name()));
    EXPECT_EQ(5u, m_oLog.GetLostCount());
}

TEST_F(KorLogFile, ASizeLimitLeavesNoHalfLine)
{
    ChildProcess oChild([this] {
        const rlimit oLimit = {4 * LINE - 1, 4 * LINE - 1};
        setrlimit(RLIMIT_FSIZE, &oLimit);
        if (!m_oLog.UseFile(Name().c_str(), 0, 0))
            return 1;
        for (int i = 1; i <= 10; ++i)
            WriteTen(m_oLog, i);
        return 40 + static_cast<int>(m_oLog.GetLostCount());
    });
    EXPECT_EQ(47, oChild.Wait().nExitStatus);
    EXPECT_EQ(Numbers(1, 3), Messages(Name()));
}

TEST_F(KorLogFile, AFifoWithoutAReaderIsNotWaitedFor)
{
    ASSERT_EQ(0, mkfifo(Name().c_str(), 0600));
    errno = 0;
    EXPECT_FALSE(m_oLog.UseFile(Name().c_str(), 0, 0));
    EXPECT_EQ(ENXIO, errno);
    const int nReader = open(Name().c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), LINE, 1));
    while (m_oLog.GetLostCount() == 0)
        WriteTen(m_oLog, 1);
    EXPECT_FALSE(Exists(Name(1)));
    close(nReader);
}

TEST_F(KorLogFile, ThreadsLoseNoLineInARotation)
{
    constexpr int LINES = 300;
    constexpr int THREADS = 4;
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 10 * LINE, LINES));
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < THREADS; ++nThread)
        vecThreads.emplace_back([this, nThread] {
            for (int i = 0; i < LINES; ++i)
                WriteTen(m_oLog, nThread * LINES + i);
        });
    for (std::thread& oThread : vecThreads)
        oThread.join();
    std::vector<std::string> vecLines = Lines(WholeLog(LINES));
    std::sort(vecLines.begin(), vecLines.end());
    EXPECT_EQ(Lines(Numbers(0, THREADS * LINES - 1)), vecLines);
    EXPECT_EQ(0u, m_oLog.GetLostCount());
    for (int nFormer = 0; Exists(Name(nFormer)); ++nFormer)
        EXPECT_LE(ReadFile(Name(nFormer)).size(), 10 * LINE);
}

TEST_F(KorLogFile, StartedProgramsDoNotInheritIt)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 0));
    const ChildResult oResult = RunProgram({"sh", "-c", "ls -l /proc/self/fd"});
    EXPECT_EQ(std::string::npos, oResult.strOut.find(Name())) << oResult.strOut;
}

TEST_F(KorLogFile, DoesNotTakeThePlaceOfAClosedStandardError)
{
    ChildProcess oChild([this] {
        close(STDERR_FILENO);
        return m_oLog.UseFile(Name().c_str(), 0, 0) && write(STDERR_FILENO, "text", 4) == -1 ? 42
                                                                                             : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("", ReadFile(Name()));
}

TEST_F(KorLogFile, NoDescriptorStaysOpen)
{
    const int nBefore = dup(0);
    close(nBefore);
    for (int i = 0; i < 10; ++i) {
        CKorLog oLog;
        ASSERT_TRUE(oLog.UseFile(Name().c_str(), LINE, 1));
        WriteTen(oLog, 1);
        WriteTen(oLog, 2);
        EXPECT_TRUE(oLog.Reopen());
    }
    const int nAfter = dup(0);
    close(nAfter);
    EXPECT_EQ(nBefore, nAfter);
}

} // namespace
