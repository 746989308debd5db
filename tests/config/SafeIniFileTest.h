#pragma once

#include "config/KorSafeIniFile.h"

#include "config/KorOptionExchange.h"
#include "tests/support/ScratchDir.h"

#include <functional>
#include <gtest/gtest.h>

using namespace std::string_literals;
using Texts = std::vector<std::string>;

/// A program's options with an exchange that each test gives.
class Settings : public CKorSafeIniFile
{
public:
    using CKorSafeIniFile::CKorSafeIniFile;
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        ++m_nRuns;
        m_fnExchange(pExchange);
    }
    std::function<void(CKorIniOptionExchange*)> m_fnExchange = [](CKorIniOptionExchange*) {};
    int m_nRuns = 0;
};

class KorSafeIniFile : public testing::Test
{
protected:
    KorSafeIniFile() : m_oFile(m_oDir.File("test.ini").c_str(), CKorIniFile::PATH_UNCHANGED)
    {
        m_oFile.m_fnExchange = [this](CKorIniOptionExchange* pExchange) {
            IOX_Std<std::string>(pExchange, "S", "x", m_strX, "default");
            IOX_Std<std::string>(pExchange, "S", "y", m_strY, "default");
        };
    }

    void Write(const std::string& strText) { WriteFile(m_oFile.GetIniFileName(), strText); }
    std::string Content() const { return ReadFile(m_oFile.GetIniFileName()); }
    /// The only finding of the last operation.
    SKorIniFinding Finding()
    {
        EXPECT_EQ(1U, m_oFile.GetFindings().size());
        return m_oFile.GetFindings().empty() ? SKorIniFinding() : m_oFile.GetFindings()[0];
    }

    ScratchDir m_oDir;
    Settings m_oFile;
    std::string m_strX = "before";
    std::string m_strY = "before";
};
