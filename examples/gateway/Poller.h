#pragma once

#include "examples/gateway/LinePoller.h"

#include <memory>
#include <string>
#include <vector>

/// All lines of the gateway and their meters.
class Poller
{
public:
    /// Loop and sink outlive it.
    Poller(CKorEventLoop& oLoop, ReadingSink& oSink) : m_oLoop(oLoop), m_oSink(oSink) {}

    /// Takes settings that were found good. Lines that would open in the same way stay open; meters
    /// of the same name keep their statistics, last reading and schedule.
    void Apply(const GatewaySettings& oSettings);

    /// Closes all lines and answers those who wait for a poll.
    void Stop();

    /// Polls a meter at once.
    /// @param fnWaiter  gets the outcome, once
    /// @return false when there is no such meter
    bool PollNow(const std::string& strName, const PolledMeter::Waiter& fnWaiter);

    const std::vector<std::unique_ptr<LinePoller>>& Lines() const { return m_vecLines; }
    /// In the order of their names.
    const std::vector<std::shared_ptr<PolledMeter>>& Meters() const { return m_vecMeters; }
    /// The line of a meter.
    const LinePoller& LineOf(const PolledMeter& oMeter) const;

private:
    void ApplyMeters(const GatewaySettings& oSettings);
    std::vector<LinePoller*> ApplyLines(const GatewaySettings& oSettings);
    std::vector<std::shared_ptr<PolledMeter>> MetersOn(const std::string& strLine) const;
    LinePoller* FindLine(const std::string& strName) const;
    std::shared_ptr<PolledMeter> FindMeter(const std::string& strName) const;

    CKorEventLoop& m_oLoop;
    ReadingSink& m_oSink;
    std::vector<std::shared_ptr<PolledMeter>> m_vecMeters;
    std::vector<std::unique_ptr<LinePoller>> m_vecLines;
};
