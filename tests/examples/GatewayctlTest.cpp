// Looking into a gateway that runs.

#include "tests/examples/GatewayTest.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

namespace
{

/// A gateway that polls two simulated meters on a line, and whoever looks in.
class Gatewayctl : public testing::Test
{
protected:
    void SetUp() override { StartBoth(); }

    /// Starts meters and a gateway. A gateway that is killed leaves its pseudo-terminal closed to
    /// all but a privileged one, so the next has other meters.
    void StartBoth()
    {
        m_pMeters = std::make_unique<ChildProcess>(
            std::vector<std::string>{METER_PROGRAM, "--units", "1-2"});
        ASSERT_TRUE(m_pMeters->WaitForOutput("\n"));
        const std::string strOutput = m_pMeters->OutputSoFar();
        std::filesystem::remove(m_strDevice);
        std::filesystem::create_symlink(strOutput.substr(0, strOutput.find('\n')), m_strDevice);
        Write("Unit=1");
        Start();
    }

    void Write(const std::string& strUnit)
    {
        WriteFile(m_strFile, "[Line bus]\nDevice=" + m_strDevice +
                                 "\n[Meter first]\nMap=simulated\nPollInterval=50\n" + strUnit +
                                 "\n[Meter second]\nMap=simulated\nUnit=2\nPollInterval=86400000\n"
                                 "[Process]\nPidFile=" +
                                 m_oDir.File("pid") + "\nControlSocket=" + m_strSocket + "\n");
    }

    void Start()
    {
        m_pGateway = std::make_unique<ChildProcess>(
            std::vector<std::string>{GATEWAY_PROGRAM, "-c", m_strFile});
        ASSERT_TRUE(m_pGateway->WaitForErrors("first: Energy")) << m_pGateway->ErrorsSoFar();
        ASSERT_TRUE(m_pGateway->WaitForErrors("second: Energy")) << m_pGateway->ErrorsSoFar();
    }

    ChildResult Ctl(const std::vector<std::string>& vecArguments) const
    {
        std::vector<std::string> vecCommand = {GATEWAYCTL_PROGRAM, "-s", m_strSocket};
        vecCommand.insert(vecCommand.end(), vecArguments.begin(), vecArguments.end());
        return RunProgram(vecCommand);
    }

    const ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("gw.ini");
    const std::string m_strSocket = m_oDir.File("gw.sock");
    const std::string m_strDevice = m_oDir.File("line"); // leads to the meters
    std::unique_ptr<ChildProcess> m_pMeters;
    std::unique_ptr<ChildProcess> m_pGateway;
};

TEST_F(Gatewayctl, TellsTheStatus)
{
    const ChildResult oText = Ctl({"status"});
    EXPECT_EQ(0, oText.nExitStatus) << oText.strErr;
    for (const std::string& strPart :
         {"process   " + std::to_string(m_pGateway->Id()) + ", running for 0:0",
          "settings  " + m_strFile, std::string("readings  to the log"),
          std::string("meters    2, of which 2 answer"),
          "bus   " + m_strDevice + "  open   1         2"})
        EXPECT_TRUE(Holds(oText.strOut, strPart)) << strPart << " in\n" << oText.strOut;

    const ChildResult oJson = Ctl({"--json", "status"});
    EXPECT_EQ(0, oJson.nExitStatus);
    EXPECT_EQ(0U, oJson.strOut.find("{\"process\":" + std::to_string(m_pGateway->Id()) + ","));
    EXPECT_TRUE(Holds(oJson.strOut, "\"meters\":2,\"answering\":2,\"lines\":[{\"line\":\"bus\","))
        << oJson.strOut;
    EXPECT_EQ("}\n", oJson.strOut.substr(oJson.strOut.size() - 2));
}

TEST_F(Gatewayctl, TellsOfMeters)
{
    const ChildResult oText = Ctl({"meters"});
    EXPECT_EQ(0, oText.nExitStatus);
    EXPECT_EQ(0U, oText.strOut.find("METER   LINE  UNIT  STATE    POLLS")) << oText.strOut;
    EXPECT_TRUE(Holds(oText.strOut, "\nsecond  bus   2     answers  1      1         0          0"))
        << oText.strOut;
    EXPECT_TRUE(Holds(oText.strOut, "Energy 1000.007 kWh, Voltage 229.1 V")) << oText.strOut;

    const ChildResult oJson = Ctl({"meters", "--json"});
    EXPECT_TRUE(Holds(oJson.strOut,
                      "{\"meter\":\"second\",\"line\":\"bus\",\"unit\":2,\"state\":\"answers\","
                      "\"statistics\":{\"polls\":1,\"readings\":1,\"requests\":1,"
                      "\"repetitions\":0,\"timeouts\":0,\"crcErrors\":0,\"exceptions\":0,"
                      "\"otherErrors\":0,\"responseMs\":{\"minimum\":"))
        << oJson.strOut;
    EXPECT_TRUE(Holds(oJson.strOut, "\"Voltage\":{\"value\":229.1,\"unit\":\"V\"}"))
        << oJson.strOut;
}

TEST_F(Gatewayctl, PollsAMeterNow)
{
    const ChildResult oText = Ctl({"poll", "second"});
    EXPECT_EQ(0, oText.nExitStatus) << oText.strErr;
    EXPECT_EQ("Energy 1000.014 kWh, Voltage 229.2 V, Current 5.26 A, Power 1205 W\n", oText.strOut);
    const ChildResult oJson = Ctl({"poll", "second", "--json"});
    EXPECT_TRUE(Holds(oJson.strOut, "\"values\":{\"Energy\":{\"value\":1000.021,")) << oJson.strOut;
}

TEST_F(Gatewayctl, SaysThatAMeterGaveNoReading)
{
    const ChildResult oNone = Ctl({"poll", "third"});
    EXPECT_EQ(1, oNone.nExitStatus);
    EXPECT_EQ("third: there is no such meter\n", oNone.strErr);
    EXPECT_EQ("", oNone.strOut);

    std::filesystem::remove(m_strDevice); // the terminal's number may soon be another test's
    m_pMeters->Signal(SIGKILL);
    ASSERT_TRUE(m_pGateway->WaitForErrors(" hung up"));
    const ChildResult oGone = Ctl({"poll", "second"});
    EXPECT_EQ(1, oGone.nExitStatus);
    EXPECT_TRUE(Holds(oGone.strErr, "second: ")) << oGone.strErr;
    EXPECT_TRUE(Holds(oGone.strErr, m_strDevice)) << oGone.strErr;
    const ChildResult oJson = Ctl({"poll", "second", "--json"});
    EXPECT_EQ(1, oJson.nExitStatus);
    EXPECT_EQ(0U, oJson.strOut.find("{\"error\":\"")) << oJson.strOut;
    EXPECT_TRUE(Holds(Ctl({"meters"}).strOut, "no line"));
    EXPECT_TRUE(Holds(Ctl({"status"}).strOut, "  closed"));
}

TEST_F(Gatewayctl, ReadsTheSettingsAgain)
{
    const ChildResult oGood = Ctl({"reload"});
    EXPECT_EQ(0, oGood.nExitStatus) << oGood.strErr;
    EXPECT_EQ(m_strFile + ": good\n", oGood.strOut);
    EXPECT_TRUE(Holds(m_pGateway->ErrorsSoFar(), "settings read again"));

    Write("Unit=0");
    const ChildResult oWrong = Ctl({"reload"});
    EXPECT_EQ(1, oWrong.nExitStatus);
    EXPECT_EQ(m_strFile + ":6: [Meter first] Unit=0 is not in 1 to 247\n", oWrong.strErr);
    EXPECT_TRUE(m_pGateway->WaitForErrors("the old settings stay in force"));
    EXPECT_EQ(0, Ctl({"poll", "first"}).nExitStatus);
}

TEST_F(Gatewayctl, ChecksTheSettingsAndLeavesThemAlone)
{
    EXPECT_EQ(m_strFile + ": good\n", Ctl({"check"}).strOut);
    EXPECT_EQ("{\"file\":\"" + m_strFile + "\",\"findings\":[]}\n",
              Ctl({"check", "--json"}).strOut);
    Write("Unit=x\nSpeed=1");
    const ChildResult oJson = Ctl({"check", "--json"});
    EXPECT_EQ(1, oJson.nExitStatus);
    EXPECT_EQ("{\"file\":\"" + m_strFile +
                  "\",\"findings\":[{\"line\":6,\"text\":\"[Meter first] Unit=x is no whole "
                  "number\"},{\"line\":7,\"text\":\"[Meter first] Speed is no option of this "
                  "program\"}]}\n",
              oJson.strOut);
    EXPECT_FALSE(Holds(m_pGateway->ErrorsSoFar(), "old settings"));
}

TEST_F(Gatewayctl, WatchesTheMetersAlsoThroughARestart)
{
    const ChildResult oTwice = Ctl({"watch", "-n", "0.1", "--count", "2"});
    EXPECT_EQ(0, oTwice.nExitStatus);
    EXPECT_TRUE(Holds(oTwice.strOut.substr(1), "METER ")) << oTwice.strOut;

    ChildProcess oWatch({GATEWAYCTL_PROGRAM, "-s", m_strSocket, "watch", "-n", "0.1"});
    ASSERT_TRUE(oWatch.WaitForOutput("METER "));
    m_pGateway->Signal(SIGKILL);
    m_pGateway->Wait();
    ASSERT_TRUE(oWatch.WaitForErrors("no gateway answers"));
    const std::size_t nSeen = oWatch.OutputSoFar().size();
    StartBoth();
    EXPECT_TRUE(WaitUntil([&] { return oWatch.OutputSoFar().size() > nSeen; }));
}

TEST_F(Gatewayctl, KnowsWrongUsageFromAGatewayThatDoesNotAnswer)
{
    for (const std::vector<std::string>& vecWrong : {std::vector<std::string>{},
                                                     {"dance"},
                                                     {"poll"},
                                                     {"status", "first"},
                                                     {"--loud", "status"},
                                                     {"watch", "-n", "0"},
                                                     {"watch", "-n", "nan"}}) {
        const ChildResult oResult = Ctl(vecWrong);
        EXPECT_EQ(2, oResult.nExitStatus) << oResult.strErr;
        EXPECT_EQ("", oResult.strOut);
        EXPECT_TRUE(Holds(oResult.strErr, "gatewayctl: ")) << oResult.strErr;
    }
    const ChildResult oNobody = RunProgram({GATEWAYCTL_PROGRAM, "-s", "/no/where", "status"});
    EXPECT_EQ(3, oNobody.nExitStatus);
    EXPECT_EQ("gatewayctl: no gateway answers at /no/where: No such file or directory\n",
              oNobody.strErr);
    const std::string strLong(200, 's');
    EXPECT_EQ(3, RunProgram({GATEWAYCTL_PROGRAM, "-s", strLong, "status"}).nExitStatus);
    EXPECT_EQ(0, RunProgram({GATEWAYCTL_PROGRAM, "--help"}).nExitStatus);
}

TEST_F(Gatewayctl, FindsASocketForTheGroupThatGoesWithTheGateway)
{
    struct stat oStatus;
    ASSERT_EQ(0, stat(m_strSocket.c_str(), &oStatus));
    EXPECT_EQ(static_cast<mode_t>(S_IFSOCK | 0660), oStatus.st_mode);
    m_pGateway->Signal(SIGTERM);
    EXPECT_EQ(0, m_pGateway->Wait().nExitStatus);
    EXPECT_FALSE(std::filesystem::exists(m_strSocket));
    EXPECT_EQ(3, Ctl({"status"}).nExitStatus);
}

TEST_F(Gatewayctl, FindsAGatewayThatFollowedOneThatWasKilled)
{
    m_pGateway->Signal(SIGKILL);
    m_pGateway->Wait();
    EXPECT_TRUE(std::filesystem::exists(m_strSocket));
    EXPECT_EQ(3, Ctl({"status"}).nExitStatus);
    StartBoth();
    EXPECT_TRUE(Holds(Ctl({"status"}).strOut, std::to_string(m_pGateway->Id())));
}

TEST_F(Gatewayctl, IsNotLedToASecondGatewayWhileTheFirstAnswers)
{
    const std::string strOther = m_oDir.File("other.ini");
    WriteFile(strOther, "[Line x]\nDevice=/no/where\n[Meter m]\nMap=float\n[Process]\nPidFile=" +
                            m_oDir.File("other.pid") + "\nControlSocket=" + m_strSocket + "\n");
    ChildProcess oSecond({GATEWAY_PROGRAM, "-c", strOther});
    EXPECT_TRUE(
        oSecond.WaitForErrors("cannot make the socket " + m_strSocket + ": Address already in use"))
        << oSecond.ErrorsSoFar();
    oSecond.Signal(SIGTERM);
    EXPECT_EQ(0, oSecond.Wait().nExitStatus);
    EXPECT_TRUE(Holds(Ctl({"status"}).strOut, std::to_string(m_pGateway->Id())));
}

TEST_F(Gatewayctl, FindsNothingWhereAnotherFileHasTheName)
{
    m_pGateway->Signal(SIGTERM);
    m_pGateway->Wait();
    WriteFile(m_strSocket, "mine");
    Start();
    EXPECT_TRUE(Holds(m_pGateway->ErrorsSoFar(), ": File exists"));
    m_pGateway->Signal(SIGTERM);
    EXPECT_EQ(0, m_pGateway->Wait().nExitStatus);
    EXPECT_EQ("mine", ReadFile(m_strSocket));
}

TEST_F(Gatewayctl, FollowsTheSocketToANewName)
{
    std::string strContent = ReadFile(m_strFile);
    strContent.insert(strContent.size() - 1, "2");
    WriteFile(m_strFile, strContent);
    EXPECT_EQ(0, Ctl({"reload"}).nExitStatus) << "answered at the old one";
    EXPECT_EQ(3, Ctl({"status"}).nExitStatus);
    EXPECT_EQ(0, RunProgram({GATEWAYCTL_PROGRAM, "-s", m_strSocket + "2", "status"}).nExitStatus);
}

} // namespace
