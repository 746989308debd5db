#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
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

/// The length of a line with a message of ten bytes.
constexpr unsigned long LINE = 47;

void WriteTen(CKorLog& oLog, int nNumber)
{
    oLog.Write(CKorLog::LEVEL_INFO, "line %05d", nNumber);
}

bool Exists(const std::string& strName)
{
    return access(strName.c_str(), F_OK) == 0;
}

std::string Messages(const std::string& strName)
{
    std::string strMessages;
    for (const std::string& strLine : Lines(ReadFile(strName)))
        strMessages += WithoutTime(strLine) + "\n";
    return strMessages;
}

class KorLogFile : public testing::Test
{
protected:
    std::string Name(int nFormer = 0) const
    {
        return m_oDir.File("log") + (nFormer == 0 ? "" : "." + std::to_string(nFormer));
    }
    std::string WholeLog(int nKeep) const
    {
        std::string strText;
        for (int nFormer = nKeep; nFormer >= 0; --nFormer)
            strText += Exists(Name(nFormer)) ? Messages(Name(nFormer)) : "";
        return strText;
    }
    static std::string Numbers(int nFirst, int nLast)
    {
        std::string strText;
        char szLine[32];
        for (int i = nFirst; i <= nLast; ++i) {
            std::snprintf(szLine, sizeof szLine, "info: line %05d\n", i);
            strText += szLine;
        }
        return strText;
    }

    const ScratchDir m_oDir;
    CKorLog m_oLog;
};

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

TEST_F(KorLogFile, IsRotatedBeforeItExceedsItsSize)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE, 2));
    for (int i = 1; i <= 3; ++i)
        WriteTen(m_oLog, i);
    EXPECT_FALSE(Exists(Name(1)));
    for (int i = 4; i <= 8; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(7, 8), Messages(Name()));
    EXPECT_EQ(Numbers(4, 6), Messages(Name(1)));
    EXPECT_EQ(Numbers(1, 3), Messages(Name(2)));
    for (int i = 9; i <= 10; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(4, 10), WholeLog(2));
    EXPECT_FALSE(Exists(Name(3)));
}

TEST_F(KorLogFile, OneByteLessRotatesALineEarlier)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE - 1, 9));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(5, 5), Messages(Name()));
    EXPECT_EQ(Numbers(3, 4), Messages(Name(1)));
}

TEST_F(KorLogFile, WhatIsThereCounts)
{
    WriteFile(Name(), std::string(2 * LINE - 1, 'x') + "\n");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE, 1));
    WriteTen(m_oLog, 1);
    EXPECT_FALSE(Exists(Name(1)));
    WriteTen(m_oLog, 2);
    EXPECT_EQ(Numbers(2, 2), Messages(Name()));
    EXPECT_EQ(3 * LINE, ReadFile(Name(1)).size());
}

TEST_F(KorLogFile, WithoutALimitItIsNotRotated)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 3));
    for (int i = 1; i <= 1000; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(1, 1000), Messages(Name()));
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, WithNoneToKeepItBeginsAnew)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE, 0));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(4, 5), Messages(Name()));
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, OnlyASingleLongerLineExceedsTheSize)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 100, 9));
    const std::string strLong(200, 'x');
    WriteTen(m_oLog, 1);
    m_oLog.Write(CKorLog::LEVEL_INFO, "%s", strLong.c_str());
    WriteTen(m_oLog, 2);
    EXPECT_EQ(Numbers(2, 2), Messages(Name()));
    EXPECT_EQ("info: " + strLong + "\n", Messages(Name(1)));
    EXPECT_EQ(Numbers(1, 1), Messages(Name(2)));
    EXPECT_FALSE(Exists(Name(3)));
}

TEST_F(KorLogFile, AnEmptyFileIsNotRotated)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 100, 9));
    m_oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(200, 'x').c_str());
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, ANewFileHasTheModeOfTheFormer)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), LINE, 1));
    chmod(Name().c_str(), 0600);
    WriteTen(m_oLog, 1);
    WriteTen(m_oLog, 2);
    struct stat oFile = {};
    stat(Name().c_str(), &oFile);
    EXPECT_EQ(0600u, oFile.st_mode & 07777u);
}

TEST_F(KorLogFile, AFailingRenameGoesOnInTheSameFile)
{
    ASSERT_EQ(0, mkdir(Name(1).c_str(), 0700));
    WriteFile(Name(1) + "/file", "");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 2 * LINE, 1));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(1, 5), Messages(Name()));
    EXPECT_EQ(0u, m_oLog.GetLostCount());
}

TEST_F(KorLogFile, AFormerFileThatCannotBeMovedIsNotOverwritten)
{
    ASSERT_EQ(0, mkdir(Name(2).c_str(), 0700));
    WriteFile(Name(2) + "/file", "");
    WriteFile(Name(1), "former\n");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 2 * LINE, 2));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ("former\n", ReadFile(Name(1)));
    EXPECT_EQ(Numbers(1, 5), Messages(Name()));
}

TEST_F(KorLogFile, ANewFileThatCannotBeOpenedGoesOnInTheSame)
{
    ChildProcess oChild([this] {
        if (!m_oLog.UseFile(Name().c_str(), 2 * LINE, 3))
            return 1;
        rlimit oFormer = {};
        getrlimit(RLIMIT_NOFILE, &oFormer);
        const rlimit oLimit = {3, oFormer.rlim_max};
        setrlimit(RLIMIT_NOFILE, &oLimit);
        for (int i = 1; i <= 5; ++i)
            WriteTen(m_oLog, i);
        setrlimit(RLIMIT_NOFILE, &oFormer); // a sanitizer opens files at the end
        return 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ(Numbers(1, 5), Messages(Name()));
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, AMissingFormerFileIsAFreePlace)
{
    WriteFile(Name(2), "second\n");
    WriteFile(Name(3), "third\n");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), LINE, 3));
    WriteTen(m_oLog, 1);
    WriteTen(m_oLog, 2);
    EXPECT_EQ("second\n", ReadFile(Name(2)));
    WriteTen(m_oLog, 3);
    EXPECT_EQ(Numbers(1, 1), Messages(Name(2)));
    EXPECT_EQ("second\n", ReadFile(Name(3)));
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
