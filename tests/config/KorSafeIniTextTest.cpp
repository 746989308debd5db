// What becomes of the bytes of a file, edit by edit.

#include "config/KorSafeIniFile.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

namespace
{

using namespace std::string_literals;

const std::string MARK = "\xEF\xBB\xBF";

class KorSafeIniText : public testing::Test
{
protected:
    KorSafeIniText() : m_oFile(m_oDir.File("test.ini").c_str(), CKorIniFile::PATH_UNCHANGED) {}

    void Write(const std::string& strText) { WriteFile(m_oFile.GetIniFileName(), strText); }

    /// The file after setting an option in @p strText.
    std::string Set(const std::string& strText, const char* pszSection, const char* pszOption,
                    const char* pszValue)
    {
        Write(strText);
        EXPECT_TRUE(m_oFile.WriteOption(pszSection, pszOption, pszValue));
        EXPECT_EQ(pszValue, m_oFile.ReadOption(pszSection, pszOption, "none"));
        EXPECT_EQ(pszValue, Plain(pszSection, pszOption));
        return ReadFile(m_oFile.GetIniFileName());
    }
    std::string Remove(const std::string& strText, const char* pszSection, const char* pszOption)
    {
        Write(strText);
        EXPECT_TRUE(m_oFile.RemoveOption(pszSection, pszOption));
        EXPECT_FALSE(m_oFile.HasOption(pszSection, pszOption));
        EXPECT_EQ("none", Plain(pszSection, pszOption));
        return ReadFile(m_oFile.GetIniFileName());
    }
    std::string RemoveSection(const std::string& strText, const char* pszSection)
    {
        Write(strText);
        EXPECT_TRUE(m_oFile.RemoveSection(pszSection));
        return ReadFile(m_oFile.GetIniFileName());
    }
    /// What the plain class reads.
    std::string Plain(const char* pszSection, const char* pszOption)
    {
        CKorIniFile oPlain(m_oFile.GetIniFileName().c_str(), CKorIniFile::PATH_UNCHANGED);
        oPlain.SetCasesensitiv(m_oFile.IsCaseSensitiv());
        return oPlain.ReadOption(pszSection, pszOption, "none");
    }

    ScratchDir m_oDir;
    CKorSafeIniFile m_oFile;
};

TEST_F(KorSafeIniText, OnlyTheValueChanges)
{
    EXPECT_EQ("\n# c\n [S] junk # h\n\n\t Key  =\t22 \t# note\n; x\n\n",
              Set("\n# c\n [S] junk # h\n\n\t Key  =\t1 \t# note\n; x\n\n", "S", "Key", "22"));
    EXPECT_EQ("x=2", Set("x=1", "", "x", "2"));
    EXPECT_EQ("x=2\r\ny=3\r\n", Set("x=1\r\ny=3\r\n", "", "x", "2"));
    EXPECT_EQ("x=a=\"b c\"\n", Set("x=\"1\"\n", "", "x", "a=\"b c\""));
}

TEST_F(KorSafeIniText, AnEmptyValueGetsItsPlace)
{
    EXPECT_EQ("x=1\n", Set("x=\n", "", "x", "1"));
    EXPECT_EQ("x = 1\n", Set("x = \n", "", "x", "1"));
    EXPECT_EQ("x = 1\r\n", Set("x = \r\n", "", "x", "1"));
    EXPECT_EQ("x=1\r\n", Set("x=\r\n", "", "x", "1"));
    EXPECT_EQ("x =1 # c\n", Set("x = # c\n", "", "x", "1"));
    EXPECT_EQ("x = 1 # c\n", Set("x =  # c\n", "", "x", "1"));
    EXPECT_EQ("x=1# c", Set("x=# c", "", "x", "1"));
    EXPECT_EQ("x = # c\n", Set("x =1 # c\n", "", "x", ""));
}

TEST_F(KorSafeIniText, OfSeveralLinesOfANameTheFirstOneIsEdited)
{
    EXPECT_EQ("[S]\nx=3\nx=2\n[T]\nx=9\n[s]\nX=4\n",
              Set("[S]\nx=1\nx=2\n[T]\nx=9\n[s]\nX=4\n", "s", "X", "3"));
    EXPECT_EQ("[T]\ny=1\n[S]\n[T]\nz=5\nz=3\n",
              Set("[T]\ny=1\n[S]\n[T]\nz=2\nz=3\n", "T", "z", "5"));
    m_oFile.SetCasesensitiv(true);
    EXPECT_EQ("[S]\nx=1\nX=3\n[s]\nX=4\n", Set("[S]\nx=1\nX=2\n[s]\nX=4\n", "S", "X", "3"));
    EXPECT_EQ("[S]\nX=2\n[s]\nX=3\n", Set("[S]\nX=2\n[s]\nX=4\n", "s", "X", "3"));
}

TEST_F(KorSafeIniText, ACommentInAReopenedSectionMovesNothing)
{
    EXPECT_EQ("[Wan]\nhost=a\n[Lan]\nport=2\n[Wan]\n# backup\nuser=joe\n",
              Set("[Wan]\nhost=a\n[Lan]\nport=1\n[Wan]\n# backup\nuser=joe\n", "Lan", "port", "2"));
    EXPECT_EQ("joe", Plain("Wan", "user"));
}

TEST_F(KorSafeIniText, ANewOptionGoesBehindTheLastOneOfTheFirstBlock)
{
    EXPECT_EQ("[S]\na=1\n# c\nb=2 # d\nn=3\n\n# T\n[T]\n[S]\nc=4\n",
              Set("[S]\na=1\n# c\nb=2 # d\n\n# T\n[T]\n[S]\nc=4\n", "S", "n", "3"));
    EXPECT_EQ("[S]\nn=3\n# c\n\n[T]\n", Set("[S]\n# c\n\n[T]\n", "S", "n", "3"));
    EXPECT_EQ("[S]\r\na=1\r\nn=3\r\n[T]\r\n", Set("[S]\r\na=1\r\n[T]\r\n", "S", "n", "3"));
    EXPECT_EQ("[S]\na=1\nn=3\n", Set("[S]\na=1", "S", "n", "3"));
    EXPECT_EQ("[S]\r\na=1\r\nn=3\r\n", Set("[S]\r\na=1", "S", "n", "3"));
    EXPECT_EQ("[S\nn=3\n", Set("[S", "S", "n", "3"));
}

TEST_F(KorSafeIniText, ANewOptionWithoutSectionStandsBeforeTheFirstHeader)
{
    EXPECT_EQ("# c\na=1\nn=3\n\n[S]\n", Set("# c\na=1\n\n[S]\n", "", "n", "3"));
    EXPECT_EQ("n=3\n# c\n[S]\n[]\na=1\n", Set("# c\n[S]\n[]\na=1\n", "", "n", "3"));
    EXPECT_EQ("n=3\n", Set("", "", "n", "3"));
}

TEST_F(KorSafeIniText, ANewSectionGoesToTheEndBehindABlankLine)
{
    EXPECT_EQ("[S]\na=1\n\n[N]\nn=3\n", Set("[S]\na=1\n", "N", "n", "3"));
    EXPECT_EQ("[S]\na=1\n\n[N]\nn=3\n", Set("[S]\na=1", "N", "n", "3"));
    EXPECT_EQ("[S]\na=1\n \n[N]\nn=3\n", Set("[S]\na=1\n ", "N", "n", "3"));
    EXPECT_EQ("[S]\r\na=1\r\n\r\n[N]\r\nn=3\r\n", Set("[S]\r\na=1\r\n", "N", "n", "3"));
    EXPECT_EQ("[N]\nn=3\n", Set("", "N", "n", "3"));
    EXPECT_EQ("[S]\n\n[ N ]\nn=3\n", Set("[S]\n", " N ", "n", "3"));
}

TEST_F(KorSafeIniText, AByteOrderMarkStaysInFrontAndReadsAsItDoes)
{
    EXPECT_EQ(MARK + "x=2\n", Set(MARK + "x=1\n", "", (MARK + "x").c_str(), "2"));
    EXPECT_EQ(MARK + "x=1\nx=2\n", Set(MARK + "x=1\n", "", "x", "2"));
    EXPECT_EQ(MARK + "[S]\nx=2\n[T]\n", Set(MARK + "[S]\n[T]\n", "", "x", "2"));
    EXPECT_EQ(MARK + "\n\n[S]\nx=2\n", Set(MARK, "S", "x", "2"));
    EXPECT_EQ(MARK + "\nx=2\n", Set(MARK, "", "x", "2"));
    EXPECT_EQ(MARK + "\n[S]\n", Remove(MARK + "x=1\n[S]\n", "", (MARK + "x").c_str()));
    EXPECT_EQ(MARK + "\n[S]\n", RemoveSection(MARK + "x=1\n[S]\n", ""));
}

TEST_F(KorSafeIniText, RemovingAnOptionTakesEveryLineOfItsNameAndNoHeader)
{
    EXPECT_EQ("[S]\n# c\ny=1\n[T]\nx=3\n[S]\n",
              Remove("[S]\nx=1\n# c\ny=1\nX=2 # gone\n[T]\nx=3\n[S]\n x = 4\n", "s", "x"));
    EXPECT_EQ("[S]\n", Remove("[S]\nx=1", "S", "x"));
    m_oFile.SetCasesensitiv(true);
    EXPECT_EQ("[S]\nX=2\n", Remove("[S]\nx=1\nX=2\n", "S", "x"));
}

TEST_F(KorSafeIniText, RemovingWhatIsMissingWritesNothing)
{
    Write("[S]\nx=1\n");
    for (const char* pszOption : {"y", "", "S"}) {
        EXPECT_TRUE(m_oFile.RemoveOption("S", pszOption));
        EXPECT_FALSE(m_oFile.WasWritten());
        EXPECT_EQ(0, m_oFile.GetLastError());
    }
    EXPECT_TRUE(m_oFile.RemoveSection("T"));
    EXPECT_FALSE(m_oFile.WasWritten());
    EXPECT_EQ("[S]\nx=1\n", ReadFile(m_oFile.GetIniFileName()));
    std::filesystem::remove(m_oFile.GetIniFileName());
    EXPECT_TRUE(m_oFile.RemoveOption("S", "x"));
    EXPECT_TRUE(m_oFile.RemoveSection("S"));
    EXPECT_EQ(ENOENT, m_oFile.GetLastError());
    EXPECT_FALSE(std::filesystem::exists(m_oFile.GetIniFileName()));
}

TEST_F(KorSafeIniText, RemovingASectionLeavesTheCommentsBehindItsOptions)
{
    EXPECT_EQ("[R]\nr=1\n\n# about T\n[T]\nt=1\n",
              RemoveSection("[R]\nr=1\n\n[S] # s\n# x\nx=1\n\ny=2\n\n# about T\n[T]\nt=1\n", "s"));
    EXPECT_EQ("[T]\nx=1\n# c\n", RemoveSection("[S]\nx=1\n[T]\nx=1\n[S]\n# c\n[S]\ny=1", "S"));
    EXPECT_EQ("# c\n\n[S]\ny=2\n",
              RemoveSection("# c\n\nx=1\n# d\nz=1\n\n[S]\ny=2\n[]\na=1\n", ""));
    EXPECT_EQ("", RemoveSection("[S]\n\n\n", "S"));
}

TEST_F(KorSafeIniText, TheExampleOfTheFormatsPage)
{
    const std::string strPort = "# Gateway\n[Port]\nDevice = /dev/ttyAM0    # upper socket\n"
                                "Baud=9600\nBaud=19200\n";
    const std::string strRest = "\n[Log]\nLevel=2\nremember to lower this\n[port]\n"
                                "Name = first meter\n";
    EXPECT_EQ(strPort + "Parity=even\n" + strRest,
              Set(strPort + strRest, "Port", "Parity", "even"));
    std::vector<SKorIniFinding> vecFindings;
    EXPECT_TRUE(KorCheckIniFile(m_oFile.GetIniFileName().c_str(), false, vecFindings));
    ASSERT_EQ(3U, vecFindings.size());
    EXPECT_EQ(SKorIniFinding::FINDING_DUPLICATE, vecFindings[0].m_eKind);
    EXPECT_EQ(SKorIniFinding::FINDING_SYNTAX, vecFindings[1].m_eKind);
    EXPECT_EQ(SKorIniFinding::FINDING_REPEATED_SECTION, vecFindings[2].m_eKind);
}

TEST_F(KorSafeIniText, ASecondWriteOfTheSameValueChangesNothing)
{
    Write("[S]\nx=1\n");
    EXPECT_TRUE(m_oFile.WriteOption("S", "x", "2"));
    EXPECT_TRUE(m_oFile.WasWritten());
    const auto oTime = std::filesystem::last_write_time(m_oFile.GetIniFileName());
    EXPECT_TRUE(m_oFile.WriteOption("S", "x", "2"));
    EXPECT_FALSE(m_oFile.WasWritten());
    EXPECT_EQ(oTime, std::filesystem::last_write_time(m_oFile.GetIniFileName()));
}

} // namespace
