#pragma once

// What a file held, and as which file, at one moment. Not installed.

#include <array>
#include <cstdint>
#include <string>

struct stat;

/// Tells one state of a file from another, content and place included: device, inode, size, time
/// of modification and of change. A file that is missing has all zeros.
using KorFileState = std::array<int64_t, 7>;

KorFileState KorFileStateOf(const struct stat& oStat);

/// The state of what has the name now; all zeros when it cannot be told.
KorFileState KorFileStateOf(const char* pszName);

struct SKorFileImage
{
    KorFileState m_oState{};
    std::string m_strContent;

    /// Reads a regular file; on failure, with `errno`, the image is that of a missing file.
    bool Read(const char* pszName);

    /// Whether the file is still the same and holds the same; `errno` is ESTALE otherwise, or that
    /// of a failure to read it. Time stamps alone would miss a change within one tick of the clock.
    bool IsCurrent(const char* pszName) const;
};
