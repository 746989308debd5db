// The gateway and a line that errs, is silent, is unplugged or is another's.

#include "tests/examples/GatewayTest.h"
#include "tests/support/Emulation.h"
#include "tests/support/EntriesOf.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace
{

TEST(GatewayLine, ShowsEachTelegramWhenAsked)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once", "-v"}));
    EXPECT_TRUE(Holds(oResult.strErr, "debug: sent 01 03 00 00 00 05 85 C9\n")) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "debug: received 01 03 0A 00 0F 42 47 ")) << oResult.strErr;
}

TEST(GatewayLine, RepeatsARequestAfterAWrongAnswer)
{
    const GatewayAndMeter oPair({"--badcrc", "--every", "2"});
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForErrors("1000.035 kWh")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const std::string strErr = oGateway.Wait().strErr;
    EXPECT_TRUE(Holds(strErr, " wrong CRCs")) << strErr;
    EXPECT_FALSE(Holds(strErr, " 0 wrong CRCs")) << strErr;
    EXPECT_FALSE(Holds(strErr, "no reading")) << strErr;
}

TEST(GatewayLine, CountsAPollWithoutAnswerAsAnError)
{
    const GatewayAndMeter oPair({"--silent"}, "50");
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once"}));
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "no reading: time-out")) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "2 repetitions, 3 time-outs")) << oResult.strErr;
    EXPECT_FALSE(Holds(oResult.strErr, " kWh")) << oResult.strErr;
}

TEST(GatewayLine, ShowsTheCodeOfAnExceptionAndKeepsTheLine)
{
    const GatewayAndScript oPair("repeat\n" + EXPECT_REQUEST + "send 01 83 02 crc16\nend\n",
                                 "PollInterval=10");
    ChildProcess oGateway({GATEWAY_PROGRAM, "-c", oPair.m_strIniFile});
    ASSERT_TRUE(oGateway.WaitForErrors("no reading: exception 2")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_FALSE(Holds(oResult.strErr, "opened")) << oResult.strErr;
    EXPECT_FALSE(Holds(oResult.strErr, "hung up")) << oResult.strErr;
}

TEST(GatewayLine, FindsALineThatWasUnpluggedAndCameBack)
{
    const GatewayAndScript oPair(EXPECT_REQUEST + "hangup\ndelay 100\ncomeback\n" + ANSWER_FOR_EVER,
                                 "PollInterval=10");
    ChildProcess oGateway({GATEWAY_PROGRAM, "-c", oPair.m_strIniFile});
    EXPECT_TRUE(oGateway.WaitForErrors("1000.007 kWh")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, " hung up")) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "opened " + oPair.m_strLink)) << oResult.strErr;
}

TEST(GatewayLine, RefusesADeviceThatAnotherInstanceHas)
{
    GatewayAndMeter oPair({});
    ChildProcess oFirst(oPair.Gateway());
    ASSERT_TRUE(oFirst.WaitForErrors(" kWh"));
    const std::string strOther = oPair.m_oDir.File("other.ini");
    WriteFile(strOther, "[Line]\nDevice=" + oPair.m_strDevice +
                            "\n[Process]\nPidFile=" + oPair.m_oDir.File("other.pid") + "\n");
    const ChildResult oSecond = RunProgram({GATEWAY_PROGRAM, "--once", "-c", strOther});
    EXPECT_EQ(1, oSecond.nExitStatus);
    EXPECT_TRUE(
        Holds(oSecond.strErr, "cannot open " + oPair.m_strDevice + ": Device or resource busy"))
        << oSecond.strErr;
    oFirst.Signal(SIGTERM);
    EXPECT_TRUE(Holds(oFirst.Wait().strErr, " 0 time-outs"));
}

TEST(GatewayLine, OutlivesAHundredUnpluggingsAsSessionLeader)
{
    const int nTimes = UnderEmulation() ? 10 : 100;
    const GatewayAndScript oPair("repeat " + std::to_string(nTimes) + "\n" + EXPECT_REQUEST +
                                     SEND_ANSWER + "hangup\ncomeback\nend\n" + ANSWER_FOR_EVER,
                                 "PollInterval=2\nTimeout=10000");
    ChildProcess oGateway([&oPair] {
        setsid();
        execl(GATEWAY_PROGRAM, GATEWAY_PROGRAM, "-c", oPair.m_strIniFile.c_str(), nullptr);
        return 127;
    });
    ASSERT_TRUE(oGateway.WaitForErrors(" hung up")) << oGateway.ErrorsSoFar();
    const auto fnOpened = [&oGateway] {
        const std::string strLog = oGateway.ErrorsSoFar();
        int nCount = 0;
        for (std::size_t nPos = 0; (nPos = strLog.find(" opened ", nPos)) != std::string::npos;
             ++nPos)
            ++nCount;
        return nCount;
    };
    ASSERT_TRUE(WaitUntil([&] { return fnOpened() >= 2; }));
    const std::string strDescriptors = "/proc/" + std::to_string(oGateway.Id()) + "/fd";
    const std::ptrdiff_t nBefore = EntriesOf(strDescriptors);
    ASSERT_TRUE(WaitUntil([&] { return fnOpened() >= nTimes; })) << fnOpened();
    const std::size_t nLog = oGateway.ErrorsSoFar().size();
    EXPECT_TRUE(
        WaitUntil([&] { return oGateway.ErrorsSoFar().find(" kWh", nLog) != std::string::npos; }));
    constexpr std::ptrdiff_t PASSING = 4; // the line, and files that are written just now
    EXPECT_LE(EntriesOf(strDescriptors), nBefore + PASSING);
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
}

} // namespace
