#include "app/KorLog.h"

#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <regex>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

/// Where the system's log listens during a test.
std::string& SyslogName()
{
    static std::string strName;
    return strName;
}

} // namespace

/// Leads the library from /dev/log, which a test must not take, to a socket of the test.
extern "C" int connect(int nSocket, const sockaddr* pAddress, socklen_t nLength)
{
    using Connect = int (*)(int, const sockaddr*, socklen_t);
    static const auto fnConnect = reinterpret_cast<Connect>(dlsym(RTLD_NEXT, "connect"));
    sockaddr_un oAddress = {};
    std::memcpy(&oAddress, pAddress, std::min<std::size_t>(nLength, sizeof oAddress));
    if (std::string(oAddress.sun_path) != "/dev/log")
        return fnConnect(nSocket, pAddress, nLength);
    std::memset(oAddress.sun_path, 0, sizeof oAddress.sun_path);
    SyslogName().copy(oAddress.sun_path, sizeof oAddress.sun_path - 1);
    return fnConnect(nSocket, reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress);
}

namespace
{

class Syslog
{
public:
    Syslog() : m_nSocket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un oAddress = {};
        oAddress.sun_family = AF_UNIX;
        SyslogName().copy(oAddress.sun_path, sizeof oAddress.sun_path - 1);
        EXPECT_EQ(0,
                  bind(m_nSocket, reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress));
    }
    ~Syslog()
    {
        close(m_nSocket);
        unlink(SyslogName().c_str());
    }
    Syslog(const Syslog&) = delete;
    Syslog& operator=(const Syslog&) = delete;

    std::string Receive() const
    {
        char acMessage[16384];
        const ssize_t nLength = recv(m_nSocket, acMessage, sizeof acMessage, MSG_DONTWAIT);
        return nLength < 0 ? "nothing" : std::string(acMessage, static_cast<std::size_t>(nLength));
    }

private:
    int m_nSocket;
};

class KorLogSyslog : public testing::Test
{
protected:
    KorLogSyslog() { SyslogName() = m_oDir.File("log"); }

    const ScratchDir m_oDir;
    CKorLog m_oLog;
};

TEST_F(KorLogSyslog, GetsLevelTimeNameAndProcess)
{
    const Syslog oSyslog;
    ASSERT_TRUE(m_oLog.UseSyslog("gateway"));
    m_oLog.Write(CKorLog::LEVEL_WARNING, "meter %d\n", 7);
    const std::regex oFormat(
        R"(<28>(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ 123]\d \d\d:\d\d:\d\d )"
        "gateway\\[" +
        std::to_string(getpid()) + "\\]: meter 7");
    const std::string strMessage = oSyslog.Receive();
    EXPECT_TRUE(std::regex_match(strMessage, oFormat)) << strMessage;
    m_oLog.Write(CKorLog::LEVEL_ERROR, "text");
    EXPECT_EQ("<27>", oSyslog.Receive().substr(0, 4));
}

std::string WhatClocksShow()
{
    timespec oClock = {}; // time() is some milliseconds late
    std::tm oNow = {};
    char acText[32] = "";
    clock_gettime(CLOCK_REALTIME, &oClock);
    localtime_r(&oClock.tv_sec, &oNow);
    std::strftime(acText, sizeof acText, "%b %e %H:%M:%S", &oNow);
    return acText;
}

TEST_F(KorLogSyslog, GetsTheTimeThatClocksShow)
{
    const Syslog oSyslog;
    ASSERT_TRUE(m_oLog.UseSyslog("gateway"));
    std::string strBefore;
    std::string strTime;
    do {
        strBefore = WhatClocksShow();
        m_oLog.Write(CKorLog::LEVEL_WARNING, "text");
        strTime = oSyslog.Receive().substr(4, 15);
    } while (strBefore != WhatClocksShow());
    EXPECT_EQ(strBefore, strTime);
}

TEST_F(KorLogSyslog, TheProgramFileNamesAProgramWithoutAName)
{
    const Syslog oSyslog;
    for (const char* pszName : {"", static_cast<const char*>(nullptr)}) {
        ASSERT_TRUE(m_oLog.UseSyslog(pszName));
        m_oLog.Write(CKorLog::LEVEL_INFO, "text");
        EXPECT_NE(std::string::npos, oSyslog.Receive().find(program_invocation_short_name));
    }
}

TEST_F(KorLogSyslog, WithoutAListenerTheTargetStaysAsItWas)
{
    ASSERT_TRUE(m_oLog.UseFile(m_oDir.File("file").c_str(), 0, 0));
    errno = 0;
    EXPECT_FALSE(m_oLog.UseSyslog("gateway"));
    EXPECT_EQ(ENOENT, errno);
    m_oLog.Write(CKorLog::LEVEL_INFO, "text");
    EXPECT_NE("", ReadFile(m_oDir.File("file")));
}

TEST_F(KorLogSyslog, AStallCostsLinesThatAreCounted)
{
    const Syslog oSyslog;
    ASSERT_TRUE(m_oLog.UseSyslog("gateway"));
    while (m_oLog.GetLostCount() < 5)
        m_oLog.Write(CKorLog::LEVEL_INFO, "text");
    std::string strMessage;
    do {
        strMessage = oSyslog.Receive();
    } while (strMessage != "nothing");
    m_oLog.Write(CKorLog::LEVEL_INFO, "next");
    EXPECT_NE(std::string::npos, oSyslog.Receive().find(": 5 log lines were lost"));
    EXPECT_NE(std::string::npos, oSyslog.Receive().find(": next"));
}

TEST_F(KorLogSyslog, AnotherOneIsFoundAfterARestart)
{
    auto pSyslog = std::make_unique<Syslog>();
    ASSERT_TRUE(m_oLog.UseSyslog("gateway"));
    pSyslog.reset();
    m_oLog.Write(CKorLog::LEVEL_INFO, "lost");
    EXPECT_EQ(1u, m_oLog.GetLostCount());
    errno = 0;
    EXPECT_FALSE(m_oLog.Reopen());
    EXPECT_EQ(ENOENT, errno);
    pSyslog = std::make_unique<Syslog>();
    m_oLog.Write(CKorLog::LEVEL_INFO, "text");
    EXPECT_NE(std::string::npos, pSyslog->Receive().find(": 1 log line was lost"));
    EXPECT_NE(std::string::npos, pSyslog->Receive().find(": text"));
    EXPECT_TRUE(m_oLog.Reopen());
}

TEST_F(KorLogSyslog, ALongLineIsCutAndALongNameToo)
{
    const Syslog oSyslog;
    ASSERT_TRUE(m_oLog.UseSyslog(std::string(10000, 'n').c_str()));
    m_oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(10000, 'x').c_str());
    const std::string strMessage = oSyslog.Receive();
    EXPECT_EQ(8191u, strMessage.size());
    EXPECT_EQ("xxx...", strMessage.substr(strMessage.size() - 6));
}

} // namespace
