#include "examples/gateway/Poller.h"

#include <algorithm>
#include <utility>

void Poller::Apply(const GatewaySettings& oSettings)
{
    ApplyMeters(oSettings);
    const std::vector<LinePoller*> vecNew = ApplyLines(oSettings);
    for (const std::unique_ptr<LinePoller>& pLine : m_vecLines)
        pLine->SetMeters(MetersOn(pLine->Line().Settings().m_strName));
    for (LinePoller* const pLine : vecNew)
        pLine->Open();
}

void Poller::ApplyMeters(const GatewaySettings& oSettings)
{
    std::vector<std::shared_ptr<PolledMeter>> vecMeters;
    for (const MeterSettings& oMeter : oSettings.m_vecMeters) {
        std::shared_ptr<PolledMeter> pMeter = FindMeter(oMeter.m_strName);
        if (pMeter)
            pMeter->SetSettings(oMeter);
        else
            pMeter = std::make_shared<PolledMeter>(oMeter);
        vecMeters.push_back(std::move(pMeter));
    }
    m_vecMeters = std::move(vecMeters);
}

// At its end the lines are closed that did not stay: those opened next may want their devices.
std::vector<LinePoller*> Poller::ApplyLines(const GatewaySettings& oSettings)
{
    std::vector<std::unique_ptr<LinePoller>> vecFormer = std::exchange(m_vecLines, {});
    m_vecLines.resize(oSettings.m_vecLines.size());
    for (std::size_t i = 0; i < m_vecLines.size(); ++i) {
        const LineSettings& oLine = oSettings.m_vecLines[i];
        const auto itFormer = std::find_if(
            vecFormer.begin(), vecFormer.end(), [&oLine](const std::unique_ptr<LinePoller>& pLine) {
                return pLine && IsSameName(pLine->Line().Settings().m_strName, oLine.m_strName) &&
                       IsSameLine(pLine->Line().Settings(), oLine);
            });
        if (itFormer != vecFormer.end()) {
            m_vecLines[i] = std::move(*itFormer);
            m_vecLines[i]->SetSettings(oLine);
        }
    }
    std::vector<LinePoller*> vecNew;
    for (std::size_t i = 0; i < m_vecLines.size(); ++i) {
        if (m_vecLines[i])
            continue;
        m_vecLines[i] = std::make_unique<LinePoller>(m_oLoop, oSettings.m_vecLines[i], m_oSink);
        vecNew.push_back(m_vecLines[i].get());
    }
    return vecNew;
}

void Poller::Stop()
{
    m_vecLines.clear();
    m_vecMeters.clear();
}

bool Poller::PollNow(const std::string& strName, const PolledMeter::Waiter& fnWaiter)
{
    const std::shared_ptr<PolledMeter> pMeter = FindMeter(strName);
    LinePoller* const pLine = pMeter ? FindLine(pMeter->Settings().m_strLine) : nullptr;
    if (pLine == nullptr)
        return false;
    pLine->PollNow(*pMeter, fnWaiter);
    return true;
}

const LinePoller& Poller::LineOf(const PolledMeter& oMeter) const
{
    return *FindLine(oMeter.Settings().m_strLine);
}

std::vector<std::shared_ptr<PolledMeter>> Poller::MetersOn(const std::string& strLine) const
{
    std::vector<std::shared_ptr<PolledMeter>> vecMeters;
    for (const std::shared_ptr<PolledMeter>& pMeter : m_vecMeters) {
        if (pMeter->Settings().m_strLine == strLine)
            vecMeters.push_back(pMeter);
    }
    return vecMeters;
}

LinePoller* Poller::FindLine(const std::string& strName) const
{
    for (const std::unique_ptr<LinePoller>& pLine : m_vecLines) {
        if (pLine->Line().Settings().m_strName == strName)
            return pLine.get();
    }
    return nullptr;
}

std::shared_ptr<PolledMeter> Poller::FindMeter(const std::string& strName) const
{
    for (const std::shared_ptr<PolledMeter>& pMeter : m_vecMeters) {
        if (IsSameName(pMeter->Settings().m_strName, strName))
            return pMeter;
    }
    return nullptr;
}
