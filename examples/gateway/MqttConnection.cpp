#include "MqttConnection.h"

#include "app/KorLog.h"
#include "examples/gateway/DetachedThread.h"
#include "time/KorTimeout.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <poll.h>
#include <random>
#include <utility>

/// What the thread of an attempt shares with the loop.
struct MqttAttempt
{
    MqttConnection* m_pOwner;
    CKorEventLoop* m_pLoop;
    MqttSettings m_oSettings;
    MqttClient m_pClient;
    int m_nResult = MOSQ_ERR_SUCCESS;
    int m_nError = 0;
    std::mutex m_oMutex;
    bool m_bAbandoned = false; // written by the loop's thread, which therefore may read it freely
};

namespace
{

constexpr unsigned int HOUSEKEEPING_MS = 1000;
constexpr unsigned int LONGEST_PAUSE_S = 86400;
constexpr int STATUS_QOS = 1; // the broker tells that it has it
constexpr int MALFORMED_CREDENTIALS = 4;
constexpr int NOT_AUTHORISED = 5;

std::string RefusalText(int nCode)
{
    if (nCode == MALFORMED_CREDENTIALS || nCode == NOT_AUTHORISED)
        return "the broker refuses user or password";
    return mosquitto_connack_string(nCode);
}

} // namespace

MqttConnection::MqttConnection(CKorEventLoop& oLoop, const MqttSettings& oSettings,
                               BrokerListener& rListener)
    : m_oLoop(oLoop),
      m_oSettings(oSettings),
      m_rListener(rListener),
      m_oBackoff(std::min(oSettings.m_nLongestPause, LONGEST_PAUSE_S) * 1000,
                 std::random_device()())
{
}

MqttConnection::~MqttConnection()
{
    MqttConnection::Stop(0);
}

std::string MqttConnection::Name() const
{
    return m_oSettings.m_strHost + ":" + std::to_string(m_oSettings.m_nPort);
}

void MqttConnection::Start()
{
    auto pAttempt = std::make_shared<MqttAttempt>();
    pAttempt->m_pOwner = this;
    pAttempt->m_pLoop = &m_oLoop;
    pAttempt->m_oSettings = m_oSettings;
    std::string strError;
    pAttempt->m_pClient = MakeMqttClient(m_oSettings, this, strError);
    if (pAttempt->m_pClient == nullptr)
        return Lose(strError);
    mosquitto_connect_callback_set(pAttempt->m_pClient.get(), ConnectInd);
    mosquitto_publish_callback_set(pAttempt->m_pClient.get(), PublishInd);
    m_pAttempt = pAttempt;
    if (!RunDetached([pAttempt] { Connect(pAttempt); }))
        Lose("no thread to connect with");
}

void MqttConnection::Connect(const std::shared_ptr<MqttAttempt>& pAttempt)
{
    const MqttSettings& oSettings = pAttempt->m_oSettings;
    errno = 0;
    pAttempt->m_nResult = mosquitto_connect(pAttempt->m_pClient.get(), oSettings.m_strHost.c_str(),
                                            static_cast<int>(oSettings.m_nPort),
                                            static_cast<int>(std::max(oSettings.m_nKeepAlive, 5U)));
    pAttempt->m_nError = errno;
    const std::lock_guard<std::mutex> oLock(pAttempt->m_oMutex);
    if (!pAttempt->m_bAbandoned)
        pAttempt->m_pLoop->Post([pAttempt] {
            if (!pAttempt->m_bAbandoned)
                pAttempt->m_pOwner->TakeResult();
        });
}

void MqttConnection::AbandonAttempt()
{
    if (!m_pAttempt)
        return;
    const std::lock_guard<std::mutex> oLock(m_pAttempt->m_oMutex);
    m_pAttempt->m_bAbandoned = true;
}

void MqttConnection::TakeResult()
{
    AbandonAttempt(); // its thread may be in Post() still, and the loop must not end before it left
    const std::shared_ptr<MqttAttempt> pAttempt = std::exchange(m_pAttempt, nullptr);
    if (pAttempt->m_nResult != MOSQ_ERR_SUCCESS)
        return Lose(MqttErrorText(pAttempt->m_nResult, pAttempt->m_nError));
    m_pClient = std::move(pAttempt->m_pClient);
    m_nSocketTicket =
        m_oLoop.WatchHandle(mosquitto_socket(m_pClient.get()), CKorEventLoop::EVENT_READABLE,
                            [this](unsigned int nEvents) { Service(nEvents); });
    m_nHousekeepingTicket =
        m_oLoop.CallEvery(HOUSEKEEPING_MS, [this] { Check(mosquitto_loop_misc(m_pClient.get())); });
    WatchSocket();
}

void MqttConnection::WatchSocket()
{
    const bool bWrite = mosquitto_want_write(m_pClient.get()) || !m_vecAcknowledged.empty();
    m_oLoop.SetEvents(m_nSocketTicket,
                      bWrite ? CKorEventLoop::EVENT_READABLE | CKorEventLoop::EVENT_WRITABLE
                             : CKorEventLoop::EVENT_READABLE);
}

void MqttConnection::Service(unsigned int nEvents)
{
    int nResult = MOSQ_ERR_SUCCESS;
    if ((nEvents & ~CKorEventLoop::EVENT_WRITABLE) != 0)
        nResult = mosquitto_loop_read(m_pClient.get(), 1);
    if (nResult == MOSQ_ERR_SUCCESS && (nEvents & CKorEventLoop::EVENT_WRITABLE) != 0)
        nResult = mosquitto_loop_write(m_pClient.get(), 1);
    Check(nResult);
}

// The listener publishes from here only, never while libmosquitto calls us.
void MqttConnection::Check(int nResult)
{
    const int nError = errno;
    if (nResult != MOSQ_ERR_SUCCESS)
        return Lose(m_nRefusal != 0 ? RefusalText(m_nRefusal) : MqttErrorText(nResult, nError));
    if (m_bAccepted && !m_bTold)
        Welcome();
    TakeAcknowledgements();
    if (m_bAccepted)
        m_rListener.MayPublish();
    WatchSocket();
}

void MqttConnection::Welcome()
{
    m_bTold = true;
    m_oBackoff.Reset();
    m_strLastError.clear();
    KorGetLog().Write(CKorLog::LEVEL_NOTICE, "broker %s: connected", Name().c_str());
    Send(MqttStatusTopic(m_oSettings), "online", STATUS_QOS);
    m_rListener.Connected();
}

void MqttConnection::Lose(const std::string& strReason)
{
    const bool bTold = m_bTold;
    if (bTold || strReason != m_strLastError)
        KorGetLog().Write(CKorLog::LEVEL_WARNING, "broker %s: %s", Name().c_str(),
                          strReason.c_str());
    m_strLastError = strReason;
    Release();
    m_nRetryTicket = m_oLoop.CallAfter(m_oBackoff.Next(), [this] { Start(); });
    if (bTold)
        m_rListener.Disconnected();
}

void MqttConnection::Release()
{
    for (int* pTicket : {&m_nRetryTicket, &m_nSocketTicket, &m_nHousekeepingTicket})
        m_oLoop.Cancel(std::exchange(*pTicket, 0));
    AbandonAttempt();
    m_pAttempt.reset();
    m_pClient.reset();
    m_vecAcknowledged.clear();
    m_bAccepted = m_bTold = false;
    m_nRefusal = 0;
}

int MqttConnection::Publish(const std::string& strTopic, const std::string& strPayload)
{
    return Send(strTopic, strPayload, static_cast<int>(std::min(m_oSettings.m_nQos, 2U)));
}

int MqttConnection::Send(const std::string& strTopic, const std::string& strPayload, int nQos)
{
    if (!m_bAccepted)
        return 0;
    int nMessage = 0;
    m_bPublishing = true;
    const int nResult =
        mosquitto_publish(m_pClient.get(), &nMessage, strTopic.c_str(),
                          static_cast<int>(strPayload.size()), strPayload.data(), nQos, true);
    m_bPublishing = false;
    if (nResult == MOSQ_ERR_SUCCESS) {
        WatchSocket();
        return nMessage;
    }
    const bool bRefused = nResult == MOSQ_ERR_INVAL || nResult == MOSQ_ERR_PAYLOAD_SIZE ||
                          nResult == MOSQ_ERR_MALFORMED_UTF8 || nResult == MOSQ_ERR_OVERSIZE_PACKET;
    return bRefused ? -1 : 0; // the next housekeeping finds a connection that is lost
}

void MqttConnection::ConnectInd(mosquitto* /*pClient*/, void* pUser, int nResult)
{
    auto* const pThis = static_cast<MqttConnection*>(pUser);
    pThis->m_nRefusal = nResult;
    pThis->m_bAccepted = nResult == 0;
}

// Without a quality of service a message is out before its number is known.
void MqttConnection::PublishInd(mosquitto* /*pClient*/, void* pUser, int nMessage)
{
    auto* const pThis = static_cast<MqttConnection*>(pUser);
    pThis->m_nLastAcknowledged = nMessage;
    if (pThis->m_bPublishing)
        pThis->m_vecAcknowledged.push_back(nMessage);
    else
        pThis->m_rListener.Acknowledged(nMessage);
}

void MqttConnection::TakeAcknowledgements()
{
    for (const int nMessage : std::exchange(m_vecAcknowledged, {}))
        m_rListener.Acknowledged(nMessage);
}

void MqttConnection::Stop(unsigned int nMilliseconds)
{
    if (m_bAccepted) {
        Drain(Send(MqttStatusTopic(m_oSettings), "offline", STATUS_QOS), nMilliseconds);
        mosquitto_disconnect(m_pClient.get()); // without it the will speaks
    }
    Release();
}

// The loop does not turn any more, or must not turn now.
void MqttConnection::Drain(int nMessage, unsigned int nMilliseconds)
{
    const CKorTimeout oTimeout(nMilliseconds);
    int nResult = MOSQ_ERR_SUCCESS;
    while (nMessage > 0 && m_nLastAcknowledged != nMessage && nResult == MOSQ_ERR_SUCCESS &&
           !oTimeout.IsExpired()) {
        const bool bWrite = mosquitto_want_write(m_pClient.get());
        pollfd oSocket = {mosquitto_socket(m_pClient.get()),
                          static_cast<short>(bWrite ? POLLIN | POLLOUT : POLLIN), 0};
        poll(&oSocket, 1, static_cast<int>(std::min(oTimeout.GetRemaining(), HOUSEKEEPING_MS)));
        nResult = mosquitto_loop_read(m_pClient.get(), 1);
        if (nResult == MOSQ_ERR_SUCCESS && bWrite)
            nResult = mosquitto_loop_write(m_pClient.get(), 1);
    }
    TakeAcknowledgements();
}
