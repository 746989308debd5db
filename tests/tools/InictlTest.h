#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

class Inictl : public testing::Test
{
protected:
    Inictl() : m_strFile(m_oDir.File("test.ini")) {}

    /// Runs the program; "FILE" stands for the test's file.
    ChildResult Run(Words vecWords) const
    {
        for (std::string& strWord : vecWords) {
            if (strWord == "FILE")
                strWord = m_strFile;
        }
        vecWords.insert(vecWords.begin(), INICTL_PROGRAM);
        return RunProgram(vecWords);
    }

    void ExpectError(const Words& vecWords, const std::string& strError) const
    {
        const ChildResult oResult = Run(vecWords);
        EXPECT_EQ(2, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strOut);
        EXPECT_NE(std::string::npos, oResult.strErr.find("inictl: " + strError)) << oResult.strErr;
    }

    std::string Content() const { return ReadFile(m_strFile); }

    ScratchDir m_oDir;
    const std::string m_strFile;
};
