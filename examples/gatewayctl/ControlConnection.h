#pragma once

#include <string>

/// The answer to a request.
struct ControlAnswer
{
    int nStatus = 0;
    std::string strText;
};

/// A connection to a gateway's socket.
class ControlConnection
{
public:
    ControlConnection() = default;
    ~ControlConnection();
    ControlConnection(const ControlConnection&) = delete;
    ControlConnection& operator=(const ControlConnection&) = delete;

    /// Sends a request and waits a minute for the answer, on a new connection where there is none
    /// yet or where it was closed.
    /// @return false with errno; the connection is closed then
    bool Ask(const std::string& strPath, const std::string& strRequest, ControlAnswer& roAnswer);

private:
    bool Connect(const std::string& strPath);
    bool Send(std::string strText);
    bool ReceiveUntil(std::size_t nBytes);
    bool ReceiveAnswer(ControlAnswer& roAnswer);
    void Close();

    int m_hSocket = -1;
    std::string m_strReceived;
};
