#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

using Words = std::vector<std::string>;

class Inictl : public testing::Test
{
protected:
    Inictl() : m_strFile(m_oDir.File("test.ini")) {}

    /// Runs the program; "FILE" stands for the test's file.
    ChildResult Run(Words vecWords) const
    {
        for (std::string& strWord : vecWords) {
            if (strWord == "FILE")
                strWord = m_strFile;
        }
        vecWords.insert(vecWords.begin(), INICTL_PROGRAM);
        return RunProgram(vecWords);
    }

    void ExpectError(const Words& vecWords, const std::string& strError) const
    {
        const ChildResult oResult = Run(vecWords);
        EXPECT_EQ(2, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strOut);
        EXPECT_NE(std::string::npos, oResult.strErr.find("inictl: " + strError)) << oResult.strErr;
    }

    std::string Content() const { return ReadFile(m_strFile); }

    ScratchDir m_oDir;
    const std::string m_strFile;
};

TEST_F(Inictl, PrintsItsUsage)
{
    for (const Words& vecHelp :
         {Words{"-h"}, Words{"--help"}, Words{"-help"}, Words{"-c", "-h"}, Words{"-h", "get"}}) {
        const ChildResult oResult = Run(vecHelp);
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ(0U, oResult.strOut.find("usage: inictl.bin"));
        EXPECT_EQ("", oResult.strErr);
    }
}

TEST_F(Inictl, PrintsItsVersion)
{
    const ChildResult oResult = Run({"--version"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("inictl " INICTL_VERSION "\n", oResult.strOut);
    EXPECT_EQ("", oResult.strErr);
}

TEST_F(Inictl, TakesWhatStandsBehindTwoDashesAsWords)
{
    WriteFile(m_strFile, "[--]\na=1\n");
    EXPECT_EQ("1\n", Run({"-c", "--", "get", "FILE", "--", "a"}).strOut);
    EXPECT_EQ(1, Run({"-c", "--", "get", "FILE", "--", "A"}).nExitStatus);
    ExpectError({"--", "-c", "sections", "FILE"}, "unknown command -c");
    ExpectError({"--", "--"}, "unknown command --");
    ExpectError({"--"}, "no command");
}

TEST_F(Inictl, RefusesWrongUsage)
{
    ExpectError({}, "no command");
    ExpectError({"-c"}, "no command");
    ExpectError({"-x", "sections", "FILE"}, "unknown option -x");
    ExpectError({"print", "FILE"}, "unknown command print");
    ExpectError({"get", "FILE", "S"}, "get takes 3 arguments, not 2");
    ExpectError({"set", "FILE", "S", "a", "1", "2"}, "set takes 4 arguments, not 5");
    ExpectError({"get", "", "S", "a"}, "FILE and OPTION must not be empty");
    ExpectError({"remove", "FILE", "S", ""}, "FILE and OPTION must not be empty");
}

TEST_F(Inictl, GetsAValueWithoutItsQuotes)
{
    WriteFile(m_strFile, "top=0\n[S]\na = 1 # c\nb=\"two words\"\n");
    EXPECT_EQ("1\n", Run({"get", "FILE", "s", "A"}).strOut);
    EXPECT_EQ("two words\n", Run({"get", "FILE", "S", "b"}).strOut);
    const ChildResult oResult = Run({"get", "FILE", "", "top"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("0\n", oResult.strOut);
}

TEST_F(Inictl, TellsAMissingOption)
{
    WriteFile(m_strFile, "[S]\na=1\n");
    for (const char* pszCommand : {"get", "remove"}) {
        const ChildResult oResult = Run({pszCommand, "FILE", "S", "b"});
        EXPECT_EQ(1, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strOut);
        EXPECT_EQ("inictl: " + m_strFile + ": no option \"b\" in section \"S\"\n", oResult.strErr);
    }
    EXPECT_EQ("[S]\na=1\n", Content());
}

TEST_F(Inictl, ComparesNamesWithCaseWhenAsked)
{
    WriteFile(m_strFile, "[S]\na=1\n");
    EXPECT_EQ(1, Run({"-c", "get", "FILE", "s", "a"}).nExitStatus);
    EXPECT_EQ(0, Run({"-c", "get", "FILE", "S", "a"}).nExitStatus);
    EXPECT_EQ(0, Run({"-c", "set", "FILE", "S", "A", "2"}).nExitStatus);
    EXPECT_EQ("\n[S]  \nA=2 \na=1 \n", Content());
}

TEST_F(Inictl, SetsAValue)
{
    WriteFile(m_strFile, "[S]\na=1 # c\n");
    const ChildResult oResult = Run({"set", "FILE", "S", "a", "2"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut + oResult.strErr);
    EXPECT_EQ("\n[S]  \na=2 # c\n", Content());
}

TEST_F(Inictl, SetCreatesTheFile)
{
    EXPECT_EQ(0, Run({"set", "FILE", "S", "a", "1"}).nExitStatus);
    EXPECT_EQ("\n[S] \na=1 \n", Content());
}

TEST_F(Inictl, SetQuotesWhereThereIsWhiteSpace)
{
    EXPECT_EQ(0, Run({"set", "FILE", "S", "a", " two words "}).nExitStatus);
    EXPECT_EQ("\n[S] \na=\" two words \" \n", Content());
    EXPECT_EQ(" two words \n", Run({"get", "FILE", "S", "a"}).strOut);
}

TEST_F(Inictl, SetKeepsQuotesThatDoNotEncloseTheValue)
{
    for (const std::string strValue : {"\"", "\"x", "x\"", "\"a\" b", "say \"x y\""}) {
        EXPECT_EQ(0, Run({"set", "FILE", "S", "a", strValue}).nExitStatus) << strValue;
        EXPECT_EQ(strValue + "\n", Run({"get", "FILE", "S", "a"}).strOut);
    }
}

TEST_F(Inictl, TakesOperandsThatLookLikeOptions)
{
    EXPECT_EQ(0, Run({"set", "FILE", "-s", "-a", "-c"}).nExitStatus);
    EXPECT_EQ("-c\n", Run({"get", "FILE", "-s", "-a"}).strOut);
    EXPECT_EQ(0, Run({"set", "FILE", "-s", "-a", ""}).nExitStatus);
    EXPECT_EQ("\n", Run({"get", "FILE", "-s", "-a"}).strOut);
}

TEST_F(Inictl, RefusesWhatWouldNotReadBackTheSame)
{
    WriteFile(m_strFile, "a = 1\n");
    const std::string strError = "section, option or value would not read back";
    ExpectError({"set", "FILE", "S", "a", "x#y"}, strError);
    ExpectError({"set", "FILE", "S", "a", "x\ny"}, strError);
    ExpectError({"set", "FILE", "S", "a=b", "x"}, strError);
    ExpectError({"set", "FILE", "S", "[a", "x"}, strError);
    ExpectError({"set", "FILE", "S", " a", "x"}, strError);
    ExpectError({"set", "FILE", "S", "a#", "x"}, strError);
    ExpectError({"set", "FILE", "S]", "a", "x"}, strError);
    ExpectError({"set", "FILE", "S#", "a", "x"}, strError);
    for (const char* pszQuoted : {"\"x\"", "\"x y\"", "\"\"", "\"\"x\"\"", "\"a\" b \"c\""})
        ExpectError({"set", "FILE", "S", "a", pszQuoted}, strError);
    EXPECT_EQ("a = 1\n", Content());
}

TEST_F(Inictl, RemovesAnOption)
{
    WriteFile(m_strFile, "[S]\na=1\nb=2\n");
    const ChildResult oResult = Run({"remove", "FILE", "S", "a"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut + oResult.strErr);
    EXPECT_EQ("\n[S]  \nb=2 \n", Content());
}

TEST_F(Inictl, ListsSections)
{
    WriteFile(m_strFile, "top=0\n[b]\n[A]\nx=1\n[B]\n");
    const ChildResult oResult = Run({"sections", "FILE"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("A\nb\n", oResult.strOut);
}

TEST_F(Inictl, ListsOptions)
{
    WriteFile(m_strFile, "[A]\ny=1\nx=2\n[B]\n");
    EXPECT_EQ("x\ny\n", Run({"options", "FILE", "A"}).strOut);
    const ChildResult oEmpty = Run({"options", "FILE", "B"});
    EXPECT_EQ(0, oEmpty.nExitStatus);
    EXPECT_EQ("", oEmpty.strOut);
    const ChildResult oMissing = Run({"options", "FILE", "C"});
    EXPECT_EQ(1, oMissing.nExitStatus);
    EXPECT_EQ("inictl: " + m_strFile + ": no section \"C\"\n", oMissing.strErr);
}

TEST_F(Inictl, FindsNothingOddInAPlainFile)
{
    WriteFile(m_strFile, "# c\n\ntop = 0\n[A]# c\n  x=\"a b\" # c\n[B]\n");
    const ChildResult oResult = Run({"check", "FILE"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut);
}

TEST_F(Inictl, TellsWhatBecomesOfOddLines)
{
    WriteFile(m_strFile, "; text\n"
                         ";c=1\n"
                         "[Net\n"
                         "x=1\n"
                         "x=2\n"
                         "q=\"a # b\"\n"
                         "path=/a#b\n"
                         "[B] junk # c\n"
                         "[net]\n"
                         "z=4\n"
                         "z=5\n");
    const ChildResult oResult = Run({"check", "FILE"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strErr);
    const std::string strLine = m_strFile + ":";
    EXPECT_EQ(strLine + "1: no option: kept as it is\n" + strLine +
                  "2: \";\" starts no comment: this is the option \";c\"\n" + strLine +
                  "3: no \"]\": the section is \"Net\"\n" + strLine +
                  "5: option \"x\" is set in line 4: this line becomes a comment\n" + strLine +
                  "6: \"#\" starts a comment inside quotes too: the value is \"a\n" + strLine +
                  "7: \"#\" starts a comment wherever it stands: the value is /a\n" + strLine +
                  "8: text behind \"]\" is lost in a rewrite: junk\n" + strLine +
                  "9: section \"net\" was opened in line 3: this header becomes a comment\n" +
                  strLine + "10: section \"net\" was opened in line 3: option \"z\" moves there\n" +
                  strLine + "11: option \"z\" is set in line 10: this line becomes a comment\n",
              oResult.strOut);
}

TEST_F(Inictl, ChecksAMovedOptionWithAZeroByteInItsName)
{
    WriteFile(m_strFile, std::string("[A]\n[B]\n[A]\na\0b=1\na\0b=2\n", 24));
    const ChildResult oResult = Run({"check", "FILE"});
    EXPECT_EQ(1, oResult.nExitStatus);
    const std::string strLine = m_strFile + ":";
    const std::string strName("\"a\0b\"", 5);
    const std::string strOpened = "section \"A\" was opened in line 1: ";
    EXPECT_EQ(strLine + "3: " + strOpened + "this header becomes a comment\n" + strLine +
                  "4: " + strOpened + "option " + strName + " moves there\n" + strLine +
                  "5: option " + strName + " is set in line 4: this line becomes a comment\n",
              oResult.strOut);
}

TEST_F(Inictl, TellsThatAnOptionMovesInARewrite)
{
    WriteFile(m_strFile, "[Wan]\nhost=a\n[Lan]\nport=1\n[Wan]\n# backup\nuser=joe\nhost=b\n");
    const ChildResult oResult = Run({"check", "FILE"});
    EXPECT_EQ(1, oResult.nExitStatus);
    const std::string strLine = m_strFile + ":";
    EXPECT_EQ(strLine + "5: section \"Wan\" was opened in line 1: this header becomes a comment\n" +
                  strLine + "7: option \"user\" moves to section \"Lan\" in a rewrite\n" + strLine +
                  "8: option \"host\" is set in line 2: this line becomes a comment\n",
              oResult.strOut);
    // What the remark says is what the library does.
    EXPECT_EQ(0, Run({"set", "FILE", "Lan", "port", "2"}).nExitStatus);
    EXPECT_EQ("joe\n", Run({"get", "FILE", "Lan", "user"}).strOut);
}

TEST_F(Inictl, ASectionThatIsOpenedAgainAtOnceMovesNothing)
{
    WriteFile(m_strFile, "[A]\nx=1\n[A]\n# c\ny=2\n");
    EXPECT_EQ(m_strFile + ":3: section \"A\" was opened in line 1: this header becomes a comment\n",
              Run({"check", "FILE"}).strOut);
}

TEST_F(Inictl, TellsOfAByteOrderMark)
{
    const std::string strMark = "1: a byte order mark stands before the line and is a part of it\n";
    WriteFile(m_strFile, "\xEF\xBB\xBF[S]\na=1\n");
    EXPECT_EQ(m_strFile + ":" + strMark + m_strFile + ":1: no option: kept as it is\n",
              Run({"check", "FILE"}).strOut);
    WriteFile(m_strFile, "\xEF\xBB\xBF"
                         "a=1\n\xEF\xBB\xBF"
                         "a=2\n");
    EXPECT_EQ(m_strFile + ":" + strMark + m_strFile +
                  ":2: option \"\xEF\xBB\xBF"
                  "a\" is set in line 1: this line becomes a comment\n",
              Run({"check", "FILE"}).strOut);
}

TEST_F(Inictl, ChecksALongFile)
{
    std::string strContent = "[A]\n[B]\n[a]\n";
    for (int nOption = 0; nOption < 20000; ++nOption)
        strContent += "x" + std::to_string(nOption) + "=1\n";
    WriteFile(m_strFile, strContent + "X19999=2\n");
    const std::string strOut = Run({"check", "FILE"}).strOut;
    const std::string strLine = m_strFile + ":";
    const std::string strLast = strLine +
                                "20003: section \"a\" was opened in line 1: option "
                                "\"x19999\" moves there\n" +
                                strLine +
                                "20004: option \"X19999\" is set in line 20003: this "
                                "line becomes a comment\n";
    ASSERT_GT(strOut.size(), strLast.size());
    EXPECT_EQ(strLast, strOut.substr(strOut.size() - strLast.size()));
}

TEST_F(Inictl, ChecksWithTheCaseRule)
{
    WriteFile(m_strFile, "[A]\nx=1\nX=2\n[a]\n");
    EXPECT_EQ(1, Run({"check", "FILE"}).nExitStatus);
    EXPECT_EQ(0, Run({"-c", "check", "FILE"}).nExitStatus);
}

TEST_F(Inictl, TellsWhyAFileCannotBeRead)
{
    const std::string strMissing = m_strFile + ": No such file or directory";
    ExpectError({"get", "FILE", "S", "a"}, strMissing);
    ExpectError({"remove", "FILE", "S", "a"}, strMissing);
    ExpectError({"sections", "FILE"}, strMissing);
    ExpectError({"options", "FILE", "S"}, strMissing);
    ExpectError({"check", "FILE"}, strMissing);
    ExpectError({"sections", m_oDir.Path()}, m_oDir.Path() + ": not a regular file");
    ExpectError({"sections", "/dev/zero"}, "/dev/zero: not a regular file");
}

TEST_F(Inictl, TellsWhyAFileCannotBeWritten)
{
    ExpectError({"set", m_oDir.File("none/x.ini"), "S", "a", "1"},
                m_oDir.File("none/x.ini") + ": No such file or directory");
    ExpectError({"set", m_oDir.Path(), "S", "a", "1"}, m_oDir.Path() + ": Is a directory");
    // Refused at once, or for root when it is written.
    ExpectError({"set", "/proc/version", "S", "a", "1"}, "/proc/version: ");
}

TEST_F(Inictl, TellsThatAFileWasNotWrittenWhole)
{
    WriteFile(m_strFile, "[S]\na=1\n");
    ChildProcess oChild([this] {
        const rlimit oLimit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &oLimit);
        signal(SIGXFSZ, SIG_IGN);
        const std::string strValue(10000, 'v');
        execl(INICTL_PROGRAM, INICTL_PROGRAM, "set", m_strFile.c_str(), "S", "a", strValue.c_str(),
              nullptr);
        return 127;
    });
    const ChildResult& oResult = oChild.Wait();
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_EQ("inictl: " + m_strFile + ": could not be written completely\n", oResult.strErr);
}

TEST_F(Inictl, TellsThatItsOutputWasLost)
{
    const ChildResult oResult =
        RunProgram({"sh", "-c", "exec \"$0\" -help >/dev/full", INICTL_PROGRAM});
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strErr.find("inictl: standard output: "));
}

} // namespace
