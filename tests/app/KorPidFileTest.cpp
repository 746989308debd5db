#include "app/KorPidFile.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

std::string OwnNumber()
{
    return std::to_string(getpid()) + "\n";
}

bool Exists(const std::string& strName)
{
    struct stat oFile = {};
    return lstat(strName.c_str(), &oFile) == 0;
}

bool FailsWith(int nError, CKorPidFile& oPidFile, const std::string& strName)
{
    errno = 0;
    return !oPidFile.Acquire(strName.c_str()) && errno == nError &&
           oPidFile.GetLastError() == nError && !oPidFile.IsHeld();
}

bool CanBeAcquired(const std::string& strName)
{
    CKorPidFile oPidFile;
    return oPidFile.Acquire(strName.c_str());
}

/// A process that holds the file until it is killed.
std::unique_ptr<ChildProcess> Holder(const std::string& strName)
{
    auto pHolder = std::make_unique<ChildProcess>([strName] {
        CKorPidFile oPidFile;
        const bool bHeld = oPidFile.Acquire(strName.c_str());
        if (!bHeld || write(STDOUT_FILENO, "held", 4) != 4)
            return 1;
        while (true)
            pause();
    });
    EXPECT_TRUE(pHolder->WaitForOutput("held"));
    return pHolder;
}

TEST(KorPidFile, HoldsTheProcessNumberAndALineFeed)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    const mode_t nMask = umask(077);
    CKorPidFile oPidFile;
    EXPECT_FALSE(oPidFile.IsHeld());
    EXPECT_TRUE(oPidFile.Acquire(strName.c_str()));
    umask(nMask);
    EXPECT_TRUE(oPidFile.IsHeld());
    EXPECT_EQ(0, oPidFile.GetLastError());
    EXPECT_EQ(0, oPidFile.GetOwner());
    EXPECT_EQ(OwnNumber(), ReadFile(strName));
    struct stat oFile = {};
    stat(strName.c_str(), &oFile);
    EXPECT_EQ(0644u, oFile.st_mode & 07777u);
}

TEST(KorPidFile, ReleaseAndTheDestructorRemoveIt)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    {
        CKorPidFile oPidFile;
        ASSERT_TRUE(oPidFile.Acquire(strName.c_str()));
        oPidFile.Release();
        EXPECT_FALSE(oPidFile.IsHeld());
        EXPECT_FALSE(Exists(strName));
        oPidFile.Release();
        ASSERT_TRUE(oPidFile.Acquire(strName.c_str()));
    }
    EXPECT_FALSE(Exists(strName));
}

TEST(KorPidFile, AnotherProcessIsNamed)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    const auto pHolder = Holder(strName);
    CKorPidFile oPidFile;
    EXPECT_TRUE(FailsWith(EWOULDBLOCK, oPidFile, strName));
    EXPECT_EQ(pHolder->Id(), oPidFile.GetOwner());
    EXPECT_EQ(std::to_string(pHolder->Id()) + "\n", ReadFile(strName));

    pHolder->Signal(SIGKILL);
    pHolder->Wait();
    EXPECT_TRUE(oPidFile.Acquire(strName.c_str()));
    EXPECT_EQ(0, oPidFile.GetOwner());
    EXPECT_EQ(OwnNumber(), ReadFile(strName));
}

TEST(KorPidFile, TwoObjectsOfOneProcessExcludeEachOther)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    CKorPidFile oFirst;
    CKorPidFile oSecond;
    ASSERT_TRUE(oFirst.Acquire(strName.c_str()));
    EXPECT_TRUE(FailsWith(EWOULDBLOCK, oSecond, strName));
    EXPECT_EQ(getpid(), oSecond.GetOwner());
    oSecond.Release();
    EXPECT_EQ(OwnNumber(), ReadFile(strName));
    oFirst.Release();
    EXPECT_TRUE(oSecond.Acquire(strName.c_str()));
}

TEST(KorPidFile, AnObjectThatHoldsAFileTakesNoOther)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    CKorPidFile oPidFile;
    ASSERT_TRUE(oPidFile.Acquire(strName.c_str()));
    EXPECT_FALSE(oPidFile.Acquire(oDir.File("other").c_str()));
    EXPECT_EQ(EBUSY, oPidFile.GetLastError());
    EXPECT_TRUE(oPidFile.IsHeld());
    EXPECT_FALSE(Exists(oDir.File("other")));
    oPidFile.Release();
    EXPECT_FALSE(Exists(strName));
}

TEST(KorPidFile, AStaleFileBlocksNobody)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    for (const char* pszStale : {"", "1\n", "99999\n", "  123 \n", "4194304", "007\n"}) {
        WriteFile(strName, pszStale);
        CKorPidFile oPidFile;
        EXPECT_TRUE(oPidFile.Acquire(strName.c_str())) << pszStale;
        EXPECT_EQ(OwnNumber(), ReadFile(strName));
    }
}

TEST(KorPidFile, AFileThatIsNoPidFileStaysAsItIs)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    CKorPidFile oPidFile;
    for (const std::string& strContent :
         {std::string("text"), std::string("12 34\n"), std::string("12\n34\n"), std::string("12a"),
          std::string("-12"), std::string("+12"), std::string("\n"), std::string("1.5"),
          std::string("12\0", 3), std::string(100, '1'), std::string(64, ' ')}) {
        WriteFile(strName, strContent);
        EXPECT_TRUE(FailsWith(EINVAL, oPidFile, strName)) << strContent;
        EXPECT_EQ(strContent, ReadFile(strName));
    }
}

TEST(KorPidFile, WhatIsNoRegularFileIsRefused)
{
    const ScratchDir oDir;
    const std::string strFifo = oDir.File("fifo");
    mkfifo(strFifo.c_str(), 0600);
    CKorPidFile oPidFile;
    EXPECT_TRUE(FailsWith(EINVAL, oPidFile, strFifo));
    EXPECT_TRUE(FailsWith(EINVAL, oPidFile, oDir.Path()));
    EXPECT_TRUE(FailsWith(EINVAL, oPidFile, "/dev/null"));
}

TEST(KorPidFile, ALinkIsRefusedAndItsTargetUnchanged)
{
    const ScratchDir oDir;
    const std::string strTarget = oDir.File("target");
    WriteFile(strTarget, "12\n");
    ASSERT_EQ(0, symlink(strTarget.c_str(), oDir.File("link").c_str()));
    ASSERT_EQ(0, symlink(oDir.File("none").c_str(), oDir.File("dangling").c_str()));
    ASSERT_EQ(0, link(strTarget.c_str(), oDir.File("second").c_str()));
    CKorPidFile oPidFile;
    EXPECT_TRUE(FailsWith(EINVAL, oPidFile, oDir.File("link")));
    EXPECT_TRUE(FailsWith(EINVAL, oPidFile, oDir.File("dangling")));
    EXPECT_TRUE(FailsWith(EINVAL, oPidFile, oDir.File("second")));
    EXPECT_EQ("12\n", ReadFile(strTarget));
    EXPECT_FALSE(Exists(oDir.File("none")));
}

TEST(KorPidFile, ANameWithoutADirectoryIsTheSystemsRefusal)
{
    const ScratchDir oDir;
    CKorPidFile oPidFile;
    EXPECT_TRUE(FailsWith(ENOENT, oPidFile, oDir.File("none/pid")));
    EXPECT_TRUE(FailsWith(ENOENT, oPidFile, ""));
    EXPECT_FALSE(oPidFile.Acquire(nullptr));
    EXPECT_EQ(ENOENT, oPidFile.GetLastError());
}

TEST(KorPidFile, AFileInItsPlaceIsNotRemoved)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    CKorPidFile oPidFile;
    ASSERT_TRUE(oPidFile.Acquire(strName.c_str()));
    unlink(strName.c_str());
    WriteFile(strName, "another's\n");
    oPidFile.Release();
    EXPECT_EQ("another's\n", ReadFile(strName));
}

TEST(KorPidFile, ARelativeNameOutlivesAChangeOfTheDirectory)
{
    const ScratchDir oDir;
    ChildProcess oChild([&oDir] {
        CKorPidFile oPidFile;
        if (chdir(oDir.Path().c_str()) != 0 || !oPidFile.Acquire("pid") || chdir("/") != 0)
            return 1;
        oPidFile.Release();
        return Exists(oDir.File("pid")) ? 2 : 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorPidFile, AForkedCopyHoldsNothingAndRemovesNothing)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    CKorPidFile oPidFile;
    ASSERT_TRUE(oPidFile.Acquire(strName.c_str()));
    ChildProcess oChild([&oPidFile, &strName] {
        const bool bHeld = oPidFile.IsHeld();
        oPidFile.Release();
        return !bHeld && Exists(strName) && FailsWith(EWOULDBLOCK, oPidFile, strName) &&
                       oPidFile.GetOwner() == getppid()
                   ? 42
                   : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_TRUE(oPidFile.IsHeld());
    EXPECT_EQ(OwnNumber(), ReadFile(strName));
    EXPECT_FALSE(CanBeAcquired(strName));
}

/// Holds two files and ends, and leaves a copy of itself that lives until its input ends.
[[noreturn]] void LeaveACopy(const std::string& strName, int nInput, int nReady)
{
    CKorPidFile oFirst;
    CKorPidFile oSecond;
    if (!oFirst.Acquire(strName.c_str()) || !oSecond.Acquire((strName + "2").c_str()))
        _exit(1);
    if (fork() == 0) {
        char cByte = 0;
        _exit(write(nReady, "r", 1) == 1 && read(nInput, &cByte, 1) == 0 ? 0 : 1);
    }
    _exit(42);
}

TEST(KorPidFile, AForkedCopyThatLivesOnDoesNotKeepItLocked)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    int anLife[2];
    int anReady[2];
    ASSERT_EQ(0, pipe(anLife));
    ASSERT_EQ(0, pipe(anReady));
    const pid_t nHolder = fork();
    if (nHolder == 0) {
        close(anLife[1]);
        LeaveACopy(strName, anLife[0], anReady[1]);
    }
    int nStatus = 0;
    waitpid(nHolder, &nStatus, 0);
    char cReady = 0;
    EXPECT_EQ(42, WEXITSTATUS(nStatus));
    EXPECT_EQ(1, read(anReady[0], &cReady, 1));
    EXPECT_TRUE(Exists(strName));
    EXPECT_TRUE(CanBeAcquired(strName));
    EXPECT_TRUE(CanBeAcquired(strName + "2"));
    for (const int nEnd : {anLife[0], anLife[1], anReady[0], anReady[1]})
        close(nEnd);
}

TEST(KorPidFile, AStartedProgramDoesNotInheritIt)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    CKorPidFile oPidFile;
    ASSERT_TRUE(oPidFile.Acquire(strName.c_str()));
    const ChildResult oResult = RunProgram({"sh", "-c", "ls -l /proc/self/fd"});
    EXPECT_EQ(std::string::npos, oResult.strOut.find(strName)) << oResult.strOut;
}

TEST(KorPidFile, DoesNotTakeThePlaceOfAClosedStandardError)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    ChildProcess oChild([&strName] {
        close(STDERR_FILENO);
        CKorPidFile oPidFile;
        const bool bHeld = oPidFile.Acquire(strName.c_str());
        return bHeld && write(STDERR_FILENO, "text", 4) == -1 ? 42 : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorPidFile, OfManyThatComeAndGoOneHoldsItAtATime)
{
    const ScratchDir oDir;
    const std::string strName = oDir.File("pid");
    std::atomic<int> nHolders(0);
    std::atomic<int> nTogether(0);
    std::atomic<int> nFailures(0);
    std::atomic<int> nTurns(0);
    const auto ComeAndGo = [&] {
        for (int i = 0; i < 300; ++i) {
            CKorPidFile oPidFile;
            if (oPidFile.Acquire(strName.c_str())) {
                nTogether += nHolders++;
                ++nTurns;
                --nHolders;
            } else if (oPidFile.GetLastError() != EWOULDBLOCK) {
                ++nFailures;
            }
        }
    };
    std::vector<std::thread> vecThreads;
    for (int i = 0; i < 4; ++i)
        vecThreads.emplace_back(ComeAndGo);
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(0, nTogether);
    EXPECT_EQ(0, nFailures);
    EXPECT_GT(nTurns, 0);
    EXPECT_FALSE(Exists(strName));
}

} // namespace
