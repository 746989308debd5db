#pragma once

#include "examples/gateway/MeterPoller.h"

#include <memory>
#include <string>
#include <vector>

/// A line and its meters: polls them by turns, the one first that has been due longest.
class LinePoller
{
public:
    /// Loop and sink outlive it.
    LinePoller(CKorEventLoop& oLoop, const LineSettings& oSettings, ReadingSink& oSink);
    ~LinePoller();
    LinePoller(const LinePoller&) = delete;
    LinePoller& operator=(const LinePoller&) = delete;

    /// Opens the line, now or as soon as it can be opened, and begins to poll.
    void Open();
    /// Polls these meters from now on. A poll that runs is finished.
    void SetMeters(std::vector<std::shared_ptr<PolledMeter>> vecMeters);
    /// Takes settings with which the line would open in the same way.
    void SetSettings(const LineSettings& oSettings) { m_oLine.SetSettings(oSettings); }
    /// Polls a meter of this line at once.
    /// @param fnWaiter  gets the outcome, before this returns when the line is not open
    void PollNow(PolledMeter& roMeter, PolledMeter::Waiter fnWaiter);

    const GatewayLine& Line() const { return m_oLine; }
    const std::vector<std::shared_ptr<PolledMeter>>& Meters() const { return m_vecMeters; }

private:
    void LineChanged();
    void Next();

    CKorEventLoop& m_oLoop;
    GatewayLine m_oLine;
    MeterPoller m_oPoller;
    std::vector<std::shared_ptr<PolledMeter>> m_vecMeters;
    int m_nTimer = 0;
};
