#include "app/KorConApplication.h"

#include "tests/app/ConDaemon.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>
#include <memory>
#include <signal.h>

namespace
{

TEST(KorConApplication, AnOverrideThatInstallsHandlersIsNotCalledByTheConstructor)
{
    class Installing : public Daemon
    {
    public:
        ~Installing() override { CKorConApplication::RemoveSignalHandlers(); }
        void InstallSignalHandlers() override { Print("installed "); }
        void RemoveSignalHandlers() override { Print("removed "); }
    };
    ChildProcess oChild([] {
        {
            const Installing oDaemon;
        }
        return 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("", oChild.Wait().strOut);
}

TEST(KorConApplication, ASignalFinalizesAPlainApplicationThatWasConstructedFirst)
{
    class Plain : public CKorBaseApplication
    {
    public:
        Plain() : CKorBaseApplication(nullptr, "plain", nullptr) {}
        void Run() override {}
        int Finalize() override
        {
            Print("plain ");
            return 1;
        }
    };
    ChildProcess oChild([] {
        Plain oPlain;
        Daemon oDaemon;
        raise(SIGTERM);
        return 42;
    });
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_EQ("plain ", oChild.Wait().strOut);
}

TEST(KorConApplication, SignalsHaveTheirDefaultActionsAfterItsEnd)
{
    auto pDaemon = std::make_unique<Daemon>();
    for (const int nSignal : {SIGINT, SIGTERM, SIGABRT})
        EXPECT_FALSE(HasDefaultAction(nSignal)) << nSignal;
    pDaemon.reset();
    for (const int nSignal : {SIGINT, SIGTERM, SIGABRT})
        EXPECT_TRUE(HasDefaultAction(nSignal)) << nSignal;
}

TEST(KorConApplication, TheHandlerLetsSystemCallsGoOnAndKeepsTheOtherSignalsWaiting)
{
    const Daemon oDaemon;
    for (const int nSignal : {SIGINT, SIGTERM, SIGABRT}) {
        struct sigaction oAction;
        ASSERT_EQ(0, sigaction(nSignal, nullptr, &oAction));
        EXPECT_NE(0, oAction.sa_flags & SA_RESTART) << nSignal;
        for (const int nOther : {SIGINT, SIGTERM, SIGABRT})
            EXPECT_EQ(1, sigismember(&oAction.sa_mask, nOther)) << nSignal << ' ' << nOther;
        EXPECT_EQ(0, sigismember(&oAction.sa_mask, SIGUSR1));
    }
}

TEST(KorConApplication, ASignalAfterItsEndKillsTheProcess)
{
    ChildProcess oChild([] {
        {
            const Daemon oDaemon;
        }
        raise(SIGTERM);
        return 42;
    });
    EXPECT_EQ(SIGTERM, oChild.Wait().nSignal);
    EXPECT_EQ("", oChild.Wait().strOut);
}

} // namespace
