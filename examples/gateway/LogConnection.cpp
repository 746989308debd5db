#include "LogConnection.h"

#include "app/KorLog.h"

#include <utility>

LogConnection::~LogConnection()
{
    LogConnection::Stop(0);
}

void LogConnection::Start()
{
    m_bStarted = true;
    m_rListener.Connected();
}

void LogConnection::Stop(unsigned int /*nMilliseconds*/)
{
    m_oLoop.Cancel(std::exchange(m_nTicket, 0));
    m_bStarted = false;
}

int LogConnection::Publish(const std::string& strTopic, const std::string& strPayload)
{
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s %s", strTopic.c_str(), strPayload.c_str());
    if (m_nTicket == 0)
        m_nTicket = m_oLoop.CallAfter(0, [this] { Acknowledge(); });
    return ++m_nLast;
}

void LogConnection::Acknowledge()
{
    m_nTicket = 0;
    while (m_nAcknowledged < m_nLast)
        m_rListener.Acknowledged(++m_nAcknowledged);
    m_rListener.MayPublish();
}
