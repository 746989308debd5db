#include "BrokerConnection.h"

#include "app/KorLog.h"
#include "examples/gateway/LogConnection.h"

// The gateway was built without an MQTT library.
std::unique_ptr<BrokerConnection>
MakeBrokerConnection(CKorEventLoop& oLoop, const MqttSettings& oSettings, BrokerListener& rListener)
{
    if (!oSettings.m_strHost.empty())
        KorGetLog().Write(CKorLog::LEVEL_WARNING,
                          "built without libmosquitto: readings go to the log, not to %s",
                          oSettings.m_strHost.c_str());
    return std::make_unique<LogConnection>(oLoop, rListener);
}
