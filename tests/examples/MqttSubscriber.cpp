#include "tests/examples/MqttSubscriber.h"

#include "tests/support/Patience.h"

#include <cstdlib>
#include <gtest/gtest.h>

MqttSubscriber::MqttSubscriber(unsigned int nPort)
{
    mosquitto_lib_init();
    m_pClient = mosquitto_new(nullptr, true, this);
    mosquitto_connect_callback_set(m_pClient, ConnectInd);
    mosquitto_subscribe_callback_set(m_pClient, SubscribeInd);
    mosquitto_message_callback_set(m_pClient, MessageInd);
    mosquitto_reconnect_delay_set(m_pClient, 1, 1, false);
    EXPECT_EQ(MOSQ_ERR_SUCCESS,
              mosquitto_connect(m_pClient, "127.0.0.1", static_cast<int>(nPort), 60));
    EXPECT_EQ(MOSQ_ERR_SUCCESS, mosquitto_loop_start(m_pClient));
    EXPECT_TRUE(WaitUntil([this] {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        return m_bSubscribed;
    }));
}

MqttSubscriber::~MqttSubscriber()
{
    mosquitto_disconnect(m_pClient);
    mosquitto_loop_stop(m_pClient, true);
    mosquitto_destroy(m_pClient);
}

void MqttSubscriber::ConnectInd(mosquitto* pClient, void* /*pUser*/, int /*nResult*/)
{
    mosquitto_subscribe(pClient, nullptr, "#", 2);
}

void MqttSubscriber::SubscribeInd(mosquitto*, void* pUser, int, int, const int*)
{
    auto* const pThis = static_cast<MqttSubscriber*>(pUser);
    const std::lock_guard<std::mutex> oLock(pThis->m_oMutex);
    pThis->m_bSubscribed = true;
}

void MqttSubscriber::MessageInd(mosquitto*, void* pUser, const mosquitto_message* pMessage)
{
    auto* const pThis = static_cast<MqttSubscriber*>(pUser);
    const std::lock_guard<std::mutex> oLock(pThis->m_oMutex);
    pThis->m_vecMessages.push_back({pMessage->topic,
                                    std::string(static_cast<const char*>(pMessage->payload),
                                                static_cast<std::size_t>(pMessage->payloadlen)),
                                    pMessage->retain});
}

std::vector<MqttMessage> MqttSubscriber::Messages() const
{
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    return m_vecMessages;
}

std::vector<std::string> MqttSubscriber::Payloads(const std::string& strTopic) const
{
    std::vector<std::string> vecPayloads;
    for (const MqttMessage& oMessage : Messages()) {
        if (oMessage.m_strTopic == strTopic)
            vecPayloads.push_back(oMessage.m_strPayload);
    }
    return vecPayloads;
}

std::uint64_t JsonNumber(const std::string& strJson, const std::string& strName)
{
    const std::size_t nPos = strJson.find("\"" + strName + "\":");
    return nPos == std::string::npos
               ? 0
               : std::strtoull(strJson.c_str() + nPos + strName.size() + 3, nullptr, 10);
}
