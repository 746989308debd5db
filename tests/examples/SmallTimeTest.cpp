// The small example programs about times and texts, run as their users run them.
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

namespace
{

TEST(SmallExample, FormatTimeWritesATimeInAllForms)
{
    EXPECT_EQ("file   2024-03-05T13:07:09.250Z\n"
              "log    2024-03-05T14:07:09+01:00\n"
              "mail   Tue, 05 Mar 2024 14:07:09 +0100\n"
              "people 5.3.2024 14:07\n"
              "former 05.03.2024 13:07:09.250\n",
              RunProgram({FORMAT_TIME_PROGRAM, "2024-03-05T14:07:09.25+01:00"}).strOut);
}

TEST(SmallExample, FormatTimeTakesTheClockAndRefusesWhatIsNoTime)
{
    const ChildResult oNow = RunProgram({FORMAT_TIME_PROGRAM});
    EXPECT_EQ(0, oNow.nExitStatus);
    EXPECT_EQ(0u, oNow.strOut.find("file   20")) << oNow.strOut;
    EXPECT_EQ(2, RunProgram({FORMAT_TIME_PROGRAM, "noon"}).nExitStatus);
}

TEST(SmallExample, LocalTimesShowsAnInstantOnSeveralClocks)
{
    EXPECT_EQ("Europe/Berlin 2024-03-05T14:07:09+01:00\n"
              "Asia/Kolkata  2024-03-05T18:37:09+05:30\n"
              "<-03>3        2024-03-05T10:07:09-03:00\n"
              "2024-07-01T10:00:00.000Z, CEST\n"
              "half past two comes twice, after 3600 s again\n",
              RunProgram({LOCAL_TIMES_PROGRAM}).strOut);
}

TEST(SmallExample, ReadTimeTellsTimesFromSpans)
{
    EXPECT_EQ("1709644029 s since 1970\n", RunProgram({READ_TIME_PROGRAM}).strOut);
    EXPECT_EQ("1709644029 s since 1970\n",
              RunProgram({READ_TIME_PROGRAM, "Tue, 5 Mar 2024 14:07:09 +0100"}).strOut);
    EXPECT_EQ("-5400.5 s\n", RunProgram({READ_TIME_PROGRAM, "-PT1H30M0.5S"}).strOut);
    EXPECT_EQ(1, RunProgram({READ_TIME_PROGRAM, "2024-03-05 14:07:09 soon"}).nExitStatus);
}

TEST(SmallExample, OwnSettingTypeReadsAndWritesLists)
{
    EXPECT_EQ("3: 1/0,1/2,7/1024\n",
              RunProgram({OWN_SETTING_TYPE_PROGRAM, "1/0 ,1/2,7/0x400"}).strOut);
    for (const char* pszWrong : {"1", "300/1", "1/70000", "1/2,,1/3"})
        EXPECT_EQ(2, RunProgram({OWN_SETTING_TYPE_PROGRAM, pszWrong}).nExitStatus) << pszWrong;
}

TEST(SmallExample, ParseOptionsAnswersAsGnuProgramsDo)
{
    EXPECT_EQ("2 devices at 19200 bit/s, verbose\n",
              RunProgram({PARSE_OPTIONS_PROGRAM, "a", "-vs19200", "b"}).strOut);
    const ChildResult oHelp = RunProgram({PARSE_OPTIONS_PROGRAM, "--help"});
    EXPECT_EQ(0, oHelp.nExitStatus);
    EXPECT_NE(std::string::npos, oHelp.strOut.find("--speed"));
    const ChildResult oWrong = RunProgram({PARSE_OPTIONS_PROGRAM, "--speed", "fast", "a"});
    EXPECT_EQ(2, oWrong.nExitStatus);
    EXPECT_NE(std::string::npos, oWrong.strErr.find("fast")) << oWrong.strErr;
}

} // namespace
