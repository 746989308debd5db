// What rewrites do to a file beyond the edit, case by case as the page of the format tells it.

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>

namespace
{

class KorIniRewrite : public testing::Test
{
protected:
    KorIniRewrite()
        : m_strFile(m_oDir.File("test.ini")),
          m_oFile(m_strFile.c_str(), CKorIniFile::PATH_UNCHANGED)
    {
    }

    std::string Rewritten()
    {
        CKorIniOptionExchange(&m_oFile, false).WriteIniOptions();
        return ReadFile(m_strFile);
    }
    std::string Rewritten(const std::string& strContent)
    {
        WriteFile(m_strFile, strContent);
        return Rewritten();
    }
    std::string AfterSetting(const char* pszSection, const char* pszOption, const char* pszValue)
    {
        m_oFile.WriteOption(pszSection, pszOption, pszValue);
        return ReadFile(m_strFile);
    }

    ScratchDir m_oDir;
    const std::string m_strFile;
    CKorIniFile m_oFile;
};

TEST_F(KorIniRewrite, TheFirstOneTakesBlankLinesWhiteSpaceAndTextBehindHeadersAway)
{
    EXPECT_EQ("a=1 \n# c\n\n[S]  \nb=2 \n",
              Rewritten("\n  a = 1\n\n# c\n[S] junk\n\tb\t=\t2\t\n\n"));
}

TEST_F(KorIniRewrite, TheSecondOneKeepsEveryLineButForABlankBehindHeaders)
{
    const std::string strLines = "top=1 # c\nwhat\n## COMMENTED ## top=2 \n\n[S]";
    EXPECT_EQ(strLines + "  \nb=2 \n", Rewritten("top=1 # c\nwhat\ntop=2\n[S]\nb=2\n"));
    EXPECT_EQ(strLines + "  \nb=2 \n", Rewritten());
}

TEST_F(KorIniRewrite, EachOneAddsABlankToTheCommentOfAHeader)
{
    EXPECT_EQ("\n[S] # c \n", Rewritten("[S] # c\n"));
    EXPECT_EQ("\n[S] # c  \n", Rewritten());
    EXPECT_EQ("\n[S] # c   \n", Rewritten());
}

TEST_F(KorIniRewrite, MovesTheOptionsOfASectionThatIsOpenedAgainOnce)
{
    const std::string strOnce = "\n[A]  \nz=3 \nx=1 \n\n[B]  \ny=2 \n## COMMENTED ## [A]  \n"
                                "## COMMENTED ## z=3 \n";
    EXPECT_EQ(strOnce, Rewritten("[A]\nx=1\n[B]\ny=2\n[A]\nz=3\n"));
    EXPECT_EQ(strOnce, Rewritten());
}

TEST_F(KorIniRewrite, ACommentInASectionThatIsOpenedAgainGivesTheNextOptionToTheOtherSection)
{
    WriteFile(m_strFile, "[Wan]\nhost=a\n[Lan]\nport=1\n[Wan]\n# backup\nuser=joe\n");
    EXPECT_EQ("joe", m_oFile.ReadOption("Wan", "user", "none"));
    const std::string strOnce = "\n[Wan]  \nhost=a \n\n[Lan]  \nport=1 \n## COMMENTED ## [Wan]  \n"
                                "# backup\nuser=joe \n";
    EXPECT_EQ(strOnce, Rewritten());
    EXPECT_EQ("none", m_oFile.ReadOption("Wan", "user", "none"));
    EXPECT_EQ("joe", m_oFile.ReadOption("Lan", "user", "none"));
    EXPECT_EQ(strOnce, Rewritten());
}

TEST_F(KorIniRewrite, OptionsWithoutASectionBehindAHeaderLeaveACommentEachTime)
{
    WriteFile(m_strFile, "[A]\n");
    EXPECT_EQ("\n[A]  \n\n[] \na=1 \n", AfterSetting("", "a", "1"));
    EXPECT_EQ("\n[A]  \n\n[]  \na=1 \n## COMMENTED ## a=1 \n", Rewritten());
    EXPECT_EQ("\n[A]  \n\n[]  \na=1 \n## COMMENTED ## a=1 \n## COMMENTED ## a=1 \n", Rewritten());
    EXPECT_EQ("1", m_oFile.ReadOption("", "a", "none"));
}

TEST_F(KorIniRewrite, AByteOrderMarkHidesTheFirstHeader)
{
    const std::string strFile = "\xEF\xBB\xBF[S]\na=1 \n";
    EXPECT_EQ(strFile, Rewritten("\xEF\xBB\xBF[S]\na=1\n"));
    EXPECT_EQ("none", m_oFile.ReadOption("S", "a", "none"));
    EXPECT_EQ("1", m_oFile.ReadOption("", "a", "none"));
    EXPECT_EQ(strFile, Rewritten());
}

TEST_F(KorIniRewrite, AByteOrderMarkBelongsToTheNameOfTheFirstOption)
{
    EXPECT_EQ("\xEF\xBB\xBF"
              "a=1 \n",
              Rewritten("\xEF\xBB\xBF"
                        "a=1\n"));
    EXPECT_EQ("none", m_oFile.ReadOption("", "a", "none"));
    EXPECT_EQ("1", m_oFile.ReadOption("",
                                      "\xEF\xBB\xBF"
                                      "a",
                                      "none"));
}

TEST_F(KorIniRewrite, AnOptionWithAnEqualsSignIsAddedEachTime)
{
    EXPECT_EQ("\n[S] \na=b=1 \n", AfterSetting("S", "a=b", "1"));
    EXPECT_EQ("b=1", m_oFile.ReadOption("S", "a", "none"));
    EXPECT_EQ("\n[S]  \na=b=1 \na=b=1 \n", AfterSetting("S", "a=b", "1"));
    EXPECT_EQ("\n[S]  \na=b=1 \na=b=1 \n## COMMENTED ## a=b=1 \n", AfterSetting("S", "a=b", "1"));
}

TEST_F(KorIniRewrite, ASectionWithABracketIsAddedEachTime)
{
    EXPECT_EQ("\n[S]x] \na=1 \n", AfterSetting("S]x", "a", "1"));
    EXPECT_EQ("1", m_oFile.ReadOption("S", "a", "none"));
    EXPECT_EQ("\n[S]  \na=1 \n\n[S]x] \na=1 \n", AfterSetting("S]x", "a", "1"));
    EXPECT_EQ("\n[S]  \na=1 \n## COMMENTED ## [S]  \n## COMMENTED ## a=1 \n\n[S]x] \na=1 \n",
              AfterSetting("S]x", "a", "1"));
}

TEST_F(KorIniRewrite, AHashInAValueIsAddedToTheCommentEachTime)
{
    EXPECT_EQ("\n[S] \na=pa#ss \n", AfterSetting("S", "a", "pa#ss"));
    EXPECT_EQ("pa", m_oFile.ReadOption("S", "a", "none"));
    EXPECT_EQ("\n[S]  \na=pa#ss #ss \n", AfterSetting("S", "a", "pa#ss"));
    EXPECT_EQ("\n[S]  \na=pa#ss #ss #ss \n", AfterSetting("S", "a", "pa#ss"));
}

TEST_F(KorIniRewrite, TheSecondLineOfAValueIsAddedEachTime)
{
    EXPECT_EQ("\n[S] \na=x\ny \n", AfterSetting("S", "a", "x\ny"));
    EXPECT_EQ("x", m_oFile.ReadOption("S", "a", "none"));
    EXPECT_EQ("\n[S]  \na=x\ny \ny \n", AfterSetting("S", "a", "x\ny"));
    EXPECT_EQ("\n[S]  \na=x\ny \ny \ny \n", AfterSetting("S", "a", "x\ny"));
}

TEST_F(KorIniRewrite, BlanksAndQuotesAroundAValueAreLostInReading)
{
    AfterSetting("S", "a", " x ");
    EXPECT_EQ("\n[S]  \na=x \n", Rewritten());
    EXPECT_EQ("\n[S]  \na=\"x\" \n", AfterSetting("S", "a", "\"x\""));
    std::string strValue;
    CKorIniOptionExchange oExchange(&m_oFile, false);
    IOX_Std<std::string>(&oExchange, "S", "a", strValue, "");
    EXPECT_EQ("x", strValue);
}

} // namespace
