#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>

/// How many entries a directory has, such as the descriptors in "/proc/self/fd".
inline std::ptrdiff_t EntriesOf(const std::string& strDirectory)
{
    return std::distance(std::filesystem::directory_iterator(strDirectory),
                         std::filesystem::directory_iterator());
}
