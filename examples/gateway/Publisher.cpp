#include "Publisher.h"

#include "examples/gateway/PublisherCore.h"

Publisher::Publisher(CKorEventLoop& oLoop, const MqttSettings& oMqtt, const StoreSettings& oStore)
    : m_pCore(std::make_unique<PublisherCore>(oLoop, oMqtt, oStore))
{
}

Publisher::~Publisher() = default;

bool Publisher::Start()
{
    return m_pCore->Start();
}

void Publisher::Stop(unsigned int nMilliseconds)
{
    m_pCore->Stop(nMilliseconds);
}

void Publisher::SetSettings(const MqttSettings& oMqtt, const StoreSettings& oStore)
{
    m_pCore->SetSettings(oMqtt, oStore);
}

PublisherState Publisher::State() const
{
    return m_pCore->State();
}

void Publisher::Take(const Reading& oReading)
{
    m_pCore->Take(oReading);
}

void Publisher::TakeStatistics(const std::string& strMeter, const std::string& strJson)
{
    m_pCore->TakeStatistics(strMeter, strJson);
}
