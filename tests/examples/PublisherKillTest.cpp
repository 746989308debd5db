// A process that publishes, killed at random moments.

#include "examples/gateway/Journal.h"
#include "tests/examples/PublisherTest.h"
#include "tests/support/Emulation.h"
#include "tests/support/Seed.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <signal.h>

namespace
{

constexpr char TOPIC[] = "fed/m1/reading";

/// What a run of the feeder needs, and what it leaves.
class Feeding
{
public:
    explicit Feeding(unsigned int nPort) : m_nPort(nPort) {}

    std::vector<std::string> Command(unsigned int nLast) const
    {
        return {FEEDER_PROGRAM,   std::to_string(m_nPort), m_oDir.File("store"),
                m_oMemory.Path(), m_oDir.File("number"),   std::to_string(nLast)};
    }

    /// The last reading that was taken for sure.
    std::uint32_t Number() const
    {
        std::string strNumber;
        if (std::filesystem::exists(m_oDir.File("number")))
            strNumber = ReadFile(m_oDir.File("number"));
        std::uint32_t nNumber = 0;
        std::copy_n(strNumber.begin(), std::min(strNumber.size(), sizeof nNumber),
                    reinterpret_cast<char*>(&nNumber));
        return nNumber;
    }

    /// The last sequence number whose acknowledgement was noted, after the feeder was killed.
    std::uint64_t Acknowledged() const
    {
        std::uint64_t nDone = 0;
        for (const auto& oEntry : std::filesystem::directory_iterator(m_oMemory.Path())) {
            Journal oJournal;
            EXPECT_TRUE(oJournal.Open(oEntry.path(), StoreSettings().m_nMaxSize));
            nDone = oJournal.Marks().m_nDone;
        }
        return nDone;
    }

private:
    unsigned int m_nPort;
    ScratchDir m_oDir;
    ScratchDir m_oMemory;
};

TEST(PublisherKill, LeavesAWillThatSaysOffline)
{
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    const Feeding oFeeding(oBroker.Port());
    ChildProcess oFeeder(oFeeding.Command(1000000));
    ASSERT_TRUE(WaitUntil([&] { return !oSubscriber.Payloads(TOPIC).empty(); }));
    EXPECT_EQ(std::vector<std::string>{"online"}, oSubscriber.Payloads("fed/status"));
    oFeeder.Signal(SIGKILL);
    EXPECT_TRUE(WaitUntil([&] { return oSubscriber.Payloads("fed/status").size() == 2; }));
    EXPECT_EQ("offline", oSubscriber.Payloads("fed/status").back());
}

TEST(PublisherKill, LosesNothingAndRepeatsNothingAcknowledgedThroughFiftyKills)
{
    const int nKills = UnderEmulation() ? 10 : 50;
    std::mt19937 oDice(TestSeed());
    MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    const Feeding oFeeding(oBroker.Port());
    std::set<std::uint64_t> setMayFollow; // what a process that began anew may send first
    for (int nKill = 0; nKill < nKills; ++nKill) {
        const std::uint32_t nBefore = oFeeding.Number();
        const auto nEnough = static_cast<std::uint32_t>(1 + oDice() % 60);
        ChildProcess oFeeder(oFeeding.Command(1000000));
        ASSERT_TRUE(WaitUntil([&] { return oFeeding.Number() >= nBefore + nEnough; }))
            << oFeeder.ErrorsSoFar();
        oFeeder.Signal(SIGKILL);
        oFeeder.Wait();
        setMayFollow.insert(oFeeding.Acknowledged() + 1);
    }
    const std::uint32_t nLast = oFeeding.Number() + 50;
    EXPECT_EQ(0, RunProgram(oFeeding.Command(nLast)).nExitStatus);
    ASSERT_TRUE(WaitUntil([&] {
        const std::vector<unsigned int> vecNumbers = Numbers(oSubscriber, TOPIC);
        return !vecNumbers.empty() && vecNumbers.back() == nLast;
    }));

    std::uint64_t nLastSequence = 0;
    std::uint64_t nHighest = 0;
    unsigned int nLastNumber = 0;
    int nTwice = 0;
    for (const std::string& strPayload : oSubscriber.Payloads(TOPIC)) {
        const std::uint64_t nSequence = JsonNumber(strPayload, "seq");
        if (nSequence <= nLastSequence) {
            EXPECT_EQ(1U, setMayFollow.count(nSequence))
                << nSequence << " was acknowledged and came again";
        }
        nLastSequence = nSequence;
        if (nSequence <= nHighest)
            continue; // a repetition
        EXPECT_TRUE(nHighest == 0 || nSequence == nHighest + 1) << "a reading is lost";
        nHighest = nSequence;
        // A kill between taking a reading and noting its number has it taken once more.
        const auto nNumber = static_cast<unsigned int>(JsonNumber(strPayload, "value"));
        EXPECT_TRUE(nNumber == nLastNumber + 1 || nNumber == nLastNumber) << nNumber;
        nTwice += nNumber == nLastNumber ? 1 : 0;
        nLastNumber = nNumber;
    }
    EXPECT_EQ(nLast, nLastNumber);
    EXPECT_LE(nTwice, nKills);
}

} // namespace
