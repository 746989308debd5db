#pragma once

#include <cstdint>
#include <mosquitto.h>
#include <mutex>
#include <string>
#include <vector>

/// A message that a subscriber got.
struct MqttMessage
{
    std::string m_strTopic;
    std::string m_strPayload;
    bool m_bRetained = false; ///< it was published before the subscription
};

/// Subscribes to everything, on a thread of its own, and subscribes again whenever the broker
/// comes back.
class MqttSubscriber
{
public:
    /// Returns once the subscription counts.
    explicit MqttSubscriber(unsigned int nPort);
    ~MqttSubscriber();
    MqttSubscriber(const MqttSubscriber&) = delete;
    MqttSubscriber& operator=(const MqttSubscriber&) = delete;

    /// What came so far, on all topics or on one.
    std::vector<MqttMessage> Messages() const;
    std::vector<std::string> Payloads(const std::string& strTopic) const;

private:
    static void ConnectInd(mosquitto* pClient, void* pUser, int nResult);
    static void SubscribeInd(mosquitto*, void* pUser, int, int, const int*);
    static void MessageInd(mosquitto*, void* pUser, const mosquitto_message* pMessage);

    mosquitto* m_pClient;
    mutable std::mutex m_oMutex;
    bool m_bSubscribed = false;
    std::vector<MqttMessage> m_vecMessages;
};

/// The number behind `"NAME":` in a JSON text; 0 when it is not there.
std::uint64_t JsonNumber(const std::string& strJson, const std::string& strName);
