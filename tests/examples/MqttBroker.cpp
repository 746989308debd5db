#include "tests/examples/MqttBroker.h"

#include "tests/examples/Loopback.h"
#include "tests/support/Patience.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

bool SomebodyListens(unsigned int nPort)
{
    const int hSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in oAddress = Loopback(nPort);
    const bool bListens =
        connect(hSocket, reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress) == 0;
    close(hSocket);
    return bListens;
}

} // namespace

unsigned int FreePort()
{
    const int hSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in oAddress = Loopback(0);
    socklen_t nLength = sizeof oAddress;
    EXPECT_EQ(0, bind(hSocket, reinterpret_cast<sockaddr*>(&oAddress), sizeof oAddress));
    EXPECT_EQ(0, getsockname(hSocket, reinterpret_cast<sockaddr*>(&oAddress), &nLength));
    close(hSocket);
    return ntohs(oAddress.sin_port);
}

MqttBroker::MqttBroker(const std::string& strConfiguration) : m_nPort(FreePort())
{
    const char* const pszUser = geteuid() == 0 ? "user root\n" : "";
    WriteFile(m_oDir.File("conf"), std::string(pszUser) + "set_tcp_nodelay true\n" +
                                       "max_queued_messages 0\nlistener " +
                                       std::to_string(m_nPort) + " 127.0.0.1\n" + strConfiguration);
    Start();
}

void MqttBroker::Start()
{
    m_pProcess = std::make_unique<ChildProcess>(
        std::vector<std::string>{MOSQUITTO_PROGRAM, "-c", m_oDir.File("conf")});
    EXPECT_TRUE(WaitUntil([this] { return SomebodyListens(m_nPort) || !m_pProcess->IsRunning(); }));
    EXPECT_TRUE(m_pProcess->IsRunning()) << m_pProcess->ErrorsSoFar();
}

void MqttBroker::End(int nSignal)
{
    m_pProcess->Signal(nSignal);
    m_pProcess->Wait();
}
