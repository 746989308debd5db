#include "tests/fs/FileTest.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <filesystem>

namespace
{

TEST_F(KorFile, SeeksFromEveryOrigin)
{
    EXPECT_EQ(10, m_oFile.Seek(10, CKorFile::ORIGIN_BEGIN));
    EXPECT_EQ(15, m_oFile.Seek(5, CKorFile::ORIGIN_CURRENT));
    EXPECT_EQ(12, m_oFile.Seek(static_cast<unsigned long long>(-3), CKorFile::ORIGIN_CURRENT));
    EXPECT_EQ(99, m_oFile.Seek(static_cast<unsigned long long>(-1), CKorFile::ORIGIN_END));
    EXPECT_EQ(7, m_oFile.Seek(7, 3)) << "an unknown origin is the beginning";
    EXPECT_EQ(8, m_oFile.Seek(8, 0xFFFFFFFF));
    EXPECT_EQ(8, m_oFile.GetPosition());
    EXPECT_EQ(100, m_oFile.SeekToEnd());
    EXPECT_EQ(0, m_oFile.SeekToBegin());
    EXPECT_EQ(1000, m_oFile.Seek(1000, CKorFile::ORIGIN_BEGIN)) << "beyond the end";
}

TEST_F(KorFile, ReportsASeekBeforeTheBeginningAndStays)
{
    m_oFile.Seek(10, CKorFile::ORIGIN_BEGIN);
    EXPECT_EQ(-1, m_oFile.Seek(static_cast<unsigned long long>(-11), CKorFile::ORIGIN_CURRENT));
    EXPECT_EQ(EINVAL, m_oFile.m_nLastError);
    EXPECT_EQ(10, m_oFile.GetPosition());
}

TEST_F(KorFile, ReportsASeekInAPipe)
{
    const Pipe oPipe;
    Probe oFile(oPipe.ReadEnd());
    EXPECT_EQ(-1, oFile.GetPosition());
    EXPECT_EQ(ESPIPE, oFile.m_nLastError);
    EXPECT_EQ(-1, oFile.GetLength());
}

TEST_F(KorFile, KeepsThePositionWhenAskedForItsLength)
{
    m_oFile.Seek(42, CKorFile::ORIGIN_BEGIN);
    EXPECT_EQ(100, m_oFile.GetLength());
    EXPECT_EQ(42, m_oFile.GetPosition());
    EXPECT_EQ(0, m_oFile.m_nLastError);
}

TEST_F(KorFile, MovesToTheLengthThatIsSetAndKeepsTheSize)
{
    m_oFile.Seek(42, CKorFile::ORIGIN_BEGIN);
    EXPECT_TRUE(m_oFile.SetLength(0));
    EXPECT_EQ(0, m_oFile.GetPosition());
    EXPECT_EQ(100, m_oFile.GetLength());
    EXPECT_TRUE(m_oFile.SetLength(1000));
    EXPECT_EQ(1000, m_oFile.GetPosition());
    EXPECT_EQ(100u, std::filesystem::file_size(m_strPath));
    EXPECT_TRUE(m_oFile.SetLength(0x80000000)) << "though there is no such position";
    EXPECT_EQ(EINVAL, m_oFile.m_nLastError);
}

TEST_F(KorFile, SeeksByTheLow32BitsOfTheOffset)
{
    Resize(5 * GIB);
    EXPECT_EQ(16, m_oFile.Seek(0x100000010, CKorFile::ORIGIN_BEGIN));
    EXPECT_EQ(18, m_oFile.Seek(0xABCDEF0000000002, CKorFile::ORIGIN_CURRENT));
    EXPECT_EQ(17, m_oFile.Seek(0x00000001FFFFFFFF, CKorFile::ORIGIN_CURRENT));
    EXPECT_EQ(INT_MAX, m_oFile.Seek(0x7FFFFFFF, CKorFile::ORIGIN_BEGIN));
    EXPECT_EQ(0, m_oFile.m_nLastError);
    EXPECT_EQ(-1, m_oFile.Seek(0x80000000, CKorFile::ORIGIN_BEGIN));
    EXPECT_EQ(EINVAL, m_oFile.m_nLastError) << "a negative position";
}

TEST_F(KorFile, ReportsAPositionBeyond2GiBAsOverflow)
{
    Resize(3 * GIB);
    EXPECT_EQ(-1, m_oFile.SeekToEnd());
    EXPECT_EQ(EOVERFLOW, errno);
    EXPECT_EQ(EOVERFLOW, m_oFile.m_nLastError);

    m_oFile.m_nLastError = 0;
    EXPECT_EQ(INT_MAX, m_oFile.Seek(INT_MAX, CKorFile::ORIGIN_BEGIN));
    EXPECT_EQ(-1, m_oFile.Seek(1, CKorFile::ORIGIN_CURRENT));
    EXPECT_EQ(EOVERFLOW, m_oFile.m_nLastError);
}

TEST_F(KorFile, ReportsAPositionBeyond4GiBAsOverflow)
{
    Resize(4 * GIB + 5);
    EXPECT_EQ(-1, m_oFile.SeekToEnd());
    EXPECT_EQ(EOVERFLOW, m_oFile.m_nLastError);
    Resize(4 * GIB - 1);
    m_oFile.m_nLastError = 0;
    EXPECT_EQ(-1, m_oFile.SeekToEnd());
    EXPECT_EQ(EOVERFLOW, m_oFile.m_nLastError);
}

TEST_F(KorFile, KeepsThePositionWhenTheLengthOverflows)
{
    Resize(3 * GIB);
    m_oFile.Seek(42, CKorFile::ORIGIN_BEGIN);
    EXPECT_EQ(-1, m_oFile.GetLength());
    EXPECT_EQ(EOVERFLOW, m_oFile.m_nLastError);
    EXPECT_EQ(42, m_oFile.GetPosition());
}

TEST_F(KorFile, EndsAtTheEndWhenAskedForItsLengthBeyond2GiB)
{
    Resize(3 * GIB);
    m_oFile.Seek(INT_MAX, CKorFile::ORIGIN_BEGIN);
    m_oFile.Seek(1, CKorFile::ORIGIN_CURRENT);
    EXPECT_EQ(-1, m_oFile.GetLength());
    EXPECT_EQ("", Read(1));
}

TEST_F(KorFile, KnowsALengthOf2GiBLessOneByte)
{
    Resize(2 * GIB - 1);
    EXPECT_EQ(INT_MAX, m_oFile.GetLength());
    EXPECT_EQ(0, m_oFile.m_nLastError);
    Resize(2 * GIB);
    EXPECT_EQ(-1, m_oFile.GetLength());
}

TEST_F(KorFile, ReadsAndWritesAcross2GiB)
{
    Resize(3 * GIB);
    m_oFile.Seek(0x7FFFFFFE, CKorFile::ORIGIN_BEGIN);
    EXPECT_TRUE(m_oFile.Write("abcd", 4));
    EXPECT_EQ(-1, m_oFile.GetPosition());
    EXPECT_EQ(EOVERFLOW, m_oFile.m_nLastError);
    m_oFile.Seek(0x7FFFFFFE, CKorFile::ORIGIN_BEGIN);
    EXPECT_EQ("abcd", Read(4));
}

TEST_F(KorFile, AppendsToABigFileThoughItsEndCannotBeTold)
{
    Resize(5 * GIB);
    EXPECT_EQ(-1, m_oFile.SeekToEnd());
    EXPECT_TRUE(m_oFile.Write("end", 3));
    EXPECT_EQ(5u * GIB + 3, std::filesystem::file_size(m_strPath));
}

/// Replaces Seek.
class Tape : public Probe
{
public:
    long long Seek(unsigned long long nOffset, unsigned int nOrigin) override
    {
        m_vecSeeks.emplace_back(nOffset, nOrigin);
        return 1000 + nOrigin;
    }

    std::vector<std::pair<unsigned long long, unsigned int>> m_vecSeeks;
};

TEST_F(KorFile, MovesThroughTheSeekOfADerivedClass)
{
    Tape oTape;
    EXPECT_EQ(1000, oTape.SeekToBegin());
    EXPECT_EQ(1002, oTape.SeekToEnd());
    EXPECT_EQ(1001, oTape.GetPosition());
    EXPECT_TRUE(oTape.SetLength(5));
    oTape.m_vecSeeks.clear();
    EXPECT_EQ(1002, oTape.GetLength());
    EXPECT_EQ((std::vector<std::pair<unsigned long long, unsigned int>>{{0, 1}, {0, 2}, {1001, 0}}),
              oTape.m_vecSeeks);
}

} // namespace
