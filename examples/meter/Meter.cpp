#include "examples/meter/Meter.h"

Meter::Meter(std::uint8_t nStation, const MeterDisturbance& oDisturbance)
    : m_nStation(nStation), m_oDisturbance(oDisturbance), m_nRequests(0), m_nDisturbed(0)
{
}

MeterAnswer Meter::Answer(const std::string& strRequest)
{
    MeterAnswer oAnswer;
    if (strRequest.size() != MODBUS_REQUEST_LENGTH || !ModbusCrcIsRight(strRequest))
        return oAnswer;
    const ModbusRequest oRequest = ModbusParseRequest(strRequest);
    if (oRequest.nStation != m_nStation)
        return oAnswer;

    ++m_nRequests;
    oAnswer.strTelegram = Response(oRequest);
    if (IsDisturbed()) {
        ++m_nDisturbed;
        Disturb(oAnswer);
    }
    return oAnswer;
}

std::string Meter::Response(const ModbusRequest& oRequest) const
{
    if (oRequest.nFunction != MODBUS_READ_HOLDING_REGISTERS &&
        oRequest.nFunction != MODBUS_READ_INPUT_REGISTERS)
        return ModbusExceptionTelegram(oRequest, MODBUS_ILLEGAL_FUNCTION);
    if (oRequest.nCount == 0 || oRequest.nCount > MODBUS_MAX_REGISTERS)
        return ModbusExceptionTelegram(oRequest, MODBUS_ILLEGAL_VALUE);
    if (oRequest.nRegister + oRequest.nCount > REGISTERS)
        return ModbusExceptionTelegram(oRequest, MODBUS_ILLEGAL_ADDRESS);

    const std::vector<std::uint16_t> vecAll = Registers();
    const auto itFirst = vecAll.begin() + oRequest.nRegister;
    return ModbusResponseTelegram(oRequest, {itFirst, itFirst + oRequest.nCount});
}

std::vector<std::uint16_t> Meter::Registers() const
{
    const std::uint32_t nEnergy = 1000000 + 7 * m_nRequests;
    const std::uint32_t nVoltage = 2290 + m_nRequests % 21;
    const std::uint32_t nCurrent = 500 + 13 * (m_nRequests % 50);
    const std::uint32_t nPower = nVoltage * nCurrent / 1000;
    const std::uint32_t nFrequency = 4995 + m_nRequests % 11;
    std::vector<std::uint16_t> vecRegisters;
    for (const std::uint32_t nValue :
         {nEnergy >> 16, nEnergy & 0xFFFF, nVoltage, nCurrent, nPower, nFrequency})
        vecRegisters.push_back(static_cast<std::uint16_t>(nValue));
    return vecRegisters;
}

bool Meter::IsDisturbed() const
{
    const bool bAny = m_oDisturbance.nLateMs != 0 || m_oDisturbance.bBadCrc ||
                      m_oDisturbance.bSilent || m_oDisturbance.bHangUp;
    return bAny && m_nRequests % m_oDisturbance.nEvery == 0;
}

void Meter::Disturb(MeterAnswer& oAnswer) const
{
    oAnswer.nDelayMs = m_oDisturbance.nLateMs;
    oAnswer.bHangUp = m_oDisturbance.bHangUp;
    if (m_oDisturbance.bBadCrc)
        oAnswer.strTelegram.back() = static_cast<char>(oAnswer.strTelegram.back() ^ 0x55);
    if (m_oDisturbance.bSilent)
        oAnswer.strTelegram.clear();
}
