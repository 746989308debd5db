#include "examples/gateway/ControlServer.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <utility>

namespace
{

constexpr std::size_t MOST_CLIENTS = 32;
constexpr unsigned int PAUSE_MS = 1000;

} // namespace

ControlServer::ControlServer(CKorEventLoop& oLoop, ControlHandler fnRequest)
    : m_oLoop(oLoop), m_fnRequest(std::move(fnRequest))
{
}

ControlServer::~ControlServer()
{
    Close();
}

bool ControlServer::Open(const std::string& strPath)
{
    Close();
    if (!m_oSocket.Open(strPath))
        return false;
    Listen();
    return true;
}

void ControlServer::Close()
{
    m_oLoop.Cancel(std::exchange(m_nTicket, 0));
    m_vecClients.clear();
    m_oSocket.Close();
}

void ControlServer::Listen()
{
    m_nTicket = m_oLoop.WatchHandle(m_oSocket.Handle(), CKorEventLoop::EVENT_READABLE,
                                    [this](unsigned int) { Accept(); });
}

// Without a handle for it the connection would be told again and again.
void ControlServer::Accept()
{
    const int hSocket = m_oSocket.Accept();
    if (hSocket == -1 && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) {
        m_oLoop.Cancel(m_nTicket);
        m_nTicket = m_oLoop.CallAfter(PAUSE_MS, [this] { Listen(); });
        return;
    }
    if (hSocket == -1)
        return;
    if (!MakeRoom()) {
        close(hSocket);
        return;
    }
    m_vecClients.push_back(std::make_shared<ControlClient>(
        m_oLoop, hSocket, m_fnRequest, [this](const ControlClient* pClient) { Drop(pClient); }));
    m_vecClients.back()->Start();
}

bool ControlServer::MakeRoom()
{
    if (m_vecClients.size() < MOST_CLIENTS)
        return true;
    const auto itQuiet = std::min_element(
        m_vecClients.begin(), m_vecClients.end(), [](const auto& pLeft, const auto& pRight) {
            return std::make_pair(pLeft->IsWaiting(), pLeft->LastSign()) <
                   std::make_pair(pRight->IsWaiting(), pRight->LastSign());
        });
    if ((*itQuiet)->IsWaiting())
        return false;
    m_vecClients.erase(itQuiet);
    return true;
}

void ControlServer::Drop(const ControlClient* pClient)
{
    m_vecClients.erase(
        std::remove_if(m_vecClients.begin(), m_vecClients.end(),
                       [pClient](const auto& pOne) { return pOne.get() == pClient; }),
        m_vecClients.end());
}
