#pragma once

#include "examples/gateway/BrokerConnection.h"
#include "examples/gateway/Publisher.h"
#include "examples/gateway/ReadingStore.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

/// Brings what is in the store to the broker, a few readings at a time, and forgets what the
/// broker has acknowledged.
class PublisherCore : private BrokerListener
{
public:
    PublisherCore(CKorEventLoop& oLoop, const MqttSettings& oMqtt, const StoreSettings& oStore);
    ~PublisherCore() override;

    bool Start();
    void Stop(unsigned int nMilliseconds);
    void SetSettings(const MqttSettings& oMqtt, const StoreSettings& oStore);
    PublisherState State() const;
    void Take(const Reading& oReading);
    void TakeStatistics(const std::string& strMeter, const std::string& strJson);

private:
    /// A message that the broker has not acknowledged.
    struct Message
    {
        int m_nNumber;
        std::uint64_t m_nSequence; // of a reading; 0: statistics
        bool m_bAcknowledged;
    };

    /// The newest statistics of a meter.
    struct Statistics
    {
        std::string m_strMeter;
        std::string m_strJson;
        bool m_bSent;
    };

    void Connected() override;
    void Disconnected() override;
    void Acknowledged(int nMessage) override;
    void MayPublish() override;

    void Connect();
    void StartFlushing();
    bool SendNext();
    bool SendStatistics();
    bool SendReading();
    void Skip(const JournalRecord& oRecord);
    int Publish(const std::string& strMeter, const char* pszKind, const std::string& strPayload);
    void AcknowledgeFront();

    CKorEventLoop& m_oLoop;
    MqttSettings m_oMqtt;
    StoreSettings m_oStoreSettings;
    ReadingStore m_oStore;
    std::unique_ptr<BrokerConnection> m_pConnection;
    std::deque<Message> m_deqInFlight;
    std::vector<Statistics> m_vecStatistics;
    std::uint64_t m_nLastSent = 0; // the last reading that was sent in this connection
    std::uint64_t m_nPublished = 0;
    std::uint64_t m_nAcknowledged = 0;
    std::uint64_t m_nRefused = 0;
    bool m_bRunning = false;
    int m_nFlushTicket = 0;
};
