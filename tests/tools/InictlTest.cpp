// Usage of the program, and what it says of files that it cannot read.

#include "tests/tools/InictlTest.h"

#include <unistd.h>

namespace
{

TEST_F(Inictl, PrintsItsUsage)
{
    for (const Words& vecHelp :
         {Words{"-h"}, Words{"--help"}, Words{"-help"}, Words{"-c", "-h"}, Words{"-h", "get"}}) {
        const ChildResult oResult = Run(vecHelp);
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ(0U, oResult.strOut.find("Usage: inictl.bin"));
        EXPECT_EQ("", oResult.strErr);
    }
}

TEST_F(Inictl, PrintsItsVersion)
{
    const ChildResult oResult = Run({"--version"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strOut.find("inictl, Version " TARVO_VERSION "\nCopyright (C) "));
    EXPECT_EQ("", oResult.strErr);
}

TEST_F(Inictl, TakesWhatStandsBehindTwoDashesAsWords)
{
    WriteFile(m_strFile, "[--]\na=1\n");
    EXPECT_EQ("1\n", Run({"-c", "--", "get", "FILE", "--", "a"}).strOut);
    EXPECT_EQ(1, Run({"-c", "--", "get", "FILE", "--", "A"}).nExitStatus);
    ExpectError({"--", "-c", "sections", "FILE"}, "unknown command '-c'");
    ExpectError({"--", "--"}, "unknown command '--'");
    ExpectError({"--"}, "no command");
}

TEST_F(Inictl, TakesOperandsThatLookLikeOptions)
{
    EXPECT_EQ(0, Run({"set", "FILE", "-s", "-a", "-c"}).nExitStatus);
    EXPECT_EQ("-c\n", Run({"get", "FILE", "-s", "-a"}).strOut);
    EXPECT_EQ(0, Run({"set", "FILE", "-s", "-a", ""}).nExitStatus);
    EXPECT_EQ("\n", Run({"get", "FILE", "-s", "-a"}).strOut);
}

TEST_F(Inictl, RefusesWrongUsage)
{
    ExpectError({}, "no command (try --help)");
    ExpectError({"-c"}, "no command");
    ExpectError({"-x", "sections", "FILE"}, "unknown option '-x'");
    ExpectError({"-5", "sections", "FILE"}, "unexpected argument '-5'");
    ExpectError({"--case-sensitive=1", "sections", "FILE"}, "option '--case-sensitive' takes no");
    ExpectError({"print", "FILE"}, "unknown command 'print'");
    ExpectError({"-", "FILE"}, "unknown command '-'");
    ExpectError({"get", "FILE", "S"}, "get takes FILE SECTION OPTION");
    ExpectError({"get", "FILE", "S", "a", "b"}, "get takes FILE SECTION OPTION");
    for (const Words& vecGroups :
         {Words{}, Words{"S", "a"}, Words{"S", "a", "1", "2"}, Words{"S", "a", "1", "S", "b"}}) {
        Words vecWords = {"set", "FILE"};
        vecWords.insert(vecWords.end(), vecGroups.begin(), vecGroups.end());
        ExpectError(vecWords, "set takes FILE SECTION OPTION VALUE [SECTION OPTION VALUE]...");
    }
    ExpectError({"diff", "FILE"}, "diff takes FILE FILE");
    ExpectError({"get", "", "S", "a"}, "FILE and OPTION must not be empty");
    ExpectError({"remove", "FILE", "S", ""}, "FILE and OPTION must not be empty");
    EXPECT_NE(0, access(m_strFile.c_str(), F_OK));
}

TEST_F(Inictl, TellsWhyAFileCannotBeRead)
{
    WriteFile(m_oDir.File("other.ini"), "");
    const auto ReadingCommands = [this](const std::string& strFile) {
        return std::vector<Words>{
            {"get", strFile, "S", "a"},  {"remove", strFile, "S", "a"},
            {"sections", strFile},       {"options", strFile, "S"},
            {"options", strFile, ""},    {"list", strFile},
            {"list", "--json", strFile}, {"check", strFile},
            {"diff", strFile, strFile},  {"diff", m_oDir.File("other.ini"), strFile}};
    };
    for (const Words& vecWords : ReadingCommands(m_strFile))
        ExpectError(vecWords, m_strFile + ": No such file or directory");
    for (const Words& vecWords : ReadingCommands(m_oDir.Path())) {
        const ChildResult oResult = Run(vecWords);
        EXPECT_EQ(2, oResult.nExitStatus);
        EXPECT_EQ(0U, oResult.strErr.find("inictl: " + m_oDir.Path() + ": "));
        EXPECT_NE(std::string::npos, oResult.strErr.find("Is a directory")) << oResult.strErr;
    }
    ExpectError({"sections", "/dev/zero"}, "/dev/zero: the file cannot be read: Invalid argument");
}

TEST_F(Inictl, TellsThatItsOutputWasLost)
{
    const ChildResult oResult =
        RunProgram({"sh", "-c", "exec \"$0\" -help >/dev/full", INICTL_PROGRAM});
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strErr.find("inictl: standard output: "));
}

} // namespace
