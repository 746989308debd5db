#include "fs/KorFile.h"

#include "fs/KorProcess.h"
#include "tests/support/ScratchDir.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/time.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace
{

constexpr unsigned int FAILED = 0xFFFFFFFF;
constexpr long long GIB = 1024LL * 1024 * 1024;

class Probe : public CKorFile
{
public:
    using CKorFile::CKorFile;
    using CKorFile::m_bCloseOnDelete;
    using CKorFile::m_hFile;
    using CKorFile::m_nLastError;
    using CKorFile::m_strFileName;
};

bool IsOpen(int hFile)
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

TEST_F(KorFile, ReadsUpToTheEnd)
{
    EXPECT_EQ("0123456", Read(7));
    EXPECT_EQ("789", Read(3));
    EXPECT_EQ(90u, Read(1000).size());
    EXPECT_EQ("", Read(1000));
    EXPECT_EQ(0, m_oFile.m_nLastError);
}

TEST_F(KorFile, ReadsNothingIntoANullBufferOrForACountOfZero)
{
    char c = 'x';
    EXPECT_EQ(0u, m_oFile.Read(nullptr, 10));
    EXPECT_EQ(0u, m_oFile.Read(&c, 0));
    EXPECT_EQ(0, m_oFile.GetPosition());
    EXPECT_EQ(0, m_oFile.m_nLastError);
}

TEST_F(KorFile, ReportsAReadThatFails)
{
    char c = 'x';
    Probe oDirectory(m_oDir.Path().c_str(), CKorFile::OPEN_READ);
    EXPECT_EQ(FAILED, oDirectory.Read(&c, 1));
    EXPECT_EQ(EISDIR, oDirectory.m_nLastError);

    Probe oWriteOnly(m_strPath.c_str(), CKorFile::OPEN_WRITE);
    EXPECT_EQ(FAILED, oWriteOnly.Read(&c, 1));
    EXPECT_EQ(EBADF, oWriteOnly.m_nLastError);
}

TEST_F(KorFile, WritesAtThePosition)
{
    ASSERT_EQ(98, m_oFile.Seek(98, CKorFile::ORIGIN_BEGIN));
    EXPECT_TRUE(m_oFile.Write("abcd", 4));
    EXPECT_TRUE(m_oFile.Flush());
    EXPECT_EQ(102, m_oFile.GetPosition());
    EXPECT_EQ("67abcd", ReadFile(m_strPath).substr(96));
}

TEST_F(KorFile, WritesNothingFromANullBufferOrForACountOfZero)
{
    EXPECT_FALSE(m_oFile.Write("x", 0));
    EXPECT_FALSE(m_oFile.Write(nullptr, 10));
    EXPECT_EQ(0, m_oFile.GetPosition());
    EXPECT_EQ(0, m_oFile.m_nLastError);
}

TEST_F(KorFile, ReportsAFullDevice)
{
    Probe oFull("/dev/full", CKorFile::OPEN_WRITE);
    EXPECT_FALSE(oFull.Write("x", 1));
    EXPECT_EQ(ENOSPC, oFull.m_nLastError);
    EXPECT_TRUE(oFull.Flush()) << "there is a descriptor";
}

TEST_F(KorFile, ReportsAWriteToAReadOnlyDescriptor)
{
    Probe oFile(m_strPath.c_str(), CKorFile::OPEN_READ);
    EXPECT_FALSE(oFile.Write("x", 1));
    EXPECT_EQ(EBADF, oFile.m_nLastError);
    EXPECT_EQ('0', ReadFile(m_strPath)[0]);
}

TEST_F(KorFile, ReportsAWriteToADescriptorThatSomeoneClosed)
{
    ASSERT_EQ(0, close(m_oFile.m_hFile));
    EXPECT_FALSE(m_oFile.Write("x", 1));
    EXPECT_EQ(EBADF, m_oFile.m_nLastError);
    EXPECT_NE(-1, m_oFile.m_hFile);
    m_oFile.m_hFile = -1;
}

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

TEST_F(KorFile, ReportsAPipeWithoutReader)
{
    const Pipe oPipe;
    Probe oFile(dup(oPipe.WriteEnd()));
    {
        const Pipe oOther;
        ASSERT_EQ(oPipe.ReadEnd(), dup2(oOther.WriteEnd(), oPipe.ReadEnd()));
    }
    const auto fnBefore = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_FALSE(oFile.Write("x", 1));
    std::signal(SIGPIPE, fnBefore);
    EXPECT_EQ(EPIPE, oFile.m_nLastError);
    oFile.Close();
}

TEST_F(KorFile, ReportsAShortWriteWithoutRecordingAnError)
{
    const Pipe oPipe(O_NONBLOCK);
    Probe oFile(oPipe.WriteEnd());
    const std::string strMuch(0x400000, 'x');
    EXPECT_FALSE(oFile.Write(strMuch.data(), static_cast<unsigned int>(strMuch.size())));
    EXPECT_EQ(0, oFile.m_nLastError);
    EXPECT_FALSE(oFile.Write("x", 1));
    EXPECT_EQ(EAGAIN, oFile.m_nLastError);
}

/// A timer whose signal interrupts calls again and again, until the end of the scope.
class InterruptingTimer
{
public:
    InterruptingTimer()
    {
        struct sigaction oAction = {};
        oAction.sa_handler = [](int) {};
        sigaction(SIGALRM, &oAction, &m_oBefore);
        SetInterval(10000);
    }
    ~InterruptingTimer()
    {
        SetInterval(0);
        sigaction(SIGALRM, &m_oBefore, nullptr);
    }
    InterruptingTimer(const InterruptingTimer&) = delete;
    InterruptingTimer& operator=(const InterruptingTimer&) = delete;

private:
    static void SetInterval(int nMicroseconds)
    {
        itimerval oTimer = {};
        oTimer.it_value.tv_usec = nMicroseconds;
        oTimer.it_interval = oTimer.it_value;
        setitimer(ITIMER_REAL, &oTimer, nullptr);
    }
    struct sigaction m_oBefore = {};
};

TEST_F(KorFile, ReportsAReadAndAWriteThatASignalInterrupts)
{
    const Pipe oPipe;
    Probe oReader(oPipe.ReadEnd());
    Probe oWriter(oPipe.WriteEnd());
    const InterruptingTimer oTimer;
    char c = 'x';
    EXPECT_EQ(FAILED, oReader.Read(&c, 1));
    EXPECT_EQ(EINTR, oReader.m_nLastError);
    while (oWriter.Write(&c, 1)) {
    }
    EXPECT_EQ(EINTR, oWriter.m_nLastError);
}

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

TEST_F(KorFile, KnowsWhetherAFileExists)
{
    EXPECT_TRUE(CKorFile::FileExist(m_strPath.c_str()));
    EXPECT_TRUE(CKorFile::FileExist(m_oDir.Path().c_str()));
    EXPECT_FALSE(CKorFile::FileExist(m_oDir.File("missing").c_str()));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(CKorFile::FileExist((m_strPath + "/below").c_str()));
    EXPECT_EQ(ENOTDIR, errno);
}

TEST_F(KorFile, ALinkThatLeadsNowhereDoesNotExistButCanBeRenamedAndRemoved)
{
    const std::string strLink = m_oDir.File("link");
    const std::string strOther = m_oDir.File("other");
    ASSERT_EQ(0, symlink("missing", strLink.c_str()));
    EXPECT_FALSE(CKorFile::FileExist(strLink.c_str()));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_TRUE(CKorFile::Rename(strLink.c_str(), strOther.c_str()));
    struct stat oStatus;
    EXPECT_EQ(0, lstat(strOther.c_str(), &oStatus));
    EXPECT_FALSE(CKorFile::Remove(strOther.c_str()));
    EXPECT_EQ(-1, lstat(strOther.c_str(), &oStatus));
}

TEST_F(KorFile, RemovesAFileAndReturnsFalse)
{
    EXPECT_FALSE(CKorFile::Remove(m_strPath.c_str()));
    EXPECT_FALSE(CKorFile::FileExist(m_strPath.c_str()));
}

TEST_F(KorFile, ReturnsTrueForAFileThatItCannotRemove)
{
    EXPECT_TRUE(CKorFile::Remove(m_oDir.File("missing").c_str()));
    EXPECT_TRUE(CKorFile::Remove(m_oDir.Path().c_str()));
    EXPECT_TRUE(CKorFile::FileExist(m_oDir.Path().c_str()));
}

TEST_F(KorFile, RenamesAFile)
{
    const std::string strNew = m_oDir.File("new");
    WriteFile(strNew, "replaced");
    EXPECT_TRUE(CKorFile::Rename(m_strPath.c_str(), strNew.c_str()));
    EXPECT_FALSE(CKorFile::FileExist(m_strPath.c_str()));
    EXPECT_EQ(100u, std::filesystem::file_size(strNew));
    EXPECT_FALSE(CKorFile::Rename(m_strPath.c_str(), strNew.c_str()));
    EXPECT_EQ(100u, std::filesystem::file_size(strNew));
}

TEST_F(KorFile, ReadsANullPathAsTheEmptyPath)
{
    Probe oFile;
    EXPECT_FALSE(oFile.Open(nullptr, CKorFile::OPEN_READ));
    EXPECT_EQ(ENOENT, oFile.m_nLastError);
    EXPECT_FALSE(CKorFile::FileExist(nullptr));
    EXPECT_TRUE(CKorFile::Remove(nullptr));
    EXPECT_FALSE(CKorFile::Rename(nullptr, m_strPath.c_str()));
    EXPECT_FALSE(CKorFile::Rename(m_strPath.c_str(), nullptr));
    EXPECT_TRUE(CKorFile::FileExist(m_strPath.c_str()));
}

TEST_F(KorFile, GivesTheWorkingDirectoryForEveryKindButTwo)
{
    const std::string strWorkDir = std::filesystem::current_path().native() + "/";
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(0));
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(CKorFile::WORKDIR_CURRENT));
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(3));
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(-1));
}

TEST_F(KorFile, GivesTheProgramDirectoryForKindTwo)
{
    const std::string strProgDir = CKorFile::GetCurrentWorkDir(CKorFile::WORKDIR_PROGRAM);
    EXPECT_EQ(CKorProcess::GetCurrentProgDir(), strProgDir);
    EXPECT_EQ('/', strProgDir.back());
}

} // namespace
