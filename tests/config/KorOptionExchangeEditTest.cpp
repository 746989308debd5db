#include "config/KorOptionExchange.h"

#include "config/KorIniFile.h"
#include "tests/config/OptionExchangeTest.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace
{

// Editing.

TEST_F(KorOptionExchange, AnExistingOptionKeepsItsCommentAndPlace)
{
    EXPECT_EQ("a=0 \nport=2 # serial\nb=0 \n",
              AfterSetting("a=0\nport=1 # serial\nb=0\n", "", "port", "2"));
}

TEST_F(KorOptionExchange, NewOptionsGoToTheTopOfTheirSection)
{
    WriteFile(m_strFile, "[S]\nx=1\n[T]\n");
    {
        Exchange oExchange(&m_oFile, true);
        oExchange.SetOptionString("S", "a", "2");
        oExchange.SetOptionString("s", "b", "3");
    }
    EXPECT_EQ("\n[S]  \nb=3 \na=2 \nx=1 \n\n[T]  \n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, ANewSectionIsAppended)
{
    EXPECT_EQ("x=1 \n\n[N] \na=2 \n", AfterSetting("x=1\n", "N", "a", "2"));
    EXPECT_EQ("\n[N] \na=2 \n", AfterSetting("", "N", "a", "2"));
    EXPECT_EQ("\n[A]  \n\n[] \na=2 \n", AfterSetting("[A]\n", "", "a", "2"));
}

TEST_F(KorOptionExchange, ANewOptionBeforeTheFirstHeaderFollowsTheFirstLine)
{
    EXPECT_EQ("# c\na=2 \nx=1 \n\n[S]  \n", AfterSetting("# c\nx=1\n[S]\n", "", "a", "2"));
}

TEST_F(KorOptionExchange, AValueIsStoredAsItIs)
{
    EXPECT_EQ("a= two words  \n", AfterSetting("a=1\n", "", "a", " two words "));
}

TEST_F(KorOptionExchange, SettingTheSameValueCountsAsAChange)
{
    WriteFile(m_strFile, "a=1\n");
    Exchange oExchange(&m_oFile, false);
    EXPECT_FALSE(oExchange.m_bModified);
    oExchange.SetOptionString("", "a", "1");
    EXPECT_TRUE(oExchange.m_bModified);
    oExchange.ReadIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
}

TEST_F(KorOptionExchange, RemovingTakesOneLineOut)
{
    WriteFile(m_strFile, "[A]\nx=1\ny=2\n");
    Exchange oExchange(&m_oFile, false);
    oExchange.RemoveOption("a", "X");
    oExchange.RemoveOption("a", "none");
    oExchange.RemoveOption("none", "y");
    EXPECT_EQ((Texts{"[A]  ", "y=2 "}), oExchange.Lines());
    EXPECT_FALSE(oExchange.m_bModified);
}

TEST_F(KorOptionExchange, RemovingWithoutOptionNameTakesTheHeaderOut)
{
    WriteFile(m_strFile, "[A]\nx=1\n[B]\ny=2\n");
    Exchange oExchange(&m_oFile, false);
    oExchange.RemoveOption("B", nullptr);
    EXPECT_EQ((Texts{"[A]  ", "x=1 ", "y=2 "}), oExchange.Lines());
    oExchange.RemoveOption("A", "");
    EXPECT_EQ((Texts{"x=1 ", "y=2 "}), oExchange.Lines());
}

// Writing.

TEST_F(KorOptionExchange, AFileIsWrittenInNormalSpacing)
{
    EXPECT_EQ("# top\nkey=value \nlast=1 # c\n\n[Net]  \nwhat # d\n\n[B] #e \n",
              Rewritten("\n# top\n  key = value\nlast=1 # c\n\n\n[Net]\n  what # d\n[B]#e\n"));
}

TEST_F(KorOptionExchange, AFileWithoutHeadersKeepsItsLines)
{
    EXPECT_EQ("a=1 \n# c\nb=2 \n", Rewritten("a=1\n\n# c\n\nb=2\n"));
}

TEST_F(KorOptionExchange, ARewriteIsReadBackAsTheSameDocument)
{
    // A header gains a blank with each rewrite; everything else has its final form.
    const std::string strOnce = Rewritten("# c\nk=v\nwhat\nk=w\n");
    EXPECT_EQ(strOnce, Rewritten(strOnce));
    EXPECT_EQ("\n[A]  \n", Rewritten("\n[A]  \n"));
    EXPECT_EQ("\n[A] #c  \n", Rewritten("\n[A] #c \n"));
}

TEST_F(KorOptionExchange, AnExchangeForReadingNeverWrites)
{
    WriteFile(m_strFile, "a = 1\n");
    Exchange(&m_oFile, false).SetOptionString("", "a", "2");
    EXPECT_EQ("a = 1\n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, ARemovalAloneIsNotWritten)
{
    WriteFile(m_strFile, "a = 1\n");
    Exchange(&m_oFile, true).RemoveOption("", "a");
    EXPECT_EQ("a = 1\n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, ARemovalIsWrittenAlongWithASetting)
{
    WriteFile(m_strFile, "a=1\nb=2\n");
    {
        Exchange oExchange(&m_oFile, true);
        oExchange.RemoveOption("", "a");
        oExchange.SetOptionString("", "b", "3");
    }
    EXPECT_EQ("b=3 \n", ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, IsUnmodifiedAfterWritingEvenWhereThatFailed)
{
    CKorIniFile oNowhere(m_oDir.File("none/test.ini").c_str(), MODE);
    Exchange oExchange(&oNowhere, true);
    oExchange.SetOptionString("S", "a", "1");
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
    EXPECT_EQ("1", oExchange.Value("S", "a"));
}

TEST_F(KorOptionExchange, AFullDeviceIsNoError)
{
    struct : CKorIniFile
    {
        using CKorIniFile::m_strIniFileName;
    } oFull;
    Exchange oExchange(&oFull, true);
    oExchange.SetOptionString("S", "a", "1");
    oFull.m_strIniFileName = "/dev/full";
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
    EXPECT_EQ("1", oExchange.Value("S", "a"));
}

TEST_F(KorOptionExchange, WithoutAFileNothingIsReadOrWritten)
{
    Exchange oExchange;
    oExchange.SetOptionString("S", "a", "1");
    oExchange.SetOptionString("s", "A", "2");
    EXPECT_EQ((Texts{"[S] ", "a=2 "}), oExchange.Lines());
    oExchange.WriteIniOptions();
    EXPECT_FALSE(oExchange.m_bModified);
    oExchange.ReadIniOptions();
    EXPECT_TRUE(oExchange.m_apOptionLines.empty());
}

TEST_F(KorOptionExchange, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<CKorIniOptionExchange>);
    EXPECT_FALSE(std::is_copy_assignable_v<CKorIniOptionExchange>);
}

} // namespace
