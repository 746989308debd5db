#pragma once

#include "examples/gateway/ControlClient.h"
#include "examples/gateway/ControlSocket.h"

#include <memory>
#include <string>
#include <vector>

/// Serves those who look in: 32 at a time; another one takes the place of the one that has been
/// quiet longest.
class ControlServer
{
public:
    /// The loop outlives it.
    ControlServer(CKorEventLoop& oLoop, ControlHandler fnRequest);
    ~ControlServer();

    /// Serves at this path, and no longer at a former one. @return false with errno
    bool Open(const std::string& strPath);
    /// Drops all clients and removes the socket.
    void Close();
    /// Where it serves; empty while it does not.
    const std::string& Path() const { return m_oSocket.Path(); }

private:
    void Listen();
    void Accept();
    bool MakeRoom();
    void Drop(const ControlClient* pClient);

    CKorEventLoop& m_oLoop;
    ControlHandler m_fnRequest;
    ControlSocket m_oSocket;
    int m_nTicket = 0;
    std::vector<std::shared_ptr<ControlClient>> m_vecClients;
};
