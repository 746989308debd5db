#include "config/KorCmdLine.h"

#include "config/KorCmdLineExchange.h"
#include "tests/support/Arguments.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace
{

using Texts = std::vector<std::string>;

struct CmdLine : CKorCmdLine
{
    using CKorCmdLine::CKorCmdLine;
    using CKorCmdLine::DoOptionExchange;
    using CKorCmdLine::m_vecArgs;

    void DoOptionExchange(CKorCmdLineExchange* pExchange) override
    {
        m_vecPasses.push_back(pExchange->IsInitialized());
        pExchange->AddParamDescription("p", true);
        std::string strText;
        pExchange->GetParameter("p", true, m_strPort);
        while (pExchange->GetParameter(nullptr, false, strText))
            m_vecPositional.push_back(strText);
    }

    std::vector<bool> m_vecPasses;
    std::string m_strPort;
    Texts m_vecPositional;
};

TEST(KorCmdLine, HoldsEveryArgumentUnchanged)
{
    Arguments oArgs{"prog", "-p", "a b", "\"q\"", ""};
    const CmdLine oCmdLine(oArgs.Count(), oArgs.Vector());
    EXPECT_EQ((Texts{"prog", "-p", "a b", "\"q\"", ""}), oCmdLine.m_vecArgs);
}

TEST(KorCmdLine, IsEmptyByDefault)
{
    EXPECT_TRUE(CmdLine().m_vecArgs.empty());
}

TEST(KorCmdLine, IsEmptyForACountBelowOne)
{
    Arguments oArgs{"prog"};
    EXPECT_TRUE(CmdLine(0, oArgs.Vector()).m_vecArgs.empty());
    EXPECT_TRUE(CmdLine(-1, oArgs.Vector()).m_vecArgs.empty());
}

TEST(KorCmdLine, IsEmptyWithoutAnArgumentArray)
{
    EXPECT_TRUE(CmdLine(2, nullptr).m_vecArgs.empty());
}

TEST(KorCmdLine, InitializingAgainReplacesTheArguments)
{
    Arguments oFirst{"prog", "a", "b"};
    Arguments oSecond{"other"};
    CmdLine oCmdLine(oFirst.Count(), oFirst.Vector());
    oCmdLine.Initialize(oSecond.Count(), oSecond.Vector());
    EXPECT_EQ((Texts{"other"}), oCmdLine.m_vecArgs);
    oCmdLine.Initialize(0, oSecond.Vector());
    EXPECT_TRUE(oCmdLine.m_vecArgs.empty());
}

TEST(KorCmdLine, ANullEntryRaisesALogicError)
{
    Arguments oArgs{"prog"};
    CmdLine oCmdLine;
    try {
        oCmdLine.Initialize(2, oArgs.Vector());
        FAIL() << "nothing was thrown";
    } catch (const std::logic_error& oError) {
        EXPECT_STREQ("basic_string::_S_construct NULL not valid", oError.what());
    }
}

TEST(KorCmdLine, AnUpdateDeclaresThenReads)
{
    Arguments oArgs{"prog", "-p", "4711", "file"};
    CmdLine oCmdLine(oArgs.Count(), oArgs.Vector());
    EXPECT_TRUE(oCmdLine.UpdateOptions(false));
    EXPECT_EQ((std::vector<bool>{false, true}), oCmdLine.m_vecPasses);
    EXPECT_EQ("4711", oCmdLine.m_strPort);
    EXPECT_EQ((Texts{"prog", "file"}), oCmdLine.m_vecPositional);
}

TEST(KorCmdLine, AnUpdateLeavesTheArgumentsForTheNextOne)
{
    Arguments oArgs{"prog", "file"};
    CmdLine oCmdLine(oArgs.Count(), oArgs.Vector());
    EXPECT_TRUE(oCmdLine.UpdateOptions(true));
    EXPECT_TRUE(oCmdLine.UpdateOptions(true));
    EXPECT_EQ((Texts{"prog", "file"}), oCmdLine.m_vecArgs);
    EXPECT_EQ((Texts{"prog", "file", "prog", "file"}), oCmdLine.m_vecPositional);
}

TEST(KorCmdLine, ForwardsAGenericExchangeToTheTypedHandler)
{
    CmdLine oCmdLine;
    CKorCmdLineExchange oExchange(nullptr);
    CKorConfigBase& oSource = oCmdLine;
    oSource.DoOptionExchange(static_cast<CKorConfigExchange*>(&oExchange));
    EXPECT_EQ((std::vector<bool>{true}), oCmdLine.m_vecPasses);
}

TEST(KorCmdLine, ItsOwnHandlersDoNothing)
{
    CKorCmdLine oCmdLine;
    EXPECT_TRUE(oCmdLine.UpdateOptions(false));
}

} // namespace
