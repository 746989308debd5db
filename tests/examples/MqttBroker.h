#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <memory>
#include <string>

/// A port of the loopback address that nobody listens on.
unsigned int FreePort();

/// A real mosquitto broker on the loopback address, on a port of its own.
class MqttBroker
{
public:
    /// Starts it. @param strConfiguration  lines of its configuration file, beyond the listener
    explicit MqttBroker(const std::string& strConfiguration = "allow_anonymous true\n");
    MqttBroker(const MqttBroker&) = delete;
    MqttBroker& operator=(const MqttBroker&) = delete;

    unsigned int Port() const { return m_nPort; }
    /// Starts it again, on the same port, once it has ended.
    void Start();
    /// Ends it, at once or not.
    void End(int nSignal);
    /// Sends it a signal.
    void Signal(int nSignal) const { m_pProcess->Signal(nSignal); }

private:
    ScratchDir m_oDir;
    unsigned int m_nPort;
    std::unique_ptr<ChildProcess> m_pProcess;
};
