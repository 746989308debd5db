#pragma once

#include "event/KorEventLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

/// Answers a request: the exit status that it stands for and a text. What comes after the first call
/// is dropped, and so is an answer to a client that is gone.
using ControlReply = std::function<void(int nStatus, const std::string& strText)>;
/// Takes a request and answers it at once or later.
using ControlHandler = std::function<void(const std::string& strRequest, ControlReply fnReply)>;

/// Somebody who looks in: one request after the other, each a line of at most 256 bytes, each
/// answered by a line "STATUS LENGTH" and so many bytes of text.
///
/// While a request is answered nothing more is read, so that a client never has more than one
/// answer in memory. One that neither asks nor takes its answer for half a minute is dropped.
class ControlClient : public std::enable_shared_from_this<ControlClient>
{
public:
    using Clock = std::chrono::steady_clock;
    using GoneHandler = std::function<void(const ControlClient* pClient)>;

    /// @param oLoop     serves the client and outlives it
    /// @param hSocket   becomes the client's
    /// @param fnRequest takes the requests
    /// @param fnGone    told once when the client is to be dropped
    ControlClient(CKorEventLoop& oLoop, int hSocket, ControlHandler fnRequest, GoneHandler fnGone);
    ~ControlClient();
    ControlClient(const ControlClient&) = delete;
    ControlClient& operator=(const ControlClient&) = delete;

    /// Begins to read, once the client is held by a shared pointer.
    void Start();

    /// Whether it waits for the gateway's answer.
    bool IsWaiting() const { return m_bBusy && m_strToSend.empty(); }
    /// When it last asked or took something.
    Clock::time_point LastSign() const { return m_oLastSign; }

private:
    void Watch(unsigned int nEvents, void (ControlClient::*pfnReady)());
    void Rest();
    void Receive();
    void Look();
    void Reply(int nStatus, const std::string& strText);
    void Send();
    void Listen();
    void End();

    CKorEventLoop& m_oLoop;
    int m_hSocket;
    ControlHandler m_fnRequest;
    GoneHandler m_fnGone;
    int m_nTicket = 0;
    int m_nIdle = 0;             // the timer of a client that does nothing
    unsigned int m_nRequest = 0; // counts requests
    bool m_bBusy = false;        // with the last of them
    bool m_bLast = false;        // the answer is the last one
    Clock::time_point m_oLastSign;
    std::string m_strReceived;
    std::string m_strToSend;
};
