#pragma once

#include "examples/gateway/GatewaySettings.h"
#include "examples/gateway/MeterStatistics.h"
#include "examples/gateway/Reading.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

/// A meter: what is read of it, when it is due, and what it said.
///
/// Its polls are due at whole intervals from the first one, on the monotonic clock; turns that were
/// missed are skipped. One that does not answer is asked more and more seldom: after the second
/// silence in a row a second or its interval later, whichever is longer, then twice as long each
/// time, up to a minute or its interval, and each time up to a quarter longer at random, so that
/// many such meters do not stay in step. Meanwhile a poll is a single try.
class PolledMeter
{
public:
    using Clock = std::chrono::steady_clock;
    /// Gets the reading of a poll, or null and why there is none.
    using Waiter = std::function<void(const Reading* pReading, const std::string& strError)>;

    /// Due at once.
    explicit PolledMeter(const MeterSettings& oSettings);
    /// Answers those who wait for a poll.
    ~PolledMeter();
    PolledMeter(const PolledMeter&) = delete;
    PolledMeter& operator=(const PolledMeter&) = delete;

    const MeterSettings& Settings() const { return m_oSettings; }
    /// Takes other settings. Statistics stay, and so does the time of the next poll unless the
    /// interval is another one.
    void SetSettings(const MeterSettings& oSettings);
    /// How its registers are read; whoever polls holds it, since new settings bring a new one.
    const std::shared_ptr<const RegisterPlan>& Plan() const { return m_pPlan; }

    /// When it is to be polled.
    Clock::time_point Due() const { return m_bAtOnce ? std::min(m_oAsked, m_oDue) : m_oDue; }
    /// How often a poll asks.
    unsigned int Tries() const;
    /// Makes it due at once.
    /// @param fnWaiter  gets the outcome of the poll that runs or of the next one
    void PollNow(Waiter fnWaiter);
    /// Forgets that it was silent, and makes it due.
    void Wake();

    /// Takes the values of a poll that ended now, and when the next is due.
    const Reading& TakeValues(std::vector<ReadingValue> vecValues, Clock::time_point oNow);
    /// Takes that a poll failed.
    /// @param bSilent  nobody answered
    void TakeFailure(const std::string& strError, bool bSilent, Clock::time_point oNow);
    /// Answers those who wait for a poll that there will be none.
    void Refuse(const std::string& strError);

    /// Whether the last poll gave a reading; true before the first.
    bool IsAnswering() const { return m_bAnswering; }
    const std::optional<Reading>& LastReading() const { return m_oLastReading; }
    MeterStatistics& Statistics() { return m_oStatistics; }
    const MeterStatistics& Statistics() const { return m_oStatistics; }

private:
    void Schedule(Clock::time_point oNow);
    std::chrono::milliseconds Pause();
    void Answer(const Reading* pReading, const std::string& strError);

    MeterSettings m_oSettings;
    std::shared_ptr<const RegisterPlan> m_pPlan;
    Clock::time_point m_oDue;
    bool m_bAtOnce = false;
    Clock::time_point m_oAsked; // when it was to be polled at once: others that waited go first
    bool m_bAnswering = true;
    unsigned int m_nSilences = 0; // in a row
    std::minstd_rand m_oRandom;
    std::optional<Reading> m_oLastReading;
    MeterStatistics m_oStatistics;
    std::vector<Waiter> m_vecWaiters;
};
