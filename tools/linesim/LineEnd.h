#pragma once

/// @file
/// This side of a line: the far end of a pseudo-terminal, or a serial device.

#include "event/KorEventLoop.h"
#include "serial/KorSerialLine.h"
#include "tools/linesim/LineTrace.h"

#include <functional>
#include <string>

/// One end of a line, served by an event loop.
class LineEnd
{
public:
    /// @param oLoop   serves the line; outlives it
    /// @param oTrace  records what passes; outlives the line
    LineEnd(CKorEventLoop& oLoop, LineTrace& oTrace);
    ~LineEnd();
    LineEnd(const LineEnd&) = delete;
    LineEnd& operator=(const LineEnd&) = delete;

    /// Makes a pseudo-terminal that passes every byte.
    /// @param strLink  a symbolic link to its device, replaced if it is one; empty for none
    /// @return false with errno
    bool OpenTerminal(const std::string& strLink);
    /// Opens a serial device.
    /// @return false with errno
    bool OpenDevice(const std::string& strDevice, const SKorLineOptions& oOptions);

    /// The name that a program opens: the link, or the device.
    const std::string& Name() const { return m_strName; }
    bool IsOpen() const { return m_nHandle != -1; }

    /// Called for the bytes that come.
    void SetReceiver(std::function<void(const std::string& strBytes)> fnReceiver);
    /// Leaves in the kernel what comes, or takes it again.
    void SetPaused(bool bPaused);

    /// Sends bytes as the line takes them. Without effect while there is no line.
    void Send(const std::string& strBytes);
    /// How many bytes the line has not taken yet.
    std::size_t PendingCount() const { return m_strPending.size(); }
    /// Called when the line has taken all.
    void SetDrained(std::function<void()> fnDrained);
    /// How many bytes lie in the pseudo-terminal, not read by the program.
    int UnreadCount() const;

    /// Takes the line away: the other side sees a hang-up. The link stays and leads nowhere.
    void HangUp();
    /// Makes a new pseudo-terminal under the same link. False with errno.
    bool ComeBack();

private:
    bool Watch();
    void OnReady(unsigned int nEvents);
    void Receive();
    void Flush();
    unsigned int WantedEvents() const;
    bool MakeLink(const char* pszDevice);

    CKorEventLoop& m_oLoop;
    LineTrace& m_oTrace;
    CKorSerialLine m_oDevice;
    std::string m_strLink;
    std::string m_strName;
    std::string m_strPending;
    std::function<void(const std::string&)> m_fnReceiver;
    std::function<void()> m_fnDrained;
    int m_nHandle = -1;
    int m_nOtherSide =
        -1; // kept open: else a program that closes the device would hang up the line
    int m_nTicket = 0;
    bool m_bPaused = false;
};
