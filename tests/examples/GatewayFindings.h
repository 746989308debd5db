#pragma once

#include "examples/gateway/GatewaySettings.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Two lines with three meters, and all that has to do with them.
const std::string GOOD = R"([Line cellar]
Device=/dev/ttyS7
Speed=19200
Parity=even
StopBits=2
TurnAround=20

[Line roof]
Device=/dev/ttyS8
RS485=yes
RtsOnSend=no
DelayBefore=1
DelayAfter=2

[Meter main]
Line=cellar
Unit=17
PollInterval=5000
Timeout=500
Tries=2
Map=simulated

[Meter heat.pump]
Line=Cellar
Unit=18
Map=float
Register.Power=12 f32 input 0.001 kW
Register.Tariff=0x100 u16

[Meter pv_1]
Line=roof
Register.Energy=0x0010 u64 lo-hi 0.001 kWh
Register.Power=0x0014 i32 W
Register.Temperature=3 i16 input 0.1

[Process]
PidFile=/tmp/gw.pid
ControlSocket=/tmp/gw.sock
StatisticsInterval=10
)";

/// The findings in a file, each as "LINE TEXT".
inline std::vector<std::string> FindingsIn(const std::string& strContent)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("gw.ini"), strContent);
    GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
    const bool bGood = oSettings.Load();
    EXPECT_EQ(bGood, oSettings.GetFindings().empty());
    std::vector<std::string> vecFindings;
    for (const SKorIniFinding& oFinding : oSettings.GetFindings())
        vecFindings.push_back(std::to_string(oFinding.m_nLine) + " " + oFinding.m_strText);
    return vecFindings;
}

/// Each in a line.
inline std::string Joined(const std::vector<std::string>& vecTexts)
{
    std::string strAll;
    for (const std::string& strText : vecTexts)
        strAll += strText + "\n";
    return strAll;
}

/// The good file with one piece of it replaced.
inline std::string With(const std::string& strOld, const std::string& strNew)
{
    std::string strContent = GOOD;
    const std::size_t nPos = strContent.find(strOld);
    EXPECT_NE(std::string::npos, nPos) << strOld;
    return strContent.replace(nPos, strOld.size(), strNew);
}

/// A file and what is to be found in it.
struct Mistake
{
    std::string strContent;
    std::string strFinding; // with its line
};

/// Expects that in each file exactly the mistake is found.
inline void ExpectFound(const std::vector<Mistake>& vecMistakes)
{
    for (const Mistake& oMistake : vecMistakes) {
        const std::vector<std::string> vecFindings = FindingsIn(oMistake.strContent);
        EXPECT_EQ(oMistake.strFinding + "\n", Joined(vecFindings));
    }
}
