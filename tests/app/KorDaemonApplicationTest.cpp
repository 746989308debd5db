#include "app/KorDaemonApplication.h"

#include "tests/app/DaemonTest.h"
#include "tests/app/PrintingDaemon.h"
#include "tests/support/Arguments.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <signal.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

TEST(KorDaemonApplication, ASignalEndsTheLoopAndStartReturns)
{
    for (const int nSignal : {SIGTERM, SIGINT}) {
        ChildProcess oChild(&RunDaemon<>);
        const ChildResult oResult = EndWith(oChild, nSignal);
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ("running finalized returned ", oResult.strOut);
    }
}

TEST(KorDaemonApplication, ASignalBeforeStartAsksForTheEnd)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        EXPECT_FALSE(oDaemon.IsEndRequested());
        raise(SIGTERM);
        Print(oDaemon.IsEndRequested() ? "requested " : "nothing ");
        return oDaemon.Start(0, nullptr);
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("requested finalized ", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, ASignalInInitializeAsksForTheEnd)
{
    class Interrupted : public PrintingDaemon
    {
    public:
        bool Initialize() override
        {
            raise(SIGINT);
            Print(IsEndRequested() ? "requested " : "nothing ");
            return true;
        }
    };
    ChildProcess oChild(&RunDaemon<Interrupted>);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("requested finalized returned ", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, ARunWithoutTheLoopSeesTheRequest)
{
    ChildProcess oChild(&RunDaemon<Waiting>);
    const ChildResult oResult = EndWith(oChild, SIGTERM);
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("running finalized returned ", oResult.strOut);
}

TEST(KorDaemonApplication, AnyThreadMayAskForTheEnd)
{
    class Asking : public PrintingDaemon
    {
    public:
        void Run() override
        {
            std::thread oThread([this] { RequestEnd(5); });
            CKorDaemonApplication::Run();
            oThread.join();
        }
    };
    ChildProcess oChild(&RunDaemon<Asking>);
    EXPECT_EQ(5, oChild.Wait().nExitStatus);
}

/// The exit status of a daemon that asks for the end so.
int StatusAfter(const std::function<void(PrintingDaemon&)>& fnAsk)
{
    PrintingDaemon oDaemon;
    fnAsk(oDaemon);
    EXPECT_TRUE(oDaemon.IsEndRequested());
    const int nStatus = oDaemon.Start(0, nullptr);
    EXPECT_EQ(nStatus, oDaemon.GetExitStatus());
    return nStatus;
}

TEST(KorDaemonApplication, TheFirstOtherStatusDecides)
{
    const PrintingDaemon::Muted oMuted;
    EXPECT_EQ(0, StatusAfter([](PrintingDaemon& oDaemon) { oDaemon.RequestEnd(); }));
    EXPECT_EQ(3, StatusAfter([](PrintingDaemon& oDaemon) {
                  oDaemon.RequestEnd();
                  oDaemon.RequestEnd(3);
                  oDaemon.RequestEnd(4);
                  oDaemon.RequestEnd();
              }));
    EXPECT_EQ(3, StatusAfter([](PrintingDaemon& oDaemon) {
                  oDaemon.RequestEnd(3);
                  raise(SIGTERM);
              }));
    EXPECT_EQ(3, StatusAfter([](PrintingDaemon& oDaemon) {
                  raise(SIGTERM);
                  oDaemon.RequestEnd(3);
              }));
}

TEST(KorDaemonApplication, FinalizeMayStillGiveTheStatus)
{
    class Failing : public PrintingDaemon
    {
    public:
        bool Initialize() override
        {
            RequestEnd();
            return true;
        }
        int Finalize() override
        {
            RequestEnd(9);
            return PrintingDaemon::Finalize();
        }
    };
    const PrintingDaemon::Muted oMuted;
    EXPECT_EQ(9, Failing().Start(0, nullptr));
}

TEST(KorDaemonApplication, AnInitializeThatFailsIsStatusOne)
{
    class Refusing : public PrintingDaemon
    {
    public:
        explicit Refusing(int nStatus) : m_nStatus(nStatus) {}
        bool Initialize() override
        {
            if (m_nStatus >= 0)
                RequestEnd(m_nStatus);
            return false;
        }
        void Run() override { ADD_FAILURE(); }

    private:
        int m_nStatus;
    };
    const PrintingDaemon::Muted oMuted;
    EXPECT_EQ(1, Refusing(-1).Start(0, nullptr));
    EXPECT_EQ(0, Refusing(0).Start(0, nullptr));
    EXPECT_EQ(2, Refusing(2).Start(0, nullptr));
}

TEST(KorDaemonApplication, ALoopThatCannotTurnIsStatusOne)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        const pid_t nCopy = fork(); // where the loop needs handles of its own
        if (nCopy == 0) {
            const struct rlimit oNoMore = {3, 3};
            setrlimit(RLIMIT_NOFILE, &oNoMore);
            _exit(oDaemon.Start(0, nullptr));
        }
        int nStatus = 0;
        waitpid(nCopy, &nStatus, 0);
        return WEXITSTATUS(nStatus);
    });
    EXPECT_EQ(1, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized ", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, AnExceptionPassesThrough)
{
    class Throwing : public PrintingDaemon
    {
    public:
        bool Initialize() override
        {
            GetLoop().Post([] { throw std::runtime_error("text"); });
            return true;
        }
        int Finalize() override
        {
            ADD_FAILURE();
            return 0;
        }
    };
    EXPECT_THROW(Throwing().Start(0, nullptr), std::runtime_error);
}

TEST(KorDaemonApplication, AReloadIsNothingUnlessOverridden)
{
    class Plain : public CKorDaemonApplication
    {
    public:
        Plain() : CKorDaemonApplication(nullptr, "plain", nullptr) {}
    };
    Plain oDaemon;
    raise(SIGHUP);
    EXPECT_TRUE(oDaemon.GetLoop().RunOnce(0));
    oDaemon.RequestEnd();
    EXPECT_EQ(0, oDaemon.Start(0, nullptr));
}

TEST(KorDaemonApplication, AReaderThatWentAwayIsAnErrorOnly)
{
    ChildProcess oChild([] {
        const PrintingDaemon oDaemon;
        int anPipe[2];
        EXPECT_EQ(0, pipe(anPipe));
        close(anPipe[0]);
        return write(anPipe[1], "x", 1) == -1 && errno == EPIPE ? 42 : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorDaemonApplication, AnAbortIsSeenAsOne)
{
    class Aborting : public PrintingDaemon
    {
    public:
        void Run() override { std::abort(); }
    };
    ChildProcess oChild(&RunDaemon<Aborting>);
    EXPECT_EQ(SIGABRT, oChild.Wait().nSignal);
    EXPECT_EQ("", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, AStartedProgramHasNoMaskAndDefaultActions)
{
    ChildProcess oChild([] {
        signal(SIGPIPE, SIG_IGN);
        signal(SIGHUP, SIG_IGN);
        signal(SIGINT, SIG_IGN);
        sigset_t oAll;
        sigfillset(&oAll);
        sigprocmask(SIG_SETMASK, &oAll, nullptr);
        const PrintingDaemon oDaemon;
        execlp("grep", "grep", "-E", "^Sig(Blk|Ign)", "/proc/self/status",
               static_cast<char*>(nullptr));
        return 1;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, NothingIsBlockedInTheProgram)
{
    ChildProcess oChild([] {
        sigset_t oSignals;
        sigfillset(&oSignals);
        sigprocmask(SIG_SETMASK, &oSignals, nullptr);
        const PrintingDaemon oDaemon;
        sigprocmask(SIG_SETMASK, nullptr, &oSignals);
        for (int nSignal = 1; nSignal < 32; ++nSignal) {
            if (sigismember(&oSignals, nSignal) == 1)
                return nSignal;
        }
        return 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorDaemonApplication, ClosedStandardHandlesAreOpened)
{
    ChildProcess oChild([] {
        const int nOut = dup(STDOUT_FILENO);
        for (int nHandle = 0; nHandle < 3; ++nHandle)
            close(nHandle);
        const PrintingDaemon oDaemon;
        struct stat oNull = {};
        stat("/dev/null", &oNull);
        for (int nHandle = 0; nHandle < 3; ++nHandle) {
            struct stat oOpen = {};
            if (fstat(nHandle, &oOpen) != 0 || oOpen.st_rdev != oNull.st_rdev)
                return 1;
        }
        return write(1, "x", 1) == 1 && read(0, &oNull, 1) == 0 && nOut > 2 ? 42 : 2;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorDaemonApplication, OpenStandardHandlesStay)
{
    ChildProcess oChild([] {
        close(STDIN_FILENO);
        const PrintingDaemon oDaemon;
        Print("out");
        return write(STDERR_FILENO, "err", 3) == 3 ? 42 : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("out", oChild.Wait().strOut);
    EXPECT_EQ("err", oChild.Wait().strErr);
}

/// The names that a daemon without any gets from its program file.
std::string NamesOf(const char* pszProgram)
{
    class Nameless : public CKorDaemonApplication
    {
    public:
        Nameless() : CKorDaemonApplication(nullptr, nullptr, nullptr) {}
        bool Initialize() override
        {
            RequestEnd();
            return true;
        }
        void DoCmdLineExchange(CKorCmdLineApplExchange* pExchange) override
        {
            m_strArguments.clear();
            std::string strValue;
            while (pExchange->GetParameter(nullptr, false, strValue))
                m_strArguments += strValue + ";";
        }
        const std::string& IniFile() const { return m_strIniFile; }
        std::string m_strArguments;
    };
    Nameless oDaemon;
    Arguments oAlone = {pszProgram};
    EXPECT_EQ(0, oDaemon.Start(oAlone.Count(), oAlone.Vector()));
    EXPECT_EQ("", oDaemon.GetCommandLine());
    const std::string strNames = oDaemon.GetApplName() + " " + oDaemon.IniFile();
    Arguments oArguments = {pszProgram, "a", "b"};
    EXPECT_EQ(0, oDaemon.Start(oArguments.Count(), oArguments.Vector()));
    EXPECT_EQ(strNames, oDaemon.GetApplName() + " " + oDaemon.IniFile());
    EXPECT_EQ("a b ", oDaemon.GetCommandLine());
    EXPECT_EQ(std::string(pszProgram) + ";a;b;", oDaemon.m_strArguments);
    return oDaemon.GetApplName() + " " + oDaemon.IniFile();
}

TEST(KorDaemonApplication, TheProgramFileNeedsNoExtension)
{
    EXPECT_EQ("daemon /opt/bin/daemon.ini", NamesOf("/opt/bin/daemon"));
    EXPECT_EQ("daemon /opt/bin.d/daemon.ini", NamesOf("/opt/bin.d/daemon"));
    EXPECT_EQ("daemon daemon.ini", NamesOf("daemon"));
    EXPECT_EQ("daemon ./daemon.ini", NamesOf("./daemon"));
}

TEST(KorDaemonApplication, AnExtensionCountsAsInTheBaseClass)
{
    EXPECT_EQ("daemon /opt/bin/daemon.ini", NamesOf("/opt/bin/daemon.bin"));
    EXPECT_EQ("daemon.v1 daemon.v1.ini", NamesOf("daemon.v1.bin"));
    EXPECT_EQ(".daemon .daemon.ini", NamesOf(".daemon"));
}

} // namespace
