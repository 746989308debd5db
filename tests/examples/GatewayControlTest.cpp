// Those who look in and mean harm, or know no better.

#include "event/KorEventLoop.h"
#include "examples/gateway/ControlServer.h"
#include "tests/examples/LoopUntil.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace
{

/// One end of a connection to a control socket, which never waits.
class Caller
{
public:
    explicit Caller(const std::string& strPath)
        : m_hSocket(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_un oAddress = {};
        oAddress.sun_family = AF_UNIX;
        std::memcpy(oAddress.sun_path, strPath.c_str(), strPath.size());
        m_bConnected =
            connect(m_hSocket, reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress) == 0;
    }
    ~Caller() { close(m_hSocket); }
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    bool IsConnected() const { return m_bConnected; }
    ssize_t Send(const std::string& strText) const
    {
        return send(m_hSocket, strText.data(), strText.size(), MSG_NOSIGNAL);
    }
    void EndSending() const { shutdown(m_hSocket, SHUT_WR); }

    /// What came so far; "|" at its end when the other side has closed.
    const std::string& Received()
    {
        char acBytes[65536];
        ssize_t nRead = 0;
        while (!m_bEnded && (nRead = recv(m_hSocket, acBytes, sizeof acBytes, 0)) > 0)
            m_strReceived.append(acBytes, static_cast<std::size_t>(nRead));
        if (!m_bEnded && (nRead == 0 || errno == ECONNRESET)) {
            m_strReceived += "|";
            m_bEnded = true;
        }
        return m_strReceived;
    }

private:
    int m_hSocket;
    bool m_bConnected;
    bool m_bEnded = false;
    std::string m_strReceived;
};

/// A server that answers with the request itself; "big" with much, "later" not at all.
class GatewayControl : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_oServer.Open(m_strPath)) << std::strerror(errno); }

    void Answer(const std::string& strRequest, const ControlReply& fnReply)
    {
        ++m_nRequests;
        if (strRequest == "later")
            m_vecLater.push_back(fnReply);
        else
            fnReply(0, strRequest == "big" ? std::string(5000000, 'b') : strRequest);
    }

    template <typename TTest>
    bool RunUntil(TTest fnHolds)
    {
        return LoopUntil(m_oLoop, fnHolds);
    }

    bool Hears(Caller& roCaller, const std::string& strText)
    {
        return RunUntil([&] { return roCaller.Received() == strText; });
    }

    /// Whether somebody who means well is served.
    bool Serves()
    {
        Caller oCaller(m_strPath);
        oCaller.Send("hello\n");
        return oCaller.IsConnected() && Hears(oCaller, "0 5\nhello");
    }

    const ScratchDir m_oDir;
    const std::string m_strPath = m_oDir.File("socket");
    CKorEventLoop m_oLoop;
    int m_nRequests = 0;
    std::vector<ControlReply> m_vecLater;
    ControlServer m_oServer{m_oLoop, [this](const std::string& strRequest, ControlReply fnReply) {
                                Answer(strRequest, fnReply);
                            }};
};

TEST_F(GatewayControl, AnswersEachRequestOfAConnectionInTurn)
{
    Caller oCaller(m_strPath);
    oCaller.Send("one\ntwo\nthr");
    EXPECT_TRUE(Hears(oCaller, "0 3\none0 3\ntwo"));
    oCaller.Send("ee\n");
    EXPECT_TRUE(Hears(oCaller, "0 3\none0 3\ntwo0 5\nthree"));
}

TEST_F(GatewayControl, AnswersWhoHasEndedSending)
{
    Caller oCaller(m_strPath);
    oCaller.Send("one\ntwo\n");
    oCaller.EndSending();
    EXPECT_TRUE(Hears(oCaller, "0 3\none0 3\ntwo|"));
}

TEST_F(GatewayControl, RefusesARequestThatIsTooLong)
{
    for (const std::string& strLong :
         {std::string(257, 'x'), std::string(257, 'x') + "\n", std::string(100000, '\0')}) {
        Caller oCaller(m_strPath);
        oCaller.Send(strLong);
        EXPECT_TRUE(RunUntil([&] {
            const std::string& strHeard = oCaller.Received();
            return !strHeard.empty() && strHeard.back() == '|';
        }));
        EXPECT_EQ(0U, oCaller.Received().find("2 37\nthe request is longer than 256 bytes\n"));
    }
    EXPECT_EQ(0, m_nRequests);
    Caller oLongest(m_strPath);
    oLongest.Send(std::string(256, 'x') + "\n");
    EXPECT_TRUE(Hears(oLongest, "0 256\n" + std::string(256, 'x')));
}

TEST_F(GatewayControl, SurvivesThoseWhoVanish)
{
    for (const char* pszRequest : {"", "half", "one\n", "later\n", "big\n", "big\nbig\nbig\n"}) {
        for (int i = 0; i < 20; ++i) {
            Caller(m_strPath).Send(pszRequest);
            m_oLoop.RunOnce(0);
        }
    }
    EXPECT_TRUE(RunUntil([this] { return m_vecLater.size() == 20; }));
    for (const ControlReply& fnReply : m_vecLater)
        fnReply(0, "too late");
    EXPECT_TRUE(Serves());
}

TEST_F(GatewayControl, LetsWhoDoesNotReadWaitAlone)
{
    Caller oLazy(m_strPath);
    std::string strFlood;
    for (int i = 0; i < 1000; ++i)
        strFlood += "big\n";
    oLazy.Send(strFlood);
    for (int i = 0; i < 100; ++i)
        m_oLoop.RunOnce(0);
    EXPECT_EQ(1, m_nRequests) << "one answer in memory";
    EXPECT_TRUE(Serves());
    const std::string strStart = "0 5000000\nbbb";
    EXPECT_TRUE(RunUntil([&] { return oLazy.Received().size() > 2 * 5000000; }));
    EXPECT_EQ(0U, oLazy.Received().find(strStart));
}

TEST_F(GatewayControl, GivesTheLongestQuietPlaceToANewcomer)
{
    std::vector<std::unique_ptr<Caller>> vecCallers;
    for (int i = 0; i < 100; ++i) {
        vecCallers.push_back(std::make_unique<Caller>(m_strPath));
        m_oLoop.RunOnce(0);
        m_oLoop.RunOnce(0);
    }
    EXPECT_TRUE(Serves());
    EXPECT_TRUE(Hears(*vecCallers[0], "|"));
    vecCallers[99]->Send("hello\n");
    EXPECT_TRUE(Hears(*vecCallers[99], "0 5\nhello"));
}

TEST_F(GatewayControl, KeepsThePlacesOfThoseWhoWaitForAnAnswer)
{
    std::vector<std::unique_ptr<Caller>> vecCallers;
    for (std::size_t i = 0; i < 32; ++i) {
        vecCallers.push_back(std::make_unique<Caller>(m_strPath));
        vecCallers.back()->Send("later\n");
        ASSERT_TRUE(RunUntil([&] { return m_vecLater.size() == i + 1; }));
    }
    Caller oOneMore(m_strPath);
    EXPECT_TRUE(Hears(oOneMore, "|"));
    for (const ControlReply& fnReply : m_vecLater)
        fnReply(1, "now");
    for (const auto& pCaller : vecCallers)
        EXPECT_TRUE(Hears(*pCaller, "1 3\nnow"));
}

TEST_F(GatewayControl, TakesOneAnswerToARequest)
{
    Caller oCaller(m_strPath);
    oCaller.Send("later\n");
    ASSERT_TRUE(RunUntil([this] { return m_vecLater.size() == 1; }));
    m_vecLater[0](0, "one");
    m_vecLater[0](0, "two");
    oCaller.Send("hello\n");
    EXPECT_TRUE(Hears(oCaller, "0 3\none0 5\nhello"));
    oCaller.Send("later\n");
    ASSERT_TRUE(RunUntil([this] { return m_vecLater.size() == 2; }));
    m_vecLater[0](0, "three");
    m_vecLater[1](0, "four");
    EXPECT_TRUE(Hears(oCaller, "0 3\none0 5\nhello0 4\nfour"));
}

TEST_F(GatewayControl, HasAModeThatNoMaskTakesAway)
{
    const mode_t nMask = umask(0077);
    EXPECT_TRUE(m_oServer.Open(m_strPath));
    umask(nMask);
    struct stat oStatus;
    ASSERT_EQ(0, stat(m_strPath.c_str(), &oStatus));
    EXPECT_EQ(0660U, oStatus.st_mode & 07777);
    EXPECT_TRUE(Serves());
}

TEST_F(GatewayControl, LeavesASocketAloneThatSomebodyPutInItsPlace)
{
    unlink(m_strPath.c_str());
    ControlSocket oOther;
    ASSERT_TRUE(oOther.Open(m_strPath));
    m_oServer.Close();
    EXPECT_EQ(0, access(m_strPath.c_str(), F_OK));
}

TEST_F(GatewayControl, SaysWhyItCannotServe)
{
    ControlSocket oSocket;
    EXPECT_FALSE(oSocket.Open(m_strPath));
    EXPECT_EQ(EADDRINUSE, errno);
    EXPECT_FALSE(oSocket.Open(m_oDir.Path()));
    EXPECT_EQ(EEXIST, errno);
    EXPECT_FALSE(oSocket.Open(m_oDir.File("no/where")));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(oSocket.Open(std::string(200, 's')));
    EXPECT_EQ(ENAMETOOLONG, errno);
    EXPECT_FALSE(oSocket.IsOpen());
    EXPECT_TRUE(Serves());
}

} // namespace
