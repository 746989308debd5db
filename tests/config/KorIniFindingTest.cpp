#include "config/KorIniFinding.h"

#include "tests/config/TestScale.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace
{

class KorIniFinding : public testing::Test
{
protected:
    /// The findings in a text, each as "line: sentence" with a line feed.
    std::string Check(const std::string& strText, bool bCaseSensitiv = false)
    {
        WriteFile(m_strFile, strText);
        EXPECT_TRUE(KorCheckIniFile(m_strFile.c_str(), bCaseSensitiv, m_vecFindings));
        std::string strFindings;
        for (const SKorIniFinding& oFinding : m_vecFindings)
            strFindings += std::to_string(oFinding.m_nLine) + ": " + oFinding.m_strText + "\n";
        return strFindings;
    }

    ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("test.ini");
    std::vector<SKorIniFinding> m_vecFindings;
};

TEST_F(KorIniFinding, NothingIsWrongWithAPlainFile)
{
    EXPECT_EQ("", Check(""));
    EXPECT_EQ("", Check("# c\r\n\r\na=1 # c\r\n [ S ] # c\r\n\ta = \"b\"\r\n[T]\r\n[U]\r\na="));
    EXPECT_EQ("", Check("a=\"b\" # \"c\"\nb=5\" # 6\"\n"));
}

TEST_F(KorIniFinding, ALineThatMeansNothing)
{
    EXPECT_EQ("2: the line is neither a header nor an option nor a comment and has no effect\n"
              "3: the line is neither a header nor an option nor a comment and has no effect\n",
              Check("[S]\nsecret\n=1\n"));
    EXPECT_EQ(SKorIniFinding::FINDING_SYNTAX, m_vecFindings[0].m_eKind);
    EXPECT_EQ("S", m_vecFindings[0].m_strSection);
    EXPECT_EQ("", m_vecFindings[0].m_strOption);
}

TEST_F(KorIniFinding, AHeaderWithAFlaw)
{
    EXPECT_EQ("1: the header has no \"]\"; it is read as [S]\n"
              "2: the text behind the \"]\" of [T] has no effect\n",
              Check("[S\n[T] junk # c\n[U]\t# c ]\n"));
    EXPECT_EQ(SKorIniFinding::FINDING_SYNTAX, m_vecFindings[1].m_eKind);
}

TEST_F(KorIniFinding, ASemicolon)
{
    EXPECT_EQ("1: \";\" begins no comment; the line sets ;a\n", Check(";a=1\n"));
}

TEST_F(KorIniFinding, ADuplicate)
{
    EXPECT_EQ("4: [S] A was set in line 2; this line has no effect\n"
              "5: [S] a was set in line 2; this line has no effect\n",
              Check("[S]\na=1\nb=1\nA=2\na=3\n"));
    EXPECT_EQ(SKorIniFinding::FINDING_DUPLICATE, m_vecFindings[0].m_eKind);
    EXPECT_EQ("A", m_vecFindings[0].m_strOption);
    EXPECT_EQ("5: [S] a was set in line 2; this line has no effect\n",
              Check("[S]\na=1\nb=1\nA=2\na=3\n", true));
}

TEST_F(KorIniFinding, ARepeatedSection)
{
    EXPECT_EQ("3: [s] was opened in line 1 and goes on here\n"
              "4: [s] a was set in line 2; this line has no effect\n",
              Check("[S]\na=1\n[s]\na=2\n"));
    EXPECT_EQ(SKorIniFinding::FINDING_REPEATED_SECTION, m_vecFindings[0].m_eKind);
    EXPECT_EQ("", Check("[S]\na=1\n[s]\na=2\n", true));
}

TEST_F(KorIniFinding, AHashInQuotes)
{
    EXPECT_EQ("1: \"#\" begins a comment in quotes too; the value of a ends before it\n"
              "2: \"#\" begins a comment in quotes too; the value of b ends before it\n",
              Check("a=\"pa#ss word\"\nb=\"#\"\n"));
    EXPECT_EQ(SKorIniFinding::FINDING_HASH_IN_QUOTES, m_vecFindings[0].m_eKind);
    EXPECT_EQ("a", m_vecFindings[0].m_strOption);
}

TEST_F(KorIniFinding, AByteOrderMark)
{
    EXPECT_EQ("1: the file begins with a byte order mark, which is read as a part of this line\n",
              Check("\xEF\xBB\xBF[S]\na=1\n"));
    EXPECT_EQ(SKorIniFinding::FINDING_BYTE_ORDER_MARK, m_vecFindings[0].m_eKind);
}

TEST_F(KorIniFinding, NamesThatDoNotPrintAreShownAsQuestionMarks)
{
    EXPECT_EQ("2: a?b was set in line 1; this line has no effect\n", Check("a\rb=1\na\rb=1\n"));
}

TEST_F(KorIniFinding, AFileThatCannotBeRead)
{
    m_vecFindings.resize(3);
    EXPECT_FALSE(KorCheckIniFile(m_oDir.File("missing").c_str(), false, m_vecFindings));
    EXPECT_EQ(ENOENT, errno);
    ASSERT_EQ(1U, m_vecFindings.size());
    EXPECT_EQ(SKorIniFinding::FINDING_IO_ERROR, m_vecFindings[0].m_eKind);
    EXPECT_EQ(0U, m_vecFindings[0].m_nLine);
    EXPECT_EQ("the file cannot be read: No such file or directory", m_vecFindings[0].m_strText);
    EXPECT_FALSE(KorCheckIniFile(nullptr, false, m_vecFindings));
    EXPECT_EQ(ENOENT, errno);
}

TEST_F(KorIniFinding, ALargeFileIsCheckedInLinearTime)
{
    constexpr int LINES = 1000000 / TEST_SCALE;
    std::string strText;
    for (int i = 0; i < LINES; ++i)
        strText +=
            i % 4 == 0 ? "[S" + std::to_string(i) + "]\n" : "a" + std::to_string(i % 3) + "=1\n";
    EXPECT_EQ("", Check(strText));
}

} // namespace
