#include "tests/fs/FileTest.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <type_traits>
#include <vector>

namespace
{

TEST_F(KorFile, IsWithoutDescriptorWhenConstructed)
{
    const Probe oFile;
    EXPECT_EQ(-1, CKorFile::HANDLE_FILE_NULL);
    EXPECT_EQ(-1, oFile.m_hFile);
    EXPECT_FALSE(oFile.m_bCloseOnDelete);
    EXPECT_EQ("", oFile.m_strFileName);
    EXPECT_EQ(0, oFile.m_nLastError);
    EXPECT_FALSE(std::is_copy_constructible_v<CKorFile>);
    EXPECT_FALSE(std::is_copy_assignable_v<CKorFile>);
}

TEST_F(KorFile, HoldsItsMembersInOrder)
{
    const void* const pHandle = &m_oFile.m_hFile;
    const void* const pCloseOnDelete = &m_oFile.m_bCloseOnDelete;
    const void* const pName = &m_oFile.m_strFileName;
    const void* const pLastError = &m_oFile.m_nLastError;
    EXPECT_LT(pHandle, pCloseOnDelete);
    EXPECT_LT(pCloseOnDelete, pName);
    EXPECT_LT(pName, pLastError);
}

/// Where the virtual operations stand in the table: a pointer to one begins with its place there.
template <typename... TOperation>
std::vector<std::uintptr_t> PlacesOf(TOperation... fnOperations)
{
    const auto fnPlace = [](auto fnOperation) {
        std::uintptr_t nPlace = 0;
        std::memcpy(&nPlace, &fnOperation, sizeof nPlace);
        return nPlace;
    };
    return {fnPlace(fnOperations)...};
}

TEST_F(KorFile, HasItsVirtualOperationsInOrder)
{
    const std::vector<std::uintptr_t> vecPlaces =
        PlacesOf(&CKorFile::GetPosition, &CKorFile::GetFile, &CKorFile::SetFile, &CKorFile::Open,
                 &CKorFile::Seek, &CKorFile::SetLength, &CKorFile::GetLength, &CKorFile::Read,
                 &CKorFile::Write, &CKorFile::Flush, &CKorFile::Close, &CKorFile::GetFileName,
                 &CKorFile::GetPathName);
    EXPECT_EQ(2u, vecPlaces[0] / sizeof(void*)) << "behind the two destructors";
    for (size_t i = 1; i < vecPlaces.size(); ++i)
        EXPECT_EQ(sizeof(void*), vecPlaces[i] - vecPlaces[i - 1]) << i;
}

TEST_F(KorFile, OpensAnExistingFile)
{
    const Probe oFile(m_strPath.c_str(), CKorFile::OPEN_READ);
    EXPECT_NE(-1, oFile.m_hFile);
    EXPECT_TRUE(oFile.m_bCloseOnDelete);
    EXPECT_EQ(0, oFile.m_nLastError);
    EXPECT_EQ("", oFile.GetFile()) << "Open sets no name";
}

TEST_F(KorFile, CreatesNoFile)
{
    const std::string strMissing = m_oDir.File("missing");
    for (const unsigned int nFlags : {0x00u, 0x01u, 0x02u, 0x21u, 0x31u, 0x42u, 0x8042u, ~0u}) {
        Probe oFile;
        EXPECT_FALSE(oFile.Open(strMissing.c_str(), nFlags));
        EXPECT_EQ(-1, oFile.m_hFile);
        EXPECT_FALSE(oFile.m_bCloseOnDelete);
        EXPECT_EQ(ENOENT, oFile.m_nLastError);
        EXPECT_FALSE(CKorFile::FileExist(strMissing.c_str()));
    }
    const Probe oFile(strMissing.c_str(), CKorFile::OPEN_WRITE);
    EXPECT_EQ(-1, oFile.m_hFile);
    EXPECT_EQ(ENOENT, oFile.m_nLastError);
}

TEST_F(KorFile, CutsNoFile)
{
    EXPECT_EQ(100, Probe(m_strPath.c_str(), CKorFile::OPEN_WRITE).GetLength());
    EXPECT_EQ(100u, std::filesystem::file_size(m_strPath));
}

/// The access mode of the descriptor that Open() made.
int AccessModeOf(const std::string& strPath, unsigned int nFlags)
{
    const Probe oFile(strPath.c_str(), nFlags);
    return fcntl(oFile.m_hFile, F_GETFL) & O_ACCMODE;
}

TEST_F(KorFile, TakesTheAccessFromTheLowestTwoBits)
{
    EXPECT_EQ(O_RDONLY, AccessModeOf(m_strPath, CKorFile::OPEN_READ));
    EXPECT_EQ(O_WRONLY, AccessModeOf(m_strPath, CKorFile::OPEN_WRITE));
    EXPECT_EQ(O_RDWR, AccessModeOf(m_strPath, CKorFile::OPEN_READWRITE));
    EXPECT_EQ(O_RDONLY, AccessModeOf(m_strPath, 0x0003));
    EXPECT_EQ(O_RDONLY, AccessModeOf(m_strPath, 0x8003));
    EXPECT_EQ(O_WRONLY, AccessModeOf(m_strPath, 0x8001));
    EXPECT_EQ(O_RDWR, AccessModeOf(m_strPath, 0xFFFFFFFE));
    EXPECT_EQ(O_WRONLY,
              AccessModeOf(m_strPath, CKorFile::OPEN_WRITE | CKorFile::OPEN_PERM_READWRITE));
}

TEST_F(KorFile, ReadsAFileOpenedWithFlags8003ButDoesNotWriteIt)
{
    Probe oFile(m_strPath.c_str(), 0x8003);
    std::array<char, 4> acBuffer = {};
    EXPECT_EQ(4u, oFile.Read(acBuffer.data(), 4));
    EXPECT_FALSE(oFile.Write("x", 1));
    EXPECT_EQ(EBADF, oFile.m_nLastError);
}

TEST_F(KorFile, DropsAnEarlierDescriptorWithoutClosingIt)
{
    const int hEarlier = m_oFile.m_hFile;
    ASSERT_TRUE(m_oFile.Open(m_strPath.c_str(), CKorFile::OPEN_READ));
    EXPECT_NE(hEarlier, m_oFile.m_hFile);
    EXPECT_TRUE(IsOpen(hEarlier));
    EXPECT_EQ(0, close(hEarlier));
}

TEST_F(KorFile, DropsAnEarlierDescriptorEvenWhenItCannotOpen)
{
    const int hEarlier = m_oFile.m_hFile;
    EXPECT_FALSE(m_oFile.Open(m_oDir.File("missing").c_str(), CKorFile::OPEN_READ));
    EXPECT_EQ(-1, m_oFile.m_hFile);
    EXPECT_TRUE(IsOpen(hEarlier));
    EXPECT_EQ(0, close(hEarlier));
}

TEST_F(KorFile, ClosesTheFileThatItOpenedWhenItIsDestroyed)
{
    int hFile = -1;
    {
        const Probe oFile(m_strPath.c_str(), CKorFile::OPEN_READ);
        hFile = oFile.m_hFile;
        EXPECT_TRUE(IsOpen(hFile));
    }
    EXPECT_FALSE(IsOpen(hFile));
}

TEST_F(KorFile, LeavesADescriptorOfTheCallerOpenWhenItIsDestroyed)
{
    {
        Probe oFile(m_oFile.m_hFile);
        EXPECT_FALSE(oFile.m_bCloseOnDelete);
        EXPECT_EQ(0, oFile.m_nLastError);
        EXPECT_EQ(100, oFile.GetLength());
    }
    EXPECT_TRUE(IsOpen(m_oFile.m_hFile));
}

TEST_F(KorFile, ClosesADescriptorOfTheCallerWhenAsked)
{
    const int hFile = dup(m_oFile.m_hFile);
    Probe oFile(hFile);
    EXPECT_TRUE(oFile.Close());
    EXPECT_FALSE(IsOpen(hFile));
}

TEST_F(KorFile, RecordsErrnoWhenItClosed)
{
    m_oFile.m_nLastError = 77;
    errno = E2BIG;
    EXPECT_TRUE(m_oFile.Close());
    EXPECT_EQ(E2BIG, m_oFile.m_nLastError);
    EXPECT_EQ(-1, m_oFile.m_hFile);
    EXPECT_FALSE(m_oFile.m_bCloseOnDelete);
}

TEST_F(KorFile, RecordsNothingWhenItCannotClose)
{
    ASSERT_EQ(0, close(m_oFile.m_hFile));
    m_oFile.m_nLastError = 77;
    EXPECT_FALSE(m_oFile.Close());
    EXPECT_EQ(EBADF, errno);
    EXPECT_EQ(77, m_oFile.m_nLastError);
    EXPECT_EQ(-1, m_oFile.m_hFile);
    EXPECT_FALSE(m_oFile.m_bCloseOnDelete);
}

TEST_F(KorFile, HasNothingToCloseWithoutADescriptor)
{
    Probe oFile;
    oFile.m_bCloseOnDelete = true;
    EXPECT_FALSE(oFile.Close());
    EXPECT_FALSE(oFile.m_bCloseOnDelete);
    EXPECT_EQ(0, oFile.m_nLastError);
    m_oFile.Close();
    EXPECT_FALSE(m_oFile.Close());
}

/// Expects that the last operation found no descriptor, and forgets it.
void ExpectNoDescriptor(Probe& oFile)
{
    EXPECT_EQ(9, oFile.m_nLastError);
    oFile.m_nLastError = 0;
}

TEST_F(KorFile, ReportsAMissingDescriptorWithErrorNine)
{
    char c = 'x';
    m_oFile.Close();
    m_oFile.m_nLastError = 0;
    EXPECT_EQ(0, m_oFile.Seek(5, CKorFile::ORIGIN_BEGIN));
    ExpectNoDescriptor(m_oFile);
    EXPECT_EQ(0, m_oFile.GetPosition());
    ExpectNoDescriptor(m_oFile);
    EXPECT_EQ(0, m_oFile.GetLength());
    ExpectNoDescriptor(m_oFile);
    EXPECT_TRUE(m_oFile.SetLength(5));
    ExpectNoDescriptor(m_oFile);
    EXPECT_EQ(0u, m_oFile.Read(&c, 1));
    ExpectNoDescriptor(m_oFile);
    EXPECT_FALSE(m_oFile.Write(&c, 1));
    ExpectNoDescriptor(m_oFile);
    EXPECT_FALSE(m_oFile.Flush());
    ExpectNoDescriptor(m_oFile);
}

TEST_F(KorFile, KeepsTheNameThatItIsGiven)
{
    m_oFile.SetFile("/a/b.c");
    EXPECT_EQ("/a/b.c", m_oFile.GetFile());
    EXPECT_EQ("b.c", m_oFile.GetFileName());
    EXPECT_EQ("/a/", m_oFile.GetPathName());
    ASSERT_EQ("0", Read(1)) << "the open file is another";
    m_oFile.SetFile(nullptr);
    EXPECT_EQ("", m_oFile.GetFile());
    EXPECT_EQ("", m_oFile.GetFileName());
    EXPECT_EQ("", m_oFile.GetPathName());
}

TEST_F(KorFile, PassesTheFailureOfANameWithoutDotOn)
{
    m_oFile.SetFile("/etc/passwd");
    EXPECT_EQ("/etc/passwd", m_oFile.GetFile());
    EXPECT_THROW(m_oFile.GetFileName(), std::out_of_range);
    EXPECT_THROW(m_oFile.GetPathName(), std::out_of_range);
}

TEST_F(KorFile, RecordsErrnoWhenAsked)
{
    errno = ELOOP;
    m_oFile.SetLastError();
    EXPECT_EQ(ELOOP, m_oFile.m_nLastError);
}

} // namespace
