// What the command check finds in a file.

#include "tests/tools/InictlTest.h"

#include "config/KorIniFile.h"

namespace
{

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

} // namespace
