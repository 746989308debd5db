#pragma once

#include "tests/failing/Scenario.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// Files, beside what a scenario does.

/// The content of a file; empty when there is none.
inline std::string TextOf(const std::string& strFile)
{
    std::ifstream oFile(strFile, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(oFile), {});
}

inline void SetText(const std::string& strFile, const std::string& strText)
{
    std::ofstream(strFile, std::ios::binary | std::ios::trunc) << strText;
}

/// Makes a directory empty.
inline void Empty(const std::string& strDirectory)
{
    for (const auto& oEntry : std::filesystem::directory_iterator(strDirectory))
        std::filesystem::remove_all(oEntry.path());
}
