#pragma once

#include "examples/gateway/BrokerConnection.h"
#include "examples/gateway/MqttClient.h"
#include "examples/gateway/ReconnectBackoff.h"

#include <memory>
#include <string>
#include <vector>

struct MqttAttempt;

/// A broker, by libmosquitto, served by the event loop.
///
/// libmosquitto looks names up and connects in calls that may block for minutes. Each attempt
/// therefore has a client and a thread of its own; when the connection stands the client passes to
/// the loop, and the thread is gone. An attempt that is given up ends by itself later.
///
/// Every connection begins as a new session: what is not acknowledged yet is the listener's to
/// publish again.
class MqttConnection : public BrokerConnection
{
public:
    MqttConnection(CKorEventLoop& oLoop, const MqttSettings& oSettings, BrokerListener& rListener);
    ~MqttConnection() override;

    void Start() override;
    void Stop(unsigned int nMilliseconds) override;
    bool IsConnected() const override { return m_bAccepted; }
    int Publish(const std::string& strTopic, const std::string& strPayload) override;
    std::string Name() const override;
    const std::string& LastError() const override { return m_strLastError; }

private:
    static void Connect(const std::shared_ptr<MqttAttempt>& pAttempt);
    static void ConnectInd(mosquitto* pClient, void* pUser, int nResult);
    static void PublishInd(mosquitto* pClient, void* pUser, int nMessage);

    void AbandonAttempt();
    void TakeResult();
    void WatchSocket();
    void Service(unsigned int nEvents);
    void Check(int nResult);
    void Welcome();
    void Lose(const std::string& strReason);
    void Release();
    int Send(const std::string& strTopic, const std::string& strPayload, int nQos);
    void TakeAcknowledgements();
    void Drain(int nMessage, unsigned int nMilliseconds);

    CKorEventLoop& m_oLoop;
    const MqttSettings m_oSettings;
    BrokerListener& m_rListener;
    ReconnectBackoff m_oBackoff;
    std::shared_ptr<MqttAttempt> m_pAttempt; // while one is under way
    MqttClient m_pClient;                    // while there is a connection
    bool m_bAccepted = false;
    bool m_bTold = false; // the listener knows of it
    bool m_bPublishing = false;
    std::vector<int> m_vecAcknowledged; // while their numbers were not known yet
    int m_nLastAcknowledged = 0;
    int m_nRefusal = 0;
    int m_nRetryTicket = 0;
    int m_nSocketTicket = 0;
    int m_nHousekeepingTicket = 0;
    std::string m_strLastError;
};
