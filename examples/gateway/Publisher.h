#pragma once

#include "event/KorEventLoop.h"
#include "examples/gateway/MqttSettings.h"
#include "examples/gateway/Reading.h"

#include <cstdint>
#include <memory>
#include <string>

class PublisherCore;

/// How publishing goes. Counts are since the start of the process, but for what waits.
struct PublisherState
{
    bool m_bConnected = false;         ///< whether the broker has accepted the gateway
    std::string m_strBroker;           ///< "host:port", or "log"
    std::uint64_t m_nQueued = 0;       ///< readings that the broker has not acknowledged yet
    std::uint64_t m_nDropped = 0;      ///< readings lost because the store was full
    std::uint64_t m_nDamaged = 0;      ///< readings that could not be read back
    std::uint64_t m_nPublished = 0;    ///< readings sent, repetitions included
    std::uint64_t m_nAcknowledged = 0; ///< readings that the broker has taken over
    std::string m_strLastError;        ///< in words; empty while there was none
};

/// Publishes what the meters say by MQTT, in order; what cannot be published now waits in a store
/// that outlives the process.
///
/// | Topic                       | Payload                                                       |
/// |-----------------------------|---------------------------------------------------------------|
/// | `<prefix>/status`           | `online` or `offline`                                         |
/// | `<prefix>/<meter>/reading`  | `{"seq":7,"meter":"m1","time":"2026-11-21T14:07:09.250Z",`    |
/// |                             | `"values":{"voltage":{"value":230.1,"unit":"V"}}}`            |
/// | `<prefix>/<meter>/statistics` | the JSON of TakeStatistics()                                |
///
/// All are retained. A reading whose acknowledgement was lost is sent again with the same `seq`,
/// which rises from one reading to the next: a subscriber drops what is not above the last one.
class Publisher : public ReadingSink
{
public:
    /// Does nothing yet. The loop outlives the publisher, which belongs to the loop's thread.
    Publisher(CKorEventLoop& oLoop, const MqttSettings& oMqtt, const StoreSettings& oStore);
    /// Ends as Stop(0) does.
    ~Publisher() override;
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /// Opens the store and begins to connect. Neither a store that cannot be written nor a broker
    /// that cannot be reached is a failure: both are tried again and the log says so.
    /// @return false when another process has the store
    bool Start();

    /// Writes what waits to the disk, publishes "offline" and leaves the broker.
    /// @param nMilliseconds  how long to wait for the broker at most
    void Stop(unsigned int nMilliseconds);

    /// Takes other settings. The connection stays when those of the broker have not changed; file
    /// and size of the store change with the next start only.
    void SetSettings(const MqttSettings& oMqtt, const StoreSettings& oStore);

    /// How it goes.
    PublisherState State() const;

    void Take(const Reading& oReading) override;
    void TakeStatistics(const std::string& strMeter, const std::string& strJson) override;

private:
    std::unique_ptr<PublisherCore> m_pCore;
};
