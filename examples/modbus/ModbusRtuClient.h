#pragma once

/// @file
/// Reading of registers from Modbus RTU stations, on an event loop.

#include "event/KorEventLoop.h"
#include "examples/modbus/ModbusRtu.h"
#include "serial/KorSerialLine.h"
#include "time/KorTimeout.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A Modbus RTU client on a line that its user opens and closes. One request at a time; nothing
/// waits.
///
/// RTU has no number that ties an answer to its request. So an answer may be late: after a time-out
/// the next request is held back until as much time has passed again, and what comes meanwhile is
/// dropped. A repetition asks for the same and may take the answer to the request before it.
///
/// Derive and override the hooks to see the telegrams.
class ModbusRtuClient
{
public:
    /// Takes the result of a request, and the values if it is #MODBUS_OK.
    using Handler =
        std::function<void(EModbusResult eResult, const std::vector<std::uint16_t>& vecValues)>;

    /// @param oLoop     serves the client, which must not outlive it
    /// @param oLine     the line, which must outlive the client
    /// @param nTimeout  longest wait for an answer, in ms
    /// @param nRetries  how often a failed request is repeated
    ModbusRtuClient(CKorEventLoop& oLoop, CKorSerialLine& oLine, unsigned int nTimeout,
                    unsigned int nRetries);
    virtual ~ModbusRtuClient();
    ModbusRtuClient(const ModbusRtuClient&) = delete;
    ModbusRtuClient& operator=(const ModbusRtuClient&) = delete;

    /// Takes the line into the loop, after each time it was opened.
    bool Attach();
    /// Takes it out. A request that runs is forgotten, its handler not called.
    void Detach();

    /// Sets what the constructor was given, from the next request on.
    void SetLimits(unsigned int nTimeout, unsigned int nRetries);

    /// Sets how long the line rests between an answer and the next request, in ms; 0 at first.
    void SetTurnAround(unsigned int nMilliseconds) { m_nTurnAround = nMilliseconds; }

    /// Reads registers. Repeats after every failure but an exception, which is an answer, and a
    /// hang-up.
    /// @return false while another request runs
    bool Start(const ModbusRequest& oRequest, Handler fnHandler);

    /// Whether a request runs.
    bool IsBusy() const { return m_eState != STATE_IDLE; }
    /// What was seen so far.
    const ModbusCounters& Counters() const { return m_oCounters; }
    /// Code of the last exception, 0 before the first.
    std::uint8_t LastException() const { return m_nLastException; }

protected:
    /// Called with every telegram before it is sent. Does nothing here.
    virtual void TelegramSent(const std::string& strTelegram);
    /// Called with what was received in answer, right or wrong, whole or not. Does nothing here.
    virtual void TelegramReceived(const std::string& strTelegram);
    /// Called when the line hung up, after the handler of a request that ran. Does nothing here.
    virtual void LineHungUp();

private:
    enum EState
    {
        STATE_IDLE,
        STATE_HELD,   // a late answer may still come, or the line rests
        STATE_ASKED,  // waits for the answer
        STATE_PAUSED, // before a repetition
    };

    void OnReady();
    void Receive();
    void After(unsigned int nMilliseconds, void (ModbusRtuClient::*pfnNext)());
    void Send();
    void Look();
    void TimeOut();
    void Conclude(EModbusResult eResult);
    void Finish(EModbusResult eResult);

    CKorEventLoop& m_oLoop;
    CKorSerialLine& m_oLine;
    unsigned int m_nTimeout;
    unsigned int m_nRetries;
    unsigned int m_nTurnAround = 0;
    EState m_eState = STATE_IDLE;
    ModbusRequest m_oRequest = {};
    Handler m_fnHandler;
    unsigned int m_nRetriesLeft = 0;
    std::string m_strReceived;
    std::vector<std::uint16_t> m_vecValues;
    EModbusResult m_eSoFar = MODBUS_TIMEOUT;
    std::optional<CKorTimeout> m_oHold; // until then nothing is sent
    int m_nLineTicket = 0;
    int m_nTimer = 0;
    int m_nSilence = 0;
    ModbusCounters m_oCounters;
    std::uint8_t m_nLastException = 0;
};
