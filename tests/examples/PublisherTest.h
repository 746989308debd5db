#pragma once

#include "examples/gateway/Publisher.h"
#include "tests/examples/MqttBroker.h"
#include "tests/examples/MqttSubscriber.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"
#include "time/KorTimeout.h"

#include <string>
#include <vector>

/// A loop and directories for publishers.
class PublisherPlace
{
public:
    explicit PublisherPlace(unsigned int nPort = MqttSettings().m_nPort)
    {
        m_oMqtt.m_strHost = "127.0.0.1";
        m_oMqtt.m_nPort = nPort;
        m_oMqtt.m_strPrefix = "house/1";
        m_oMqtt.m_nLongestPause = 1;
        m_oStore.m_strFile = m_oDir.File("store");
        m_oStore.m_strMemoryDir = m_oDir.Path();
    }

    /// Turns the loop until something holds; false when that took too long.
    template <class TTest>
    bool RunUntil(TTest fnHolds)
    {
        for (const CKorTimeout oTimeout(PATIENCE_MS); !fnHolds();) {
            if (oTimeout.IsExpired())
                return false;
            m_oLoop.RunOnce(10);
        }
        return true;
    }

    ScratchDir m_oDir;
    CKorEventLoop m_oLoop;
    MqttSettings m_oMqtt;
    StoreSettings m_oStore;
};

/// A reading that holds a number, taken at that many seconds after some instant.
Reading NumberedReading(unsigned int nNumber, const std::string& strMeter = "m1");

/// Takes readings nFirst to nLast.
void TakeNumbered(Publisher& rPublisher, unsigned int nFirst, unsigned int nLast);

/// The numbers of a meter's readings among these messages, in order.
std::vector<unsigned int> Numbers(const MqttSubscriber& oSubscriber,
                                  const std::string& strTopic = "house/1/m1/reading");

std::vector<unsigned int> NumberRange(unsigned int nFirst, unsigned int nLast);
