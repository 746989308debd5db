#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/support/ChildProcess.h"
#include "tests/time/TimeZoneScope.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

std::string JournalName(int nHandle)
{
    struct stat oFile = {};
    fstat(nHandle, &oFile);
    return std::to_string(oFile.st_dev) + ":" + std::to_string(oFile.st_ino);
}

/// Not time(), which lags behind.
time_t Now()
{
    timespec oNow = {};
    clock_gettime(CLOCK_REALTIME, &oNow);
    return oNow.tv_sec;
}

/// The length of a line without time and level: "2026-11-21 14:15:43.123 +0100 info: " and "\n".
constexpr std::size_t FRAME = 37;
constexpr std::size_t LONGEST_LINE = 8192;

TEST(KorLog, ALineSaysWhenAndHowMuchItMatters)
{
    CKorLog oLog;
    oLog.SetLevel(CKorLog::LEVEL_DEBUG);
    CapturedLog oCapture;
    oLog.Write(CKorLog::LEVEL_ERROR, "one");
    oLog.Write(CKorLog::LEVEL_WARNING, "two %d", 2);
    oLog.Write(CKorLog::LEVEL_NOTICE, "three %s", "x");
    oLog.Write(CKorLog::LEVEL_INFO, "four");
    oLog.Write(CKorLog::LEVEL_DEBUG, "five");
    EXPECT_EQ("error: one\nwarning: two 2\nnotice: three x\ninfo: four\ndebug: five\n",
              oCapture.TakeMessages());
}

TEST(KorLog, TheTimeIsLocalWithItsOffset)
{
    CKorLog oLog;
    for (const auto& [pszZone, pszOffset, nOffset] :
         {std::tuple("ZZZ-1", "+0100", 3600), std::tuple("ZZZ+4:30", "-0430", -16200),
          std::tuple("ZZZ-5:45", "+0545", 20700), std::tuple("UTC0", "+0000", 0)}) {
        const TimeZoneScope oZone(pszZone);
        CapturedLog oCapture;
        const time_t nBefore = Now();
        oLog.Write(CKorLog::LEVEL_INFO, "text");
        const time_t nAfter = Now();
        const std::string strLine = oCapture.Take();
        tm oTime = {};
        ASSERT_NE(nullptr, strptime(strLine.c_str(), "%Y-%m-%d %H:%M:%S", &oTime)) << strLine;
        EXPECT_EQ(pszOffset, strLine.substr(24, 5));
        EXPECT_LE(nBefore, timegm(&oTime) - nOffset);
        EXPECT_GE(nAfter, timegm(&oTime) - nOffset);
    }
}

TEST(KorLog, TheJournalGetsTheLevelAndNoTime)
{
    CKorLog oLog;
    CapturedLog oCapture;
    setenv("JOURNAL_STREAM", JournalName(STDERR_FILENO).c_str(), 1);
    oLog.Write(CKorLog::LEVEL_WARNING, "text");
    EXPECT_EQ("<4>text\n", oCapture.Take());
    oLog.Write(CKorLog::LEVEL_ERROR, "text");
    EXPECT_EQ("<3>text\n", oCapture.Take());
    unsetenv("JOURNAL_STREAM");
    oLog.Write(CKorLog::LEVEL_ERROR, "text");
    EXPECT_EQ("error: text\n", oCapture.TakeMessages());
}

TEST(KorLog, AJournalThatIsNotStandardErrorDoesNotCount)
{
    CKorLog oLog;
    CapturedLog oCapture;
    const std::string strName = JournalName(STDERR_FILENO);
    for (const std::string& strOther :
         {std::string(), std::string("1:1"), strName + "0", " " + strName, "1" + strName}) {
        setenv("JOURNAL_STREAM", strOther.c_str(), 1);
        oLog.Write(CKorLog::LEVEL_INFO, "text");
        EXPECT_EQ("info: text\n", oCapture.TakeMessages());
    }
    unsetenv("JOURNAL_STREAM");
}

TEST(KorLog, WritesWhatIsEnabled)
{
    CKorLog oLog;
    CapturedLog oCapture;
    EXPECT_EQ(CKorLog::LEVEL_INFO, oLog.GetLevel());
    EXPECT_TRUE(oLog.IsEnabled(CKorLog::LEVEL_INFO));
    EXPECT_FALSE(oLog.IsEnabled(CKorLog::LEVEL_DEBUG));
    oLog.Write(CKorLog::LEVEL_DEBUG, "not this");
    EXPECT_EQ("", oCapture.Take());

    oLog.SetLevel(CKorLog::LEVEL_ERROR);
    EXPECT_EQ(CKorLog::LEVEL_ERROR, oLog.GetLevel());
    EXPECT_FALSE(oLog.IsEnabled(CKorLog::LEVEL_WARNING));
    oLog.Write(CKorLog::LEVEL_WARNING, "not this");
    oLog.Write(CKorLog::LEVEL_ERROR, "this");
    EXPECT_EQ("error: this\n", oCapture.TakeMessages());
    EXPECT_EQ(0u, oLog.GetLostCount());
}

TEST(KorLog, LeavesErrnoAsItWas)
{
    CKorLog oLog;
    CapturedLog oCapture;
    errno = ENOTDIR;
    oLog.Write(CKorLog::LEVEL_INFO, "text");
    EXPECT_EQ(ENOTDIR, errno);
    EXPECT_EQ("info: text\n", oCapture.TakeMessages());
    oLog.UseFile("/dev/full", 0, 0);
    errno = ENOTDIR;
    oLog.Write(CKorLog::LEVEL_INFO, "text");
    EXPECT_EQ(ENOTDIR, errno);
    EXPECT_EQ(1u, oLog.GetLostCount());
}

TEST(KorLog, AMessageCannotFeignALine)
{
    CKorLog oLog;
    CapturedLog oCapture;
    const auto Shown = [&](const std::string& strMessage) {
        oLog.Write(CKorLog::LEVEL_INFO, "%s%c", strMessage.c_str(), '.');
        return oCapture.TakeMessages();
    };
    EXPECT_EQ("info: a\\x0ab.\n", Shown("a\nb"));
    EXPECT_EQ("info: \\x09\\x0d\\x1b[0m\\x7f\\x01\\x1f .\n", Shown("\t\r\x1b[0m\x7f\x01\x1f "));
    EXPECT_EQ("info: \xC3\xA4\xE2\x82\xAC\xFF\\.\n", Shown("\xC3\xA4\xE2\x82\xAC\xFF\\"));
    oLog.Write(CKorLog::LEVEL_INFO, "a%cb", '\0');
    EXPECT_EQ("info: a\\x00b\n", oCapture.TakeMessages());
}

TEST(KorLog, OneFinalLineFeedIsDropped)
{
    CKorLog oLog;
    CapturedLog oCapture;
    oLog.Write(CKorLog::LEVEL_INFO, "a\n");
    oLog.Write(CKorLog::LEVEL_INFO, "b\n\n");
    oLog.Write(CKorLog::LEVEL_INFO, "\n");
    oLog.Write(CKorLog::LEVEL_INFO, "%s", "");
    EXPECT_EQ("info: a\ninfo: b\\x0a\ninfo: \ninfo: \n", oCapture.TakeMessages());
}

TEST(KorLog, ALineOfTheGreatestLengthIsWhole)
{
    CKorLog oLog;
    CapturedLog oCapture;
    const std::string strText(LONGEST_LINE - FRAME, 'x');
    oLog.Write(CKorLog::LEVEL_INFO, "%s", strText.c_str());
    const std::string strLine = oCapture.Take();
    EXPECT_EQ(LONGEST_LINE, strLine.size());
    EXPECT_EQ(strText + "\n", strLine.substr(FRAME - 1));
}

TEST(KorLog, ALongerLineIsCut)
{
    CKorLog oLog;
    CapturedLog oCapture;
    for (const std::size_t nMore : {1, 10, 100, 10000, 1000000}) {
        const std::string strText(LONGEST_LINE - FRAME + nMore, 'x');
        oLog.Write(CKorLog::LEVEL_INFO, "%s", strText.c_str());
        const std::string strLine = oCapture.Take();
        EXPECT_EQ(LONGEST_LINE, strLine.size()) << nMore;
        EXPECT_EQ("x...\n", strLine.substr(LONGEST_LINE - 5));
    }
}

TEST(KorLog, NeitherACharacterNorAnEscapeIsCutInTheMiddle)
{
    CKorLog oLog;
    CapturedLog oCapture;
    for (std::size_t nBefore = LONGEST_LINE - FRAME - 12; nBefore < LONGEST_LINE - FRAME;
         ++nBefore) {
        const std::string strBefore(nBefore, 'x');
        oLog.Write(CKorLog::LEVEL_INFO, "%s\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC%s",
                   strBefore.c_str(), "long");
        std::string strLine = oCapture.Take();
        EXPECT_LE(strLine.size(), LONGEST_LINE);
        std::size_t nEuros = strLine.find_last_of('x') + 1;
        for (; strLine.compare(nEuros, 3, "\xE2\x82\xAC") == 0; nEuros += 3) {
        }
        EXPECT_EQ("...\n", strLine.substr(nEuros));

        oLog.Write(CKorLog::LEVEL_INFO, "%s\t\t\t\t%s", strBefore.c_str(), "long");
        strLine = oCapture.Take();
        EXPECT_LE(strLine.size(), LONGEST_LINE);
        std::size_t nTabs = strLine.find_last_of('x', nBefore + FRAME - 2) + 1;
        for (; strLine.compare(nTabs, 4, "\\x09") == 0; nTabs += 4) {
        }
        EXPECT_EQ("...\n", strLine.substr(nTabs));
    }
}

TEST(KorLog, AMessageThatCannotBeFormattedShowsItsFormat)
{
    CKorLog oLog;
    CapturedLog oCapture;
    oLog.Write(CKorLog::LEVEL_INFO, "meter %ls!", L"\x20AC"); // not in the C locale
    EXPECT_EQ("info: meter %ls!\n", oCapture.TakeMessages());
    const char* const pszNone = nullptr;
    oLog.Write(CKorLog::LEVEL_INFO, pszNone);
    EXPECT_EQ("info: \n", oCapture.TakeMessages());
}

TEST(KorLog, TheProcesssLogIsOne)
{
    EXPECT_EQ(&KorGetLog(), &KorGetLog());
    CapturedLog oCapture;
    KorGetLog().Write(CKorLog::LEVEL_NOTICE, "text");
    EXPECT_EQ("notice: text\n", oCapture.TakeMessages());
}

TEST(KorLog, TheProcesssLogLivesToTheVeryEnd)
{
    struct Last
    {
        ~Last() { KorGetLog().Write(CKorLog::LEVEL_INFO, "static object"); }
    };
    ChildProcess oChild([] {
        static const Last oLast;
        std::atexit([] { KorGetLog().Write(CKorLog::LEVEL_INFO, "exit handler"); });
        KorGetLog().Write(CKorLog::LEVEL_INFO, "main");
        return 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    const std::vector<std::string> vecLines = Lines(oChild.Wait().strErr);
    ASSERT_EQ(3u, vecLines.size());
    EXPECT_EQ("info: static object", WithoutTime(vecLines[2]));
}

TEST(KorLog, ThreadsWriteWholeLines)
{
    constexpr int LINES = 300;
    CapturedLog oCapture;
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < 4; ++nThread)
        vecThreads.emplace_back([nThread] {
            for (int i = 0; i < LINES; ++i)
                KorGetLog().Write(CKorLog::LEVEL_INFO, "%d/%d", nThread, i);
        });
    for (std::thread& oThread : vecThreads)
        oThread.join();
    int anNext[4] = {};
    for (const std::string& strLine : Lines(oCapture.TakeMessages())) {
        int nThread = -1;
        int nNumber = -1;
        ASSERT_EQ(2, std::sscanf(strLine.c_str(), "info: %d/%d", &nThread, &nNumber)) << strLine;
        EXPECT_EQ(anNext[nThread]++, nNumber);
    }
    for (const int nNext : anNext)
        EXPECT_EQ(LINES, nNext);
}

TEST(KorLog, AForkedCopyLogsWhateverOtherThreadsDo)
{
    CapturedLog oCapture;
    std::atomic<bool> bEnd(false);
    std::thread oWriter([&bEnd] {
        while (!bEnd)
            KorGetLog().Write(CKorLog::LEVEL_INFO, "parent");
    });
    for (int i = 0; i < 50; ++i) {
        const pid_t nCopy = fork();
        if (nCopy == 0) {
            KorGetLog().Write(CKorLog::LEVEL_INFO, "copy");
            _exit(42);
        }
        int nStatus = 0;
        waitpid(nCopy, &nStatus, 0);
        EXPECT_EQ(42, WEXITSTATUS(nStatus));
    }
    bEnd = true;
    oWriter.join();
}

} // namespace
