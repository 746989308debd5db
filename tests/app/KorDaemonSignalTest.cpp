#include "app/KorDaemonApplication.h"

#include "tests/app/DaemonTest.h"
#include "tests/app/PrintingDaemon.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <semaphore.h>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

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

// Waits for a semaphore because the thread sanitizer holds back signals in most other calls.
TEST(KorDaemonApplication, ASystemCallThatASignalInterruptsGoesOn)
{
    class Waiting : public PrintingDaemon
    {
    public:
        void Run() override
        {
            sem_t oSemaphore;
            EXPECT_EQ(0, sem_init(&oSemaphore, 0, 0));
            std::thread oPoster([this, &oSemaphore] {
                while (!IsEndRequested())
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                EXPECT_EQ(0, sem_post(&oSemaphore));
            });
            Print("running ");
            Print(sem_wait(&oSemaphore) == 0 ? "waited " : "interrupted ");
            oPoster.join();
            sem_destroy(&oSemaphore);
        }
    };
    ChildProcess oChild(&RunDaemon<Waiting>);
    EXPECT_EQ("running waited finalized returned ", EndWith(oChild, SIGTERM).strOut);
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

TEST(KorDaemonApplication, AHandlerThatSomebodyKeptDoesNothingAnyMore)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        const auto fnKept = ActionOf(SIGTERM).sa_handler;
        oDaemon.RemoveSignalHandlers();
        fnKept(SIGTERM);
        EXPECT_FALSE(oDaemon.IsEndRequested());
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
