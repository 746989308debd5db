#include "examples/gateway/MeterPoller.h"

#include "app/KorLog.h"

#include <utility>

namespace
{

/// What the exceptions of Modbus mean, from 1 on.
constexpr const char* EXCEPTIONS[] = {"illegal function", "illegal address", "illegal value",
                                      "device failure",   "acknowledged",    "busy"};

std::string ErrorText(EModbusResult eResult, unsigned int nException)
{
    std::string strText = ModbusResultText(eResult);
    if (eResult != MODBUS_EXCEPTION)
        return strText;
    strText += " " + std::to_string(nException);
    if (nException >= 1 && nException <= std::size(EXCEPTIONS))
        strText.append(", ").append(EXCEPTIONS[nException - 1]);
    return strText;
}

/// Whether nothing was heard of the meter.
bool IsSilence(EModbusResult eResult)
{
    return eResult == MODBUS_TIMEOUT || eResult == MODBUS_WRONG_STATION ||
           eResult == MODBUS_SEND_ERROR;
}

} // namespace

MeterPoller::MeterPoller(GatewayLine& oLine, ReadingSink& oSink, std::function<void()> fnDone)
    : m_oLine(oLine), m_oSink(oSink), m_fnDone(std::move(fnDone))
{
}

void MeterPoller::Start(std::shared_ptr<PolledMeter> pMeter)
{
    m_pMeter = std::move(pMeter);
    m_pPlan = m_pMeter->Plan();
    m_vecAnswers.clear();
    m_oLine.SetLimits(m_pMeter->Settings().m_nTimeout, m_pMeter->Tries() - 1);
    Ask();
}

void MeterPoller::Ask()
{
    const RegisterPlan::Block& oBlock = m_pPlan->Blocks()[m_vecAnswers.size()];
    m_oBefore = m_oLine.Counters();
    m_oLine.Start({static_cast<std::uint8_t>(m_pMeter->Settings().m_nUnit),
                   oBlock.m_bInput ? MODBUS_READ_INPUT_REGISTERS : MODBUS_READ_HOLDING_REGISTERS,
                   oBlock.m_nFirst, oBlock.m_nCount},
                  [this](EModbusResult eResult, const std::vector<std::uint16_t>& vecWords) {
                      Take(eResult, vecWords);
                  });
}

void MeterPoller::Take(EModbusResult eResult, const std::vector<std::uint16_t>& vecWords)
{
    m_pMeter->Statistics().CountRequest(m_oBefore, m_oLine.Counters());
    if (eResult == MODBUS_OK || eResult == MODBUS_EXCEPTION)
        m_pMeter->Statistics().CountAnswer(m_oLine.ResponseTime());
    if (eResult != MODBUS_OK)
        return Fail(eResult);
    m_vecAnswers.push_back(vecWords);
    if (m_vecAnswers.size() < m_pPlan->Blocks().size())
        return Ask();
    Succeed();
}

void MeterPoller::Succeed()
{
    const std::shared_ptr<PolledMeter> pMeter = std::move(m_pMeter);
    if (!pMeter->IsAnswering())
        KorGetLog().Write(CKorLog::LEVEL_NOTICE, "%s: answers again",
                          pMeter->Settings().m_strName.c_str());
    m_oSink.Take(pMeter->TakeValues(m_pPlan->Values(m_vecAnswers), PolledMeter::Clock::now()));
    m_fnDone();
}

// A meter that stays silent is told once.
void MeterPoller::Fail(EModbusResult eResult)
{
    const std::shared_ptr<PolledMeter> pMeter = std::move(m_pMeter);
    const std::string strError = ErrorText(eResult, m_oLine.LastException());
    KorGetLog().Write(pMeter->IsAnswering() ? CKorLog::LEVEL_WARNING : CKorLog::LEVEL_DEBUG,
                      "%s: no reading: %s", pMeter->Settings().m_strName.c_str(), strError.c_str());
    pMeter->TakeFailure(strError, IsSilence(eResult), PolledMeter::Clock::now());
    m_fnDone();
}
