#include "PublisherCore.h"

#include "app/KorLog.h"
#include "examples/gateway/ReadingText.h"

#include <algorithm>
#include <utility>

namespace
{

/// libmosquitto sends 20 messages before it begins to queue them.
constexpr std::size_t MOST_IN_FLIGHT = 16;

constexpr unsigned int LONGEST_INTERVAL_S = 86400;

MqttSettings Usable(MqttSettings oSettings)
{
    oSettings.m_strPrefix = TopicText(oSettings.m_strPrefix, true);
    if (oSettings.m_strClientId.empty())
        oSettings.m_strClientId = oSettings.m_strPrefix;
    return oSettings;
}

} // namespace

PublisherCore::PublisherCore(CKorEventLoop& oLoop, const MqttSettings& oMqtt,
                             const StoreSettings& oStore)
    : m_oLoop(oLoop), m_oMqtt(Usable(oMqtt)), m_oStoreSettings(oStore), m_oStore(oStore)
{
}

PublisherCore::~PublisherCore()
{
    Stop(0);
}

bool PublisherCore::Start()
{
    if (!m_oStore.Open())
        return false;
    m_bRunning = true;
    StartFlushing();
    Connect();
    return true;
}

void PublisherCore::Connect()
{
    m_pConnection = MakeBrokerConnection(m_oLoop, m_oMqtt, *this);
    m_pConnection->Start();
}

void PublisherCore::StartFlushing()
{
    m_oLoop.Cancel(std::exchange(m_nFlushTicket, 0));
    if (m_oStoreSettings.m_nWriteInterval > 0)
        m_nFlushTicket = m_oLoop.CallEvery(
            std::min(m_oStoreSettings.m_nWriteInterval, LONGEST_INTERVAL_S) * 1000, [this] {
                if (m_oStore.IsFlushDue())
                    m_oStore.Flush(false);
            });
}

// What waits is on the disk before anybody is waited for, and what was acknowledged meanwhile is
// noted there too.
void PublisherCore::Stop(unsigned int nMilliseconds)
{
    if (!std::exchange(m_bRunning, false))
        return;
    m_oLoop.Cancel(std::exchange(m_nFlushTicket, 0));
    if (m_oStore.IsFlushDue())
        m_oStore.Flush(true);
    m_pConnection->Stop(nMilliseconds);
    m_oStore.Close();
    m_pConnection.reset();
}

void PublisherCore::SetSettings(const MqttSettings& oMqtt, const StoreSettings& oStore)
{
    if (oStore.m_strFile != m_oStoreSettings.m_strFile ||
        oStore.m_nMaxSize != m_oStoreSettings.m_nMaxSize)
        KorGetLog().Write(CKorLog::LEVEL_NOTICE,
                          "the store changes its file or size with the next start");
    m_oStoreSettings = oStore;
    const bool bSameBroker = Usable(oMqtt) == m_oMqtt;
    m_oMqtt = Usable(oMqtt);
    if (!m_bRunning)
        return;
    StartFlushing();
    if (bSameBroker)
        return;
    m_pConnection->Stop(0);
    Disconnected();
    Connect();
}

PublisherState PublisherCore::State() const
{
    PublisherState oState;
    if (m_pConnection) {
        oState.m_bConnected = m_pConnection->IsConnected();
        oState.m_strBroker = m_pConnection->Name();
        oState.m_strLastError = m_pConnection->LastError();
    }
    if (oState.m_strLastError.empty())
        oState.m_strLastError = m_oStore.LastError();
    oState.m_nQueued = m_oStore.Count();
    oState.m_nDropped = m_oStore.Dropped() + m_nRefused;
    oState.m_nDamaged = m_oStore.Damaged();
    oState.m_nPublished = m_nPublished;
    oState.m_nAcknowledged = m_nAcknowledged;
    return oState;
}

void PublisherCore::Take(const Reading& oReading)
{
    m_oStore.Append(StoredReading(oReading, m_oStore.NextSequence()));
    if (m_oStoreSettings.m_nWriteInterval == 0)
        m_oStore.Flush(false);
    MayPublish();
}

void PublisherCore::TakeStatistics(const std::string& strMeter, const std::string& strJson)
{
    const auto iOld =
        std::find_if(m_vecStatistics.begin(), m_vecStatistics.end(),
                     [&](const Statistics& oOld) { return oOld.m_strMeter == strMeter; });
    if (iOld == m_vecStatistics.end())
        m_vecStatistics.push_back({strMeter, strJson, false});
    else
        *iOld = {strMeter, strJson, false};
    MayPublish();
}

void PublisherCore::Connected()
{
    m_nLastSent = m_oStore.Acknowledged();
    for (Statistics& oStatistics : m_vecStatistics)
        oStatistics.m_bSent = false;
}

void PublisherCore::Disconnected()
{
    m_deqInFlight.clear();
}

void PublisherCore::Acknowledged(int nMessage)
{
    const auto iMessage = std::find_if(
        m_deqInFlight.begin(), m_deqInFlight.end(),
        [nMessage](const Message& oMessage) { return oMessage.m_nNumber == nMessage; });
    if (iMessage == m_deqInFlight.end())
        return;
    iMessage->m_bAcknowledged = true;
    while (!m_deqInFlight.empty() && m_deqInFlight.front().m_bAcknowledged)
        AcknowledgeFront();
}

void PublisherCore::AcknowledgeFront()
{
    const std::uint64_t nSequence = m_deqInFlight.front().m_nSequence;
    m_deqInFlight.pop_front();
    if (nSequence == 0)
        return;
    ++m_nAcknowledged;
    m_oStore.Acknowledge(nSequence);
}

void PublisherCore::MayPublish()
{
    if (!m_bRunning || !m_pConnection || !m_pConnection->IsConnected())
        return;
    while (m_deqInFlight.size() < MOST_IN_FLIGHT && SendNext()) {
    }
}

bool PublisherCore::SendNext()
{
    return SendStatistics() || SendReading();
}

bool PublisherCore::SendStatistics()
{
    const auto iNext =
        std::find_if(m_vecStatistics.begin(), m_vecStatistics.end(),
                     [](const Statistics& oStatistics) { return !oStatistics.m_bSent; });
    if (iNext == m_vecStatistics.end())
        return false;
    const int nNumber = Publish(iNext->m_strMeter, "statistics", iNext->m_strJson);
    iNext->m_bSent = nNumber != 0;
    if (nNumber > 0)
        m_deqInFlight.push_back({nNumber, 0, false});
    return nNumber != 0;
}

bool PublisherCore::SendReading()
{
    JournalRecord oRecord;
    if (!m_oStore.FindAfter(m_nLastSent, oRecord))
        return false;
    const auto [strMeter, strJson] = SplitStoredReading(oRecord.m_strContent);
    const int nNumber = Publish(strMeter, "reading", strJson);
    if (nNumber == 0)
        return false;
    m_nLastSent = oRecord.m_nSequence;
    if (nNumber < 0) {
        Skip(oRecord);
    } else {
        m_deqInFlight.push_back({nNumber, oRecord.m_nSequence, false});
        ++m_nPublished;
    }
    return true;
}

// A message that can never be sent must not keep the others waiting.
void PublisherCore::Skip(const JournalRecord& oRecord)
{
    ++m_nRefused;
    KorGetLog().Write(CKorLog::LEVEL_ERROR, "cannot be published: %s",
                      oRecord.m_strContent.c_str());
    if (m_deqInFlight.empty())
        m_oStore.Acknowledge(oRecord.m_nSequence);
}

int PublisherCore::Publish(const std::string& strMeter, const char* pszKind,
                           const std::string& strPayload)
{
    return m_pConnection->Publish(
        m_oMqtt.m_strPrefix + "/" + TopicText(strMeter, false) + "/" + pszKind, strPayload);
}
