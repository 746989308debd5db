#include "examples/gateway/LinePoller.h"

#include <algorithm>
#include <utility>

LinePoller::LinePoller(CKorEventLoop& oLoop, const LineSettings& oSettings, ReadingSink& oSink)
    : m_oLoop(oLoop),
      m_oLine(oLoop, oSettings, [this] { LineChanged(); }),
      m_oPoller(m_oLine, oSink, [this] { Next(); })
{
}

LinePoller::~LinePoller()
{
    m_oLoop.Cancel(m_nTimer);
}

void LinePoller::Open()
{
    m_oLine.Open();
    LineChanged();
}

void LinePoller::SetMeters(std::vector<std::shared_ptr<PolledMeter>> vecMeters)
{
    m_vecMeters = std::move(vecMeters);
    Next();
}

void LinePoller::PollNow(PolledMeter& roMeter, PolledMeter::Waiter fnWaiter)
{
    if (!m_oLine.IsOpen())
        return fnWaiter(nullptr, m_oLine.Error());
    roMeter.PollNow(std::move(fnWaiter));
    Next();
}

void LinePoller::LineChanged()
{
    const bool bOpen = m_oLine.IsOpen();
    for (const std::shared_ptr<PolledMeter>& pMeter : m_vecMeters) {
        if (bOpen)
            pMeter->Wake();
        else
            pMeter->Refuse(m_oLine.Error());
    }
    Next();
}

void LinePoller::Next()
{
    m_oLoop.Cancel(std::exchange(m_nTimer, 0));
    if (!m_oLine.IsOpen() || m_oPoller.IsBusy() || m_vecMeters.empty())
        return;
    const auto itFirst = std::min_element(
        m_vecMeters.begin(), m_vecMeters.end(),
        [](const auto& pLeft, const auto& pRight) { return pLeft->Due() < pRight->Due(); });
    const PolledMeter::Clock::duration oWait = (*itFirst)->Due() - PolledMeter::Clock::now();
    if (oWait <= PolledMeter::Clock::duration::zero())
        return m_oPoller.Start(*itFirst);
    const auto nWait = std::chrono::ceil<std::chrono::milliseconds>(oWait).count();
    m_nTimer = m_oLoop.CallAfter(static_cast<unsigned int>(nWait), [this] { Next(); });
}
