#pragma once

#include "examples/gateway/BrokerConnection.h"

/// The log in place of a broker.
class LogConnection : public BrokerConnection
{
public:
    LogConnection(CKorEventLoop& oLoop, BrokerListener& rListener)
        : m_oLoop(oLoop), m_rListener(rListener)
    {
    }
    ~LogConnection() override;

    void Start() override;
    void Stop(unsigned int nMilliseconds) override;
    bool IsConnected() const override { return m_bStarted; }
    int Publish(const std::string& strTopic, const std::string& strPayload) override;
    std::string Name() const override { return "log"; }
    const std::string& LastError() const override { return m_strNoError; }

private:
    void Acknowledge();

    CKorEventLoop& m_oLoop;
    BrokerListener& m_rListener;
    bool m_bStarted = false;
    int m_nLast = 0;
    int m_nAcknowledged = 0;
    int m_nTicket = 0;
    const std::string m_strNoError;
};
