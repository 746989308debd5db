#include "app/KorDaemonApplication.h"

#include "app/KorServiceNotify.h"
#include "tests/app/NotifySocket.h"
#include "tests/app/PrintingDaemon.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <signal.h>

namespace
{

class KorDaemonManager : public testing::Test
{
protected:
    const ScratchDir m_oDir;
    const NotifySocket m_oManager{m_oDir.File("notify")};
};

int RunDaemon()
{
    return PrintingDaemon().Start(0, nullptr);
}

TEST_F(KorDaemonManager, IsToldOfStartReloadAndEnd)
{
    ChildProcess oChild(&RunDaemon);
    EXPECT_EQ("READY=1", m_oManager.Receive());
    ASSERT_TRUE(oChild.WaitForOutput("running "));
    EXPECT_FALSE(m_oManager.HasMessage());
    oChild.Signal(SIGHUP);
    EXPECT_EQ("RELOADING=1\nMONOTONIC_USEC=", m_oManager.Receive().substr(0, 27));
    EXPECT_EQ("READY=1", m_oManager.Receive());
    oChild.Signal(SIGTERM);
    EXPECT_EQ("STOPPING=1", m_oManager.Receive());
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
    EXPECT_FALSE(m_oManager.HasMessage());
}

TEST_F(KorDaemonManager, IsToldOfTheEndWhenTheLoopNeverRan)
{
    ChildProcess oChild([] {
        PrintingDaemon oDaemon;
        oDaemon.RequestEnd();
        return oDaemon.Start(0, nullptr);
    });
    EXPECT_EQ("STOPPING=1", m_oManager.Receive());
    oChild.Wait();
    EXPECT_FALSE(m_oManager.HasMessage());
}

TEST_F(KorDaemonManager, IsToldNothingByAProgramThatDoesNotRun)
{
    class Refusing : public PrintingDaemon
    {
    public:
        bool Initialize() override { return false; }
    };
    ChildProcess oChild([] { return Refusing().Start(0, nullptr); });
    EXPECT_EQ(1, oChild.Wait().nExitStatus);
    EXPECT_FALSE(m_oManager.HasMessage());
}

TEST_F(KorDaemonManager, HearsThatTheProgramIsAliveAsLongAsItsLoopTurns)
{
    ChildProcess oChild([] {
        class Hanging : public PrintingDaemon
        {
        public:
            void ReloadInd() override
            {
                Print("hangs ");
                while (!IsEndRequested()) {
                }
                KorNotifyStatus("hung");
            }
        };
        setenv("WATCHDOG_USEC", "10000", 1);
        return Hanging().Start(0, nullptr);
    });
    EXPECT_EQ("READY=1", m_oManager.Receive());
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ("WATCHDOG=1", m_oManager.Receive());
    oChild.Signal(SIGHUP);
    std::string strMessage;
    do {
        strMessage = m_oManager.Receive();
    } while (strMessage == "WATCHDOG=1");
    EXPECT_EQ("RELOADING=1\nMONOTONIC_USEC=", strMessage.substr(0, 27));
    EXPECT_TRUE(oChild.WaitForOutput("hangs "));
    EXPECT_FALSE(m_oManager.HasMessage());
    oChild.Signal(SIGTERM);
    EXPECT_EQ("STATUS=hung", m_oManager.Receive());
    EXPECT_EQ("READY=1", m_oManager.Receive());
    EXPECT_EQ("STOPPING=1", m_oManager.Receive());
}

TEST_F(KorDaemonManager, ThatTakesNothingForAWhileIsToldLater)
{
    constexpr int ENOUGH = 1000;
    while (KorNotifyStatus("full")) {
    }
    ChildProcess oChild([] {
        class Early : public PrintingDaemon
        {
        public:
            bool Initialize() override
            {
                return GetLoop().CallAfter(0, [this] { Print("turned "); }) > 0;
            }
        };
        setenv("WATCHDOG_USEC", "10000", 1);
        return Early().Start(0, nullptr);
    });
    ASSERT_TRUE(oChild.WaitForOutput("turned "));
    int nReady = 0;
    int nAlive = 0;
    for (int i = 0; i < ENOUGH && (nReady == 0 || nAlive == 0); ++i) {
        const std::string strMessage = m_oManager.Receive();
        nReady += strMessage == "READY=1" ? 1 : 0;
        nAlive += strMessage == "WATCHDOG=1" ? 1 : 0;
    }
    EXPECT_EQ(1, nReady);
    EXPECT_NE(0, nAlive);
    oChild.Signal(SIGTERM);
    EXPECT_EQ(0, oChild.Wait().nExitStatus);
}

TEST_F(KorDaemonManager, ThatWantsNoSignOfLifeGetsNone)
{
    ChildProcess oChild([] {
        setenv("WATCHDOG_USEC", "10000", 1);
        setenv("WATCHDOG_PID", "1", 1);
        class Short : public PrintingDaemon
        {
        public:
            bool Initialize() override
            {
                return GetLoop().CallAfter(100, [this] { RequestEnd(); }) > 0;
            }
        };
        return Short().Start(0, nullptr);
    });
    EXPECT_EQ("READY=1", m_oManager.Receive());
    EXPECT_EQ("STOPPING=1", m_oManager.Receive());
    oChild.Wait();
}

} // namespace
