#include "Publisher.h"

#include "app/KorLog.h"

/// What the publisher works with.
class PublisherCore
{
};

Publisher::Publisher(CKorEventLoop& /*oLoop*/, const MqttSettings& /*oMqtt*/,
                     const StoreSettings& /*oStore*/)
    : m_pCore(std::make_unique<PublisherCore>())
{
}

Publisher::~Publisher() = default;

bool Publisher::Start()
{
    return true;
}

void Publisher::Stop(unsigned int /*nMilliseconds*/) {}

void Publisher::SetSettings(const MqttSettings& /*oMqtt*/, const StoreSettings& /*oStore*/) {}

PublisherState Publisher::State() const
{
    PublisherState oState;
    oState.m_strBroker = "log";
    return oState;
}

void Publisher::Take(const Reading& oReading)
{
    KorGetLog().Write(CKorLog::LEVEL_INFO, "reading of %s", oReading.m_strMeter.c_str());
}

void Publisher::TakeStatistics(const std::string& strMeter, const std::string& strJson)
{
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s: %s", strMeter.c_str(), strJson.c_str());
}
