#pragma once

/// @file
/// The line of the simulated meter.

#include <string>

/// A pseudo-terminal, of which the meter is the far end.
class MeterLine
{
public:
    /// Opens a pseudo-terminal that lets every byte pass.
    MeterLine();
    ~MeterLine();
    MeterLine(const MeterLine&) = delete;
    MeterLine& operator=(const MeterLine&) = delete;

    /// Whether there is a line: it could be opened and was not hung up.
    bool IsOpen() const { return m_nFarEnd != -1; }

    /// Name of the device for the other side to open.
    const std::string& DeviceName() const { return m_strDeviceName; }

    /// Receives a telegram of @p nLength bytes from the open line. What comes in pieces with longer
    /// pauses between them is no telegram and is dropped. All signals come in while it waits.
    /// @param nLength           how many bytes
    /// @param[out] strTelegram  the telegram
    /// @return false when the line fails
    bool Receive(std::size_t nLength, std::string& strTelegram);

    /// Sends a telegram. Returns false when the line does not take it.
    bool Send(const std::string& strTelegram);

    /// Closes the line.
    void HangUp();

private:
    bool Open();

    int m_nFarEnd;
    int m_nDevice; // kept open: without it a client that closes the device would hang up the line
    std::string m_strDeviceName;
};
