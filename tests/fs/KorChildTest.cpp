#include "fs/KorChild.h"

#include "event/KorEventLoop.h"
#include "tests/config/TestScale.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Confinement.h"
#include "tests/support/Emulation.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <type_traits>
#include <unistd.h>

namespace
{

using Options = SKorChildOptions;

std::vector<std::string> Shell(const std::string& strScript)
{
    return {"sh", "-c", strScript};
}

/// Reads a blocking handle to its end.
std::string ReadAll(int nHandle)
{
    std::string strAll;
    char acBuffer[4096];
    for (ssize_t nRead = 0; (nRead = read(nHandle, acBuffer, sizeof acBuffer)) > 0;)
        strAll.append(acBuffer, static_cast<size_t>(nRead));
    return strAll;
}

/// What a program writes to its standard output; fails the running test when it cannot run.
std::string OutputOf(const std::vector<std::string>& vecArguments, Options oOptions = {})
{
    CKorChild oChild;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    EXPECT_TRUE(oChild.Start(vecArguments, oOptions)) << oChild.GetLastError();
    std::string strOutput = ReadAll(oChild.GetOutputHandle());
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    return strOutput;
}

int ErrorOf(const std::vector<std::string>& vecArguments, const Options& oOptions = {})
{
    CKorChild oChild;
    errno = 0;
    EXPECT_FALSE(oChild.Start(vecArguments, oOptions));
    EXPECT_EQ(errno, oChild.GetLastError());
    EXPECT_EQ(0, oChild.GetProcessID());
    EXPECT_FALSE(oChild.IsRunning());
    return oChild.GetLastError();
}

/// Sets an environment variable for the scope.
class Variable
{
public:
    Variable(const char* pszName, const std::string& strValue) : m_pszName(pszName)
    {
        const char* const pszFormer = std::getenv(pszName);
        m_bFormer = pszFormer != nullptr;
        m_strFormer = m_bFormer ? pszFormer : "";
        setenv(pszName, strValue.c_str(), 1);
    }
    ~Variable()
    {
        if (m_bFormer)
            setenv(m_pszName, m_strFormer.c_str(), 1);
        else
            unsetenv(m_pszName);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_pszName;
    bool m_bFormer;
    std::string m_strFormer;
};

void WriteScript(const std::string& strName, const std::string& strText)
{
    WriteFile(strName, "#!/bin/sh\n" + strText + "\n");
    EXPECT_EQ(0, chmod(strName.c_str(), 0755));
}

bool Exists(pid_t nProcessID)
{
    return kill(nProcessID, 0) == 0;
}

TEST(KorChild, TellsHowTheProgramExited)
{
    CKorChild oChild;
    EXPECT_EQ(0, oChild.GetProcessID());
    EXPECT_EQ(-1, oChild.GetEndHandle());
    ASSERT_TRUE(oChild.Start(Shell("exit 7")));
    EXPECT_LT(0, oChild.GetProcessID());
    EXPECT_TRUE(oChild.Wait(0xFFFFFFFF));
    EXPECT_FALSE(oChild.IsRunning());
    EXPECT_EQ(7, oChild.GetExitStatus());
    EXPECT_EQ(0, oChild.GetEndSignal());
    EXPECT_LT(0, oChild.GetProcessID());
}

TEST(KorChild, TellsWhichSignalEndedTheProgram)
{
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start(Shell("kill -USR1 $$")));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(SIGUSR1, oChild.GetEndSignal());
}

TEST(KorChild, KnowsAProgramThatRuns)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start({"cat"}, oOptions));
    EXPECT_TRUE(oChild.IsRunning());
    EXPECT_FALSE(oChild.Wait(0));
    EXPECT_FALSE(oChild.Wait(20));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(0, oChild.GetEndSignal());
    EXPECT_FALSE(oChild.Start({"true"}));
    EXPECT_EQ(EBUSY, oChild.GetLastError());
    EXPECT_TRUE(oChild.IsRunning());
    oChild.CloseInput();
    EXPECT_EQ(-1, oChild.GetInputHandle());
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(0, oChild.GetExitStatus());
}

TEST(KorChild, StartsAnewAfterTheEnd)
{
    CKorChild oChild;
    for (int nStatus = 0; nStatus < 5; ++nStatus) {
        ASSERT_TRUE(oChild.Start(Shell("exit " + std::to_string(nStatus))));
        EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
        EXPECT_EQ(nStatus, oChild.GetExitStatus());
    }
    EXPECT_FALSE(oChild.Start({"/no/such/program"}));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(0, oChild.GetProcessID());
    EXPECT_EQ(-1, oChild.GetEndHandle());
}

TEST(KorChild, BeforeAStartNothingRunsAndNothingIsWaitedFor)
{
    CKorChild oChild;
    EXPECT_FALSE(oChild.IsRunning());
    EXPECT_FALSE(oChild.Wait(0xFFFFFFFF));
    EXPECT_EQ(ESRCH, oChild.GetLastError());
    EXPECT_FALSE(oChild.Signal(0));
    EXPECT_FALSE(oChild.Stop(0));
    EXPECT_EQ(-1, oChild.GetExitStatus());
    EXPECT_EQ(-1, oChild.GetInputHandle());
    EXPECT_EQ(-1, oChild.GetOutputHandle());
    EXPECT_EQ(-1, oChild.GetErrorHandle());
    oChild.CloseInput();
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorChild>);
    EXPECT_FALSE(std::is_copy_constructible_v<CKorChild>);
}

TEST(KorChildStart, TellsWhyAProgramCannotBeStarted)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("plain"), "#!/bin/sh\n");
    WriteFile(oDir.File("garbage"), "\x01\x02\x03");
    EXPECT_EQ(0, chmod(oDir.File("garbage").c_str(), 0755));
    EXPECT_EQ(ENOENT, ErrorOf({"/no/such/program"}));
    EXPECT_EQ(ENOENT, ErrorOf({"no-such-program-anywhere"}));
    EXPECT_EQ(ENOENT, ErrorOf({""}));
    EXPECT_EQ(EACCES, ErrorOf({oDir.File("plain")}));
    EXPECT_EQ(EACCES, ErrorOf({oDir.Path()}));
    EXPECT_EQ(ENOTDIR, ErrorOf({oDir.File("plain") + "/x"}));
    EXPECT_EQ(ENOEXEC, ErrorOf({oDir.File("garbage")}));
    const Variable oPath("PATH", oDir.Path() + ":/no/such/folder");
    EXPECT_EQ(EACCES, ErrorOf({"plain"}));
    EXPECT_EQ(ENOENT, ErrorOf({"other"}));
}

TEST(KorChildStart, TellsWhyAWorkingDirectoryCannotBeUsed)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("plain"), "");
    Options oOptions;
    oOptions.m_strWorkDir = oDir.File("none");
    EXPECT_EQ(ENOENT, ErrorOf({"true"}, oOptions));
    oOptions.m_strWorkDir = oDir.File("plain");
    EXPECT_EQ(ENOTDIR, ErrorOf({"true"}, oOptions));
}

TEST(KorChildStart, RefusesWhatMakesNoSense)
{
    EXPECT_EQ(EINVAL, ErrorOf({}));
    EXPECT_EQ(EINVAL, ErrorOf({std::string("tr\0ue", 5)}));
    EXPECT_EQ(EINVAL, ErrorOf({"true", std::string("\0", 1)}));
    Options oOptions;
    for (const std::string& strEntry :
         {std::string("NAME"), std::string(), std::string("=value"), std::string("NAME=a\0b", 8)}) {
        oOptions.m_vecEnvironment = {"FIRST=1", strEntry};
        EXPECT_EQ(EINVAL, ErrorOf({"true"}, oOptions)) << strEntry;
    }
    oOptions.m_vecEnvironment.clear();
    oOptions.m_strWorkDir = std::string("/\0", 2);
    EXPECT_EQ(EINVAL, ErrorOf({"true"}, oOptions));
    oOptions.m_strWorkDir.clear();
    oOptions.m_eInput = Options::STREAM_STDOUT;
    EXPECT_EQ(EINVAL, ErrorOf({"true"}, oOptions));
    oOptions.m_eInput = Options::STREAM_INHERIT;
    oOptions.m_eOutput = Options::STREAM_STDOUT;
    EXPECT_EQ(EINVAL, ErrorOf({"true"}, oOptions));
}

TEST(KorChildStart, LeavesNoDeadProcessWhenItFails)
{
    ChildProcess oAlone([] {
        CKorChild oChild;
        const bool bFailed = !oChild.Start({"/no/such/program"});
        return bFailed && waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD ? 0 : 1;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

TEST(KorChildStart, PassesEveryArgumentAsItIs)
{
    EXPECT_EQ("<a b><><*><$HOME><\">", OutputOf({"printf", "<%s>", "a b", "", "*", "$HOME", "\""}));
}

TEST(KorChildStart, SearchesThePathOfTheParent)
{
    const ScratchDir oDir;
    ASSERT_EQ(0, mkdir(oDir.File("first").c_str(), 0755));
    ASSERT_EQ(0, mkdir(oDir.File("second").c_str(), 0755));
    WriteFile(oDir.File("first/tool"), "not executable");
    WriteScript(oDir.File("second/tool"), "echo second");
    const Variable oPath("PATH", oDir.File("first") + ":" + oDir.File("second") + ":/bin");
    Options oOptions;
    oOptions.m_vecEnvironment = {"PATH=/nowhere"};
    EXPECT_EQ("second\n", OutputOf({"tool"}, oOptions));
}

TEST(KorChildStart, SearchesFoldersOfThePathFromTheParentsDirectory)
{
    const ScratchDir oDir;
    const std::string strFormer = OutputOf({"pwd"});
    WriteScript(oDir.File("tool"), "echo found");
    ASSERT_EQ(0, chdir(oDir.Path().c_str()));
    Options oOptions;
    oOptions.m_strWorkDir = "/";
    for (const char* pszPath : {".", "", "/nowhere:", ":/nowhere"}) {
        const Variable oPath("PATH", pszPath);
        EXPECT_EQ("found\n", OutputOf({"tool"}, oOptions)) << pszPath;
    }
    EXPECT_EQ(0, chdir(strFormer.substr(0, strFormer.size() - 1).c_str()));
}

TEST(KorChildStart, UsesTheWorkingDirectory)
{
    const ScratchDir oDir;
    WriteScript(oDir.File("tool"), "pwd");
    Options oOptions;
    oOptions.m_strWorkDir = oDir.Path();
    EXPECT_EQ(oDir.Path() + "\n", OutputOf({"pwd"}, oOptions));
    EXPECT_EQ(oDir.Path() + "\n", OutputOf({"./tool"}, oOptions));
}

TEST(KorChildStart, AddsToTheEnvironmentOrReplaces)
{
    const Variable oKept("TARVO_KEPT", "kept");
    const Variable oReplaced("TARVO_REPLACED", "old");
    Options oOptions;
    oOptions.m_vecEnvironment = {"TARVO_REPLACED=1", "TARVO_NEW=a=b", "TARVO_REPLACED=2",
                                 "TARVO_EMPTY="};
    const std::string strScript =
        "echo $TARVO_KEPT,$TARVO_REPLACED,$TARVO_NEW,${TARVO_EMPTY-none}; env | grep -c TARVO_";
    EXPECT_EQ("kept,2,a=b,\n4\n", OutputOf(Shell(strScript), oOptions));
    EXPECT_STREQ("old", std::getenv("TARVO_REPLACED"));
    oOptions.m_bClearEnvironment = true;
    EXPECT_EQ("TARVO_NEW=a=b\nTARVO_REPLACED=2\nTARVO_EMPTY=\n", OutputOf({"env"}, oOptions));
}

TEST(KorChildStart, KeepsTheServiceManagersVariables)
{
    const Variable oSocket("NOTIFY_SOCKET", "/run/x");
    const Variable oTime("WATCHDOG_USEC", "1");
    const Variable oProcess("WATCHDOG_PID", "1");
    const Variable oListen("LISTEN_FDS", "1");
    const Variable oSimilar("NOTIFY_SOCKETS", "mine");
    EXPECT_EQ("NOTIFY_SOCKETS=mine\n",
              OutputOf(Shell("env | grep -E '^(NOTIFY|WATCHDOG|LISTEN)'")));
    Options oOptions;
    oOptions.m_vecEnvironment = {"NOTIFY_SOCKET=/own"};
    EXPECT_EQ("/own\n", OutputOf(Shell("echo $NOTIFY_SOCKET"), oOptions));
}

/// The descriptors that a program finds, but for the one that lists them.
std::string DescriptorsOfAProgram()
{
    return OutputOf(Shell("cd /proc/self/fd; for f in *; do [ -e $f ] && echo $f; done"));
}

TEST(KorChildStart, ClosesEveryOtherDescriptor)
{
    const int hHigh = fcntl(1, F_DUPFD, 900);
    const int hLow = dup(1);
    EXPECT_EQ("0\n1\n2\n", DescriptorsOfAProgram());
    close(hHigh);
    close(hLow);
}

TEST(KorChildStart, GivesDefaultActionsAndAnEmptyMask)
{
    ChildProcess oAlone([] {
        for (int nSignal = 1; nSignal < NSIG; ++nSignal)
            std::signal(
                nSignal, nSignal % 2 == 0 ? SIG_IGN : [](int) {});
        std::signal(SIGCHLD, SIG_DFL);
        sigset_t oAll;
        sigfillset(&oAll);
        sigprocmask(SIG_SETMASK, &oAll, nullptr);
        const std::string strStatus = OutputOf({"cat", "/proc/self/status"});
        sigset_t oNow;
        sigprocmask(SIG_SETMASK, nullptr, &oNow);
        std::fputs(strStatus.c_str(), stdout);
        return sigismember(&oNow, SIGTERM) == 1 ? 0 : 1;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
    for (const char* pszLine : {"SigBlk:\t0000000000000000\n", "SigIgn:\t0000000000000000\n",
                                "SigCgt:\t0000000000000000\n"})
        EXPECT_NE(std::string::npos, oAlone.Wait().strOut.find(pszLine)) << oAlone.Wait().strOut;
}

TEST(KorChildStreams, ArePipesOfTheirOwn)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("read line; echo out $line; echo err $line >&2"), oOptions));
    for (const int nHandle :
         {oChild.GetInputHandle(), oChild.GetOutputHandle(), oChild.GetErrorHandle()}) {
        EXPECT_EQ(FD_CLOEXEC, fcntl(nHandle, F_GETFD));
        EXPECT_EQ(0, fcntl(nHandle, F_GETFL) & O_NONBLOCK);
    }
    EXPECT_EQ(FD_CLOEXEC, fcntl(oChild.GetEndHandle(), F_GETFD));
    EXPECT_EQ(3, write(oChild.GetInputHandle(), "hi\n", 3));
    EXPECT_EQ("out hi\n", ReadAll(oChild.GetOutputHandle()));
    EXPECT_EQ("err hi\n", ReadAll(oChild.GetErrorHandle()));
}

TEST(KorChildStreams, StandardErrorCanJoinStandardOutput)
{
    Options oOptions;
    oOptions.m_eError = Options::STREAM_STDOUT;
    EXPECT_EQ("1\n2\n", OutputOf(Shell("echo 1; echo 2 >&2"), oOptions));
}

TEST(KorChildStreams, NothingIsReadFromAndWrittenToTheNullDevice)
{
    Options oOptions;
    oOptions.m_eInput = Options::STREAM_NULL;
    oOptions.m_eError = Options::STREAM_NULL;
    EXPECT_EQ("/dev/null\n/dev/null\n",
              OutputOf(Shell("cat; readlink /proc/$$/fd/0 /proc/$$/fd/2"), oOptions));
}

TEST(KorChildStreams, AreInheritedAlsoWhenExecutionClosesThem)
{
    ChildProcess oAlone([] {
        fcntl(STDOUT_FILENO, F_SETFD, FD_CLOEXEC);
        CKorChild oChild;
        return oChild.Start({"echo", "hello"}) && oChild.Wait(PATIENCE_MS) ? oChild.GetExitStatus()
                                                                           : 1;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
    EXPECT_EQ("hello\n", oAlone.Wait().strOut);
}

TEST(KorChildStreams, WorkWhateverStandardStreamsTheParentClosed)
{
    for (int nClosed = 1; nClosed < 8; ++nClosed) {
        ChildProcess oAlone([nClosed] {
            for (int nStream = 0; nStream < 3; ++nStream) {
                if (nClosed >> nStream & 1)
                    close(nStream);
            }
            Options oOptions;
            oOptions.m_eInput = oOptions.m_eOutput = Options::STREAM_PIPE;
            CKorChild oChild;
            if (!oChild.Start({"cat"}, oOptions))
                return 1;
            for (const int nHandle :
                 {oChild.GetEndHandle(), oChild.GetInputHandle(), oChild.GetOutputHandle()}) {
                if (nHandle < 3)
                    return 2;
            }
            if (write(oChild.GetInputHandle(), "x", 1) != 1)
                return 3;
            oChild.CloseInput();
            if (ReadAll(oChild.GetOutputHandle()) != "x" || !oChild.Wait(PATIENCE_MS))
                return 4;
            CKorChild oInheriting;
            const bool bAll =
                oInheriting.Start(Shell("for f in 0 1 2; do [ -e /proc/$$/fd/$f ] || exit 1; done; "
                                        "[ ! -e /proc/$$/fd/3 ]")) &&
                oInheriting.Wait(PATIENCE_MS);
            return bAll ? oInheriting.GetExitStatus() : 5;
        });
        EXPECT_EQ(0, oAlone.Wait().nExitStatus) << nClosed;
    }
}

TEST(KorChildEnd, HandlesStayOpenUntilTheNextStart)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start({"echo", "late"}, oOptions));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    const int hOutput = oChild.GetOutputHandle();
    const int hEnd = oChild.GetEndHandle();
    EXPECT_EQ("late\n", ReadAll(hOutput));
    ASSERT_TRUE(oChild.Start({"true"}));
    EXPECT_EQ(-1, oChild.GetOutputHandle());
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_TRUE(fcntl(hOutput, F_GETFD) == -1 || hOutput == oChild.GetEndHandle());
    EXPECT_LE(0, hEnd);
}

TEST(KorChildEnd, IsToldToAnEventLoopWithItsStatus)
{
    CKorEventLoop oLoop;
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start(Shell("exit 9")));
    oLoop.WatchHandle(oChild.GetEndHandle(), CKorEventLoop::EVENT_READABLE,
                      [&](unsigned int) { oLoop.Stop(oChild.GetExitStatus()); });
    EXPECT_EQ(9, oLoop.Run());
}

TEST(KorChildEnd, IsCollectedWithoutBeingAskedFor)
{
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start({"true"}));
    const pid_t nProcessID = oChild.GetProcessID();
    EXPECT_TRUE(WaitUntil([&] { return !Exists(nProcessID); }));
}

TEST(KorChildEnd, LeavesTheProgramsOtherChildrenAlone)
{
    const pid_t nOther = fork();
    if (nOther == 0)
        _exit(42);
    CKorChild oChild;
    ASSERT_TRUE(oChild.Start({"true"}));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    int nStatus = 0;
    EXPECT_EQ(nOther, waitpid(nOther, &nStatus, 0));
    EXPECT_EQ(42, WEXITSTATUS(nStatus));
}

TEST(KorChildEnd, IsKnownWithoutStatusWhenSigchldIsIgnored)
{
    ChildProcess oAlone([] {
        std::signal(SIGCHLD, SIG_IGN);
        CKorChild oChild;
        if (!oChild.Start(Shell("exit 3")) || !oChild.Wait(PATIENCE_MS))
            return 1;
        return oChild.GetExitStatus() == -1 && oChild.GetEndSignal() == 0 ? 0 : 2;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

TEST(KorChildEnd, IsKnownWhenSomebodyWaitsForAllChildren)
{
    ChildProcess oAlone([] {
        std::atomic<bool> bEnd{false};
        std::thread oThief([&] {
            while (!bEnd) {
                if (waitpid(-1, nullptr, 0) == -1)
                    std::this_thread::yield();
            }
        });
        int nResult = 0;
        for (int nStart = 0; nStart < 50 && nResult == 0; ++nStart) {
            CKorChild oChild;
            if (!oChild.Start(Shell("exit 3")) || !oChild.Wait(PATIENCE_MS))
                nResult = 1;
            else if (oChild.GetExitStatus() != 3 && oChild.GetExitStatus() != -1)
                nResult = 2;
        }
        bEnd = true;
        oThief.join();
        return nResult;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

TEST(KorChildEnd, IsNotReportedByAChildThatClosesEverything)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("exec 0<&- 1>&- 2>&-; while :; do sleep 1; done"), oOptions));
    EXPECT_EQ("", ReadAll(oChild.GetOutputHandle()));
    EXPECT_TRUE(oChild.IsRunning());
    EXPECT_FALSE(oChild.Wait(50));
    EXPECT_TRUE(oChild.Stop(0));
}

TEST(KorChildEnd, IsReportedWhileAGrandchildKeepsThePipes)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("exec 3<&0; cat <&3 & echo $!; exit 5"), oOptions));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(5, oChild.GetExitStatus());
    char acBuffer[32] = {};
    EXPECT_LT(0, read(oChild.GetOutputHandle(), acBuffer, sizeof acBuffer - 1));
    const pid_t nGrandchild = std::atoi(acBuffer);
    EXPECT_LT(1, nGrandchild);
    EXPECT_TRUE(Exists(nGrandchild));
    oChild.CloseInput();
    EXPECT_EQ("", ReadAll(oChild.GetOutputHandle())) << "the grandchild ends with its input";
}

TEST(KorChildSignal, IsSentToTheProgram)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("trap 'exit 4' USR1; echo ready; while :; do sleep 0.01; done"),
                             oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_TRUE(oChild.Signal(0));
    EXPECT_FALSE(oChild.Signal(1000));
    EXPECT_EQ(EINVAL, oChild.GetLastError());
    EXPECT_TRUE(oChild.Signal(SIGUSR1));
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(4, oChild.GetExitStatus());
    EXPECT_FALSE(oChild.Signal(SIGUSR1));
    EXPECT_EQ(ESRCH, oChild.GetLastError());
}

TEST(KorChildStop, AsksFirst)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("trap 'exit 6' TERM; echo ready; while :; do sleep 0.01; done"),
                             oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_TRUE(oChild.Stop(PATIENCE_MS));
    EXPECT_EQ(6, oChild.GetExitStatus());
    EXPECT_TRUE(oChild.Stop(0)) << "it has ended";
}

TEST(KorChildStop, KillsAfterTheGrace)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(
        oChild.Start(Shell("trap '' TERM; echo ready; while :; do sleep 0.01; done"), oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_TRUE(oChild.Stop(30));
    EXPECT_EQ(SIGKILL, oChild.GetEndSignal());
}

TEST(KorChildStop, EndsTheWholeGroupOfAProgramThatLeadsOne)
{
    CKorChild oChild;
    Options oOptions;
    oOptions.m_bNewGroup = true;
    oOptions.m_eOutput = Options::STREAM_PIPE;
    ASSERT_TRUE(oChild.Start(Shell("sleep 1000 & echo ready; wait"), oOptions));
    char acReady[6];
    EXPECT_EQ(6, read(oChild.GetOutputHandle(), acReady, sizeof acReady));
    EXPECT_EQ(oChild.GetProcessID(), getpgid(oChild.GetProcessID()));
    EXPECT_TRUE(oChild.Stop(0));
    EXPECT_EQ("", ReadAll(oChild.GetOutputHandle())) << "nobody of the group holds the pipe";
}

TEST(KorChildStop, IsWhatTheDestructorDoes)
{
    pid_t nProcessID = 0;
    {
        CKorChild oChild;
        ASSERT_TRUE(oChild.Start(Shell("trap '' TERM; while :; do sleep 1; done")));
        nProcessID = oChild.GetProcessID();
        EXPECT_EQ(getpgrp(), getpgid(nProcessID));
    }
    EXPECT_FALSE(Exists(nProcessID));
}

TEST(KorChildStop, ComesFromTheSystemWhenTheStartingThreadEnds)
{
    CKorChild oChild;
    CKorChild oOther;
    std::thread([&] {
        Options oOptions;
        EXPECT_TRUE(oOther.Start({"sleep", "1000"}, oOptions));
        oOptions.m_bEndWithParent = true;
        EXPECT_TRUE(oChild.Start({"sleep", "1000"}, oOptions));
    }).join();
    EXPECT_TRUE(oChild.Wait(PATIENCE_MS));
    EXPECT_EQ(SIGTERM, oChild.GetEndSignal());
    EXPECT_TRUE(oOther.IsRunning());
}

TEST(KorChildFork, TheProgramsChildIsNotTheForkedProcesss)
{
    auto pChild = std::make_unique<CKorChild>();
    ASSERT_TRUE(pChild->Start({"sleep", "1000"}));
    ChildProcess oForked([&] {
        const bool bLeft = !pChild->IsRunning() && !pChild->Signal(SIGKILL) && !pChild->Stop(0) &&
                           !pChild->Wait(0xFFFFFFFF);
        pChild.reset();
        return bLeft ? 0 : 1;
    });
    EXPECT_EQ(0, oForked.Wait().nExitStatus);
    EXPECT_TRUE(pChild->IsRunning());
    EXPECT_TRUE(pChild->Stop(0));
}

size_t EntriesOf(const char* pszDirectory)
{
    DIR* const pDirectory = opendir(pszDirectory);
    size_t nEntries = 0;
    while (readdir(pDirectory) != nullptr)
        ++nEntries;
    closedir(pDirectory);
    return nEntries;
}

TEST(KorChildLoad, TenThousandStartsLeaveNothingBehind)
{
    const size_t nHandles = EntriesOf("/proc/self/fd");
    const size_t nThreads = EntriesOf("/proc/self/task");
    CKorChild oChild;
    Options oOptions;
    oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
    for (int nStart = 0; nStart < 10000 / TEST_SCALE; ++nStart) {
        ASSERT_TRUE(oChild.Start({"/bin/true"}, oOptions)) << nStart;
        ASSERT_TRUE(oChild.Wait(PATIENCE_MS)) << nStart;
        ASSERT_EQ(0, oChild.GetExitStatus()) << nStart;
    }
    EXPECT_GE(nHandles + 4, EntriesOf("/proc/self/fd")) << "its own are open";
    EXPECT_TRUE(WaitUntil([=] { return EntriesOf("/proc/self/task") <= nThreads + 1; }));
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
}

TEST(KorChildLoad, StartsFromFourThreadsAtOnceDoNotMeet)
{
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < 4; ++nThread) {
        vecThreads.emplace_back([nThread] {
            for (int nStart = 0; nStart < 500 / TEST_SCALE; ++nStart) {
                const std::string strText = std::to_string(nThread * 1000 + nStart);
                EXPECT_EQ(
                    strText + "\n3\n",
                    OutputOf(Shell("echo " + strText + "; ls /proc/$$/fd | grep -c '^[0-2]$'")));
                EXPECT_EQ(ENOENT, ErrorOf({"/no/such/program"}));
            }
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
}

/// Has every system call fail that came after 2019, as on an old kernel.
bool ForgetNewSystemCalls()
{
    constexpr unsigned int FIRST_NEW = 424;
    sock_filter aoFilter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, FIRST_NEW, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog oProgram = {sizeof aoFilter / sizeof aoFilter[0], aoFilter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &oProgram) == 0;
}

/// The descriptors from 3 to 9 that a program finds open, told without /proc.
std::string LowDescriptorsOfAProgram()
{
    return OutputOf(Shell("for n in 3 4 5 6 7 8 9; do if eval \": >&$n\" 2>/dev/null; then "
                          "echo $n; fi; done"));
}

TEST(KorChildOldKernel, StartsEndsAndClosesAsOnANewOne)
{
    ChildProcess oOld([] {
        if (!ForgetNewSystemCalls() && !UnderEmulation())
            return 1;
        fcntl(1, F_DUPFD, 900);
        for (int nCopy = 0; nCopy < 300; ++nCopy)
            dup(1);
        if (DescriptorsOfAProgram() != "0\n1\n2\n" || ErrorOf({"/no/such/program"}) != ENOENT)
            return 2;
        CKorChild oChild;
        if (!oChild.Start({"sleep", "1000"}) || oChild.Wait(0) || !oChild.Stop(PATIENCE_MS))
            return 3;
        return oChild.GetEndSignal() == SIGTERM && waitpid(-1, nullptr, WNOHANG) == -1 ? 0 : 4;
    });
    EXPECT_EQ(0, oOld.Wait().nExitStatus);
}

TEST(KorChildOldKernel, ClosesDescriptorsAlsoWithoutTheListOfThem)
{
    ChildProcess oOld([]() -> int {
        const bool bHidden = MountSmallDisk("/proc");
        ForgetNewSystemCalls();
        for (int nCopy = 0; nCopy < 10; ++nCopy)
            dup(1);
        const bool bShown = bHidden && access("/proc/self", F_OK) == 0;
        const bool bClosed = LowDescriptorsOfAProgram().empty();
        _exit(bShown ? 1 : bClosed ? 0 : 2); // without the checks of a sanitizer, which need /proc
    });
    EXPECT_EQ(0, oOld.Wait().nExitStatus);
}

TEST(KorChildLoad, HandlesThatCannotBeHadAreToldAndNoneIsLost)
{
    ChildProcess oAlone([] {
        const size_t nHandles = EntriesOf("/proc/self/fd");
        Options oOptions;
        oOptions.m_eInput = oOptions.m_eOutput = oOptions.m_eError = Options::STREAM_PIPE;
        for (rlim_t nLimit = 3; nLimit < 30; ++nLimit) {
            const rlimit oLimit = {nLimit, 1024};
            setrlimit(RLIMIT_NOFILE, &oLimit);
            CKorChild oChild;
            const bool bStarted = oChild.Start({"true"}, oOptions);
            const int nError = oChild.GetLastError();
            if (bStarted && nLimit < 8)
                return 1;
            if (!bStarted && (nError != EMFILE || nLimit > 25))
                return 2;
        }
        const rlimit oLimit = {1024, 1024};
        setrlimit(RLIMIT_NOFILE, &oLimit);
        return EntriesOf("/proc/self/fd") == nHandles ? 0 : 3;
    });
    EXPECT_EQ(0, oAlone.Wait().nExitStatus);
}

} // namespace
