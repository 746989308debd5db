#include "tests/fs/FileTest.h"

#include <cerrno>
#include <csignal>
#include <sys/time.h>
#include <vector>

namespace
{

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

} // namespace
