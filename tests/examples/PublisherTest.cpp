#include "tests/examples/PublisherTest.h"

#include "tests/examples/MqttTap.h"
#include "time/KorUnixTime.h"

#include <gtest/gtest.h>
#include <signal.h>

Reading NumberedReading(unsigned int nNumber, const std::string& strMeter)
{
    Reading oReading;
    oReading.m_strMeter = strMeter;
    oReading.m_oTime = KorFromUnixTime(1700000000 + std::int64_t{nNumber});
    oReading.m_vecValues.push_back({"number", static_cast<double>(nNumber), 0, ""});
    return oReading;
}

void TakeNumbered(Publisher& rPublisher, unsigned int nFirst, unsigned int nLast)
{
    for (unsigned int n = nFirst; n <= nLast; ++n)
        rPublisher.Take(NumberedReading(n));
}

std::vector<unsigned int> Numbers(const MqttSubscriber& oSubscriber, const std::string& strTopic)
{
    std::vector<unsigned int> vecNumbers;
    for (const std::string& strPayload : oSubscriber.Payloads(strTopic))
        vecNumbers.push_back(static_cast<unsigned int>(JsonNumber(strPayload, "value")));
    return vecNumbers;
}

std::vector<unsigned int> NumberRange(unsigned int nFirst, unsigned int nLast)
{
    std::vector<unsigned int> vecNumbers;
    for (unsigned int n = nFirst; n <= nLast; ++n)
        vecNumbers.push_back(n);
    return vecNumbers;
}

namespace
{

TEST(Publisher, PublishesReadingsAsRetainedJson)
{
    const MqttBroker oBroker;
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    EXPECT_EQ("127.0.0.1:" + std::to_string(oBroker.Port()), oPublisher.State().m_strBroker);
    Reading oReading;
    oReading.m_strMeter = "kitchen";
    oReading.m_oTime = KorFromUnixTime(1700000000, 250000000);
    oReading.m_vecValues = {{"voltage", 230.14, 1, "V"}, {"tariff", 2, 0, ""}};
    oPublisher.Take(oReading);
    ASSERT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nAcknowledged == 1; }));

    const MqttSubscriber oSubscriber(oBroker.Port());
    ASSERT_TRUE(WaitUntil([&] { return oSubscriber.Messages().size() == 2; }));
    for (const MqttMessage& oMessage : oSubscriber.Messages())
        EXPECT_TRUE(oMessage.m_bRetained) << oMessage.m_strTopic;
    EXPECT_EQ(std::vector<std::string>{"online"}, oSubscriber.Payloads("house/1/status"));
    const std::string strJson = oSubscriber.Payloads("house/1/kitchen/reading").at(0);
    EXPECT_EQ("{\"seq\":" + std::to_string(JsonNumber(strJson, "seq")) +
                  ",\"meter\":\"kitchen\",\"time\":\"2023-11-14T22:13:20.250Z\",\"values\":"
                  "{\"voltage\":{\"value\":230.1,\"unit\":\"V\"},\"tariff\":{\"value\":2}}}",
              strJson);
    EXPECT_GT(JsonNumber(strJson, "seq"), 0U);
}

TEST(Publisher, CountsWhatItDoes)
{
    const MqttBroker oBroker;
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 1, 100);
    EXPECT_FALSE(oPublisher.State().m_bConnected);
    EXPECT_EQ(100U, oPublisher.State().m_nQueued);
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
    const PublisherState oState = oPublisher.State();
    EXPECT_TRUE(oState.m_bConnected);
    EXPECT_EQ(100U, oState.m_nPublished);
    EXPECT_EQ(100U, oState.m_nAcknowledged);
    EXPECT_EQ(0U, oState.m_nDropped);
    EXPECT_EQ(0U, oState.m_nDamaged);
    EXPECT_EQ("", oState.m_strLastError);
}

TEST(Publisher, PublishesTheNewestStatisticsOfEachMeter)
{
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    oPublisher.TakeStatistics("m1", "{\"polls\":1}");
    oPublisher.TakeStatistics("m1", "{\"polls\":2}");
    oPublisher.TakeStatistics("m2", "{\"polls\":9}");
    EXPECT_TRUE(
        oPlace.RunUntil([&] { return oSubscriber.Payloads("house/1/m2/statistics").size() == 1; }));
    EXPECT_EQ(std::vector<std::string>{"{\"polls\":2}"},
              oSubscriber.Payloads("house/1/m1/statistics"));
}

TEST(Publisher, SaysWhenItIsThereAndWhenItLeaves)
{
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 1, 10);
    ASSERT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_bConnected; }));
    oPublisher.Stop(PATIENCE_MS);
    EXPECT_TRUE(WaitUntil([&] { return oSubscriber.Payloads("house/1/status").size() == 2; }));
    EXPECT_EQ("offline", oSubscriber.Payloads("house/1/status").back());
    EXPECT_EQ("offline", oSubscriber.Messages().back().m_strPayload)
        << "what was sent before is acknowledged before";
}

TEST(Publisher, KeepsReadingsWhileThereIsNoBroker)
{
    MqttBroker oBroker;
    oBroker.End(SIGTERM);
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 1, 200);
    EXPECT_TRUE(
        oPlace.RunUntil([&] { return oPublisher.State().m_strLastError == "Connection refused"; }));
    oBroker.Start();
    const MqttSubscriber oSubscriber(oBroker.Port());
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
    EXPECT_EQ("", oPublisher.State().m_strLastError);
    EXPECT_TRUE(WaitUntil([&] { return Numbers(oSubscriber).size() >= 200; }));
    EXPECT_EQ(NumberRange(1, 200), Numbers(oSubscriber));
}

TEST(Publisher, HandsOverWhatAnEarlierProcessLeft)
{
    PublisherPlace oPlace(FreePort());
    {
        Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
        ASSERT_TRUE(oPublisher.Start());
        TakeNumbered(oPublisher, 1, 50);
        oPublisher.Stop(0);
    }
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    oPlace.m_oMqtt.m_nPort = oBroker.Port();
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 51, 60);
    EXPECT_TRUE(oPlace.RunUntil([&] { return Numbers(oSubscriber).size() >= 60; }));
    EXPECT_EQ(NumberRange(1, 60), Numbers(oSubscriber));
}

/// Publishes until readings up to @p nLast were acknowledged, and checks what passed the tap.
void ExpectAllOnce(PublisherPlace& rPlace, const Publisher& oPublisher, const MqttTap& oTap,
                   unsigned int nCount)
{
    EXPECT_TRUE(rPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
    std::vector<std::uint64_t> vecAcknowledged;
    for (const MqttTap::Passed& oPassed : oTap.AllPassed()) {
        const std::uint64_t nLast = vecAcknowledged.empty() ? 0 : vecAcknowledged.back();
        EXPECT_GT(oPassed.m_nSequence, nLast) << "sent again though acknowledged, or out of order";
        if (oPassed.m_bAcknowledgement)
            vecAcknowledged.push_back(oPassed.m_nSequence);
    }
    EXPECT_EQ(nCount, vecAcknowledged.size());
    EXPECT_EQ(nCount, oPublisher.State().m_nAcknowledged);
}

TEST(Publisher, LosesNothingAndRepeatsNothingAcknowledgedWhenItsBrokerIsKilled)
{
    MqttBroker oBroker;
    PublisherPlace oPlace;
    const MqttTap oTap(oPlace.m_oLoop, oBroker.Port(), 1);
    oPlace.m_oMqtt.m_nPort = oTap.Port();
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    for (unsigned int nRound = 0; nRound < 5; ++nRound) {
        TakeNumbered(oPublisher, 300 * nRound + 1, 300 * nRound + 300);
        ASSERT_TRUE(oPlace.RunUntil(
            [&] { return oPublisher.State().m_nAcknowledged >= 300 * nRound + 100; }));
        oBroker.End(SIGKILL);
        EXPECT_TRUE(oPlace.RunUntil([&] { return !oPublisher.State().m_bConnected; }));
        oBroker.Start();
    }
    ExpectAllOnce(oPlace, oPublisher, oTap, 1500);
    EXPECT_GE(oTap.Connections(), 6U);
}

TEST(Publisher, SendsEverythingOnceThroughASlowConnection)
{
    const MqttBroker oBroker;
    PublisherPlace oPlace;
    const MqttTap oTap(oPlace.m_oLoop, oBroker.Port(), 50);
    oPlace.m_oMqtt.m_nPort = oTap.Port();
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 1, 100);
    ExpectAllOnce(oPlace, oPublisher, oTap, 100);
    EXPECT_EQ(1U, oTap.Connections());
    EXPECT_EQ(100U, oPublisher.State().m_nPublished);
}

TEST(Publisher, GoesOnTakingReadingsWhileTheBrokerHangs)
{
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    ASSERT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_bConnected; }));
    oBroker.Signal(SIGSTOP);
    for (unsigned int n = 1; n <= 2000; ++n) {
        oPublisher.Take(NumberedReading(n));
        oPublisher.TakeStatistics("m1", "{\"polls\":" + std::to_string(n) + "}");
        oPlace.m_oLoop.RunOnce(0);
    }
    EXPECT_LE(oPublisher.State().m_nPublished, 16U) << "what is on its way must be bounded";
    oBroker.Signal(SIGCONT);
    EXPECT_TRUE(oPlace.RunUntil([&] { return Numbers(oSubscriber).size() >= 2000; }));
    EXPECT_EQ(NumberRange(1, 2000), Numbers(oSubscriber));
}

TEST(Publisher, GivesABrokerUpThatSaysNothingAndReturnsToIt)
{
    const MqttBroker oBroker;
    PublisherPlace oPlace(oBroker.Port());
    oPlace.m_oMqtt.m_nKeepAlive = 5;
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    ASSERT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_bConnected; }));
    oBroker.Signal(SIGSTOP);
    TakeNumbered(oPublisher, 1, 3);
    EXPECT_TRUE(oPlace.RunUntil([&] { return !oPublisher.State().m_bConnected; }));
    EXPECT_NE("", oPublisher.State().m_strLastError);
    oBroker.Signal(SIGCONT);
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
}

TEST(Publisher, PublishesInTheOrderOfTakingWhenTheClockIsSteppedBack)
{
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    PublisherPlace oPlace(oBroker.Port());
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    for (const unsigned int nNumber : {50U, 51U, 3U, 4U, 90U})
        oPublisher.Take(NumberedReading(nNumber)); // its time is as many seconds after an instant
    EXPECT_TRUE(oPlace.RunUntil([&] { return Numbers(oSubscriber).size() >= 5; }));
    EXPECT_EQ((std::vector<unsigned int>{50, 51, 3, 4, 90}), Numbers(oSubscriber));
}

TEST(Publisher, PublishesWithEachQualityOfService)
{
    const MqttBroker oBroker;
    for (const unsigned int nQos : {0U, 1U, 2U}) {
        const MqttSubscriber oSubscriber(oBroker.Port());
        PublisherPlace oPlace(oBroker.Port());
        oPlace.m_oMqtt.m_nQos = nQos;
        oPlace.m_oMqtt.m_strPrefix = "qos" + std::to_string(nQos);
        Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
        ASSERT_TRUE(oPublisher.Start());
        TakeNumbered(oPublisher, 1, 100);
        EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
        EXPECT_EQ(100U, oPublisher.State().m_nAcknowledged);
        const std::string strTopic = oPlace.m_oMqtt.m_strPrefix + "/m1/reading";
        EXPECT_TRUE(WaitUntil([&] { return Numbers(oSubscriber, strTopic).size() >= 100; }));
        EXPECT_EQ(NumberRange(1, 100), Numbers(oSubscriber, strTopic));
    }
}

TEST(Publisher, MakesTopicsOfAnyNames)
{
    const MqttBroker oBroker;
    const MqttSubscriber oSubscriber(oBroker.Port());
    PublisherPlace oPlace(oBroker.Port());
    oPlace.m_oMqtt.m_strPrefix = "/plant+/1/";
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    oPublisher.Take(NumberedReading(1, "a/b#c"));
    oPublisher.Take(NumberedReading(2, "K\xC3\xBC"
                                       "che 2"));
    oPublisher.Take(NumberedReading(3, "bad \xFF"));
    const auto fnCame = [&](const char* pszTopic) {
        return oPlace.RunUntil([&] { return oSubscriber.Payloads(pszTopic).size() == 1; });
    };
    EXPECT_TRUE(fnCame("plant_/1/a_b_c/reading"));
    EXPECT_TRUE(fnCame("plant_/1/K\xC3\xBC"
                       "che 2/reading"));
    EXPECT_TRUE(fnCame("plant_/1/bad__/reading"));
}

TEST(Publisher, WritesReadingsToTheLogWithoutABroker)
{
    PublisherPlace oPlace;
    oPlace.m_oMqtt.m_strHost.clear();
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    testing::internal::CaptureStderr();
    TakeNumbered(oPublisher, 1, 30);
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
    const std::string strLog = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, strLog.find("info: house/1/m1/reading {\"seq\":")) << strLog;
    EXPECT_NE(std::string::npos, strLog.find("{\"number\":{\"value\":30}}"));
    EXPECT_EQ("log", oPublisher.State().m_strBroker);
}

} // namespace
