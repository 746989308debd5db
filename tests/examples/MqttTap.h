#pragma once

#include "event/KorEventLoop.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Stands between a publisher and its broker, on the publisher's own loop, and notes in which order
/// readings and their acknowledgements pass.
class MqttTap
{
public:
    /// What passed: a reading with this number, or its acknowledgement.
    struct Passed
    {
        std::uint64_t m_nSequence;
        bool m_bAcknowledgement;
    };

    /// @param nBroker   the broker's port
    /// @param nDelayMs  how much later everything passes
    MqttTap(CKorEventLoop& oLoop, unsigned int nBroker, unsigned int nDelayMs);
    ~MqttTap();
    MqttTap(const MqttTap&) = delete;
    MqttTap& operator=(const MqttTap&) = delete;

    unsigned int Port() const { return m_nPort; }
    const std::vector<Passed>& AllPassed() const { return m_vecPassed; }
    /// How many connections there were that the broker took.
    std::size_t Connections() const { return m_vecPairs.size(); }

private:
    /// One connection of the publisher, with the one to the broker.
    struct Pair
    {
        int m_hPublisher = -1;
        int m_hBroker = -1;
        std::string m_strToBroker; // the packet that is not whole yet
        std::string m_strToPublisher;
        std::map<unsigned int, std::uint64_t> m_mapReadings; // message numbers
    };

    void Accept();
    void Read(Pair& rPair, bool bToBroker);
    void Pass(Pair& rPair, bool bToBroker, const std::string& strBytes);
    void Note(Pair& rPair, bool bToBroker, const std::string& strPacket);

    CKorEventLoop& m_oLoop;
    unsigned int m_nBroker;
    unsigned int m_nDelayMs;
    int m_hListener;
    unsigned int m_nPort;
    std::vector<std::unique_ptr<Pair>> m_vecPairs;
    std::vector<Passed> m_vecPassed;
};
