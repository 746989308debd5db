#pragma once

/// @file
/// The line of the simulated meter.

#include "event/KorEventLoop.h"

#include <functional>
#include <string>

/// A pseudo-terminal, of which the meter is the far end.
class MeterLine
{
public:
    /// Opens a pseudo-terminal that lets every byte pass.
    /// @param oLoop        serves the line and outlives it
    /// @param nLength      length of a telegram in bytes
    /// @param fnTelegram   takes each telegram. What comes in pieces with pauses of 50 ms between
    ///                     them is no telegram and is dropped
    MeterLine(CKorEventLoop& oLoop, std::size_t nLength,
              std::function<void(const std::string&)> fnTelegram);
    ~MeterLine();
    MeterLine(const MeterLine&) = delete;
    MeterLine& operator=(const MeterLine&) = delete;

    /// Whether there is a line: it could be opened and was not hung up.
    bool IsOpen() const { return m_nFarEnd != -1; }

    /// Name of the device for the other side to open.
    const std::string& DeviceName() const { return m_strDeviceName; }

    /// Sends a telegram. Returns false when the line does not take it at once.
    bool Send(const std::string& strTelegram);

    /// Closes the line.
    void HangUp();

private:
    bool Open();
    void Receive();

    CKorEventLoop& m_oLoop;
    const std::size_t m_nLength;
    std::function<void(const std::string&)> m_fnTelegram;
    std::string m_strReceived;
    int m_nPause = 0;
    int m_nFarEnd = -1;
    int m_nDevice = -1; // kept open: else a client that closes the device would hang up the line
    std::string m_strDeviceName;
};
