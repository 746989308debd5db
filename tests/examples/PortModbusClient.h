#pragma once

/// @file
/// Reading of registers from Modbus RTU stations over a serial port.

#include "examples/modbus/ModbusRtu.h"

#include <cstdint>
#include <string>
#include <vector>

class CKorSerial;

/// A Modbus RTU client on a port that its user opens and closes.
///
/// Derive and override the two hooks to see the telegrams.
class PortModbusClient
{
public:
    /// @param oPort     the port, which must outlive the client
    /// @param nTimeout  longest wait for an answer to begin, and again for its end, in ms
    /// @param nRetries  how often a failed request is repeated
    PortModbusClient(CKorSerial& oPort, int nTimeout, unsigned int nRetries);
    virtual ~PortModbusClient();
    PortModbusClient(const PortModbusClient&) = delete;
    PortModbusClient& operator=(const PortModbusClient&) = delete;

    /// Reads registers. Repeats after every failure but an exception, which is an answer.
    /// @param oRequest        what to read
    /// @param[out] vecValues  the values; unchanged unless the result is #MODBUS_OK
    /// @return the result of the last attempt
    EModbusResult Read(const ModbusRequest& oRequest, std::vector<std::uint16_t>& vecValues);

    /// What was seen so far.
    const ModbusCounters& Counters() const { return m_oCounters; }

    /// Code of the last exception, 0 before the first.
    std::uint8_t LastException() const { return m_nLastException; }

protected:
    /// Called with every telegram before it is sent. Does nothing here.
    virtual void TelegramSent(const std::string& strTelegram);
    /// Called with what was received in answer, right or wrong, whole or not. Does nothing here.
    virtual void TelegramReceived(const std::string& strTelegram);

private:
    EModbusResult Exchange(const ModbusRequest& oRequest, std::vector<std::uint16_t>& vecValues);
    std::string Receive(const ModbusRequest& oRequest, EModbusResult& eResult);
    void AwaitSilence();

    CKorSerial& m_oPort;
    int m_nTimeout;
    unsigned int m_nRetries;
    ModbusCounters m_oCounters;
    std::uint8_t m_nLastException;
};
