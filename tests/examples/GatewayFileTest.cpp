// What the gateway reads out of its INI file, and what it says of the file as a whole.

#include "tests/examples/GatewayFindings.h"
#include "tests/support/ChildProcess.h"

#include <filesystem>

namespace
{

TEST(GatewaySettings, TakeWhatTheFileSays)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), GOOD);
    GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
    ASSERT_TRUE(oSettings.Load()) << Joined(FindingsIn(GOOD));
    ASSERT_EQ(2U, oSettings.m_vecLines.size());
    const LineSettings& oCellar = oSettings.m_vecLines[0];
    EXPECT_EQ("cellar", oCellar.m_strName);
    EXPECT_EQ("/dev/ttyS7", oCellar.m_strDevice);
    EXPECT_EQ(19200U, oCellar.m_oOptions.m_nSpeed);
    EXPECT_EQ(CKorSerial::PARITY_EVEN, oCellar.m_oOptions.m_eParity);
    EXPECT_EQ(CKorSerial::STOPBITS_2, oCellar.m_oOptions.m_eStopbits);
    EXPECT_EQ(20U, oCellar.m_nTurnAround);
    EXPECT_FALSE(oCellar.m_oOptions.m_oRS485.m_bEnabled);
    const SKorRS485& oRS485 = oSettings.m_vecLines[1].m_oOptions.m_oRS485;
    EXPECT_TRUE(oRS485.m_bEnabled);
    EXPECT_FALSE(oRS485.m_bRtsOnSend);
    EXPECT_TRUE(oRS485.m_bRtsAfterSend);
    EXPECT_EQ(1U, oRS485.m_nDelayBefore);
    EXPECT_EQ(2U, oRS485.m_nDelayAfter);
    EXPECT_EQ("/tmp/gw.pid", oSettings.m_oProcess.m_strPidFile);
    EXPECT_EQ("/tmp/gw.sock", oSettings.m_oProcess.m_strControlSocket);
    EXPECT_EQ(10U, oSettings.m_oProcess.m_nStatisticsInterval);

    ASSERT_EQ(3U, oSettings.m_vecMeters.size());
    const MeterSettings& oMain = oSettings.m_vecMeters[1];
    EXPECT_EQ("main", oMain.m_strName);
    EXPECT_EQ("cellar", oMain.m_strLine);
    EXPECT_EQ(17U, oMain.m_nUnit);
    EXPECT_EQ(5000U, oMain.m_nPollInterval);
    EXPECT_EQ(500U, oMain.m_nTimeout);
    EXPECT_EQ(2U, oMain.m_nTries);
    EXPECT_EQ(4U, oMain.m_vecRegisters.size());
}

TEST(GatewaySettings, LetOwnRegistersReplaceAndFollowThoseOfAReadyMap)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), GOOD);
    GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
    ASSERT_TRUE(oSettings.Load());
    EXPECT_EQ("cellar", oSettings.m_vecMeters[0].m_strLine) << "in the letters of the line";
    std::vector<std::string> vecNames;
    for (const Register& oRegister : oSettings.m_vecMeters[0].m_vecRegisters)
        vecNames.push_back(oRegister.m_strName + " " + oRegister.m_strUnit);
    EXPECT_EQ((std::vector<std::string>{"Voltage V", "Current A", "Power kW", "Frequency Hz",
                                        "Energy kWh", "Tariff "}),
              vecNames);
    vecNames.clear();
    for (const Register& oRegister : oSettings.m_vecMeters[2].m_vecRegisters)
        vecNames.push_back(oRegister.m_strName);
    EXPECT_EQ((std::vector<std::string>{"Temperature", "Energy", "Power"}), vecNames)
        << "by address";
}

TEST(GatewaySettings, NeedNoLineInAMeterWhereThereIsOne)
{
    EXPECT_EQ("", Joined(FindingsIn("[Line a]\nDevice=/dev/null\n[Meter m]\nMap=integer\n")));
}

TEST(GatewaySettings, ReadAFileOfTheFormerGateway)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), "# mine\n[Line]\nDevice=/dev/ttyS3\n[Meter]\nStation=9\n"
                                   "Retries=4\n[Process]\nStoreInterval=5\n[Reading]\n"
                                   "Voltage=229.1\n[Counters]\nPolls=3\nremember\n");
    GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
    EXPECT_TRUE(oSettings.Load());
    ASSERT_EQ(1U, oSettings.m_vecLines.size());
    EXPECT_EQ("line", oSettings.m_vecLines[0].m_strName);
    EXPECT_EQ("/dev/ttyS3", oSettings.m_vecLines[0].m_strDevice);
    ASSERT_EQ(1U, oSettings.m_vecMeters.size());
    const MeterSettings& oMeter = oSettings.m_vecMeters[0];
    EXPECT_EQ("meter", oMeter.m_strName);
    EXPECT_EQ("line", oMeter.m_strLine);
    EXPECT_EQ(9U, oMeter.m_nUnit);
    EXPECT_EQ(5U, oMeter.m_nTries);
    EXPECT_EQ(1000U, oMeter.m_nPollInterval);
    EXPECT_EQ(4U, oMeter.m_vecRegisters.size());
    ExpectFound({{"[Line]\nSpeed=0\n", "2 [Line] Speed=0 is not in 1 to 4000000"},
                 {"[Meter]\nRetries=11\n", "2 [Meter] Retries=11 is not in 0 to 10"}});
}

TEST(GatewaySettings, OfAFormerFileWithOneSectionAreTheOldDefaultsForTheRest)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), "[Meter]\n");
    GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
    EXPECT_TRUE(oSettings.Load());
    ASSERT_EQ(1U, oSettings.m_vecLines.size());
    EXPECT_EQ("/dev/ttyAM0", oSettings.m_vecLines[0].m_strDevice);
    EXPECT_EQ(3U, oSettings.m_vecMeters[0].m_nTries);
}

TEST(GatewaySettings, OfTheFileThatIsWrittenAtTheFirstStartAreGood)
{
    const ScratchDir oDir;
    GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
    ASSERT_TRUE(oSettings.CreateDefaultFile());
    EXPECT_TRUE(oSettings.Load()) << Joined(FindingsIn(ReadFile(oDir.File("gw.ini"))));
    EXPECT_EQ(1U, oSettings.m_vecMeters.size());
}

TEST(GatewaySettings, OfTheExampleOnThePageAreGood)
{
    const std::string strPage = ReadFile(GATEWAY_PAGE);
    const std::size_t nBegin = strPage.find("```ini\n") + 7;
    const std::string strExample = strPage.substr(nBegin, strPage.find("```", nBegin) - nBegin);
    EXPECT_EQ("", Joined(FindingsIn(strExample)));
    EXPECT_NE(std::string::npos, strExample.find("[Meter inverter]"));
}

TEST(GatewayCheck, SaysWhetherAFileIsGood)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), GOOD);
    const ChildResult oGood = RunProgram({GATEWAY_PROGRAM, "--check", oDir.File("gw.ini")});
    EXPECT_EQ(0, oGood.nExitStatus) << oGood.strErr;
    EXPECT_EQ(oDir.File("gw.ini") + ": good\n", oGood.strOut);

    WriteFile(oDir.File("gw.ini"), With("Unit=17", "Unit=0"));
    const ChildResult oWrong = RunProgram({GATEWAY_PROGRAM, "--check", oDir.File("gw.ini")});
    EXPECT_EQ(1, oWrong.nExitStatus);
    EXPECT_EQ(oDir.File("gw.ini") + ":17: [Meter main] Unit=0 is not in 1 to 247\n", oWrong.strOut);

    const ChildResult oNone = RunProgram({GATEWAY_PROGRAM, "--check", oDir.File("none.ini")});
    EXPECT_EQ(2, oNone.nExitStatus);
    EXPECT_EQ(oDir.File("none.ini") + ": the file cannot be read: No such file or directory\n",
              oNone.strOut);
    EXPECT_FALSE(std::filesystem::exists(oDir.File("none.ini")));
}

TEST(GatewayCheck, NeedsTheNameOfAFile)
{
    EXPECT_EQ(2, RunProgram({GATEWAY_PROGRAM, "--check"}).nExitStatus);
}

TEST(GatewayCheck, RefusesToStartWithAnyMistakeAndNamesAllOfThem)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), "[Line a]\nDevice=/dev/null\n[Meter m]\nMap=x\nUnit=0\n");
    const ChildResult oResult = RunProgram({GATEWAY_PROGRAM, "-c", oDir.File("gw.ini")});
    EXPECT_EQ(1, oResult.nExitStatus);
    for (const char* pszLine : {"gw.ini:4: [Meter m] Map=x", "gw.ini:5: [Meter m] Unit=0"})
        EXPECT_NE(std::string::npos, oResult.strErr.find(pszLine)) << oResult.strErr;
}

} // namespace
