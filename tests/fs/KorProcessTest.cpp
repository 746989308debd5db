#include "fs/KorProcess.h"

#include "fs/KorProcessDetail.h"
#include "tests/fs/WorkDir.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>

namespace
{

class Probe : public CKorProcess
{
public:
    using CKorProcess::m_nHandle;
    using CKorProcess::m_nProcessID;
    using CKorProcess::m_sName;
};

/// Waits for the only child of this process.
/// @return its exit status, or minus the signal that ended it
int ExitStatusOfChild()
{
    int nStatus = 0;
    EXPECT_LT(0, waitpid(-1, &nStatus, 0));
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -WTERMSIG(nStatus);
}

int SpawnShell(const std::string& strScript)
{
    const char* apszArgs[] = {"sh", "-c", strScript.c_str(), nullptr};
    return CKorProcess::Spawn("/bin/sh", apszArgs);
}

TEST(KorProcess, TakesTheProcessIdWhenConstructed)
{
    const Probe oProcess;
    EXPECT_EQ(getpid(), oProcess.m_nProcessID);
    EXPECT_EQ(-1, oProcess.m_nHandle);
    EXPECT_EQ("", oProcess.m_sName);
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorProcess>);
}

TEST(KorProcess, TakesTheProcessIdAnewAfterAFork)
{
    Probe oProcess;
    oProcess.m_nHandle = 7;
    ChildProcess oChild([&oProcess] {
        const bool bStale = oProcess.m_nProcessID != getpid();
        return bStale && oProcess.Refresh() == getpid() && oProcess.m_nProcessID == getpid() &&
                       oProcess.m_nHandle == -1
                   ? 0
                   : 1;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
}

TEST(KorProcessSpawn, RunsTheProgramAndReturnsMinusOne)
{
    const ScratchDir oDir;
    EXPECT_EQ(-1, SpawnShell("echo started > " + oDir.File("out")));
    EXPECT_EQ(0, ExitStatusOfChild());
    EXPECT_EQ("started\n", ReadFile(oDir.File("out")));
}

TEST(KorProcessSpawn, SearchesThePathAndPassesEveryArgument)
{
    const ScratchDir oDir;
    const std::string strScript = "echo \"$0|$1|$2\" > " + oDir.File("out") + "; exit 7";
    const char* apszArgs[] = {"name", "-c", strScript.c_str(), "a b", "", "c", nullptr};
    EXPECT_EQ(-1, CKorProcess::Spawn("sh", apszArgs));
    EXPECT_EQ(7, ExitStatusOfChild());
    EXPECT_EQ("a b||c\n", ReadFile(oDir.File("out")));
}

TEST(KorProcessSpawn, DoesNotWaitForTheProgram)
{
    const ScratchDir oDir;
    const std::string strPipe = oDir.File("pipe");
    ASSERT_EQ(0, mkfifo(strPipe.c_str(), 0600));
    EXPECT_EQ(-1, SpawnShell("cat " + strPipe + " > " + oDir.File("out")));
    EXPECT_EQ(0, waitpid(-1, nullptr, WNOHANG)) << "the child has ended already";
    WriteFile(strPipe, "late");
    EXPECT_EQ(0, ExitStatusOfChild());
    EXPECT_EQ("late", ReadFile(oDir.File("out")));
}

TEST(KorProcessSpawn, EndsTheChildWith255WhenThereIsNoSuchProgram)
{
    const char* apszArgs[] = {"no-such-program", nullptr};
    EXPECT_EQ(-1, CKorProcess::Spawn("/no/such/program", apszArgs));
    EXPECT_EQ(255, ExitStatusOfChild());
    EXPECT_EQ(-1, CKorProcess::Spawn("no-such-program-on-the-path", apszArgs));
    EXPECT_EQ(255, ExitStatusOfChild());
    EXPECT_EQ(-1, CKorProcess::Spawn("", apszArgs));
    EXPECT_EQ(255, ExitStatusOfChild());
}

TEST(KorProcessSpawn, EndsTheChildWith255ForAFileThatIsNoProgram)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "no program");
    const char* apszArgs[] = {"data", nullptr};
    EXPECT_EQ(-1, CKorProcess::Spawn(oDir.File("data").c_str(), apszArgs));
    EXPECT_EQ(255, ExitStatusOfChild());
}

TEST(KorProcessSpawn, EndsTheChildWith255ForANullFileOrNullArguments)
{
    const char* apszArgs[] = {"sh", nullptr};
    EXPECT_EQ(-1, CKorProcess::Spawn(nullptr, apszArgs));
    EXPECT_EQ(255, ExitStatusOfChild());
    EXPECT_EQ(-1, CKorProcess::Spawn("/bin/sh", nullptr));
    EXPECT_EQ(255, ExitStatusOfChild());
}

TEST(KorProcessSpawn, LeavesErrnoOfTheCallerAlone)
{
    const char* apszArgs[] = {"no-such-program", nullptr};
    errno = E2BIG;
    CKorProcess::Spawn("/no/such/program", apszArgs);
    EXPECT_EQ(E2BIG, errno);
    EXPECT_EQ(255, ExitStatusOfChild());
}

TEST(KorProcessSpawn, LeavesAZombieUntilTheCallerWaits)
{
    SpawnShell("exit 3");
    siginfo_t oInfo = {};
    ASSERT_EQ(0, waitid(P_ALL, 0, &oInfo, WEXITED | WNOWAIT));
    EXPECT_EQ(0, kill(oInfo.si_pid, 0));
    EXPECT_EQ(3, ExitStatusOfChild());
    EXPECT_EQ(-1, kill(oInfo.si_pid, 0));
}

TEST(KorProcessSpawn, HandsTheCallersSignalMaskOn)
{
    sigset_t oBlocked;
    sigset_t oBefore;
    sigemptyset(&oBlocked);
    sigaddset(&oBlocked, SIGTERM);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &oBlocked, &oBefore));
    SpawnShell("kill -TERM $$; exit 3");
    EXPECT_EQ(0, pthread_sigmask(SIG_SETMASK, &oBefore, nullptr));
    EXPECT_EQ(3, ExitStatusOfChild());

    SpawnShell("kill -TERM $$; exit 3");
    EXPECT_EQ(-SIGTERM, ExitStatusOfChild());
}

void PrintFarewell()
{
    EXPECT_EQ(5, write(STDOUT_FILENO, "bye!\n", 5));
}

TEST(KorProcessSpawn, RunsNoExitHandlerOfTheCallerInAChildThatCouldNotStart)
{
    ChildProcess oCaller([] {
        std::atexit(PrintFarewell);
        std::fputs("buffered", stdout); // no whole line, for a terminal takes that at once
        const char* apszArgs[] = {"no-such-program", nullptr};
        CKorProcess::Spawn("/no/such/program", apszArgs);
        return ExitStatusOfChild() == 255 ? 3 : 4;
    });
    const ChildResult& oResult = oCaller.Wait();
    EXPECT_EQ(3, oResult.nExitStatus);
#ifdef __SANITIZE_THREAD__
    // The sanitizer puts a _exit of its own in place, which writes out buffered text.
    EXPECT_EQ("bufferedbye!\nbuffered", oResult.strOut);
#else
    EXPECT_EQ("bye!\nbuffered", oResult.strOut) << "each once";
#endif
}

TEST(KorProcessWorkDir, EndsInASeparator)
{
    const ScratchDir oDir;
    const WorkDir oWorkDir(oDir.Path());
    EXPECT_EQ(std::filesystem::canonical(oDir.Path()).native() + "/",
              CKorProcess::GetCurrentWorkDir());
}

TEST(KorProcessWorkDir, IsOneSlashInTheRoot)
{
    const WorkDir oWorkDir("/");
    EXPECT_EQ("/", CKorProcess::GetCurrentWorkDir());
}

TEST(KorProcessWorkDir, TakesATrailingBackslashForASeparator)
{
    const ScratchDir oDir;
    ASSERT_EQ(0, mkdir(oDir.File("odd\\").c_str(), 0700));
    const WorkDir oWorkDir(oDir.File("odd\\"));
    EXPECT_EQ('\\', CKorProcess::GetCurrentWorkDir().back());
}

TEST(KorProcessWorkDir, IsKnownUpTo349Bytes)
{
    const ScratchDir oDir;
    const WorkDir oWorkDir(oDir.Path());
    DescendTo(349);
    const std::string strDir = CKorProcess::GetCurrentWorkDir();
    EXPECT_EQ(350u, strDir.size());
    EXPECT_EQ(std::filesystem::current_path().native() + "/", strDir);
}

TEST(KorProcessWorkDir, IsADotWhenItIsLonger)
{
    const ScratchDir oDir;
    const WorkDir oWorkDir(oDir.Path());
    DescendTo(350);
    EXPECT_EQ("./", CKorProcess::GetCurrentWorkDir());
}

TEST(KorProcessWorkDir, IsADotWhenItWasRemoved)
{
    const ScratchDir oDir;
    ASSERT_EQ(0, mkdir(oDir.File("gone").c_str(), 0700));
    const WorkDir oWorkDir(oDir.File("gone"));
    ASSERT_EQ(0, rmdir(oDir.File("gone").c_str()));
    EXPECT_EQ("./", CKorProcess::GetCurrentWorkDir());
}

} // namespace
