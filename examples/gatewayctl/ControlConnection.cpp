#include "examples/gatewayctl/ControlConnection.h"

#include "config/KorTextValue.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int LONGEST_WAIT_S = 60;
constexpr std::size_t LONGEST_HEADER = 32;
constexpr unsigned int LONGEST_TEXT = 64U << 20;

/// Reads "STATUS LENGTH".
bool ReadHeader(std::string_view strHeader, int& rnStatus, unsigned int& rnLength)
{
    const std::size_t nBlank = strHeader.find(' ');
    return nBlank != std::string_view::npos && KorReadText(strHeader.substr(0, nBlank), rnStatus) &&
           KorReadText(strHeader.substr(nBlank + 1), rnLength) && rnLength <= LONGEST_TEXT;
}

} // namespace

ControlConnection::~ControlConnection()
{
    Close();
}

bool ControlConnection::Ask(const std::string& strPath, const std::string& strRequest,
                            ControlAnswer& roAnswer)
{
    if ((m_hSocket != -1 || Connect(strPath)) && Send(strRequest + "\n") && ReceiveAnswer(roAnswer))
        return true;
    const int nError = errno;
    Close();
    errno = nError;
    return false;
}

bool ControlConnection::Connect(const std::string& strPath)
{
    sockaddr_un oAddress = {};
    oAddress.sun_family = AF_UNIX;
    if (strPath.size() >= sizeof oAddress.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(oAddress.sun_path, strPath.c_str(), strPath.size());
    const timeval oWait = {LONGEST_WAIT_S, 0};
    m_hSocket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return m_hSocket != -1 &&
           setsockopt(m_hSocket, SOL_SOCKET, SO_RCVTIMEO, &oWait, sizeof oWait) == 0 &&
           setsockopt(m_hSocket, SOL_SOCKET, SO_SNDTIMEO, &oWait, sizeof oWait) == 0 &&
           connect(m_hSocket, reinterpret_cast<const sockaddr*>(&oAddress), sizeof oAddress) == 0;
}

bool ControlConnection::Send(std::string strText)
{
    while (!strText.empty()) {
        const ssize_t nSent = send(m_hSocket, strText.data(), strText.size(), MSG_NOSIGNAL);
        if (nSent < 0 && errno != EINTR)
            return false;
        strText.erase(0, nSent > 0 ? static_cast<std::size_t>(nSent) : 0);
    }
    return true;
}

bool ControlConnection::ReceiveUntil(std::size_t nBytes)
{
    while (m_strReceived.size() < nBytes) {
        char acBytes[4096];
        const ssize_t nReceived = recv(m_hSocket, acBytes, sizeof acBytes, 0);
        if (nReceived == 0)
            errno = ECONNRESET;
        if (nReceived == 0 || (nReceived < 0 && errno != EINTR))
            return false;
        m_strReceived.append(acBytes, nReceived > 0 ? static_cast<std::size_t>(nReceived) : 0);
    }
    return true;
}

bool ControlConnection::ReceiveAnswer(ControlAnswer& roAnswer)
{
    std::size_t nEnd = std::string::npos;
    while ((nEnd = m_strReceived.find('\n')) == std::string::npos) {
        if (m_strReceived.size() > LONGEST_HEADER || !ReceiveUntil(m_strReceived.size() + 1))
            break;
    }
    unsigned int nLength = 0;
    if (nEnd != std::string::npos &&
        !ReadHeader(std::string_view(m_strReceived).substr(0, nEnd), roAnswer.nStatus, nLength)) {
        errno = EPROTO;
        return false;
    }
    if (nEnd == std::string::npos || !ReceiveUntil(nEnd + 1 + nLength))
        return false;
    roAnswer.strText = m_strReceived.substr(nEnd + 1, nLength);
    m_strReceived.erase(0, nEnd + 1 + nLength);
    return true;
}

void ControlConnection::Close()
{
    if (m_hSocket != -1)
        close(m_hSocket);
    m_hSocket = -1;
    m_strReceived.clear();
}
