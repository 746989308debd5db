#include "app/KorDaemonApplication.h"

#include "tests/app/PrintingDaemon.h"
#include "tests/support/Arguments.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <signal.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

ChildResult EndWith(ChildProcess& oChild, int nSignal)
{
    EXPECT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(nSignal);
    return oChild.Wait();
}

template <class TDaemon = PrintingDaemon>
int RunDaemon()
{
    TDaemon oDaemon;
    const int nStatus = oDaemon.Start(0, nullptr);
    Print("returned ");
    return nStatus;
}

/// Uses no loop, and waits for nothing but the signal.
class Waiting : public PrintingDaemon
{
public:
    void Run() override
    {
        Print("running ");
        while (!IsEndRequested())
            poll(nullptr, 0, 10);
    }
};

/// Never notices that it is to end.
class Deaf : public PrintingDaemon
{
public:
    void Run() override
    {
        Print("running ");
        while (true)
            pause();
    }
};

struct sigaction ActionOf(int nSignal)
{
    struct sigaction oAction = {};
    sigaction(nSignal, nullptr, &oAction);
    return oAction;
}

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

TEST(KorDaemonApplication, FinalizeRunsOnTheMainThreadWhicheverOneTheSignalHits)
{
    static std::thread::id oMain;
    class Threaded : public PrintingDaemon
    {
    public:
        bool Initialize() override
        {
            oMain = std::this_thread::get_id();
            m_oThread = std::thread([] {
                raise(SIGTERM); // this thread's
                Print("raised ");
            });
            return true;
        }
        int Finalize() override
        {
            m_oThread.join();
            Print(std::this_thread::get_id() == oMain ? "main " : "other ");
            return PrintingDaemon::Finalize();
        }

    private:
        std::thread m_oThread;
    };
    ChildProcess oChild(&RunDaemon<Threaded>);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    const std::string& strOut = oChild.Wait().strOut;
    EXPECT_NE(std::string::npos, strOut.find("main finalized returned ")) << strOut;
}

TEST(KorDaemonApplication, AHandlerThatRunsIsFinishedAndNoOtherBegun)
{
    class Busy : public PrintingDaemon
    {
    public:
        bool Initialize() override
        {
            GetLoop().Post([] {
                raise(SIGTERM);
                Print("finished ");
            });
            GetLoop().Post([] { Print("another "); });
            return true;
        }
    };
    ChildProcess oChild(&RunDaemon<Busy>);
    EXPECT_EQ("finished finalized returned ", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, ASystemCallThatASignalInterruptsGoesOn)
{
    class Reading : public PrintingDaemon
    {
    public:
        void Run() override
        {
            int anPipe[2];
            char cByte = 0;
            EXPECT_EQ(0, pipe(anPipe));
            std::thread oWriter([this, &anPipe] {
                while (!IsEndRequested())
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                EXPECT_EQ(1, write(anPipe[1], "x", 1));
            });
            Print("running ");
            Print(read(anPipe[0], &cByte, 1) == 1 ? "read " : "interrupted ");
            oWriter.join();
        }
    };
    ChildProcess oChild(&RunDaemon<Reading>);
    EXPECT_EQ("running read finalized returned ", EndWith(oChild, SIGTERM).strOut);
}

TEST(KorDaemonApplication, AThirdSignalEndsTheProcessWhateverItDoes)
{
    for (const int nSignal : {SIGTERM, SIGINT}) {
        ChildProcess oChild(&RunDaemon<Deaf>);
        ASSERT_TRUE(oChild.WaitForOutput("running "));
        while (oChild.IsRunning()) // signals that come together may be one
            oChild.Signal(nSignal);
        EXPECT_EQ(128 + nSignal, oChild.Wait().nExitStatus);
        EXPECT_EQ("running ", oChild.Wait().strOut);
    }
}

TEST(KorDaemonApplication, ASecondSignalInsideFiveSecondsDoesNothing)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        raise(SIGTERM);
        raise(SIGINT);
        return oDaemon.Start(0, nullptr);
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized ", oChild.Wait().strOut);
}

TEST(KorDaemonApplication, AThirdOfEitherKindCounts)
{
    ChildProcess oChild([] {
        const PrintingDaemon oDaemon;
        raise(SIGTERM);
        raise(SIGINT);
        raise(SIGINT);
        return 42;
    });
    EXPECT_EQ(128 + SIGINT, oChild.Wait().nExitStatus);
}

/// Waits longer than the patience that a daemon is given with its end.
void WaitSixSeconds()
{
    timespec oTime = {6, 0};
    while (nanosleep(&oTime, &oTime) != 0) {
    }
}

TEST(KorDaemonApplication, OneMoreSignalAfterFiveSecondsEndsTheProcess)
{
    ChildProcess oBySignal([] {
        const PrintingDaemon oDaemon;
        raise(SIGTERM);
        WaitSixSeconds();
        raise(SIGTERM);
        return 42;
    });
    ChildProcess oByProgram([] {
        PrintingDaemon oDaemon;
        oDaemon.RequestEnd(7);
        WaitSixSeconds();
        raise(SIGINT);
        return 42;
    });
    EXPECT_EQ(128 + SIGTERM, oBySignal.Wait().nExitStatus);
    EXPECT_EQ(128 + SIGINT, oByProgram.Wait().nExitStatus);
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

TEST(KorDaemonApplication, AHangUpSignalReloadsOnTheMainThread)
{
    ChildProcess oChild(&RunDaemon<>);
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(SIGHUP);
    ASSERT_TRUE(oChild.WaitForOutput("reloaded "));
    oChild.Signal(SIGHUP);
    ASSERT_TRUE(oChild.WaitForOutput("reloaded reloaded "));
    oChild.Signal(SIGTERM);
    EXPECT_EQ("running reloaded reloaded finalized returned ", oChild.Wait().strOut);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
}

TEST(KorDaemonApplication, AStormOfHangUpSignalsDoesNotHideTheEnd)
{
    ChildProcess oChild([] {
        signal(SIGHUP, SIG_IGN); // in force again when the daemon is destroyed
        return RunDaemon();
    });
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    const pid_t nProcess = oChild.Id();
    std::atomic<bool> bEnd(false);
    std::thread oStorm([nProcess, &bEnd] {
        while (!bEnd)
            kill(nProcess, SIGHUP);
    });
    EXPECT_TRUE(oChild.WaitForOutput("reloaded reloaded reloaded "));
    oChild.Signal(SIGTERM);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    bEnd = true;
    oStorm.join();
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

TEST(KorDaemonApplication, TheDestructorGivesActionsAndMaskBack)
{
    constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGABRT, SIGPIPE, SIGHUP};
    ChildProcess oChild([&SIGNALS] {
        for (const int nSignal : SIGNALS)
            signal(nSignal, [](int) {});
        signal(SIGINT, SIG_IGN);
        const auto fnFormer = ActionOf(SIGTERM).sa_handler;
        sigset_t oMask;
        sigemptyset(&oMask);
        sigaddset(&oMask, SIGUSR1);
        sigprocmask(SIG_SETMASK, &oMask, nullptr);
        {
            const PrintingDaemon oDaemon;
            for (const int nSignal : SIGNALS)
                EXPECT_NE(fnFormer, ActionOf(nSignal).sa_handler) << nSignal;
            EXPECT_TRUE(SIG_DFL == ActionOf(SIGABRT).sa_handler);
        }
        for (const int nSignal : SIGNALS)
            EXPECT_TRUE((nSignal == SIGINT ? SIG_IGN : fnFormer) == ActionOf(nSignal).sa_handler)
                << nSignal;
        sigprocmask(SIG_SETMASK, nullptr, &oMask);
        EXPECT_TRUE(sigismember(&oMask, SIGUSR1) == 1 && sigismember(&oMask, SIGTERM) == 0);
        return testing::Test::HasFailure() ? 1 : 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus) << oChild.Wait().strOut;
}

TEST(KorDaemonApplication, HandlersMayBeRemovedAndInstalledAgain)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        oDaemon.RemoveSignalHandlers();
        EXPECT_TRUE(SIG_DFL == ActionOf(SIGTERM).sa_handler);
        EXPECT_TRUE(SIG_DFL == ActionOf(SIGHUP).sa_handler);
        oDaemon.InstallSignalHandlers();
        oDaemon.InstallSignalHandlers();
        raise(SIGTERM);
        raise(SIGHUP);
        EXPECT_TRUE(oDaemon.IsEndRequested());
        return testing::Test::HasFailure() ? 1 : 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus) << oChild.Wait().strOut;
}

TEST(KorDaemonApplication, AForkedCopyIsNotEndedByASignal)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        const pid_t nCopy = fork();
        if (nCopy == 0) {
            for (int i = 0; i < 4; ++i)
                raise(SIGTERM);
            _exit(oDaemon.IsEndRequested() ? 1 : 42);
        }
        int nStatus = 0;
        waitpid(nCopy, &nStatus, 0);
        return WIFEXITED(nStatus) && !oDaemon.IsEndRequested() ? WEXITSTATUS(nStatus) : 2;
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
    Arguments oArguments = {pszProgram, "a", "b"};
    EXPECT_EQ(0, oDaemon.Start(oArguments.Count(), oArguments.Vector()));
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

TEST(KorDaemonApplication, ASessionLeaderSurvivesItsTerminal)
{
    auto pTerminal = std::make_unique<PseudoTerminal>();
    const std::string strName = pTerminal->Name();
    const int nFarEnd = pTerminal->FarEnd();
    ChildProcess oChild([&strName, nFarEnd] {
        close(nFarEnd);
        setsid();
        const int nTerminal = open(strName.c_str(), O_RDWR);
        dup2(nTerminal, STDIN_FILENO);
        dup2(nTerminal, STDERR_FILENO);
        return RunDaemon();
    });
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    pTerminal->HangUp();
    EXPECT_TRUE(oChild.WaitForOutput("reloaded "));
    oChild.Signal(SIGTERM);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("running reloaded finalized returned ", oChild.Wait().strOut);
}

} // namespace
