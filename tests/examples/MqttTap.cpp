#include "tests/examples/MqttTap.h"

#include "tests/examples/Loopback.h"
#include "tests/examples/MqttSubscriber.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr unsigned int PUBLISH = 3;
constexpr unsigned int PUBACK = 4;

unsigned int Byte(const std::string& strBytes, std::size_t nPos)
{
    return static_cast<unsigned char>(strBytes[nPos]);
}

/// Takes the first whole packet from the front, without its fixed header but with its first byte.
bool TakePacket(std::string& rstrBytes, std::string& rstrPacket)
{
    std::size_t nLength = 0;
    for (std::size_t n = 1; n < rstrBytes.size() && n < 5; ++n) {
        nLength |= static_cast<std::size_t>(Byte(rstrBytes, n) & 0x7F) << (7 * (n - 1));
        if ((Byte(rstrBytes, n) & 0x80) != 0)
            continue;
        if (rstrBytes.size() < n + 1 + nLength)
            return false;
        rstrPacket = rstrBytes.substr(0, 1) + rstrBytes.substr(n + 1, nLength);
        rstrBytes.erase(0, n + 1 + nLength);
        return true;
    }
    return false;
}

} // namespace

MqttTap::MqttTap(CKorEventLoop& oLoop, unsigned int nBroker, unsigned int nDelayMs)
    : m_oLoop(oLoop),
      m_nBroker(nBroker),
      m_nDelayMs(nDelayMs),
      m_hListener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in oAddress = Loopback(0);
    socklen_t nLength = sizeof oAddress;
    EXPECT_EQ(0, bind(m_hListener, reinterpret_cast<sockaddr*>(&oAddress), sizeof oAddress));
    EXPECT_EQ(0, getsockname(m_hListener, reinterpret_cast<sockaddr*>(&oAddress), &nLength));
    EXPECT_EQ(0, listen(m_hListener, 5));
    m_nPort = ntohs(oAddress.sin_port);
    m_oLoop.WatchHandle(m_hListener, CKorEventLoop::EVENT_READABLE,
                        [this](unsigned int) { Accept(); });
}

MqttTap::~MqttTap()
{
    close(m_hListener);
    for (const auto& pPair : m_vecPairs) {
        close(pPair->m_hPublisher);
        close(pPair->m_hBroker);
    }
}

void MqttTap::Accept()
{
    const int hPublisher = accept4(m_hListener, nullptr, nullptr, SOCK_CLOEXEC);
    const int hBroker = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in oAddress = Loopback(m_nBroker);
    if (connect(hBroker, reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress) != 0) {
        close(hPublisher);
        close(hBroker);
        return;
    }
    m_vecPairs.push_back(std::make_unique<Pair>());
    Pair& rPair = *m_vecPairs.back();
    rPair.m_hPublisher = hPublisher;
    rPair.m_hBroker = hBroker;
    m_oLoop.WatchHandle(hPublisher, CKorEventLoop::EVENT_READABLE,
                        [this, &rPair](unsigned int) { Read(rPair, true); });
    m_oLoop.WatchHandle(hBroker, CKorEventLoop::EVENT_READABLE,
                        [this, &rPair](unsigned int) { Read(rPair, false); });
}

void MqttTap::Read(Pair& rPair, bool bToBroker)
{
    int& rhFrom = bToBroker ? rPair.m_hPublisher : rPair.m_hBroker;
    char acBytes[4096];
    const ssize_t nRead = recv(rhFrom, acBytes, sizeof acBytes, 0);
    if (nRead <= 0) {
        close(rhFrom);
        rhFrom = -1;
    }
    const std::string strBytes(acBytes, static_cast<std::size_t>(std::max<ssize_t>(nRead, 0)));
    m_oLoop.CallAfter(m_nDelayMs,
                      [this, &rPair, bToBroker, strBytes] { Pass(rPair, bToBroker, strBytes); });
}

// Acknowledgements on their way still arrive when the broker is gone: no reset follows them.
void MqttTap::Pass(Pair& rPair, bool bToBroker, const std::string& strBytes)
{
    const int hTo = bToBroker ? rPair.m_hBroker : rPair.m_hPublisher;
    std::string& rstrPending = bToBroker ? rPair.m_strToBroker : rPair.m_strToPublisher;
    rstrPending += strBytes;
    for (std::string strPacket; TakePacket(rstrPending, strPacket);)
        Note(rPair, bToBroker, strPacket);
    if (strBytes.empty())
        shutdown(hTo, SHUT_WR);
    else
        send(hTo, strBytes.data(), strBytes.size(), MSG_NOSIGNAL);
}

void MqttTap::Note(Pair& rPair, bool bToBroker, const std::string& strPacket)
{
    const unsigned int nType = Byte(strPacket, 0) >> 4;
    if (nType == PUBLISH && bToBroker) {
        const std::size_t nTopic = Byte(strPacket, 1) << 8 | Byte(strPacket, 2);
        const unsigned int nMessage =
            Byte(strPacket, nTopic + 3) << 8 | Byte(strPacket, nTopic + 4);
        const std::uint64_t nSequence = JsonNumber(strPacket.substr(nTopic + 5), "seq");
        rPair.m_mapReadings[nMessage] = nSequence;
        if (nSequence != 0)
            m_vecPassed.push_back({nSequence, false});
    } else if (nType == PUBACK && !bToBroker) {
        const unsigned int nMessage = Byte(strPacket, 1) << 8 | Byte(strPacket, 2);
        if (rPair.m_mapReadings[nMessage] != 0)
            m_vecPassed.push_back({rPair.m_mapReadings[nMessage], true});
    }
}
