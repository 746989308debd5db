#pragma once

// The lines of a file as they are read. Not installed.

#include <cstddef>
#include <string>
#include <string_view>

/// Reads a file line by line, through a buffer that grows with the longest line.
class CKorIniReader
{
public:
    /// Opens the file. One that cannot be opened has no lines.
    explicit CKorIniReader(const std::string& strFile);
    ~CKorIniReader();
    CKorIniReader(const CKorIniReader&) = delete;
    CKorIniReader& operator=(const CKorIniReader&) = delete;

    /// Gives the next line without its line feed. The last one is what stands behind the last line
    /// feed, or what was read before reading failed.
    /// @param rstrLine  stays valid until the next call
    /// @return false behind the last line
    bool Next(std::string_view& rstrLine);

    /// Reading failed before the end of the file.
    bool HasFailed() const { return m_bFailed; }

private:
    bool ReadMore();

    int m_hFile;
    bool m_bFailed = false;
    std::string m_strBuffer;
    size_t m_nBegin = 0; ///< what was not given yet lies from here
    size_t m_nEnd = 0;   ///< to here
};
