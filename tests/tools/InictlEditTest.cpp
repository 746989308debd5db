// Reading, setting and removing single options; the lists of names.

#include "tests/tools/InictlTest.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

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

} // namespace
