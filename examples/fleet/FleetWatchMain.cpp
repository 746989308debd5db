/// @file
/// Subscribes to the readings of a fleet and prints "subscribed" then. On SIGINT and SIGTERM it says
/// what came: lines of "TOPIC READINGS", lines of "GATEWAY gaps GAPS REPETITIONS", and
/// "latency MEDIAN P99 MAXIMUM" in milliseconds, from the meter's answer, as the gateway noted it,
/// to this program.
/// usage: fleetwatch.bin PORT

#include "app/KorDaemonApplication.h"
#include "time/KorIsoTime.h"
#include "time/KorTimeDiff.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mosquitto.h>
#include <string>
#include <vector>

namespace
{

/// The numbers of one gateway's readings.
struct Sequence
{
    unsigned int m_nGaps = 0;
    unsigned int m_nRepetitions = 0;
    unsigned long long m_nLast = 0;

    /// @return whether this is no repetition
    bool Take(unsigned long long nNumber)
    {
        if (nNumber <= m_nLast) {
            ++m_nRepetitions;
            return false;
        }
        m_nGaps += m_nLast != 0 && nNumber != m_nLast + 1 ? 1 : 0;
        m_nLast = nNumber;
        return true;
    }
};

/// What stands before the meter in a topic.
std::string GatewayOf(const std::string& strTopic)
{
    return strTopic.substr(0, strTopic.rfind('/', strTopic.rfind('/') - 1));
}

/// The text behind a name of a JSON member, up to a character.
std::string Member(const std::string& strJson, const std::string& strName, char cEnd)
{
    const std::size_t nBegin = strJson.find(strName);
    if (nBegin == std::string::npos)
        return "";
    const std::size_t nText = nBegin + strName.size();
    return strJson.substr(nText, strJson.find(cEnd, nText) - nText);
}

class FleetWatch : public CKorDaemonApplication
{
public:
    FleetWatch() : CKorDaemonApplication(nullptr, "fleetwatch", nullptr)
    {
        m_oInfo.SetApplDescription("Accounts for the readings of a fleet of gateways.");
    }

    void DeclareOptions(CKorOptionParser& rParser) override
    {
        rParser.AddArgument("PORT", m_nPort, "of the broker on this machine");
    }

    bool Initialize() override
    {
        mosquitto_lib_init();
        m_pClient = mosquitto_new(nullptr, true, this);
        mosquitto_message_callback_set(m_pClient, MessageInd);
        mosquitto_subscribe_callback_set(m_pClient, SubscribeInd);
        return mosquitto_connect(m_pClient, "127.0.0.1", static_cast<int>(m_nPort), 60) ==
                   MOSQ_ERR_SUCCESS &&
               mosquitto_subscribe(m_pClient, nullptr, "#", 1) == MOSQ_ERR_SUCCESS &&
               mosquitto_loop_start(m_pClient) == MOSQ_ERR_SUCCESS;
    }

    int Finalize() override
    {
        mosquitto_disconnect(m_pClient);
        mosquitto_loop_stop(m_pClient, true);
        mosquitto_destroy(m_pClient);
        for (const auto& [strTopic, nReadings] : m_mapReadings)
            std::printf("%s %u\n", strTopic.c_str(), nReadings);
        for (const auto& [strGateway, oSequence] : m_mapSequences)
            std::printf("%s gaps %u %u\n", strGateway.c_str(), oSequence.m_nGaps,
                        oSequence.m_nRepetitions);
        PrintLatency();
        std::fflush(stdout);
        return CKorDaemonApplication::Finalize();
    }

private:
    static void SubscribeInd(mosquitto*, void*, int, int, const int*)
    {
        std::puts("subscribed");
        std::fflush(stdout);
    }

    static void MessageInd(mosquitto* /*pClient*/, void* pUser, const mosquitto_message* pMessage)
    {
        const CKorUTCTime oNow = CKorUTCTime::CurrentTime();
        const std::string strTopic = pMessage->topic;
        const std::string strJson(static_cast<const char*>(pMessage->payload),
                                  static_cast<std::size_t>(pMessage->payloadlen));
        const std::string strSequence = Member(strJson, "\"seq\":", ',');
        CKorUTCTime oTaken;
        if (strSequence.empty() || !KorFromIsoString(Member(strJson, "\"time\":\"", '"'), oTaken))
            return;
        auto* const pThis = static_cast<FleetWatch*>(pUser);
        if (pThis->m_mapSequences[GatewayOf(strTopic)].Take(
                std::strtoull(strSequence.c_str(), nullptr, 10)))
            ++pThis->m_mapReadings[strTopic];
        pThis->m_vecLatencies.push_back(
            static_cast<double>((oNow - oTaken).GetTotalMicroSeconds()) / 1000);
    }

    void PrintLatency()
    {
        if (m_vecLatencies.empty())
            return;
        std::sort(m_vecLatencies.begin(), m_vecLatencies.end());
        const std::size_t nLast = m_vecLatencies.size() - 1;
        std::printf("latency %.1f %.1f %.1f\n", m_vecLatencies[nLast / 2],
                    m_vecLatencies[nLast * 99 / 100], m_vecLatencies[nLast]);
    }

    unsigned int m_nPort = 1883;
    mosquitto* m_pClient = nullptr;
    // Of libmosquitto's thread, until it has ended.
    std::map<std::string, unsigned int> m_mapReadings;
    std::map<std::string, Sequence> m_mapSequences;
    std::vector<double> m_vecLatencies;
};

} // namespace

int main(int argc, char** argv)
{
    return FleetWatch().Start(argc, argv);
}
