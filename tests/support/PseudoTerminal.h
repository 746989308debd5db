#pragma once

#include <string>
#include <termios.h>

/// A pseudo-terminal: the device that a port under test opens, and the far end of its line.
///
/// A fresh one is not raw: the line discipline echoes, turns a received CR into LF and swallows
/// XON and XOFF. MakeRaw() makes it a plain line.
class PseudoTerminal
{
public:
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// Name of the device to open.
    const char* Name() const { return m_strName.c_str(); }
    /// Descriptor of the far end.
    int FarEnd() const { return m_nMaster; }

    /// Lets every byte pass untouched.
    void MakeRaw() const;
    /// The line settings as the terminal has them.
    termios Settings() const;
    /// Gives the terminal these line settings.
    void Apply(const termios& oSettings) const;

    /// Sends from the far end to the device.
    void Send(const std::string& strBytes) const;
    /// Receives exactly @p nCount bytes at the far end; fewer, with the running test failed, when
    /// they do not come within 60 s.
    std::string Receive(std::size_t nCount) const;

    /// Closes the far end: the device hangs up.
    void HangUp();

private:
    int m_nMaster;
    std::string m_strName;
};
