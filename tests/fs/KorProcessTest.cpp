#include "fs/KorProcess.h"

#include "fs/KorProcessDetail.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Emulation.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
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

/// Changes the working directory for the scope.
class WorkDir
{
public:
    explicit WorkDir(const std::string& strDir) : m_nBefore(open(".", O_RDONLY | O_DIRECTORY))
    {
        EXPECT_EQ(0, chdir(strDir.c_str())) << strDir;
    }
    ~WorkDir()
    {
        EXPECT_EQ(0, fchdir(m_nBefore));
        close(m_nBefore);
    }
    WorkDir(const WorkDir&) = delete;
    WorkDir& operator=(const WorkDir&) = delete;

private:
    int m_nBefore;
};

/// Goes down into new directories until the working directory's name has that many bytes.
void DescendTo(size_t nLength)
{
    constexpr size_t LONGEST_NAME = 200;
    for (size_t nNow = std::filesystem::current_path().native().size(); nNow < nLength;) {
        size_t nName = std::min(nLength - nNow - 1, LONGEST_NAME);
        if (nLength - nNow - nName - 1 == 1)
            --nName; // leaves room for a separator and a name
        const std::string strName(nName, 'd');
        ASSERT_EQ(0, mkdir(strName.c_str(), 0700));
        ASSERT_EQ(0, chdir(strName.c_str()));
        nNow += nName + 1;
    }
}

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
        std::fputs("buffered\n", stdout);
        const char* apszArgs[] = {"no-such-program", nullptr};
        CKorProcess::Spawn("/no/such/program", apszArgs);
        return ExitStatusOfChild() == 255 ? 3 : 4;
    });
    const ChildResult& oResult = oCaller.Wait();
    EXPECT_EQ(3, oResult.nExitStatus);
#ifdef __SANITIZE_THREAD__
    // The sanitizer puts a _exit of its own in place, which writes out buffered text.
    EXPECT_EQ("buffered\nbye!\nbuffered\n", oResult.strOut);
#else
    EXPECT_EQ("bye!\nbuffered\n", oResult.strOut) << "each line once";
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

/// The directory of the running test program, by a way of its own.
std::string OwnDirectory()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().native() + "/";
}

/// Where the kernel sees the program that runs: the emulator's directory under an emulator.
std::string DirectorySeenByKernel()
{
    return std::filesystem::read_symlink("/proc/./self/exe").parent_path().native() + "/";
}

TEST(KorProcessProgDir, IsWhereTheProgramFileLies)
{
    const std::string strDir = CKorProcess::GetCurrentProgDir();
    if (UnderEmulation() && strDir != OwnDirectory()) {
        std::printf("[ emulated ] the emulator stands for the program file\n");
        EXPECT_EQ(DirectorySeenByKernel(), strDir);
    } else {
        EXPECT_EQ(OwnDirectory(), strDir);
    }
}

TEST(KorProcessProgDir, StaysWhenTheWorkingDirectoryChanges)
{
    const std::string strDir = CKorProcess::GetCurrentProgDir();
    const WorkDir oWorkDir("/");
    EXPECT_EQ(strDir, CKorProcess::GetCurrentProgDir());
}

/// Runs a copy of a program that prints its directory, in a directory of nLength bytes, and
/// expects the directory that the name of the copy, cut at 2047 bytes, is in.
void ExpectProgramDirAtDepth(size_t nLength)
{
    const ScratchDir oDir;
    const WorkDir oWorkDir(oDir.Path());
    DescendTo(nLength);
    const std::string strProgram = std::filesystem::current_path() / "p.bin";
    std::filesystem::copy_file(PROGDIR_PROGRAM, strProgram);
    const std::string strDir = RunProgram({"./p.bin"}).strOut;
    if (UnderEmulation() && strDir == DirectorySeenByKernel()) {
        std::printf("[ emulated ] the emulator stands for the program file\n");
        return;
    }
    EXPECT_EQ(nLength, strProgram.size() - 6);
    EXPECT_EQ(strProgram.substr(0, strProgram.substr(0, 2047).rfind('/') + 1), strDir);
}

TEST(KorProcessProgDir, IsKnownInADeepDirectory)
{
    ExpectProgramDirAtDepth(1500);
}

TEST(KorProcessProgDir, IsCutAt2047Bytes)
{
    ExpectProgramDirAtDepth(2041); // a name of exactly 2047 bytes
    ExpectProgramDirAtDepth(2042); // cut inside the program's name
    ExpectProgramDirAtDepth(2046); // cut behind the separator
    ExpectProgramDirAtDepth(2047); // cut in front of the separator
    ExpectProgramDirAtDepth(2100); // cut inside the last directory's name
}

TEST(KorProcessProgDir, IsTheSameOnEveryThread)
{
    const std::string strDir = CKorProcess::GetCurrentProgDir();
    const auto fnAsk = [&strDir] {
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(strDir, CKorProcess::GetCurrentProgDir());
    };
    std::thread oOther(fnAsk);
    fnAsk();
    oOther.join();
}

TEST(KorProcessProgDir, CutsTheProgramNameOff)
{
    EXPECT_EQ("/usr/bin/", DirectoryOfProgram("/usr/bin/daemon"));
    EXPECT_EQ("/", DirectoryOfProgram("/daemon"));
    EXPECT_EQ("/odd\\", DirectoryOfProgram("/odd\\/daemon"));
}

TEST(KorProcessProgDir, TakesANameWithoutSlashForTheDirectory)
{
    EXPECT_EQ("daemon/", DirectoryOfProgram("daemon"));
    EXPECT_EQ("odd\\", DirectoryOfProgram("odd\\"));
}

} // namespace
