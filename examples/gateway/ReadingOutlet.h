#pragma once

#include "examples/gateway/LogSink.h"
#include "examples/gateway/Publisher.h"

#include <memory>

/// Hands readings to the publisher, or to the log where the settings name no broker.
class ReadingOutlet : public ReadingSink
{
public:
    /// The loop outlives it.
    explicit ReadingOutlet(CKorEventLoop& oLoop) : m_oLoop(oLoop) {}

    /// Takes settings, first or new ones.
    /// @return false when another process has the store; readings then go to the log
    bool Apply(const MqttSettings& oMqtt, const StoreSettings& oStore);
    /// Gives what waits to the broker, if that takes it in time, or to the disk.
    void Stop(unsigned int nMilliseconds);
    /// How publishing goes.
    PublisherState State() const;

    void Take(const Reading& oReading) override;
    void TakeStatistics(const std::string& strMeter, const std::string& strJson) override;

private:
    ReadingSink& Target();

    CKorEventLoop& m_oLoop;
    LogSink m_oLog;
    std::unique_ptr<Publisher> m_pPublisher;
};
