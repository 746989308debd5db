#pragma once

#include "fs/KorFile.h"
#include "tests/support/ScratchDir.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

// What the tests of the file class share.

constexpr unsigned int FAILED = 0xFFFFFFFF;
constexpr long long GIB = 1024LL * 1024 * 1024;

/// A file that shows its members.
class Probe : public CKorFile
{
public:
    using CKorFile::CKorFile;
    using CKorFile::m_bCloseOnDelete;
    using CKorFile::m_hFile;
    using CKorFile::m_nLastError;
    using CKorFile::m_strFileName;
};

inline bool IsOpen(int hFile)
{
    return fcntl(hFile, F_GETFD) != -1;
}

/// A file of 100 bytes, "0123456789" ten times, opened for reading and writing.
class KorFile : public testing::Test
{
protected:
    KorFile() : m_strPath(m_oDir.File("data"))
    {
        std::string strContent;
        for (int i = 0; i < 10; ++i)
            strContent += "0123456789";
        WriteFile(m_strPath, strContent);
        m_oFile.Open(m_strPath.c_str(), CKorFile::OPEN_READWRITE);
    }

    /// Gives the file that size without writing anything.
    void Resize(long long nSize) { ASSERT_EQ(0, truncate(m_strPath.c_str(), nSize)); }

    std::string Read(unsigned int nCount)
    {
        std::string strBuffer(nCount, '\0');
        strBuffer.resize(m_oFile.Read(strBuffer.data(), nCount));
        return strBuffer;
    }

    ScratchDir m_oDir;
    std::string m_strPath;
    Probe m_oFile;
};

/// A pipe, with the given flags for both of its ends.
class Pipe
{
public:
    explicit Pipe(int nFlags = 0) { EXPECT_EQ(0, pipe2(m_ahEnds, nFlags)); }
    ~Pipe()
    {
        close(m_ahEnds[0]);
        close(m_ahEnds[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    int ReadEnd() const { return m_ahEnds[0]; }
    int WriteEnd() const { return m_ahEnds[1]; }

private:
    int m_ahEnds[2] = {-1, -1};
};
