// How a publisher finds its broker, and what it does about one that will not have it.

#include "tests/examples/Loopback.h"
#include "tests/examples/MqttTap.h"
#include "tests/examples/PublisherTest.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

/// A broker that lets "gateway" in with "secret".
class GuardedBroker
{
public:
    GuardedBroker() : m_strPasswords(m_oDir.File("passwords"))
    {
        EXPECT_EQ(0, RunProgram({MOSQUITTO_PASSWD_PROGRAM, "-b", "-c", m_strPasswords, "gateway",
                                 "secret"})
                         .nExitStatus);
        m_pBroker = std::make_unique<MqttBroker>("allow_anonymous false\npassword_file " +
                                                 m_strPasswords + "\n");
    }

    unsigned int Port() const { return m_pBroker->Port(); }

private:
    ScratchDir m_oDir;
    std::string m_strPasswords;
    std::unique_ptr<MqttBroker> m_pBroker;
};

/// Files "key" and "cert" with a number: a certificate of its own for this machine.
void MakeCertificate(const ScratchDir& oDir, const std::string& strNumber)
{
    ASSERT_EQ(0, RunProgram({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj",
                             "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout",
                             oDir.File("key" + strNumber), "-out", oDir.File("cert" + strNumber)})
                     .nExitStatus);
}

/// The configuration of a broker that shows certificate 1.
std::string ShownCertificate(const ScratchDir& oDir)
{
    return "allow_anonymous true\ncertfile " + oDir.File("cert1") + "\nkeyfile " +
           oDir.File("key1") + "\n";
}

TEST(PublisherBroker, IsToldInClearWordsThatThePasswordIsWrongAndTriesAgain)
{
    const GuardedBroker oBroker;
    PublisherPlace oPlace(oBroker.Port());
    oPlace.m_oMqtt.m_strUser = "gateway";
    oPlace.m_oMqtt.m_strPasswordFile = oPlace.m_oDir.File("password");
    WriteFile(oPlace.m_oMqtt.m_strPasswordFile, "wrong\n");
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    testing::internal::CaptureStderr();
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 1, 3);
    EXPECT_TRUE(oPlace.RunUntil([&] {
        return oPublisher.State().m_strLastError == "the broker refuses user or password";
    }));
    WriteFile(oPlace.m_oMqtt.m_strPasswordFile, "secret\nsecond line\n");
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }));
    const std::string strLog = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos,
              strLog.find("warning: broker 127.0.0.1:" + std::to_string(oBroker.Port()) +
                          ": the broker refuses user or password"))
        << strLog;
}

TEST(PublisherBroker, NamesAFileThatCannotBeRead)
{
    const MqttBroker oBroker;
    PublisherPlace oPlace(oBroker.Port());
    oPlace.m_oMqtt.m_strUser = "gateway";
    oPlace.m_oMqtt.m_strPasswordFile = "/nowhere/password";
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    EXPECT_EQ("password file /nowhere/password: No such file or directory",
              oPublisher.State().m_strLastError);

    MqttSettings oTls = oPlace.m_oMqtt;
    oTls.m_strUser.clear();
    oTls.m_strCaFile = "/nowhere/ca.pem";
    oPublisher.SetSettings(oTls, oPlace.m_oStore);
    EXPECT_NE(std::string::npos, oPublisher.State().m_strLastError.find("/nowhere/ca.pem"));
}

TEST(PublisherBroker, IsSoughtUnderItsNameAgainAndAgain)
{
    PublisherPlace oPlace;
    oPlace.m_oMqtt.m_strHost = "no-such-host.invalid";
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    EXPECT_TRUE(oPlace.RunUntil([&] { return !oPublisher.State().m_strLastError.empty(); }));
    const MqttBroker oBroker;
    oPlace.m_oMqtt.m_strHost = "localhost";
    oPlace.m_oMqtt.m_nPort = oBroker.Port();
    oPublisher.SetSettings(oPlace.m_oMqtt, oPlace.m_oStore);
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_bConnected; }));
}

// A listener whose queue is full answers nobody: connecting to it hangs.
TEST(PublisherBroker, HoldsNobodyUpWhenItDoesNotAnswer)
{
    const int hListener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in oAddress = Loopback(0);
    socklen_t nLength = sizeof oAddress;
    auto* const pAddress = reinterpret_cast<sockaddr*>(&oAddress);
    ASSERT_EQ(0, bind(hListener, pAddress, sizeof oAddress));
    ASSERT_EQ(0, listen(hListener, 0));
    ASSERT_EQ(0, getsockname(hListener, pAddress, &nLength));
    int ahFillers[4];
    for (int& rhFiller : ahFillers) {
        rhFiller = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        static_cast<void>(connect(rhFiller, pAddress, sizeof oAddress));
    }
    PublisherPlace oPlace(ntohs(oAddress.sin_port));
    {
        Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
        ASSERT_TRUE(oPublisher.Start());
        int nTurns = 0;
        oPlace.m_oLoop.CallEvery(1, [&] {
            oPublisher.Take(NumberedReading(1));
            ++nTurns;
        });
        EXPECT_TRUE(oPlace.RunUntil([&] { return nTurns >= 100; }));
        EXPECT_FALSE(oPublisher.State().m_bConnected);
        oPublisher.Stop(PATIENCE_MS); // there is nobody to wait for
    }
    for (const int hFiller : ahFillers)
        close(hFiller);
    close(hListener);
}

TEST(PublisherBroker, IsKeptWhenOtherSettingsChange)
{
    const MqttBroker oFirst;
    const MqttBroker oSecond;
    const MqttSubscriber oSubscriber(oSecond.Port());
    PublisherPlace oPlace;
    const MqttTap oTap(oPlace.m_oLoop, oFirst.Port(), 0);
    oPlace.m_oMqtt.m_nPort = oTap.Port();
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    ASSERT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_bConnected; }));
    oPlace.m_oStore.m_nWriteInterval = 5;
    oPublisher.SetSettings(oPlace.m_oMqtt, oPlace.m_oStore);
    EXPECT_TRUE(oPublisher.State().m_bConnected);
    oPlace.m_oMqtt.m_nPort = oSecond.Port();
    oPublisher.SetSettings(oPlace.m_oMqtt, oPlace.m_oStore);
    TakeNumbered(oPublisher, 1, 20);
    EXPECT_TRUE(oPlace.RunUntil([&] { return Numbers(oSubscriber).size() >= 20; }));
    EXPECT_EQ(NumberRange(1, 20), Numbers(oSubscriber));
    EXPECT_EQ(1U, oTap.Connections());
}

TEST(PublisherBroker, IsReachedThroughTls)
{
    const ScratchDir oDir;
    MakeCertificate(oDir, "1");
    const MqttBroker oBroker(ShownCertificate(oDir));
    PublisherPlace oPlace(oBroker.Port());
    oPlace.m_oMqtt.m_strCaFile = oDir.File("cert1");
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    TakeNumbered(oPublisher, 1, 100);
    EXPECT_TRUE(oPlace.RunUntil([&] { return oPublisher.State().m_nQueued == 0; }))
        << oPublisher.State().m_strLastError;
}

TEST(PublisherBroker, IsRefusedWhenItsCertificateIsNotTrusted)
{
    const ScratchDir oDir;
    MakeCertificate(oDir, "1");
    MakeCertificate(oDir, "2");
    const MqttBroker oBroker(ShownCertificate(oDir));
    PublisherPlace oPlace(oBroker.Port());
    oPlace.m_oMqtt.m_strCaFile = oDir.File("cert2");
    Publisher oPublisher(oPlace.m_oLoop, oPlace.m_oMqtt, oPlace.m_oStore);
    ASSERT_TRUE(oPublisher.Start());
    EXPECT_TRUE(oPlace.RunUntil([&] { return !oPublisher.State().m_strLastError.empty(); }));
    EXPECT_NE(std::string::npos, oPublisher.State().m_strLastError.find("TLS"))
        << oPublisher.State().m_strLastError;
    EXPECT_FALSE(oPublisher.State().m_bConnected);
}

} // namespace
