#include "tools/linesim/LineScript.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

std::string ErrorOf(const std::string& strText)
{
    LineScript oScript;
    std::string strError;
    EXPECT_FALSE(oScript.Parse(strText, strError)) << strText;
    return strError;
}

LineScript Parsed(const std::string& strText)
{
    LineScript oScript;
    std::string strError;
    EXPECT_TRUE(oScript.Parse(strText, strError)) << strError;
    return oScript;
}

} // namespace

TEST(LineScript, ReadsEveryStepWithItsNumber)
{
    const LineScript oScript = Parsed("expect 01 within 500\necho ??\nsilence 5\nsend 02\nnoise 6\n"
                                      "drop 7\ndrop\ndelay 8\nhangup\ncomeback\nrepeat 9\nsend 03\n"
                                      "end\nexpect 04 within 0");
    const std::pair<ScriptStep::EKind, std::uint32_t> aoExpected[] = {
        {ScriptStep::STEP_EXPECT, 500}, {ScriptStep::STEP_ECHO, 0},
        {ScriptStep::STEP_SILENCE, 5},  {ScriptStep::STEP_SEND, 0},
        {ScriptStep::STEP_NOISE, 6},    {ScriptStep::STEP_DROP, 7},
        {ScriptStep::STEP_DROP, 0},     {ScriptStep::STEP_DELAY, 8},
        {ScriptStep::STEP_HANG_UP, 0},  {ScriptStep::STEP_COME_BACK, 0},
        {ScriptStep::STEP_REPEAT, 9},   {ScriptStep::STEP_SEND, 0},
        {ScriptStep::STEP_END, 0},      {ScriptStep::STEP_EXPECT, ScriptStep::NO_LIMIT}};
    ASSERT_EQ(std::size(aoExpected), oScript.Steps().size());
    for (std::size_t i = 0; i < std::size(aoExpected); ++i) {
        EXPECT_EQ(aoExpected[i].first, oScript.Steps()[i].m_eKind) << i;
        EXPECT_EQ(aoExpected[i].second, oScript.Steps()[i].m_nNumber) << i;
        EXPECT_EQ(i + 1, oScript.Steps()[i].m_nLine);
    }
}

TEST(LineScript, SkipsCommentsAndBlankLines)
{
    const LineScript oScript = Parsed("# all of it\n\n \t\r\n  send \"a#b\" # the rest\r\n");
    ASSERT_EQ(1U, oScript.Steps().size());
    EXPECT_EQ("a#b", oScript.Steps()[0].m_oPattern.Bytes());
    EXPECT_EQ(4U, oScript.Steps()[0].m_nLine);
}

TEST(LineScript, FindsWordsOutsideQuotesOnly)
{
    const LineScript oScript = Parsed(R"(expect "\" within 1 \"" within 20)");
    EXPECT_EQ("\" within 1 \"", oScript.Steps()[0].m_oPattern.Bytes());
    EXPECT_EQ(20U, oScript.Steps()[0].m_nNumber);
}

TEST(LineScript, NamesTheLineThatItCannotRead)
{
    const std::pair<const char*, const char*> aoWrong[] = {
        {"send 01\nsing 02", "line 2: unknown step 'sing'"},
        {"send ??", "line 1: 'send' needs bytes, not a pattern"},
        {"send", "line 1: no bytes are given"},
        {"expect 01 within", "line 1: cannot read the bytes at 'within'"},
        {"expect 01 within x", "line 1: behind 'within' stands a number of milliseconds"},
        {"expect 01 within -1", "line 1: behind 'within' stands a number of milliseconds"},
        {"\ndelay", "line 2: behind 'delay' stands a number from 1 on"},
        {"delay 0", "line 1: behind 'delay' stands a number from 1 on"},
        {"delay 4294967296", "line 1: behind 'delay' stands a number from 1 on"},
        {"noise many", "line 1: behind 'noise' stands a number from 1 on"},
        {"drop 0", "line 1: behind 'drop' stands a number from 1 on"},
        {"hangup now", "line 1: nothing follows 'hangup'"},
        {"send 01\nend", "line 2: 'end' without 'repeat'"},
        {"repeat\nend", "line 2: there is nothing to repeat"},
        {"send 01\nrepeat\nsend 02", "line 2: 'repeat' has no 'end'"}};
    for (const auto& [pszScript, pszError] : aoWrong)
        EXPECT_EQ(pszError, ErrorOf(pszScript)) << pszScript;
}
