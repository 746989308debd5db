#include "tests/examples/PortModbusClient.h"

#include "serial/KorSerial.h"

namespace
{

constexpr unsigned int SILENCE_MS = 50;
constexpr int MAX_NOISY_ROUNDS = 20; // a line that never falls silent must not hold the caller

} // namespace

PortModbusClient::PortModbusClient(CKorSerial& oPort, int nTimeout, unsigned int nRetries)
    : m_oPort(oPort), m_nTimeout(nTimeout), m_nRetries(nRetries), m_nLastException(0)
{
}

PortModbusClient::~PortModbusClient() = default;

EModbusResult PortModbusClient::Read(const ModbusRequest& oRequest,
                                     std::vector<std::uint16_t>& vecValues)
{
    ++m_oCounters.nRequests;
    EModbusResult eResult = Exchange(oRequest, vecValues);
    for (unsigned int nRetry = 0; nRetry < m_nRetries; ++nRetry) {
        if (eResult == MODBUS_OK || eResult == MODBUS_EXCEPTION)
            break;
        AwaitSilence();
        ++m_oCounters.nRetries;
        eResult = Exchange(oRequest, vecValues);
    }
    return eResult;
}

EModbusResult PortModbusClient::Exchange(const ModbusRequest& oRequest,
                                         std::vector<std::uint16_t>& vecValues)
{
    const std::string strRequest = ModbusRequestTelegram(oRequest);
    m_oPort.ClearBuffer();
    TelegramSent(strRequest);
    EModbusResult eResult = MODBUS_SEND_ERROR;
    if (m_oPort.DataReq(strRequest.data(), MODBUS_REQUEST_LENGTH, 0) == CKorSerial::SERIAL_OK) {
        eResult = MODBUS_OK;
        const std::string strResponse = Receive(oRequest, eResult);
        TelegramReceived(strResponse);
        if (eResult == MODBUS_OK)
            eResult = ModbusParseResponse(oRequest, strResponse, vecValues, m_nLastException);
    }
    m_oCounters.Count(eResult);
    return eResult;
}

std::string PortModbusClient::Receive(const ModbusRequest& oRequest, EModbusResult& eResult)
{
    // Every answer has as many bytes as an exception; these tell whether more will come.
    unsigned int nLength = MODBUS_EXCEPTION_LENGTH;
    int nWaited = m_oPort.WaitForResponse(nLength, static_cast<unsigned int>(m_nTimeout));
    if (nWaited == CKorSerial::SERIAL_OK && !ModbusIsException(m_oPort.GetReceivedData()))
        nLength = static_cast<unsigned int>(ModbusResponseLength(oRequest));

    std::string strResponse;
    if (nWaited == CKorSerial::SERIAL_OK)
        nWaited = m_oPort.WaitForData(nLength, strResponse, m_nTimeout);
    if (nWaited == CKorSerial::SERIAL_OK)
        return strResponse;
    strResponse = m_oPort.GetReceivedData();
    if (!ModbusCrcIsRight(strResponse)) // what is whole but too short is no time-out
        eResult = MODBUS_TIMEOUT;
    return strResponse;
}

void PortModbusClient::AwaitSilence()
{
    for (int nRound = 0; nRound < MAX_NOISY_ROUNDS; ++nRound) {
        m_oPort.ClearBuffer();
        if (m_oPort.WaitForResponse(1, SILENCE_MS) != CKorSerial::SERIAL_OK)
            return;
        CKorThread::Sleep(0, SILENCE_MS);
    }
}

void PortModbusClient::TelegramSent(const std::string&) {}

void PortModbusClient::TelegramReceived(const std::string&) {}
