#include "app/KorServiceNotify.h"

#include "tests/app/NotifySocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

/// The watchdog's variables, gone at the end of the scope.
class Watchdog
{
public:
    explicit Watchdog(const char* pszTime) { setenv("WATCHDOG_USEC", pszTime, 1); }
    Watchdog(const char* pszTime, const std::string& strProcess) : Watchdog(pszTime)
    {
        setenv("WATCHDOG_PID", strProcess.c_str(), 1);
    }
    ~Watchdog()
    {
        unsetenv("WATCHDOG_USEC");
        unsetenv("WATCHDOG_PID");
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
};

long long MonotonicMicroseconds()
{
    timespec oNow = {};
    clock_gettime(CLOCK_MONOTONIC, &oNow);
    return static_cast<long long>(oNow.tv_sec) * 1000000 + oNow.tv_nsec / 1000;
}

bool FailsWith(int nError, bool (*fnNotify)())
{
    errno = 0;
    return !fnNotify() && errno == nError;
}

TEST(KorServiceNotify, WithoutAManagerNothingIsSent)
{
    unsetenv("NOTIFY_SOCKET");
    EXPECT_TRUE(FailsWith(EDESTADDRREQ, &KorNotifyReady));
    EXPECT_TRUE(FailsWith(EDESTADDRREQ, &KorNotifyReloading));
    EXPECT_TRUE(FailsWith(EDESTADDRREQ, &KorNotifyStopping));
    EXPECT_TRUE(FailsWith(EDESTADDRREQ, &KorNotifyAlive));
    EXPECT_TRUE(FailsWith(EDESTADDRREQ, [] { return KorNotifyStatus("text"); }));
}

TEST(KorServiceNotify, TellsAPathSocket)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    EXPECT_TRUE(KorNotifyReady());
    EXPECT_EQ("READY=1", oManager.Receive());
    EXPECT_TRUE(KorNotifyStopping());
    EXPECT_EQ("STOPPING=1", oManager.Receive());
    EXPECT_TRUE(KorNotifyAlive());
    EXPECT_EQ("WATCHDOG=1", oManager.Receive());
}

TEST(KorServiceNotify, NoMessageIsAnEmptyOne)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    EXPECT_TRUE(KorNotify(nullptr));
    EXPECT_EQ("", oManager.Receive());
    EXPECT_TRUE(KorNotify("READY=1"));
    EXPECT_EQ("READY=1", oManager.Receive());
}

TEST(KorServiceNotify, TellsAnAbstractSocket)
{
    const NotifySocket oManager("@tarvo-notify-test-" + std::to_string(getpid()));
    EXPECT_TRUE(KorNotifyReady());
    EXPECT_EQ("READY=1", oManager.Receive());
}

TEST(KorServiceNotify, ASocketNameMayFillTheWholeAddress)
{
    std::string strName = "@tarvo-" + std::to_string(getpid());
    strName.resize(108, 'x');
    const NotifySocket oManager(strName);
    EXPECT_TRUE(KorNotifyReady());
    EXPECT_EQ("READY=1", oManager.Receive());
}

TEST(KorServiceNotify, AnAddressThatIsNoneIsRefused)
{
    setenv("NOTIFY_SOCKET", "vsock:2:1234", 1);
    EXPECT_TRUE(FailsWith(EAFNOSUPPORT, &KorNotifyReady));
    setenv("NOTIFY_SOCKET", ("/" + std::string(108, 'x')).c_str(), 1);
    EXPECT_TRUE(FailsWith(ENAMETOOLONG, &KorNotifyReady));
    setenv("NOTIFY_SOCKET", "/no/such/socket", 1);
    EXPECT_TRUE(FailsWith(ENOENT, &KorNotifyReady));
    setenv("NOTIFY_SOCKET", "", 1);
    EXPECT_TRUE(FailsWith(EDESTADDRREQ, &KorNotifyReady));
    unsetenv("NOTIFY_SOCKET");
}

TEST(KorServiceNotify, AManagerThatDoesNotReadIsNotWaitedFor)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    int nSent = 0;
    while (nSent < 100000 && KorNotifyAlive())
        ++nSent;
    EXPECT_EQ(EAGAIN, errno);
    EXPECT_GT(nSent, 0);
    EXPECT_LT(nSent, 100000);
}

TEST(KorServiceNotify, AReloadCarriesTheMonotonicClock)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    const std::string strStart = "RELOADING=1\nMONOTONIC_USEC=";
    const long long nBefore = MonotonicMicroseconds();
    EXPECT_TRUE(KorNotifyReloading());
    const long long nAfter = MonotonicMicroseconds();
    const std::string strMessage = oManager.Receive();
    ASSERT_EQ(strStart, strMessage.substr(0, strStart.size()));
    const std::string strTime = strMessage.substr(strStart.size());
    EXPECT_EQ(std::string::npos, strTime.find_first_not_of("0123456789"));
    EXPECT_LE(nBefore, std::stoll(strTime));
    EXPECT_GE(nAfter, std::stoll(strTime));
}

TEST(KorServiceNotify, AStatusIsOneLine)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    EXPECT_TRUE(KorNotifyStatus("polls 3 meters"));
    EXPECT_EQ("STATUS=polls 3 meters", oManager.Receive());
    EXPECT_TRUE(KorNotifyStatus(std::string("a\nREADY=1\rb\0c\n", 14)));
    EXPECT_EQ("STATUS=a READY=1 b c ", oManager.Receive());
    EXPECT_TRUE(KorNotifyStatus(""));
    EXPECT_EQ("STATUS=", oManager.Receive());
}

TEST(KorServiceNotify, SaysTheSameAsTheManagersOwnProgram)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    const auto Tell = [](const char* pszMessage) {
        EXPECT_EQ(0, RunProgram({"systemd-notify", "--no-block", pszMessage}).nExitStatus);
    };
    Tell("--ready");
    KorNotifyReady();
    EXPECT_EQ(oManager.Receive(), oManager.Receive());
    Tell("--status=polls 3 meters");
    KorNotifyStatus("polls 3 meters");
    EXPECT_EQ(oManager.Receive(), oManager.Receive());
    Tell("WATCHDOG=1");
    KorNotifyAlive();
    EXPECT_EQ(oManager.Receive(), oManager.Receive());
    Tell("STOPPING=1");
    KorNotifyStopping();
    EXPECT_EQ(oManager.Receive(), oManager.Receive());
}

TEST(KorServiceNotify, TheAliveIntervalIsHalfOfTheManagersPatience)
{
    EXPECT_EQ(15000u, (Watchdog("30000000"), KorGetAliveInterval()));
    EXPECT_EQ(1u, (Watchdog("3999"), KorGetAliveInterval()));
    EXPECT_EQ(2u, (Watchdog("4000"), KorGetAliveInterval()));
    EXPECT_EQ(1u, (Watchdog("1"), KorGetAliveInterval()));
    EXPECT_EQ(0xFFFFFFFEu, (Watchdog("18446744073709551615"), KorGetAliveInterval()));
}

TEST(KorServiceNotify, WithoutAWatchdogThereIsNoAliveInterval)
{
    EXPECT_EQ(0u, KorGetAliveInterval());
    for (const char* pszTime :
         {"", "0", "abc", "10x", " 10", "-10", "+10", "0x10", "1.5", "18446744073709551616"})
        EXPECT_EQ(0u, (Watchdog(pszTime), KorGetAliveInterval())) << pszTime;
}

TEST(KorServiceNotify, AWatchdogOfAnotherProcessIsNotOurs)
{
    EXPECT_EQ(1000u, (Watchdog("2000000", std::to_string(getpid())), KorGetAliveInterval()));
    EXPECT_EQ(0u, (Watchdog("2000000", std::to_string(getppid())), KorGetAliveInterval()));
    EXPECT_EQ(0u, (Watchdog("2000000", ""), KorGetAliveInterval()));
    EXPECT_EQ(0u, (Watchdog("2000000", "abc"), KorGetAliveInterval()));
}

TEST(KorServiceNotify, NoSocketStaysOpen)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    const int nBefore = dup(0);
    close(nBefore);
    for (int i = 0; i < 5; ++i)
        KorNotifyReady();
    setenv("NOTIFY_SOCKET", "/no/such/socket", 1);
    KorNotifyReady();
    const int nAfter = dup(0);
    close(nAfter);
    EXPECT_EQ(nBefore, nAfter);
}

} // namespace
