#include "examples/modbus/ModbusRtuClient.h"

#include <utility>

namespace
{

constexpr unsigned int SILENCE_MS = 50;
constexpr unsigned int BLOCK_SIZE = 4096;
constexpr std::size_t MAX_RECEIVED = 1024; // more is noise, of which the last bytes may count

} // namespace

ModbusRtuClient::ModbusRtuClient(CKorEventLoop& oLoop, CKorSerialLine& oLine, unsigned int nTimeout,
                                 unsigned int nRetries)
    : m_oLoop(oLoop), m_oLine(oLine), m_nTimeout(nTimeout), m_nRetries(nRetries)
{
}

ModbusRtuClient::~ModbusRtuClient()
{
    Detach();
}

bool ModbusRtuClient::Attach()
{
    Detach();
    m_nLineTicket = m_oLoop.WatchHandle(m_oLine.GetHandle(), CKorEventLoop::EVENT_READABLE,
                                        [this](unsigned int) { OnReady(); });
    return m_nLineTicket > 0;
}

void ModbusRtuClient::Detach()
{
    for (int* pTicket : {&m_nLineTicket, &m_nTimer, &m_nSilence})
        m_oLoop.Cancel(std::exchange(*pTicket, 0));
    m_eState = STATE_IDLE;
    m_fnHandler = nullptr;
}

void ModbusRtuClient::SetLimits(unsigned int nTimeout, unsigned int nRetries)
{
    m_nTimeout = nTimeout;
    m_nRetries = nRetries;
}

bool ModbusRtuClient::Start(const ModbusRequest& oRequest, Handler fnHandler)
{
    if (IsBusy())
        return false;
    ++m_oCounters.nRequests;
    m_oRequest = oRequest;
    m_fnHandler = std::move(fnHandler);
    m_nRetriesLeft = m_nRetries;
    m_eState = STATE_HELD;
    After(m_oHold ? m_oHold->GetRemaining() : 0, &ModbusRtuClient::Send);
    return true;
}

void ModbusRtuClient::After(unsigned int nMilliseconds, void (ModbusRtuClient::*pfnNext)())
{
    m_oLoop.Cancel(m_nTimer);
    m_nTimer = m_oLoop.CallAfter(nMilliseconds, [this, pfnNext] { (this->*pfnNext)(); });
}

void ModbusRtuClient::Send()
{
    const std::string strRequest = ModbusRequestTelegram(m_oRequest);
    m_oLine.DiscardInput();
    m_strReceived.clear();
    m_eSoFar = MODBUS_TIMEOUT;
    m_eState = STATE_ASKED;
    TelegramSent(strRequest);
    if (m_oLine.WriteText(strRequest, 0) == CKorSerial::SERIAL_OK)
        return After(m_nTimeout, &ModbusRtuClient::TimeOut);
    m_oLine.DiscardOutput();
    Conclude(m_oLine.IsHungUp() ? MODBUS_HUNG_UP : MODBUS_SEND_ERROR);
}

void ModbusRtuClient::OnReady()
{
    Receive();
    if (m_eState == STATE_ASKED)
        Look();
    if (!m_oLine.IsHungUp())
        return;
    m_oLoop.Cancel(std::exchange(m_nLineTicket, 0));
    if (IsBusy())
        Conclude(MODBUS_HUNG_UP);
    LineHungUp();
}

void ModbusRtuClient::Receive()
{
    std::string strBytes;
    while (m_oLine.Read(BLOCK_SIZE, strBytes, 0) == CKorSerial::SERIAL_OK) {
        m_strReceived += strBytes;
        if (m_strReceived.size() > MAX_RECEIVED)
            m_strReceived.erase(0, m_strReceived.size() - MAX_RECEIVED);
    }
}

// An answer that is there ends the wait. After one that is wrong nothing more needs to come, unless
// it was another station's.
void ModbusRtuClient::Look()
{
    m_eSoFar = ModbusFindResponse(m_oRequest, m_strReceived, m_vecValues, m_nLastException);
    if (m_eSoFar == MODBUS_OK || m_eSoFar == MODBUS_EXCEPTION)
        return Conclude(m_eSoFar);
    m_oLoop.Cancel(std::exchange(m_nSilence, 0));
    if (m_eSoFar == MODBUS_BAD_CRC || m_eSoFar == MODBUS_MALFORMED)
        m_nSilence = m_oLoop.CallAfter(SILENCE_MS, [this] { Conclude(m_eSoFar); });
}

void ModbusRtuClient::TimeOut()
{
    if (m_eSoFar == MODBUS_TIMEOUT || m_eSoFar == MODBUS_WRONG_STATION)
        m_oHold.emplace(m_nTimeout);
    Conclude(m_eSoFar);
}

void ModbusRtuClient::Conclude(EModbusResult eResult)
{
    m_oLoop.Cancel(std::exchange(m_nTimer, 0));
    m_oLoop.Cancel(std::exchange(m_nSilence, 0));
    TelegramReceived(m_strReceived);
    m_oCounters.Count(eResult);
    const bool bFinal =
        eResult == MODBUS_OK || eResult == MODBUS_EXCEPTION || eResult == MODBUS_HUNG_UP;
    if (bFinal || m_nRetriesLeft == 0)
        return Finish(eResult);
    --m_nRetriesLeft;
    ++m_oCounters.nRetries;
    m_eState = STATE_PAUSED;
    After(SILENCE_MS, &ModbusRtuClient::Send);
}

void ModbusRtuClient::Finish(EModbusResult eResult)
{
    if (!m_oHold || m_oHold->GetRemaining() < m_nTurnAround)
        m_oHold.emplace(m_nTurnAround);
    m_eState = STATE_IDLE;
    const Handler fnHandler = std::exchange(m_fnHandler, nullptr);
    const std::vector<std::uint16_t> vecValues = std::exchange(m_vecValues, {});
    fnHandler(eResult, vecValues);
}

void ModbusRtuClient::TelegramSent(const std::string&) {}

void ModbusRtuClient::TelegramReceived(const std::string&) {}

void ModbusRtuClient::LineHungUp() {}
