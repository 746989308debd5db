// The mistakes that the gateway finds in its settings, each with its line.

#include "tests/examples/GatewayFindings.h"
#include "tests/support/Seed.h"

#include <algorithm>
#include <random>

namespace
{

TEST(GatewaySettings, NameEachMistakeInALine)
{
    ExpectFound({
        {With("Device=/dev/ttyS7\n", "\n"), "1 [Line cellar] has no Device"},
        {With("Speed=19200", "Speed=fast"), "3 [Line cellar] Speed=fast is no whole number"},
        {With("Speed=19200", "Speed=0"), "3 [Line cellar] Speed=0 is not in 1 to 4000000"},
        {With("Parity=even", "Parity=some"),
         "4 [Line cellar] Parity=some is none of none, even, odd"},
        {With("StopBits=2", "StopBits=3"), "5 [Line cellar] StopBits=3 is not in 1 to 2"},
        {With("TurnAround=20", "TurnAround=1001"),
         "6 [Line cellar] TurnAround=1001 is not in 0 to 1000"},
        {With("TurnAround=20", "DelayBefore=1"),
         "6 [Line cellar] DelayBefore=1 means something with RS485=yes only"},
        {With("RS485=yes", "RS485=maybe\nRtsAfter=1"),
         "10 [Line roof] RS485=maybe is neither yes nor no\n"
         "11 [Line roof] RtsAfter is no option of this program\n"
         "12 [Line roof] RtsOnSend=no means something with RS485=yes only\n"
         "13 [Line roof] DelayBefore=1 means something with RS485=yes only\n"
         "14 [Line roof] DelayAfter=2 means something with RS485=yes only"},
        {With("DelayAfter=2", "DelayAfter=101"),
         "13 [Line roof] DelayAfter=101 is not in 0 to 100"},
        {With("/dev/ttyS8", "/dev/ttyS7"),
         "9 [Line roof] Device=/dev/ttyS7 is the device of [Line cellar] too"},
        {With("/dev/ttyS8", "/dev/../dev/null") + "[Line x]\nDevice=/dev/null\n",
         "41 [Line x] Device=/dev/null is the device of [Line roof] too"},
        {With("[Line roof]", "[Line the roof]"),
         "8 [Line the roof] needs a name of 1 to 32 letters, digits, '_', '-' and '.'\n"
         "31 [Meter pv_1] Line=roof is no [Line NAME] of this file"},
        {GOOD + "[Line]\nDevice=/dev/null\n",
         "40 [Line] needs a name of 1 to 32 letters, digits, '_', '-' and '.'"},
        {GOOD + "[Line  roof]\nDevice=/dev/null\n", "8 [Line roof] has the name of [Line  roof]"},
        {GOOD + "[LINE ROOF]\n", "40 [LINE ROOF] was opened in line 8 and goes on here"},
    });
}

TEST(GatewaySettings, NameEachMistakeInAMeter)
{
    ExpectFound({
        {With("Line=cellar", "Line=attic"),
         "16 [Meter main] Line=attic is no [Line NAME] of this file"},
        {With("Line=cellar\n", "\n"), "15 [Meter main] does not say on which Line it is"},
        {With("Unit=17", "Unit=0"), "17 [Meter main] Unit=0 is not in 1 to 247"},
        {With("Unit=17", "Unit=248"), "17 [Meter main] Unit=248 is not in 1 to 247"},
        {With("Unit=18", "Unit=17"),
         "17 [Meter main] Unit=17 is the unit of [Meter heat.pump] on the same line"},
        {With("PollInterval=5000", "PollInterval=5s"),
         "18 [Meter main] PollInterval=5s is no whole number"},
        {With("PollInterval=5000", "PollInterval=0"),
         "18 [Meter main] PollInterval=0 is not in 1 to 86400000"},
        {With("Timeout=500", "Timeout="), "19 [Meter main] Timeout= is empty"},
        {With("Timeout=500", "Timeout=10001"),
         "19 [Meter main] Timeout=10001 is not in 1 to 10000"},
        {With("Tries=2", "Tries=0"), "20 [Meter main] Tries=0 is not in 1 to 11"},
        {With("Tries=2", "Retries=2"), "20 [Meter main] Retries is no option of this program"},
        {With("Map=simulated", "Map=mine"),
         "21 [Meter main] Map=mine is none of simulated, float, integer"},
        {With("Map=simulated", ""), "15 [Meter main] has neither a Map nor a Register.NAME"},
        {With("[Meter main]", "[Meter m/n]"),
         "15 [Meter m/n] needs a name of 1 to 32 letters, digits, '_', '-' and '.'"},
        {With("[Meter main]", "[Meter " + std::string(33, 'm') + "]"),
         "15 [Meter " + std::string(33, 'm') +
             "] needs a name of 1 to 32 letters, digits, '_', '-' and '.'"},
        {With("[Meter main]", "[Meter  PV_1]"), "30 [Meter pv_1] has the name of [Meter  PV_1]"},
        {"[Line a]\nDevice=/dev/null\n", "0 there is no [Meter NAME]"},
        {"", "0 there is no [Meter NAME]"},
    });
}

TEST(GatewaySettings, NameEachMistakeInARegister)
{
    const auto fnWith = [](const std::string& strText) {
        return With("Register.Tariff=0x100 u16", strText);
    };
    const std::string strBegin = "28 [Meter heat.pump] Register.A=";
    ExpectFound({
        {fnWith("Register.A=1"), strBegin + "1 needs an address and a type, such as 0x0000 u32"},
        {fnWith("Register.A="), strBegin + " needs an address and a type, such as 0x0000 u32"},
        {fnWith("Register.A=65536 u16"),
         strBegin + "65536 u16 has an address '65536' that is not in 0 to 65535"},
        {fnWith("Register.A=x u16"),
         strBegin + "x u16 has an address 'x' that is not in 0 to 65535"},
        {fnWith("Register.A=1 u8"),
         strBegin + "1 u8 has a type 'u8' that is none of u16, i16, u32, i32, u64, i64, f32"},
        {fnWith("Register.A=0xFFFF u32"), strBegin + "0xFFFF u32 reaches beyond the last register"},
        {fnWith("Register.A=1 u16 hi-lo"),
         strBegin + "1 u16 hi-lo has one word and needs no order 'hi-lo'"},
        {fnWith("Register.A=1 u32 hi-lo lo-hi"),
         strBegin + "1 u32 hi-lo lo-hi has a second order 'lo-hi'"},
        {fnWith("Register.A=1 u16 0"),
         strBegin + "1 u16 0 has a scale '0' that is not in 1e-9 to 1e9"},
        {fnWith("Register.A=1 u16 1 2"), strBegin + "1 u16 1 2 has a second scale '2'"},
        {fnWith("Register.A=1 u16 V A"), strBegin + "1 u16 V A has a second unit 'A'"},
        {fnWith("Register.A=1 u16 input input"),
         strBegin + "1 u16 input input has a second kind 'input'"},
        {fnWith("Register.A=1 u16 litres_per_second"),
         strBegin + "1 u16 litres_per_second has a unit 'litres_per_second' of more than 16 bytes"},
        {fnWith("Register.=1 u16"), "28 [Meter heat.pump] Register.=1 u16 needs a name of 1 to 32 "
                                    "letters, digits, '_', '-' and '.'"},
        {fnWith("Register.a b=1 u16"), "28 [Meter heat.pump] Register.a b=1 u16 needs a name of 1 "
                                       "to 32 letters, digits, '_', '-' "
                                       "and '.'"},
        {fnWith("Register.A=1 u16\nRegister.a=2 u16"),
         "29 [Meter heat.pump] Register.a was set in line 28; this line has no effect"},
    });
}

TEST(GatewaySettings, NameEachMistakeInTheOtherSections)
{
    ExpectFound({
        {With("StatisticsInterval=10", "StatisticsInterval=0"),
         "39 [Process] StatisticsInterval=0 is not in 1 to 86400"},
        {With("PidFile=/tmp/gw.pid", "PidFile="), "37 [Process] PidFile= is empty"},
        {With("ControlSocket=/tmp/gw.sock", "ControlSocket=/tmp/gw.pid"),
         "38 [Process] ControlSocket=/tmp/gw.pid is the PidFile"},
        {With("ControlSocket=/tmp/gw.sock", "ControlSocket=/" + std::string(100, 's')),
         "38 [Process] ControlSocket=/" + std::string(100, 's') + " has more than 100 bytes"},
        {GOOD + "[Mqtt]\nPort=1883\n", "40 [Mqtt] has no Host"},
        {GOOD + "[Mqtt]\nHost=h\nPort=65536\n", "42 [Mqtt] Port=65536 is not in 1 to 65535"},
        {GOOD + "[Mqtt]\nHost=h\nQos=3\n", "42 [Mqtt] Qos=3 is not in 0 to 2"},
        {GOOD + "[Mqtt]\nHost=h\nPrefix=a/+/b\n",
         "42 [Mqtt] Prefix=a/+/b is no beginning of a topic: 1 to 100 bytes without '+', and '/' "
         "only between others"},
        {GOOD + "[Mqtt]\nHost=h\nPasswordFile=/dev/null\n",
         "42 [Mqtt] PasswordFile=/dev/null needs a User"},
        {GOOD + "[Mqtt]\nHost=h\nUser=u\nPasswordFile=/no/where\n",
         "43 [Mqtt] PasswordFile=/no/where cannot be read: No such file or directory"},
        {GOOD + "[Mqtt]\nHost=h\nCaFile=/no/where\n",
         "42 [Mqtt] CaFile=/no/where cannot be read: No such file or directory"},
        {GOOD + "[Mqtt]\nHost=h\nCaFile=/dev/null\nCertFile=/dev/null\n",
         "43 [Mqtt] CertFile=/dev/null needs the other one of CertFile and KeyFile"},
        {GOOD + "[Mqtt]\nHost=h\nCertFile=/dev/null\nKeyFile=/dev/null\n",
         "42 [Mqtt] CertFile=/dev/null needs a CaFile"},
        {GOOD + "[Store]\nMaxSize=1\n", "41 [Store] MaxSize=1 is not in 65536 to 1073741824"},
        {GOOD + "[Store]\nWriteInterval=86401\n",
         "41 [Store] WriteInterval=86401 is not in 0 to 86400"},
        {GOOD + "[Store]\nFile=/no/where\n",
         "41 [Store] File=/no/where is in a directory that is not there"},
        {GOOD + "[Store]\nFile=/tmp\n", "41 [Store] File=/tmp is no regular file"},
        {GOOD + "[Shop]\nOpen=yes\n", "40 [Shop] is no section of the gateway"},
        {GOOD + "[Reading]\n", "40 [Reading] is no section of the gateway"},
    });
}

TEST(GatewaySettings, NameEachLineThatTheFormatDoesNotKnow)
{
    ExpectFound({
        {"\xEF\xBB\xBF# settings\n" + GOOD,
         "1 the file begins with a byte order mark, which is read as a part of this line"},
        {With("Speed=19200", "Speed=19200\nSpeed=9600"),
         "4 [Line cellar] Speed was set in line 3; this line has no effect"},
        {With("Speed=19200", "Speed 19200"),
         "3 the line is neither a header nor an option nor a comment and has no effect"},
        {With("Speed=19200", ";Speed=19200"),
         "3 [Line cellar] ;Speed is no option of this program\n"
         "3 \";\" begins no comment; the line sets [Line cellar] ;Speed"},
        {With("[Line roof]", "[Line roof"), "8 the header has no \"]\"; it is read as [Line roof]"},
        {With("[Line roof]", "[Line roof] RS485"),
         "8 the text behind the \"]\" of [Line roof] has no effect"},
        {With("PidFile=/tmp/gw.pid", "PidFile=\"/tmp/gw#1.pid\""),
         "37 \"#\" begins a comment in quotes too; the value of [Process] PidFile ends before it"},
        {"Speed=1\n" + GOOD, "1 Speed is no option of this program"},
    });
}

TEST(GatewaySettings, NameEveryMistakeOfAFileInTheOrderOfItsLines)
{
    EXPECT_EQ("2 [Line a] Speed=x is no whole number\n"
              "3 the line is neither a header nor an option nor a comment and has no effect\n"
              "4 [Meter m] has neither a Map nor a Register.NAME\n"
              "5 [Meter m] Unit=300 is not in 1 to 247\n"
              "6 [Shop] is no section of the gateway\n",
              Joined(FindingsIn("[Line a]\nSpeed=x\nDevice\n[Meter m]\nUnit=300\n[Shop]\n"))
                  .substr(std::string("1 [Line a] has no Device\n").size()));
}

TEST(GatewaySettings, FindNoLineThatIsNotThereInADamagedFile)
{
    std::minstd_rand oRandom(TestSeed());
    const auto fnBelow = [&oRandom](std::size_t nEnd) { return oRandom() % nEnd; };
    const ScratchDir oDir;
    for (int i = 0; i < 300; ++i) {
        std::string strContent = GOOD;
        for (std::size_t nDamages = 1 + fnBelow(8); nDamages > 0; --nDamages) {
            const std::size_t nPlace = fnBelow(strContent.size());
            if (fnBelow(2) == 0)
                strContent[nPlace] = static_cast<char>(fnBelow(256));
            else
                strContent.erase(nPlace, 1 + fnBelow(20));
        }
        WriteFile(oDir.File("gw.ini"), strContent);
        GatewaySettings oSettings(oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
        oSettings.Load();
        const auto nLines =
            static_cast<unsigned int>(1 + std::count(strContent.begin(), strContent.end(), '\n'));
        for (const SKorIniFinding& oFinding : oSettings.GetFindings())
            ASSERT_LE(oFinding.m_nLine, nLines) << strContent;
    }
}

TEST(GatewaySettings, LimitLinesAndMetersAndRegisters)
{
    std::string strLines;
    for (int i = 0; i < 129; ++i)
        strLines +=
            "[Line n" + std::to_string(1000 + i) + "]\nDevice=/dev/n" + std::to_string(i) + "\n";
    EXPECT_EQ("257 [Line n1128] is one line more than 128\n",
              Joined(FindingsIn(strLines + "[Meter m]\nLine=n1000\nMap=float\n")));
    std::string strMeters = "[Line a]\nDevice=/dev/null\n";
    for (int i = 0; i < 1001; ++i)
        strMeters += "[Meter n" + std::to_string(1000 + i) + "]\nMap=float\n";
    EXPECT_EQ("2003 [Meter n2000] is one meter more than 1000\n", Joined(FindingsIn(strMeters)));
    std::string strRegisters = "[Line a]\nDevice=/dev/null\n[Meter m]\n";
    for (int i = 0; i < 251; ++i)
        strRegisters += "Register.n" + std::to_string(i) + "=" + std::to_string(i) + " u16\n";
    EXPECT_EQ("3 [Meter m] has more than 250 registers\n", Joined(FindingsIn(strRegisters)));
}

} // namespace
