#pragma once

#include <string>

/// The service manager's end of the protocol: a datagram socket that NOTIFY_SOCKET names.
class NotifySocket
{
public:
    /// @param strName  as in NOTIFY_SOCKET: a path, or "@" and an abstract name
    explicit NotifySocket(const std::string& strName);
    ~NotifySocket();
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    /// The next message; fails the running test when none comes within 60 s.
    std::string Receive() const;
    /// Whether a message is there.
    bool HasMessage() const;

private:
    std::string m_strName;
    int m_nSocket;
};
