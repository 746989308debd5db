#include "config/KorOptionExchange.h"

#include "tests/config/OptionExchangeTest.h"
#include "tests/support/ScratchDir.h"

#include <cstdlib>
#include <gtest/gtest.h>

/// What a program adds for a type of its own.
template <>
void IOX_Std<int>(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
                  int& nValue, const int& nDefault)
{
    std::string strValue = std::to_string(nValue);
    IOX_Std<std::string>(pExchange, pszSection, pszOption, strValue, std::to_string(nDefault));
    if (!pExchange->IsWriteBack())
        nValue = std::atoi(strValue.c_str());
}

namespace
{

// Exchanging options with variables.

TEST_F(KorOptionExchange, AStringWithAZeroByteIsWrittenWhole)
{
    WriteFile(m_strFile, "[S]\na=x\0y\n"s);
    std::string strValue;
    {
        Exchange oReading(&m_oFile, false);
        IOX_Std<std::string>(&oReading, "S", "a", strValue, "");
    }
    EXPECT_EQ("x\0y"s, strValue);
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<std::string>(&oWriting, "S", "a", strValue, "");
    }
    EXPECT_EQ("\n[S]  \na=x\0y \n"s, ReadFile(m_strFile));
}

TEST_F(KorOptionExchange, AWrittenTextWithWhiteSpaceIsQuotedAndReadBackWithout)
{
    std::string strValue = "two words";
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<std::string>(&oWriting, "S", "a", strValue, "");
    }
    EXPECT_EQ("\n[S] \na=\"two words\" \n", ReadFile(m_strFile));
    EXPECT_EQ("\"two words\"", strValue);

    Exchange oReading(&m_oFile, false);
    IOX_Std<std::string>(&oReading, "S", "a", strValue, "");
    EXPECT_EQ("two words", strValue);
}

TEST_F(KorOptionExchange, AWrittenTextWithoutWhiteSpaceLosesItsQuotes)
{
    std::string strValue = "\"word\"";
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<std::string>(&oWriting, "S", "a", strValue, "");
    }
    EXPECT_EQ("\n[S] \na=word \n", ReadFile(m_strFile));
    EXPECT_EQ("word", strValue);
}

TEST_F(KorOptionExchange, AMissingTextReadsAsTheDefaultWithoutQuotes)
{
    Exchange oReading(&m_oFile, false);
    std::string strValue = "old";
    IOX_Std<std::string>(&oReading, "S", "a", strValue, "\"de fault\"");
    EXPECT_EQ("de fault", strValue);
    IOX_Std<std::string>(&oReading, "S", "a", strValue, strValue);
    EXPECT_EQ("de fault", strValue);
}

TEST_F(KorOptionExchange, ATextInABufferIsReadIntoIt)
{
    WriteFile(m_strFile, "a=\"two words\"\n");
    Exchange oReading(&m_oFile, false);
    char szBuffer[16];
    char szDefault[] = "\"none\"";
    char* pszValue = szBuffer;
    IOX_Std<char*>(&oReading, "", "a", pszValue, szDefault);
    EXPECT_STREQ("two words", szBuffer);
    IOX_Std<char*>(&oReading, "", "b", pszValue, szDefault);
    EXPECT_STREQ("none", szBuffer);
    IOX_Std<char*>(&oReading, "", "b", pszValue, nullptr);
    EXPECT_STREQ("", szBuffer);
    EXPECT_EQ(szBuffer, pszValue);
}

TEST_F(KorOptionExchange, WritingLeavesTheBufferUnchanged)
{
    char szBuffer[] = "two words";
    char* pszValue = szBuffer;
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<char*>(&oWriting, "S", "a", pszValue, nullptr);
    }
    EXPECT_EQ("\n[S] \na=\"two words\" \n", ReadFile(m_strFile));
    EXPECT_STREQ("two words", szBuffer);
}

TEST_F(KorOptionExchange, WithoutABufferAnEmptyTextIsWritten)
{
    char* pszValue = nullptr;
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std<char*>(&oWriting, "S", "a", pszValue, nullptr);
    }
    EXPECT_EQ("\n[S] \na= \n", ReadFile(m_strFile));
    Exchange oReading(&m_oFile, false);
    IOX_Std<char*>(&oReading, "S", "a", pszValue, nullptr);
    EXPECT_EQ(nullptr, pszValue);
}

TEST_F(KorOptionExchange, AProgramAddsTypesOfItsOwn)
{
    int nValue = 4711;
    {
        Exchange oWriting(&m_oFile, true);
        IOX_Std(&oWriting, "S", "n", nValue, 0);
    }
    EXPECT_EQ("\n[S] \nn=4711 \n", ReadFile(m_strFile));
    nValue = 0;
    Exchange oReading(&m_oFile, false);
    IOX_Std(&oReading, "S", "n", nValue, 0);
    EXPECT_EQ(4711, nValue);
    IOX_Std(&oReading, "S", "m", nValue, -1);
    EXPECT_EQ(-1, nValue);
}

} // namespace
