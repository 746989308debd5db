#include "examples/gateway/ControlClient.h"

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr std::size_t LONGEST_REQUEST = 256;
constexpr unsigned int LONGEST_IDLENESS_MS = 30000;
constexpr int STATUS_NOT_UNDERSTOOD = 2;

bool IsTryAgain(int nError)
{
    return nError == EAGAIN || nError == EWOULDBLOCK || nError == EINTR;
}

} // namespace

ControlClient::ControlClient(CKorEventLoop& oLoop, int hSocket, ControlHandler fnRequest,
                             GoneHandler fnGone)
    : m_oLoop(oLoop),
      m_hSocket(hSocket),
      m_fnRequest(std::move(fnRequest)),
      m_fnGone(std::move(fnGone)),
      m_oLastSign(Clock::now())
{
}

ControlClient::~ControlClient()
{
    m_oLoop.Cancel(m_nTicket);
    m_oLoop.Cancel(m_nIdle);
    close(m_hSocket);
}

void ControlClient::Start()
{
    Listen();
}

void ControlClient::Watch(unsigned int nEvents, void (ControlClient::*pfnReady)())
{
    Rest();
    m_oLastSign = Clock::now();
    const std::weak_ptr<ControlClient> pThis = weak_from_this();
    const auto fnCall = [pThis](void (ControlClient::*pfnMember)()) {
        if (const std::shared_ptr<ControlClient> pClient = pThis.lock())
            (pClient.get()->*pfnMember)();
    };
    m_nTicket = m_oLoop.WatchHandle(m_hSocket, nEvents,
                                    [fnCall, pfnReady](unsigned int) { fnCall(pfnReady); });
    m_nIdle = m_oLoop.CallAfter(LONGEST_IDLENESS_MS, [fnCall] { fnCall(&ControlClient::End); });
}

void ControlClient::Rest()
{
    m_oLoop.Cancel(std::exchange(m_nTicket, 0));
    m_oLoop.Cancel(std::exchange(m_nIdle, 0));
}

void ControlClient::Listen()
{
    Watch(CKorEventLoop::EVENT_READABLE, &ControlClient::Receive);
}

void ControlClient::Receive()
{
    char acBytes[LONGEST_REQUEST];
    const ssize_t nReceived = recv(m_hSocket, acBytes, sizeof acBytes, MSG_DONTWAIT);
    if (nReceived == 0 || (nReceived < 0 && !IsTryAgain(errno)))
        return End();
    if (nReceived > 0)
        m_strReceived.append(acBytes, static_cast<std::size_t>(nReceived));
    Look();
}

void ControlClient::Look()
{
    const std::size_t nEnd = m_strReceived.find('\n');
    m_bBusy = nEnd != std::string::npos || m_strReceived.size() > LONGEST_REQUEST;
    if (!m_bBusy)
        return Listen();
    Rest();
    if (nEnd > LONGEST_REQUEST) { // also where there is no end
        m_bLast = true;
        return Reply(STATUS_NOT_UNDERSTOOD, "the request is longer than 256 bytes\n");
    }
    const std::string strRequest = m_strReceived.substr(0, nEnd);
    m_strReceived.erase(0, nEnd + 1);
    const std::weak_ptr<ControlClient> pThis = weak_from_this();
    const unsigned int nRequest = ++m_nRequest;
    m_fnRequest(strRequest, [pThis, nRequest](int nStatus, const std::string& strText) {
        const std::shared_ptr<ControlClient> pClient = pThis.lock();
        if (pClient && pClient->m_nRequest == nRequest)
            pClient->Reply(nStatus, strText);
    });
}

void ControlClient::Reply(int nStatus, const std::string& strText)
{
    if (!m_bBusy || !m_strToSend.empty())
        return;
    m_strToSend = std::to_string(nStatus) + " " + std::to_string(strText.size()) + "\n" + strText;
    Send();
}

void ControlClient::Send()
{
    const ssize_t nSent =
        send(m_hSocket, m_strToSend.data(), m_strToSend.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (nSent < 0 && !IsTryAgain(errno))
        return End();
    m_strToSend.erase(0, nSent > 0 ? static_cast<std::size_t>(nSent) : 0);
    if (!m_strToSend.empty())
        return Watch(CKorEventLoop::EVENT_WRITABLE, &ControlClient::Send);
    if (m_bLast)
        return End();
    m_bBusy = false;
    // Whoever sends many requests at once gets one answer a turn of the loop.
    Rest();
    m_oLoop.Post([pThis = weak_from_this()] {
        if (const std::shared_ptr<ControlClient> pClient = pThis.lock())
            pClient->Look();
    });
}

void ControlClient::End()
{
    Rest();
    m_bBusy = true; // nothing is taken any more
    m_strToSend = "-";
    if (const GoneHandler fnGone = std::exchange(m_fnGone, nullptr))
        fnGone(this);
}
