#pragma once

#include "config/KorOptionExchange.h"
#include "config/KorSafeIniFile.h"
#include "tests/support/ScratchDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Sets the option "a" to the value that it is given and all others to "1".
class ValueSettings : public CKorSafeIniFile
{
public:
    explicit ValueSettings(const std::string& strFile)
        : CKorSafeIniFile(strFile.c_str(), PATH_UNCHANGED)
    {
    }
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        pExchange->SetOptionString("S", "a", m_strValue.c_str());
    }
    std::string m_strValue;
};

class KorSafeIniFault : public testing::Test
{
protected:
    static constexpr size_t FILLING = 20000;

    static std::string Text(const std::string& strValue)
    {
        return "[S]\na=" + strValue + "\n# " + std::string(FILLING, '-') + "\nz=end\n";
    }
    std::string Content() const { return ReadFile(m_strFile); }
    std::vector<std::string> Names() const
    {
        std::vector<std::string> vecNames;
        for (const auto& oEntry : std::filesystem::directory_iterator(m_oDir.Path()))
            vecNames.push_back(oEntry.path().filename());
        return vecNames;
    }
    /// Whether the file is the text with some number as value.
    bool IsWhole() const
    {
        ValueSettings oFile(m_strFile);
        return Content() == Text(oFile.ReadOption("S", "a", "none"));
    }
    /// Writes one number after the other, until a write fails.
    int WriteForEver() const
    {
        ValueSettings oFile(m_strFile);
        for (unsigned int i = 0;; ++i) {
            if (!oFile.WriteOption("S", "a", std::to_string(i).c_str()))
                return oFile.GetLastError();
        }
    }

    ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("test.ini");
};
