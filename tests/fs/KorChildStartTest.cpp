#include "fs/KorChild.h"

#include "tests/fs/ChildTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

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
    EXPECT_EQ(ENOEXEC, ErrorOf({"garbage"})) << "the search ends where a program was found";
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
              OutputOf(Shell("cat; readlink /proc/$$/fd/0; readlink /proc/$$/fd/2"), oOptions));
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

} // namespace
