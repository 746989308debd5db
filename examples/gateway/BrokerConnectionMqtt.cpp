#include "BrokerConnection.h"

#include "examples/gateway/LogConnection.h"
#include "examples/gateway/MqttConnection.h"

std::unique_ptr<BrokerConnection>
MakeBrokerConnection(CKorEventLoop& oLoop, const MqttSettings& oSettings, BrokerListener& rListener)
{
    if (oSettings.m_strHost.empty())
        return std::make_unique<LogConnection>(oLoop, rListener);
    return std::make_unique<MqttConnection>(oLoop, oSettings, rListener);
}
