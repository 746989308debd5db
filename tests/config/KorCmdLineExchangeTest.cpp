#include "config/KorCmdLineExchange.h"

#include "config/KorCmdLine.h"
#include "tests/support/Arguments.h"

#include <gtest/gtest.h>

namespace
{

/// An exchange over the given arguments.
struct Exchange : private Arguments, private CKorCmdLine, CKorCmdLineExchange
{
    Exchange(std::initializer_list<const char*> lstArgs)
        : Arguments(lstArgs),
          CKorCmdLine(Count(), Vector()),
          CKorCmdLineExchange(static_cast<CKorCmdLine*>(this))
    {
    }
    using CKorCmdLineExchange::Initialize;
    using CKorCmdLineExchange::m_vecArgs;
    using CKorCmdLineExchange::m_vecOptionDesc;

    /// The next positional argument, or "none".
    std::string Positional()
    {
        std::string strValue;
        return GetParameter(nullptr, false, strValue) ? strValue : "none";
    }
};

TEST(KorCmdLineExchange, PositionalArgumentsStepOverDeclaredOptions)
{
    Exchange oExchange{"prog", "-v", "-p", "4711", "file"};
    oExchange.AddParamDescription("v", false);
    oExchange.AddParamDescription("p", true);
    EXPECT_EQ("prog", oExchange.Positional());
    EXPECT_EQ("file", oExchange.Positional());
    EXPECT_EQ("none", oExchange.Positional());
}

TEST(KorCmdLineExchange, AFlagReadsAsOneAndStays)
{
    Exchange oExchange{"prog", "-v", "-p", "4711", "file"};
    std::string strValue;
    EXPECT_TRUE(oExchange.GetParameter("v", false, strValue));
    EXPECT_EQ("1", strValue);
    strValue.clear();
    EXPECT_TRUE(oExchange.GetParameter("v", false, strValue));
    EXPECT_EQ("1", strValue);
}

TEST(KorCmdLineExchange, AValuedOptionIsTakenOutWithItsValue)
{
    Exchange oExchange{"prog", "-v", "-p", "4711", "file"};
    std::string strValue;
    EXPECT_TRUE(oExchange.GetParameter("p", true, strValue));
    EXPECT_EQ("4711", strValue);
    EXPECT_EQ((std::vector<std::string>{"prog", "-v", "file"}), oExchange.m_vecArgs);
    EXPECT_FALSE(oExchange.GetParameter("p", true, strValue));
    EXPECT_EQ("0", strValue);
}

TEST(KorCmdLineExchange, AnUndeclaredFlagCountsAsPositional)
{
    Exchange oExchange{"prog", "-v", "-p", "4711", "file"};
    oExchange.AddParamDescription("p", true);
    EXPECT_EQ("prog", oExchange.Positional());
    EXPECT_EQ("-v", oExchange.Positional());
    EXPECT_EQ("file", oExchange.Positional());
}

TEST(KorCmdLineExchange, AMissingFlagReadsAsZero)
{
    Exchange oExchange{"prog"};
    std::string strValue = "old";
    EXPECT_FALSE(oExchange.GetParameter("x", false, strValue));
    EXPECT_EQ("0", strValue);
}

TEST(KorCmdLineExchange, AValueMayLookLikeAnOption)
{
    Exchange oExchange{"prog", "-v", "-p"};
    std::string strValue;
    EXPECT_TRUE(oExchange.GetParameter("v", true, strValue));
    EXPECT_EQ("-p", strValue);
    EXPECT_EQ((std::vector<std::string>{"prog"}), oExchange.m_vecArgs);
}

TEST(KorCmdLineExchange, ANegativeNumberIsPositional)
{
    Exchange oExchange{"prog", "-5"};
    EXPECT_EQ("prog", oExchange.Positional());
    EXPECT_EQ("-5", oExchange.Positional());
}

TEST(KorCmdLineExchange, ALoneDashIsPositional)
{
    Exchange oExchange{"-"};
    oExchange.AddParamDescription("v", false);
    EXPECT_EQ("-", oExchange.Positional());
}

TEST(KorCmdLineExchange, TwoDashesMakeANameThatBeginsWithADash)
{
    Exchange oExchange{"prog", "--verbose"};
    std::string strValue;
    EXPECT_FALSE(oExchange.GetParameter("verbose", false, strValue));
    EXPECT_TRUE(oExchange.GetParameter("-verbose", false, strValue));
}

TEST(KorCmdLineExchange, NamesKeepTheirCase)
{
    Exchange oExchange{"prog", "-V"};
    std::string strValue;
    EXPECT_FALSE(oExchange.GetParameter("v", false, strValue));
    oExchange.AddParamDescription("v", true);
    EXPECT_EQ("prog", oExchange.Positional());
    EXPECT_EQ("-V", oExchange.Positional());
}

TEST(KorCmdLineExchange, AnEmptyArgumentIsPositional)
{
    Exchange oExchange{"", "file"};
    std::string strValue = "old";
    EXPECT_TRUE(oExchange.GetParameter("", false, strValue));
    EXPECT_EQ("", strValue);
    EXPECT_EQ("file", oExchange.Positional());
}

TEST(KorCmdLineExchange, AValuedOptionAtTheEndHasAnEmptyValue)
{
    Exchange oExchange{"prog", "-p"};
    std::string strValue = "old";
    EXPECT_TRUE(oExchange.GetParameter("p", true, strValue));
    EXPECT_EQ("", strValue);
    EXPECT_EQ((std::vector<std::string>{"prog"}), oExchange.m_vecArgs);
}

TEST(KorCmdLineExchange, APositionalSearchEndsAtAValuedOptionWithoutValue)
{
    Exchange oExchange{"-p"};
    oExchange.AddParamDescription("p", true);
    std::string strValue = "old";
    EXPECT_FALSE(oExchange.GetParameter(nullptr, true, strValue));
    EXPECT_EQ("old", strValue);
    EXPECT_EQ((std::vector<std::string>{"-p"}), oExchange.m_vecArgs);
}

TEST(KorCmdLineExchange, ALaterDeclarationWithValueWins)
{
    Exchange oExchange{"-p", "4711", "file"};
    oExchange.AddParamDescription("p", false);
    oExchange.AddParamDescription("p", true);
    oExchange.AddParamDescription("p", false);
    EXPECT_EQ(3U, oExchange.m_vecOptionDesc.size());
    EXPECT_EQ("file", oExchange.Positional());
}

TEST(KorCmdLineExchange, AnOptionWithoutNameIsNotDeclared)
{
    Exchange oExchange{"prog"};
    oExchange.AddParamDescription(nullptr, true);
    oExchange.AddParamDescription("", true);
    EXPECT_TRUE(oExchange.m_vecOptionDesc.empty());
}

TEST(KorCmdLineExchange, HasNoArgumentsWithoutACommandLine)
{
    CKorCmdLineExchange oExchange(nullptr);
    std::string strValue = "old";
    EXPECT_TRUE(oExchange.IsInitialized());
    EXPECT_FALSE(oExchange.GetParameter(nullptr, false, strValue));
    EXPECT_EQ("old", strValue);
    EXPECT_FALSE(oExchange.GetParameter("p", true, strValue));
    EXPECT_EQ("0", strValue);
}

TEST(KorCmdLineExchange, RestoringTheArgumentsKeepsTheDeclarations)
{
    Exchange oExchange{"-p", "4711", "file"};
    oExchange.AddParamDescription("p", true);
    std::string strValue;
    EXPECT_TRUE(oExchange.GetParameter("p", true, strValue));
    EXPECT_EQ("file", oExchange.Positional());
    oExchange.CopyCmdLineArgs();
    EXPECT_EQ("file", oExchange.Positional());
    EXPECT_EQ((std::vector<std::string>{"-p", "4711"}), oExchange.m_vecArgs);
}

TEST(KorCmdLineExchange, InitializingAgainRestoresTheArguments)
{
    Exchange oExchange{"prog"};
    EXPECT_EQ("prog", oExchange.Positional());
    oExchange.Initialize();
    EXPECT_TRUE(oExchange.IsInitialized());
    EXPECT_EQ("prog", oExchange.Positional());
}

TEST(KorCmdLineExchange, TheNameMayLieInTheValue)
{
    Exchange oExchange{"-port", "4711"};
    std::string strText = "port";
    EXPECT_TRUE(oExchange.GetParameter(strText.c_str(), true, strText));
    EXPECT_EQ("4711", strText);
}

} // namespace
