#include "tests/app/NotifySocket.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

constexpr int PATIENCE_MS = 60000;

} // namespace

NotifySocket::NotifySocket(const std::string& strName)
    : m_strName(strName), m_nSocket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un oAddress = {};
    oAddress.sun_family = AF_UNIX;
    std::memcpy(oAddress.sun_path, strName.data(), strName.size());
    if (strName.front() == '@')
        oAddress.sun_path[0] = '\0';
    const auto nLength = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + strName.size());
    EXPECT_EQ(0, bind(m_nSocket, reinterpret_cast<const sockaddr*>(&oAddress), nLength));
    setenv("NOTIFY_SOCKET", strName.c_str(), 1);
}

NotifySocket::~NotifySocket()
{
    unsetenv("NOTIFY_SOCKET");
    close(m_nSocket);
    if (m_strName.front() == '/')
        unlink(m_strName.c_str());
}

std::string NotifySocket::Receive() const
{
    char acMessage[8192];
    pollfd oSocket = {m_nSocket, POLLIN, 0};
    if (poll(&oSocket, 1, PATIENCE_MS) != 1) {
        ADD_FAILURE() << "no message";
        return "";
    }
    const ssize_t nLength = recv(m_nSocket, acMessage, sizeof acMessage, 0);
    return nLength > 0 ? std::string(acMessage, static_cast<std::size_t>(nLength)) : "";
}

bool NotifySocket::HasMessage() const
{
    pollfd oSocket = {m_nSocket, POLLIN, 0};
    return poll(&oSocket, 1, 0) == 1;
}
