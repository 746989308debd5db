#pragma once

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// The lines that Python prints; fails the running test when it fails.
inline std::vector<std::string> LinesOfPython(const std::vector<std::string>& vecArgs,
                                              const std::string& strInput = "")
{
    std::vector<std::string> vecCommand = {"/usr/bin/python3"};
    vecCommand.insert(vecCommand.end(), vecArgs.begin(), vecArgs.end());
    const ChildResult oResult = RunProgram(vecCommand, strInput);
    EXPECT_EQ(0, oResult.nExitStatus) << oResult.strErr;
    std::vector<std::string> vecLines;
    for (std::size_t nBegin = 0; nBegin < oResult.strOut.size();) {
        const std::size_t nEnd = oResult.strOut.find('\n', nBegin);
        vecLines.push_back(oResult.strOut.substr(nBegin, nEnd - nBegin));
        nBegin = nEnd + 1;
    }
    return vecLines;
}
