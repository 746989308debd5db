#include "config/KorIniFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
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
        EXPECT_EQ(0U, oResult.strOut.find("Usage: inictl.bin"));
        EXPECT_EQ("", oResult.strErr);
    }
}

TEST_F(Inictl, PrintsItsVersion)
{
    const ChildResult oResult = Run({"--version"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strOut.find("inictl, Version " INICTL_VERSION "\nCopyright (C) "));
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

TEST_F(Inictl, GetsAValueWithoutItsQuotes)
{
    WriteFile(m_strFile, "top=0\n[S]\na = 1 # c\nb=\"two words\"\n");
    EXPECT_EQ("1\n", Run({"get", "FILE", "s", "A"}).strOut);
    EXPECT_EQ("two words\n", Run({"get", "FILE", "S", "b"}).strOut);
    const ChildResult oResult = Run({"get", "FILE", "", "top"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("0\n", oResult.strOut);
}

TEST_F(Inictl, TellsAMissingOptionFromAnEmptyOne)
{
    WriteFile(m_strFile, "[S]\na=\nq=\"\"\n");
    for (const char* pszEmpty : {"a", "q"}) {
        const ChildResult oResult = Run({"get", "FILE", "S", pszEmpty});
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ("\n", oResult.strOut);
    }
    for (const char* pszCommand : {"get", "remove"}) {
        const ChildResult oResult = Run({pszCommand, "FILE", "S", "b"});
        EXPECT_EQ(1, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strOut);
        EXPECT_EQ("inictl: " + m_strFile + ": no option \"b\" in section \"S\"\n", oResult.strErr);
    }
    EXPECT_EQ("[S]\na=\nq=\"\"\n", Content());
}

TEST_F(Inictl, ComparesNamesWithCaseWhenAsked)
{
    WriteFile(m_strFile, "[S]\na=1\n");
    EXPECT_EQ(1, Run({"-c", "get", "FILE", "s", "a"}).nExitStatus);
    EXPECT_EQ(0, Run({"-c", "get", "FILE", "S", "a"}).nExitStatus);
    EXPECT_EQ(0, Run({"-c", "set", "FILE", "S", "A", "2"}).nExitStatus);
    EXPECT_EQ("[S]\na=1\nA=2\n", Content());
}

TEST_F(Inictl, SetChangesTheValueAndNothingElse)
{
    WriteFile(m_strFile, "\n [S] ; x\r\n\r\na =  1\t# c\r\na=3\n[T]\n[S]\n");
    const ChildResult oResult = Run({"set", "FILE", "S", "a", "2"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut + oResult.strErr);
    EXPECT_EQ("\n [S] ; x\r\n\r\na =  2\t# c\r\na=3\n[T]\n[S]\n", Content());
}

TEST_F(Inictl, SetsSeveralOptionsAtOnce)
{
    WriteFile(m_strFile, "[A]\nx=1\n");
    EXPECT_EQ(0, Run({"set", "FILE", "A", "x", "2", "B", "y", "3", "", "top", "a b", "A", "x", "4"})
                     .nExitStatus);
    EXPECT_EQ("top=\"a b\"\n[A]\nx=4\n\n[B]\ny=3\n", Content());
}

TEST_F(Inictl, SetsAllOptionsOrNone)
{
    WriteFile(m_strFile, "[A]\nx=1\n");
    const ChildResult oResult =
        Run({"set", "FILE", "A", "x", "2", "A", "s", "pa#ss", "A", "n=", "3", "A", "y", "4"});
    EXPECT_EQ(2, oResult.nExitStatus);
    const std::string strStart = "inictl: " + m_strFile + ": ";
    EXPECT_EQ(strStart + "[A] s cannot be stored: the value holds \"#\", which begins a comment\n" +
                  strStart +
                  "[A] n= cannot be stored: the option's name holds \"=\", where it would end\n",
              oResult.strErr);
    EXPECT_EQ("[A]\nx=1\n", Content());
}

TEST_F(Inictl, SetLeavesAFileAloneThatHasTheValues)
{
    WriteFile(m_strFile, "[A]\nx=\"1\"\n");
    ASSERT_EQ(0, chmod(m_strFile.c_str(), 0400));
    struct stat oBefore = {};
    struct stat oAfter = {};
    ASSERT_EQ(0, stat(m_strFile.c_str(), &oBefore));
    EXPECT_EQ(0, Run({"set", "FILE", "a", "X", "1"}).nExitStatus);
    ASSERT_EQ(0, stat(m_strFile.c_str(), &oAfter));
    EXPECT_EQ(oBefore.st_ino, oAfter.st_ino);
    EXPECT_EQ("[A]\nx=\"1\"\n", Content());
}

TEST_F(Inictl, SetCreatesTheFile)
{
    EXPECT_EQ(0, Run({"set", "FILE", "S", "a", "1"}).nExitStatus);
    EXPECT_EQ("[S]\na=1\n", Content());
}

TEST_F(Inictl, SetQuotesWhereThereIsWhiteSpace)
{
    EXPECT_EQ(0, Run({"set", "FILE", "S", "a", " two words "}).nExitStatus);
    EXPECT_EQ("[S]\na=\" two words \"\n", Content());
    EXPECT_EQ(" two words \n", Run({"get", "FILE", "S", "a"}).strOut);
}

TEST_F(Inictl, SetKeepsQuotes)
{
    for (const std::string strValue : {"\"", "\"x", "x\"", "\"a\" b", "say \"x y\"", "\"x\"",
                                       "\"x y\"", "\"\"", "\"\"x\"\"", "\"a\" b \"c\""}) {
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
    const auto ExpectRefused = [this](const char* pszSection, const char* pszOption,
                                      const char* pszValue) {
        const ChildResult oResult = Run({"set", "FILE", pszSection, pszOption, pszValue});
        EXPECT_EQ(2, oResult.nExitStatus);
        EXPECT_NE(std::string::npos, oResult.strErr.find(" cannot be stored: ")) << oResult.strErr;
    };
    ExpectRefused("S", "a", "x#y");
    ExpectRefused("S", "a", "x\ny");
    ExpectRefused("S", "a=b", "x");
    ExpectRefused("S", "[a", "x");
    ExpectRefused("S", " a", "x");
    ExpectRefused("S", "a#", "x");
    ExpectRefused("S]", "a", "x");
    ExpectRefused("S#", "a", "x");
    EXPECT_EQ("a = 1\n", Content());
}

TEST_F(Inictl, RemovesEveryLineOfAnOption)
{
    WriteFile(m_strFile, "[S]\na=1\n\nb = 2\n[T]\n[s]\nA=3\n");
    const ChildResult oResult = Run({"remove", "FILE", "S", "a"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut + oResult.strErr);
    EXPECT_EQ("[S]\n\nb = 2\n[T]\n[s]\n", Content());
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
    WriteFile(m_strFile, "top=0\n[A]\ny=1\nx=2\n[B]\n");
    EXPECT_EQ("x\ny\n", Run({"options", "FILE", "a"}).strOut);
    EXPECT_EQ(1, Run({"-c", "options", "FILE", "a"}).nExitStatus);
    EXPECT_EQ("top\n", Run({"options", "FILE", ""}).strOut);
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

TEST_F(Inictl, NamesEveryFindingWithItsLine)
{
    WriteFile(m_strFile, "\xEF\xBB\xBF; text\n"
                         ";c=1\n"
                         "[Net\n"
                         "x=1\n"
                         "x=2\n"
                         "q=\"a# b\"\n"
                         "path=/a#b\n"
                         "[B] junk # c\n"
                         "[net]\n"
                         "z=4#5\n"
                         "z=5\n"
                         "text\n");
    const ChildResult oResult = Run({"check", "FILE"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strErr);
    const std::string strHash = " ends before the \"#\", which begins a comment wherever it stands";
    const Words vecExpected = {
        "1: the file begins with a byte order mark, which is read as a part of this line",
        "2: \";\" begins no comment; the line sets ;c",
        "3: the header has no \"]\"; it is read as [Net]",
        "5: [Net] x was set in line 4; this line has no effect",
        "6: \"#\" begins a comment in quotes too; the value of [Net] q ends before it",
        "7: [Net] path" + strHash,
        "8: the text behind the \"]\" of [B] has no effect",
        "9: [net] was opened in line 3 and goes on here",
        "10: [net] z" + strHash,
        "10: [net] z moves up to line 3 when CKorIniFile rewrites the file",
        "11: [net] z was set in line 10; this line has no effect",
        "12: the line is neither a header nor an option nor a comment and has no effect"};
    std::string strExpected;
    for (const std::string& strLine : vecExpected)
        strExpected.append(m_strFile).append(":").append(strLine).append("\n");
    EXPECT_EQ(strExpected, oResult.strOut);
}

TEST_F(Inictl, ChecksAMovedOptionWithAZeroByteInItsName)
{
    WriteFile(m_strFile, std::string("[A]\n[B]\n[A]\na\0b=1\na\0b=2\n", 24));
    const ChildResult oResult = Run({"check", "FILE"});
    EXPECT_EQ(1, oResult.nExitStatus);
    const std::string strLine = m_strFile + ":";
    EXPECT_EQ(strLine + "3: [A] was opened in line 1 and goes on here\n" + strLine +
                  "4: [A] a?b moves up to line 1 when CKorIniFile rewrites the file\n" + strLine +
                  "5: [A] a?b was set in line 4; this line has no effect\n",
              oResult.strOut);
}

TEST_F(Inictl, TellsThatAnOptionMovesInARewrite)
{
    const std::string strFile = m_oDir.File("move.ini");
    WriteFile(strFile, "[Wan]\nhost=a\n[Lan]\nport=1\n[Wan]\n# backup\nuser=joe\nhost=b\n");
    const ChildResult oResult = Run({"check", strFile});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ(strFile + ":5: [Wan] was opened in line 1 and goes on here\n" + strFile +
                  ":7: [Wan] user moves to section \"Lan\" when CKorIniFile rewrites the file\n" +
                  strFile + ":8: [Wan] host was set in line 2; this line has no effect\n",
              oResult.strOut);
    // What the finding says is what the library does, and what this program does not.
    EXPECT_EQ(0, Run({"set", strFile, "Lan", "port", "2"}).nExitStatus);
    EXPECT_EQ("joe\n", Run({"get", strFile, "Wan", "user"}).strOut);
    CKorIniFile(strFile.c_str(), CKorIniFile::PATH_UNCHANGED).WriteOption("Lan", "port", "3");
    EXPECT_EQ("joe\n", Run({"get", strFile, "Lan", "user"}).strOut);
}

TEST_F(Inictl, ASectionThatIsOpenedAgainAtOnceMovesNothing)
{
    WriteFile(m_strFile, "[A]\nx=1\n[A]\n# c\ny=2\n");
    EXPECT_EQ(m_strFile + ":3: [A] was opened in line 1 and goes on here\n",
              Run({"check", "FILE"}).strOut);
}

TEST_F(Inictl, TellsOfAByteOrderMarkOnce)
{
    WriteFile(m_strFile, "\xEF\xBB\xBF[S]\na=1\n");
    EXPECT_EQ(m_strFile +
                  ":1: the file begins with a byte order mark, which is read as a part of this "
                  "line\n",
              Run({"check", "FILE"}).strOut);
}

TEST_F(Inictl, ChecksALongFile)
{
    std::string strContent = "[A]\n[B]\n[a]\n";
    for (int nOption = 0; nOption < 20000; ++nOption)
        strContent += "x" + std::to_string(nOption) + "=1\n";
    WriteFile(m_strFile, strContent + "X19999=2\n");
    const std::string strOut = Run({"check", "FILE"}).strOut;
    const std::string strLast =
        m_strFile + ":20003: [a] x19999 moves up to line 1 when CKorIniFile rewrites the file\n" +
        m_strFile + ":20004: [a] X19999 was set in line 20003; this line has no effect\n";
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

TEST_F(Inictl, TellsWhyAFileCannotBeWritten)
{
    const std::string strNone = m_oDir.File("none/x.ini");
    ExpectError({"set", strNone, "S", "a", "1"}, strNone + ": the file cannot be ");
    ExpectError({"set", m_oDir.Path(), "S", "a", "1"},
                m_oDir.Path() + ": the file cannot be read: Is a directory");
    ExpectError({"set", "/proc/version", "S", "a", "1"}, "/proc/version: ");
}

TEST_F(Inictl, AFailedSetLeavesTheFile)
{
    WriteFile(m_strFile, "[S]\na=1\n");
    ChildProcess oChild([this] {
        const rlimit oLimit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &oLimit);
        const std::string strValue(10000, 'v');
        execl(INICTL_PROGRAM, INICTL_PROGRAM, "set", m_strFile.c_str(), "S", "a", "2", "S", "b",
              strValue.c_str(), nullptr);
        return 127;
    });
    const ChildResult& oResult = oChild.Wait();
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_EQ("inictl: " + m_strFile + ": the file cannot be replaced: File too large\n",
              oResult.strErr);
    EXPECT_EQ("[S]\na=1\n", Content());
}

TEST_F(Inictl, TellsThatItsOutputWasLost)
{
    const ChildResult oResult =
        RunProgram({"sh", "-c", "exec \"$0\" -help >/dev/full", INICTL_PROGRAM});
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strErr.find("inictl: standard output: "));
}

/// What Python reads from the JSON text, as it prints it.
std::string ReadByPython(const std::string& strJson)
{
    const ChildResult oResult = RunProgram(
        {"python3", "-c",
         "import json,sys; sys.stdout.reconfigure(encoding='utf-8'); "
         "print(json.loads(sys.stdin.buffer.read().decode('utf-8'), object_pairs_hook=list))"},
        strJson);
    EXPECT_EQ("", oResult.strErr) << strJson;
    return oResult.strOut;
}

TEST_F(Inictl, ListsAllThatAFileMeans)
{
    WriteFile(m_strFile, "# c\n[b]\ny=1\nx=\"two words\"\n[A]\n[B]\nx=3\nz=\nodd\n[C]\n[]\n");
    const ChildResult oResult = Run({"list", "FILE"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("[b] y=1\n[b] x=two words\n[B] z=\n[A]\n[C]\n", oResult.strOut);
    EXPECT_EQ("[b] y=1\n[b] x=two words\n[A]\n[B] x=3\n[B] z=\n[C]\n",
              Run({"-c", "list", "FILE"}).strOut);
}

TEST_F(Inictl, ListsAsJsonWhatReadersGive)
{
    WriteFile(m_strFile, "top=0\n[b]\ny=1\nx=\"two words\"\n[A]\n[B]\nx=3\nz=\nodd\n[C]\n[]\n");
    const ChildResult oResult = Run({"list", "--json", "FILE"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("{\n  \"\": {\n    \"top\": \"0\"\n  },\n"
              "  \"b\": {\n    \"y\": \"1\",\n    \"x\": \"two words\",\n    \"z\": \"\"\n  },\n"
              "  \"A\": {},\n  \"C\": {}\n}\n",
              oResult.strOut);
    EXPECT_EQ("[('', [('top', '0')]), ('b', [('y', '1'), ('x', 'two words'), ('z', '')]), "
              "('A', []), ('C', [])]\n",
              ReadByPython(oResult.strOut));
    EXPECT_EQ(oResult.strOut, Run({"list", "FILE", "--json"}).strOut);
}

TEST_F(Inictl, ListsAnEmptyFile)
{
    WriteFile(m_strFile, "");
    EXPECT_EQ("", Run({"list", "FILE"}).strOut);
    EXPECT_EQ("{}\n", Run({"list", "--json", "FILE"}).strOut);
    WriteFile(m_strFile, "# c\n[]\n");
    EXPECT_EQ("{}\n", Run({"list", "--json", "FILE"}).strOut);
}

TEST_F(Inictl, ListsEveryByteAsValidJson)
{
    std::string strContent = "[S\xFC\"\\]\n";
    for (int nByte = 0; nByte < 256; ++nByte) {
        const char cByte = static_cast<char>(nByte);
        if (cByte != '\n' && cByte != '#')
            strContent += std::string("v") + std::to_string(nByte) + "=x" + cByte + "y\n";
    }
    WriteFile(m_strFile, strContent);
    const ChildResult oPython = RunProgram(
        {"python3", "-c",
         "import json,sys\n"
         "sections = json.loads(sys.stdin.buffer.read().decode('utf-8'))\n"
         "assert list(sections) == ['S\u00fc\"\\\\'], sections\n"
         "assert list(sections.values())[0] == {\n"
         "    'v%d' % n: 'x%cy' % n for n in range(256) if n not in b'\\n#'}, sections\n"},
        Run({"list", "--json", "FILE"}).strOut);
    EXPECT_EQ("", oPython.strErr);
}

TEST_F(Inictl, ListsUtf8AsItIs)
{
    // A good sequence of each length, then overlong ones, a surrogate, one beyond the last
    // character and cut ones.
    WriteFile(m_strFile, "a=\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF\n"
                         "b=\xC0\xAF\xE0\x9F\xBF\xF0\x8F\xBF\xBF\n"
                         "c=\xED\xA0\x80\xF4\x90\x80\x80\xF5\x80\x80\x80\n"
                         "d=\xE2\x82\ne=\xC3\n");
    const std::string strJson = Run({"list", "--json", "FILE"}).strOut;
    EXPECT_EQ("{\n  \"\": {\n"
              "    \"a\": \"\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF\",\n"
              "    \"b\": \"\\u00c0\\u00af\\u00e0\\u009f\\u00bf\\u00f0\\u008f\\u00bf\\u00bf\",\n"
              "    \"c\": "
              "\"\\u00ed\\u00a0\\u0080\\u00f4\\u0090\\u0080\\u0080\\u00f5\\u0080\\u0080\\u0080\",\n"
              "    \"d\": \"\\u00e2\\u0082\",\n    \"e\": \"\\u00c3\"\n  }\n}\n",
              strJson);
    EXPECT_NE("", ReadByPython(strJson));
}

TEST_F(Inictl, ListTakesOptionsOfItsOwn)
{
    EXPECT_EQ("inictl list: argument 'FILE' is missing (try --help)\n", Run({"list"}).strErr);
    EXPECT_EQ("inictl list: unknown option '--xml' (try --help)\n",
              Run({"list", "--xml", "FILE"}).strErr);
    EXPECT_EQ("inictl list: unexpected argument 'b' (try --help)\n",
              Run({"list", "FILE", "b"}).strErr);
    EXPECT_EQ(2, Run({"list", "FILE", "b"}).nExitStatus);
    const ChildResult oHelp = Run({"list", "--help"});
    EXPECT_EQ(0, oHelp.nExitStatus);
    EXPECT_NE(std::string::npos, oHelp.strOut.find("--json"));
    ExpectError({"list", "--", "--json"}, "--json: No such file or directory");
}

TEST_F(Inictl, FilesOfOneMeaningDoNotDiffer)
{
    const std::string strOther = m_oDir.File("other.ini");
    WriteFile(m_strFile, "top=1\n[A]\nx=1\ny=two words\n[B]\n");
    WriteFile(strOther, "# c\nTOP = 1\n[b] # c\n[a]\ny=\"two words\" # c\nx=1\nx=2\nodd\n[B]\n[]");
    const ChildResult oResult = Run({"diff", "FILE", strOther});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut + oResult.strErr);
    EXPECT_EQ(1, Run({"-c", "diff", "FILE", strOther}).nExitStatus);
}

TEST_F(Inictl, TellsInWhatFilesDiffer)
{
    const std::string strOther = m_oDir.File("other.ini");
    WriteFile(m_strFile, "[A]\nx=1\ny=2\n[Gone]\n[Filled]\n[C]\nz=\n");
    WriteFile(strOther, "[New]\n[A]\nx=3\n[Filled]\na=1\n[C]\nz=\nw=\n");
    const ChildResult oResult = Run({"diff", "FILE", strOther});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strErr);
    EXPECT_EQ("-[A] x=1\n+[A] x=3\n-[A] y=2\n-[Gone]\n+[New]\n+[Filled] a=1\n+[C] w=\n",
              oResult.strOut);
}

} // namespace
