#pragma once

#include "examples/gateway/GatewayLine.h"
#include "examples/gateway/PolledMeter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

/// Polls one meter at a time: asks for its registers, request after request. A poll gives all of
/// the values or none.
class MeterPoller
{
public:
    /// Line and sink outlive it.
    /// @param fnDone  called at the end of each poll, as the last
    MeterPoller(GatewayLine& oLine, ReadingSink& oSink, std::function<void()> fnDone);

    /// Begins a poll. The line is open and no other poll runs.
    void Start(std::shared_ptr<PolledMeter> pMeter);
    bool IsBusy() const { return m_pMeter != nullptr; }

private:
    void Ask();
    void Take(EModbusResult eResult, const std::vector<std::uint16_t>& vecWords);
    void Succeed();
    void Fail(EModbusResult eResult);

    GatewayLine& m_oLine;
    ReadingSink& m_oSink;
    std::function<void()> m_fnDone;
    std::shared_ptr<PolledMeter> m_pMeter; // null between polls
    std::shared_ptr<const RegisterPlan> m_pPlan;
    std::vector<std::vector<std::uint16_t>> m_vecAnswers;
    ModbusCounters m_oBefore;
};
