#include "app/KorConApplication.h"

#include "tests/app/ConDaemon.h"
#include "tests/support/ChildProcess.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

TEST(KorConApplication, TerminationFinalizesOnceAndExitsWithZero)
{
    const ChildResult oResult = EndDaemonWith(SIGTERM);
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("running finalized ", oResult.strOut);
}

TEST(KorConApplication, InterruptFinalizesOnceAndExitsWithZero)
{
    const ChildResult oResult = EndDaemonWith(SIGINT);
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("running finalized ", oResult.strOut);
}

TEST(KorConApplication, AnAbortFinalizesOnceAndExitsWithThree)
{
    const ChildResult oResult = EndDaemonWith(SIGABRT);
    EXPECT_EQ(3, oResult.nExitStatus);
    EXPECT_EQ("running finalized ", oResult.strOut);
}

TEST(KorConApplication, AFailedAssertionEndsWithThree)
{
    class Failing : public Daemon
    {
    public:
        void Run() override { std::abort(); }
    };
    ChildProcess oChild([] { return Failing().Start(0, nullptr); });
    EXPECT_EQ(3, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized ", oChild.Wait().strOut);
}

TEST(KorConApplication, AnyOtherSignalKeepsItsAction)
{
    const ChildResult oResult = EndDaemonWith(SIGUSR1);
    EXPECT_EQ(SIGUSR1, oResult.nSignal);
    EXPECT_EQ("running ", oResult.strOut);
}

TEST(KorConApplication, AHangUpKeepsItsDefaultAction)
{
    signal(SIGHUP, SIG_DFL); // a test in the background may have been started without
    const Daemon oDaemon;
    EXPECT_TRUE(HasDefaultAction(SIGHUP));
    const ChildResult oResult = EndDaemonWith(SIGHUP);
    EXPECT_EQ(SIGHUP, oResult.nSignal);
    EXPECT_EQ("running ", oResult.strOut);
}

TEST(KorConApplication, TheHandlerIgnoresOtherSignals)
{
    ChildProcess oChild([] {
        Daemon oDaemon;
        for (const int nSignal : {SIGHUP, SIGUSR1, SIGSTOP, 0, -1, 17, 1000})
            CKorConApplication::StdSignalHandler(nSignal);
        Print("alive ");
        return 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("alive ", oChild.Wait().strOut);
}

TEST(KorConApplication, ExitHandlersRunButTheApplicationIsNotDestroyed)
{
    class Outlived : public Daemon
    {
    public:
        ~Outlived() override { Print("destroyed "); }
    };
    ChildProcess oChild([] {
        std::atexit([] { Print("exit-handler "); });
        return Outlived().Start(0, nullptr);
    });
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(SIGTERM);
    EXPECT_EQ("running finalized exit-handler ", oChild.Wait().strOut);
}

TEST(KorConApplication, AForkedChildIsNeitherFinalizedNorEnded)
{
    ChildProcess oChild([] {
        Daemon oDaemon;
        const pid_t nForked = fork();
        if (nForked == 0) {
            // Twice: the handler stays.
            for (const int nSignal : {SIGINT, SIGTERM, SIGABRT, SIGINT, SIGTERM, SIGABRT})
                raise(nSignal);
            _exit(42);
        }
        int nStatus = 0;
        waitpid(nForked, &nStatus, 0);
        return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("", oChild.Wait().strOut);
}

TEST(KorConApplication, ASignalDuringFinalizeDoesNotFinalizeAgain)
{
    class Interrupted : public Daemon
    {
    public:
        int Finalize() override
        {
            raise(SIGINT);
            kill(getpid(), SIGTERM);
            return Daemon::Finalize();
        }
    };
    ChildProcess oChild([] { return Interrupted().Start(0, nullptr); });
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(SIGTERM);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("running finalized ", oChild.Wait().strOut);
}

TEST(KorConApplication, AFinalizeThatAbortsEndsTheProcess)
{
    class Aborting : public Daemon
    {
    public:
        int Finalize() override
        {
            Daemon::Finalize();
            std::abort();
        }
    };
    ChildProcess oChild([] { return Aborting().Start(0, nullptr); });
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(SIGTERM);
    EXPECT_EQ(SIGABRT, oChild.Wait().nSignal);
    EXPECT_EQ("running finalized ", oChild.Wait().strOut);
}

TEST(KorConApplication, WithoutAnApplicationASignalExitsAtOnce)
{
    for (const int nSignal : {SIGINT, SIGTERM, SIGABRT}) {
        ChildProcess oChild([nSignal] {
            Daemon oDaemon;
            oDaemon.FinalizeFromSignalHandler();
            raise(nSignal);
            return 42;
        });
        EXPECT_EQ(nSignal == SIGABRT ? 3 : 0, oChild.Wait().nExitStatus);
        EXPECT_EQ("finalized ", oChild.Wait().strOut);
    }
}

TEST(KorConApplication, FinalizingFromTheHandlerForgetsTheApplication)
{
    ChildProcess oChild([] {
        Daemon oDaemon;
        const bool bFinalized = oDaemon.FinalizeFromSignalHandler();
        return bFinalized && CKorBaseApplication::GetApplication() == nullptr ? 42 : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorConApplication, AFinalizeThatThrowsDoesNotMakeTheProcessDeafToSignals)
{
    class Throwing : public Daemon
    {
    public:
        int Finalize() override
        {
            Daemon::Finalize();
            return m_nCalls++ == 0 ? throw std::runtime_error("not yet") : 0;
        }
        int m_nCalls = 0;
    };
    ChildProcess oChild([] {
        Throwing oDaemon;
        EXPECT_THROW(oDaemon.FinalizeFromSignalHandler(), std::runtime_error);
        EXPECT_EQ(&oDaemon, CKorBaseApplication::GetApplication());
        raise(SIGTERM);
        return 42;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized finalized ", oChild.Wait().strOut);
}

TEST(KorConApplication, TheNextApplicationIsFinalizedToo)
{
    ChildProcess oChild([] {
        EXPECT_TRUE(Daemon().FinalizeFromSignalHandler());
        const Daemon oNext;
        raise(SIGTERM);
        return 42;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized finalized ", oChild.Wait().strOut);
}

TEST(KorConApplication, AnUncaughtExceptionFinalizesByWayOfTheAbort)
{
    class Throwing : public Daemon
    {
    public:
        void Run() override { throw std::runtime_error("out of paper"); }
    };
    ChildProcess oChild([]() noexcept { return Throwing().Start(0, nullptr); });
    EXPECT_EQ(3, oChild.Wait().nExitStatus);
    EXPECT_EQ("finalized ", oChild.Wait().strOut);
}

TEST(KorConApplication, TheBaseStepsSucceed)
{
    class Short : public CKorConApplication
    {
    public:
        Short() : CKorConApplication("x.ini", "short", "x.log") {}
        void Run() override {}
        const std::string& IniFile() const { return m_strIniFile; }
        const std::string& LogFile() const { return m_strLogFile; }
    };
    Short oApplication;
    EXPECT_TRUE(oApplication.Initialize());
    EXPECT_EQ(1, oApplication.Start(0, nullptr));
    EXPECT_EQ("x.ini", oApplication.IniFile());
    EXPECT_EQ("x.log", oApplication.LogFile());
}

} // namespace
