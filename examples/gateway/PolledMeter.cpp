#include "examples/gateway/PolledMeter.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace
{

using std::chrono::milliseconds;

constexpr milliseconds FIRST_PAUSE(1000);
constexpr milliseconds LONGEST_PAUSE(60000);
constexpr unsigned int MOST_DOUBLINGS = 6; // 64 s, which is beyond the longest pause

} // namespace

PolledMeter::PolledMeter(const MeterSettings& oSettings)
    : m_oSettings(oSettings),
      m_pPlan(std::make_shared<const RegisterPlan>(oSettings.m_vecRegisters)),
      m_oDue(Clock::now()),
      m_oRandom(static_cast<std::minstd_rand::result_type>(
          std::hash<std::string>()(oSettings.m_strName) ^
          static_cast<std::size_t>(m_oDue.time_since_epoch().count())))
{
}

PolledMeter::~PolledMeter()
{
    Refuse("the meter was taken out of the settings");
}

void PolledMeter::SetSettings(const MeterSettings& oSettings)
{
    if (!(m_oSettings.m_vecRegisters == oSettings.m_vecRegisters))
        m_pPlan = std::make_shared<const RegisterPlan>(oSettings.m_vecRegisters);
    if (m_oSettings.m_nPollInterval != oSettings.m_nPollInterval ||
        m_oSettings.m_nUnit != oSettings.m_nUnit || m_oSettings.m_strLine != oSettings.m_strLine)
        Wake();
    m_oSettings = oSettings;
}

unsigned int PolledMeter::Tries() const
{
    return m_nSilences > 0 && !m_bAtOnce ? 1 : m_oSettings.m_nTries;
}

void PolledMeter::PollNow(Waiter fnWaiter)
{
    m_vecWaiters.push_back(std::move(fnWaiter));
    if (!std::exchange(m_bAtOnce, true))
        m_oAsked = Clock::now();
}

void PolledMeter::Wake()
{
    m_nSilences = 0;
    m_oDue = Clock::now();
}

const Reading& PolledMeter::TakeValues(std::vector<ReadingValue> vecValues, Clock::time_point oNow)
{
    m_oLastReading =
        Reading{m_oSettings.m_strName, CKorUTCTime::CurrentTime(), std::move(vecValues)};
    m_oStatistics.CountReading();
    m_bAnswering = true;
    m_nSilences = 0;
    Schedule(oNow);
    Answer(&*m_oLastReading, "");
    return *m_oLastReading;
}

void PolledMeter::TakeFailure(const std::string& strError, bool bSilent, Clock::time_point oNow)
{
    m_oStatistics.CountFailure(strError);
    m_bAnswering = false;
    m_nSilences = bSilent ? m_nSilences + 1 : 0;
    if (m_nSilences < 2) {
        Schedule(oNow);
    } else {
        m_bAtOnce = false;
        m_oDue = oNow + Pause();
    }
    Answer(nullptr, strError);
}

void PolledMeter::Refuse(const std::string& strError)
{
    m_bAtOnce = false;
    Answer(nullptr, strError);
}

void PolledMeter::Schedule(Clock::time_point oNow)
{
    m_bAtOnce = false;
    const milliseconds oInterval(m_oSettings.m_nPollInterval);
    if (m_oDue <= oNow)
        m_oDue += ((oNow - m_oDue) / oInterval + 1) * oInterval;
}

milliseconds PolledMeter::Pause()
{
    const milliseconds oInterval(m_oSettings.m_nPollInterval);
    const milliseconds oGrown =
        std::max(oInterval, FIRST_PAUSE) * (1U << std::min(m_nSilences - 2, MOST_DOUBLINGS));
    const milliseconds oPause = std::min(oGrown, std::max(oInterval, LONGEST_PAUSE));
    std::uniform_int_distribution<milliseconds::rep> oSpread(0, oPause.count() / 4);
    return oPause + milliseconds(oSpread(m_oRandom));
}

void PolledMeter::Answer(const Reading* pReading, const std::string& strError)
{
    for (const Waiter& fnWaiter : std::exchange(m_vecWaiters, {}))
        fnWaiter(pReading, strError);
}
