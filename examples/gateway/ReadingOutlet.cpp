#include "examples/gateway/ReadingOutlet.h"

namespace
{

constexpr unsigned int FAREWELL_MS = 1000;

} // namespace

bool ReadingOutlet::Apply(const MqttSettings& oMqtt, const StoreSettings& oStore)
{
    if (oMqtt.m_strHost.empty()) {
        Stop(FAREWELL_MS);
        return true;
    }
    if (m_pPublisher) {
        m_pPublisher->SetSettings(oMqtt, oStore);
        return true;
    }
    m_pPublisher = std::make_unique<Publisher>(m_oLoop, oMqtt, oStore);
    if (m_pPublisher->Start())
        return true;
    m_pPublisher.reset();
    return false;
}

void ReadingOutlet::Stop(unsigned int nMilliseconds)
{
    if (m_pPublisher)
        m_pPublisher->Stop(nMilliseconds);
    m_pPublisher.reset();
}

PublisherState ReadingOutlet::State() const
{
    if (m_pPublisher)
        return m_pPublisher->State();
    PublisherState oState;
    oState.m_strBroker = "log";
    return oState;
}

void ReadingOutlet::Take(const Reading& oReading)
{
    Target().Take(oReading);
}

void ReadingOutlet::TakeStatistics(const std::string& strMeter, const std::string& strJson)
{
    Target().TakeStatistics(strMeter, strJson);
}

ReadingSink& ReadingOutlet::Target()
{
    return m_pPublisher ? static_cast<ReadingSink&>(*m_pPublisher) : m_oLog;
}
