// A file whose reading fails behind its opening, as on a worn flash.

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/support/CallWatch.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <memory>

namespace
{

struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;
    using CKorIniOptionExchange::m_apOptionLines;
    using CKorIniOptionExchange::m_bModified;
};

/// Lets reading fail from the n-th call on.
CallWatch::Decision FailingRead(int nCall)
{
    return [nCall](const std::string& strCall) mutable {
        return strCall == "read" && --nCall <= 0 ? EIO : 0;
    };
}

/// The parameter is the number of the call that fails first.
class KorIniReadFailure : public testing::TestWithParam<int>
{
protected:
    KorIniReadFailure()
        : m_strFile(m_oDir.File("test.ini")),
          m_oFile(m_strFile.c_str(), CKorIniFile::PATH_UNCHANGED),
          m_strContent("[S]\n")
    {
        for (size_t i = 0; i < LINES; ++i)
            m_strContent += "option" + std::to_string(i) + "=value\n";
        WriteFile(m_strFile, m_strContent);
    }

    static constexpr size_t LINES = 10000;
    ScratchDir m_oDir;
    const std::string m_strFile;
    CKorIniFile m_oFile;
    std::string m_strContent;
};

TEST_P(KorIniReadFailure, WritingAnOptionLeavesTheFileAsItIs)
{
    {
        const CallWatch oWatch(FailingRead(GetParam()));
        m_oFile.WriteOption("S", "option0", "other");
    }
    EXPECT_TRUE(ReadFile(m_strFile) == m_strContent);
}

TEST_P(KorIniReadFailure, AnExchangeWritesOnlyWhatItReadWhole)
{
    std::unique_ptr<Exchange> pExchange;
    {
        const CallWatch oWatch(FailingRead(GetParam()));
        pExchange = std::make_unique<Exchange>(&m_oFile, true);
    }
    EXPECT_GT(LINES, pExchange->m_apOptionLines.size());
    pExchange->SetOptionString("S", "option0", "other");
    pExchange->WriteIniOptions();
    EXPECT_FALSE(pExchange->m_bModified);
    std::string strValue;
    EXPECT_TRUE(pExchange->GetOptionString("S", "option0", strValue));
    EXPECT_EQ("other", strValue);
    EXPECT_TRUE(ReadFile(m_strFile) == m_strContent);

    pExchange->ReadIniOptions();
    EXPECT_EQ(LINES + 1, pExchange->m_apOptionLines.size());
    pExchange->SetOptionString("S", "option0", "other");
    pExchange->WriteIniOptions();
    EXPECT_NE(std::string::npos, ReadFile(m_strFile).find("option0=other \n"));
    EXPECT_NE(std::string::npos, ReadFile(m_strFile).find("option9999=value \n"));
}

INSTANTIATE_TEST_SUITE_P(Call, KorIniReadFailure, testing::Values(1, 2, 3));

TEST_F(KorIniReadFailure, WhatWasReadBeforeIsInTheDocument)
{
    const CallWatch oWatch(FailingRead(2));
    const Exchange oExchange(&m_oFile, false);
    ASSERT_LT(1U, oExchange.m_apOptionLines.size());
    EXPECT_EQ("option0", oExchange.m_apOptionLines[1]->m_strOption);
}

TEST_F(KorIniReadFailure, AReadThatASignalInterruptsGoesOn)
{
    int nCall = 0;
    const CallWatch oWatch([&](const std::string& strCall) {
        return strCall == "read" && nCall++ % 2 == 0 ? EINTR : 0;
    });
    EXPECT_EQ(LINES + 1, Exchange(&m_oFile, false).m_apOptionLines.size());
}

TEST_F(KorIniReadFailure, AFileThatCannotBeOpenedForReadingIsWritten)
{
    {
        int nCall = 0;
        const CallWatch oWatch([&](const std::string& strCall) {
            return strCall == "open" && nCall++ == 0 ? EMFILE : 0;
        });
        m_oFile.WriteOption("S", "a", "1");
    }
    EXPECT_EQ("\n[S] \na=1 \n", ReadFile(m_strFile));
}

} // namespace
