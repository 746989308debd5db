#include "config/KorTypedOptions.h"

#include "config/KorSafeIniFile.h"
#include "serial/KorSerial.h"
#include "tests/config/TypedOptionsTest.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

TEST_F(KorTypedOptions, TakeArgumentsThatConvert)
{
    std::string strText;
    unsigned int nUnsigned = 0;
    double nDouble = 0;
    CKorTimeDiff oSpan;
    EXPECT_TRUE(ReadFrom("", [&](CKorIniOptionExchange* p) {
        return IOX_Value(p, "A", "x", strText, "d") &&
               IOX_Range(p, "A", "n", nUnsigned, 500, 1, 1000) &&
               IOX_Value(p, "A", "f", nDouble, 2) && IOX_Value(p, "A", "t", oSpan, 1500LL);
    }));
    EXPECT_EQ("d", strText);
    EXPECT_EQ(500U, nUnsigned);
    EXPECT_EQ(2.0, nDouble);
    EXPECT_EQ(1500, oSpan.GetTotalMilliSeconds());
}

TEST_F(KorTypedOptions, AMissingOptionIsItsDefault)
{
    int nValue = 7;
    EXPECT_TRUE(ReadFrom("[Poll]\n", Value(nValue, 500)));
    EXPECT_EQ(500, nValue);
    EXPECT_TRUE(m_vecFindings.empty());
}

TEST_F(KorTypedOptions, AStoredOptionIsRead)
{
    int nValue = 7;
    EXPECT_TRUE(ReadFrom("[Poll]\nInterval = 0250 # ms\n", Value(nValue, 500)));
    EXPECT_EQ(250, nValue);
    EXPECT_TRUE(ReadFrom("[Poll]\nInterval=\"20\"\n", Value(nValue, 500)));
    EXPECT_EQ(20, nValue);
}

TEST_F(KorTypedOptions, AMalformedOptionIsItsDefaultAndAFinding)
{
    int nValue = 7;
    EXPECT_FALSE(ReadFrom("[Poll]\n\nInterval=abc\n", Value(nValue, 500)));
    EXPECT_EQ(500, nValue);
    EXPECT_TRUE(m_bUpdated);
    EXPECT_EQ("[Poll] Interval=abc is no whole number; 500 is used", Finding());
    EXPECT_EQ(SKorIniFinding::FINDING_BAD_VALUE, m_vecFindings.at(0).m_eKind);
    EXPECT_EQ(3U, m_vecFindings.at(0).m_nLine);
    EXPECT_EQ("Poll", m_vecFindings.at(0).m_strSection);
    EXPECT_EQ("Interval", m_vecFindings.at(0).m_strOption);
}

TEST_F(KorTypedOptions, AFindingShowsNoControlCharacters)
{
    int nValue = 7;
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=1\x1B[2\x7F\n", Value(nValue, 500)));
    EXPECT_EQ("[Poll] Interval=1?[2? is no whole number; 500 is used", Finding());
}

TEST_F(KorTypedOptions, EveryTypeSaysWhatItIsNot)
{
    bool bValue = false;
    double nValue = 0;
    char cValue = '?';
    CKorTimeDiff oSpan;
    CKorUTCTime oTime;
    std::vector<int> vecValue;
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=maybe\n", Value(bValue, true)));
    EXPECT_EQ("[Poll] Interval=maybe is neither yes nor no; true is used", Finding());
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=1,5\n", Value(nValue, 0.5)));
    EXPECT_EQ("[Poll] Interval=1,5 is no number; 0.5 is used", Finding());
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=ab\n", Value(cValue, 'x')));
    EXPECT_EQ("[Poll] Interval=ab is no single character; x is used", Finding());
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=5\n", Value(oSpan, CKorTimeDiff(500LL))));
    EXPECT_EQ("[Poll] Interval=5 is no time span; 500ms is used", Finding());
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=now\n", Value(oTime, CKorUTCTime(63871286400000LL))));
    EXPECT_EQ(0U, Finding().find("[Poll] Interval=now is no time; 20"));
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=1,x\n", Value(vecValue, std::vector<int>{})));
    EXPECT_EQ("[Poll] Interval=1,x has an item that is no whole number; the default is used",
              Finding());
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=\n", Value(nValue, 0.5)));
    EXPECT_EQ("[Poll] Interval= is empty; 0.5 is used", Finding());
}

TEST_F(KorTypedOptions, ANumberThatTheTypeCannotHoldIsOutOfRange)
{
    unsigned char nValue = 7;
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=256\n", Value(nValue, static_cast<unsigned char>(5))));
    EXPECT_EQ(5, nValue);
    EXPECT_EQ("[Poll] Interval=256 is not in 0 to 255; 5 is used", Finding());
    EXPECT_EQ(SKorIniFinding::FINDING_OUT_OF_RANGE, m_vecFindings.at(0).m_eKind);
}

TEST_F(KorTypedOptions, TheLimitsAreInsideTheRange)
{
    int nValue = 0;
    EXPECT_TRUE(ReadFrom("[Poll]\nInterval=10\n", Range(nValue)));
    EXPECT_EQ(10, nValue);
    EXPECT_TRUE(ReadFrom("[Poll]\nInterval=1000\n", Range(nValue)));
    EXPECT_EQ(1000, nValue);
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=9\n", Range(nValue)));
    EXPECT_EQ(500, nValue);
    EXPECT_EQ("[Poll] Interval=9 is not in 10 to 1000; 500 is used", Finding());
    EXPECT_EQ(SKorIniFinding::FINDING_OUT_OF_RANGE, m_vecFindings.at(0).m_eKind);
    nValue = 0;
    EXPECT_FALSE(ReadFrom("[Poll]\nInterval=1001\n", Range(nValue)));
    EXPECT_EQ(500, nValue);
}

TEST_F(KorTypedOptions, WritingStoresTheValue)
{
    int nValue = 250;
    EXPECT_TRUE(WriteInto("[Poll]\nInterval=500 # ms\n", Value(nValue, 1)));
    EXPECT_TRUE(m_bUpdated);
    EXPECT_EQ("[Poll]\nInterval=250 # ms\n", Content());
    EXPECT_TRUE(WriteInto("[Poll]\nInterval=abc\n", Value(nValue, 1)));
    EXPECT_EQ("[Poll]\nInterval=250\n", Content());
    EXPECT_TRUE(WriteInto("", Range(nValue)));
    EXPECT_EQ(250, nValue);
    nValue = 0;
    EXPECT_TRUE(Exchange(false, Value(nValue, 1)));
    EXPECT_EQ(250, nValue);
}

TEST_F(KorTypedOptions, WhatReadsTheSameIsNotTouched)
{
    int nValue = 500;
    bool bValue = true;
    for (const char* pszContent :
         {"[Poll]\nInterval = 0500\n", "[Poll]\nInterval=0x1F4\n", "[Poll]\nInterval=\"500\"\n"}) {
        EXPECT_TRUE(WriteInto(pszContent, Value(nValue, 1)));
        EXPECT_EQ(pszContent, Content());
    }
    EXPECT_TRUE(WriteInto("[Poll]\nInterval=yes\n", Value(bValue, false)));
    EXPECT_EQ("[Poll]\nInterval=yes\n", Content());
    bValue = false;
    EXPECT_TRUE(WriteInto("[Poll]\nInterval=yes\n", Value(bValue, false)));
    EXPECT_EQ("[Poll]\nInterval=false\n", Content());
}

TEST_F(KorTypedOptions, AnExcludedValueIsNotStored)
{
    int nValue = 5;
    EXPECT_FALSE(WriteInto("[Poll]\nInterval=20\n", Range(nValue)));
    EXPECT_FALSE(m_bUpdated);
    EXPECT_EQ(5, nValue);
    EXPECT_EQ("[Poll]\nInterval=20\n", Content());
    EXPECT_EQ("[Poll] Interval is not stored: the value is not in 10 to 1000", Finding());
}

TEST_F(KorTypedOptions, AValueWithoutATextIsNotStored)
{
    double nValue = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(WriteInto("", Value(nValue, 0.5)));
    EXPECT_EQ(SKorIniFinding::FINDING_NOT_STORABLE, m_vecFindings.at(0).m_eKind);
    for (std::vector<std::string> vecValue : {std::vector<std::string>{"a,b"}, {""}, {"a ", "b"}}) {
        EXPECT_FALSE(WriteInto("", Value(vecValue, {})));
        EXPECT_EQ("[Poll] Interval is not stored: the value has no text that reads back",
                  Finding());
    }
    std::vector<std::string> vecEmpty;
    EXPECT_TRUE(WriteInto("", Value(vecEmpty, {"d"})));
    EXPECT_TRUE(ReadFrom(Content(), Value(vecEmpty, {"d"})));
    EXPECT_TRUE(vecEmpty.empty());
}

TEST_F(KorTypedOptions, ATextIsQuotedWhereItNeedsQuotesAndOnlyInTheFile)
{
    const std::pair<const char*, const char*> STORED[] = {
        {"plain", "plain"},     {"a b", "\"a b\""}, {" a", "\" a\""},   {"\t", "\"\t\""},
        {"\"q\"", "\"\"q\"\""}, {"\"", "\""},       {"", ""},           {"\"\"", "\"\"\"\""},
        {"a\"b", "a\"b"},       {"\"q", "\"q"},     {"a;b=c", "a;b=c"},
    };
    for (const auto& [pszText, pszStored] : STORED) {
        std::string strValue = pszText;
        EXPECT_TRUE(WriteInto("", Value<std::string>(strValue, "d")));
        EXPECT_EQ(pszText, strValue);
        EXPECT_NE(std::string::npos, Content().find(std::string("Interval=") + pszStored + "\n"))
            << Content();
        strValue = "other";
        EXPECT_TRUE(Exchange(false, Value<std::string>(strValue, "d")));
        EXPECT_EQ(pszText, strValue);
    }
}

TEST_F(KorTypedOptions, WhatTheFormatCannotHoldIsRefusedWithoutBeingTold)
{
    for (const std::string strSecret : {"pa#ss", "pa\nss", "a # b"}) {
        std::string strValue = strSecret;
        EXPECT_FALSE(WriteInto("[Poll]\nInterval=old\n", Value<std::string>(strValue, "d")));
        EXPECT_FALSE(m_bUpdated);
        EXPECT_EQ("[Poll]\nInterval=old\n", Content());
        EXPECT_EQ(SKorIniFinding::FINDING_NOT_STORABLE, m_vecFindings.at(0).m_eKind);
        EXPECT_EQ(std::string::npos, Finding().find(strSecret));
    }
    std::string strValue("a\0b", 3);
    EXPECT_FALSE(WriteInto("", Value<std::string>(strValue, "d")));
}

/// The settings of docs/settings.md.
class Settings : public CKorSafeIniFile
{
public:
    explicit Settings(const std::string& strFile)
        : CKorSafeIniFile(strFile.c_str(), PATH_UNCHANGED), m_eParity(), m_nRegisters(0)
    {
    }

    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        IOX_Value(pExchange, "Port", "Device", m_strDevice, "/dev/ttyAM0");
        IOX_Enum(pExchange, "Port", "Parity", m_eParity, CKorSerial::PARITY_NONE,
                 {{"none", CKorSerial::PARITY_NONE}, {"even", CKorSerial::PARITY_EVEN}});
        IOX_Range(pExchange, "Poll", "Registers", m_nRegisters, 10, 1, 125);
        IOX_Range(pExchange, "Poll", "Interval", m_oInterval, 500, 10, 60000);
        IOX_Value(pExchange, "Poll", "Units", m_vecUnits, {1});
    }

    std::string m_strDevice;
    CKorSerial::E_PARITY m_eParity;
    unsigned int m_nRegisters;
    CKorTimeDiff m_oInterval;
    std::vector<unsigned char> m_vecUnits;
};

TEST_F(KorTypedOptions, AnOptionWithoutANameIsNeitherThereNorStored)
{
    std::string strValue;
    const auto fnExchange = [&strValue](CKorIniOptionExchange* pExchange) {
        return IOX_Value(pExchange, "Poll", "", strValue, "default");
    };
    EXPECT_TRUE(ReadFrom("[Poll]\nInterval=5\n", fnExchange));
    EXPECT_EQ("default", strValue);
    strValue = ""; // the value that the header has
    EXPECT_FALSE(WriteInto("[Poll]\nInterval=5\n", fnExchange));
    EXPECT_EQ("[Poll]\nInterval=5\n", Content());
}

TEST_F(KorTypedOptions, TheDocumentedSettingsAreReadAndStayAsTheyAreWritten)
{
    const std::string strContent = "[Port]\nDevice = /dev/ttyAM1\nParity = Even\n\n[Poll]\n"
                                   "Registers=10\nInterval = 1.5s     # or 1500ms\n"
                                   "Units = 1, 2, 0x10\n";
    WriteFile(m_strFile, strContent);
    Settings oSettings(m_strFile);
    ASSERT_TRUE(oSettings.UpdateOptions(false));
    EXPECT_TRUE(oSettings.GetFindings().empty());
    EXPECT_EQ("/dev/ttyAM1", oSettings.m_strDevice);
    EXPECT_EQ(CKorSerial::PARITY_EVEN, oSettings.m_eParity);
    EXPECT_EQ(10U, oSettings.m_nRegisters);
    EXPECT_EQ(1500, oSettings.m_oInterval.GetTotalMilliSeconds());
    EXPECT_EQ((std::vector<unsigned char>{1, 2, 16}), oSettings.m_vecUnits);
    ASSERT_TRUE(oSettings.UpdateOptions(true));
    EXPECT_EQ(strContent, Content());

    WriteFile(m_strFile, "[Poll]\nInterval=abc\n");
    ASSERT_TRUE(oSettings.UpdateOptions(false));
    ASSERT_EQ(1U, oSettings.GetFindings().size());
    EXPECT_EQ("[Poll] Interval=abc is no time span; 500ms is used",
              oSettings.GetFindings()[0].m_strText);
}

} // namespace
