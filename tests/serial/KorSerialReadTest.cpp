#include "serial/KorSerial.h"
#include "tests/serial/SerialTestPort.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

/// A raw line and a port on it whose receive thread does not run.
class KorSerialRead : public testing::Test
{
protected:
    KorSerialRead()
    {
        m_oLine.MakeRaw();
        m_oPort.AdoptDescriptor(::open(m_oLine.Name(), O_RDWR | O_NOCTTY));
    }

    PseudoTerminal m_oLine;
    TestPort m_oPort;
    char m_c = '?';
};

TEST_F(KorSerialRead, ReadsOneCharacterAtATime)
{
    m_oLine.Send("AB");
    EXPECT_EQ(OK, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ('A', m_c);
    EXPECT_EQ(OK, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ('B', m_c);
}

TEST_F(KorSerialRead, ATimeoutReportsByTheOldErrno)
{
    errno = EAGAIN;
    EXPECT_EQ(WOULDBLOCK, SerialResult(m_oPort.ReadOneByte(m_c, 1)));
    EXPECT_EQ(EAGAIN, errno);
    errno = 0;
    EXPECT_EQ(IO_ERROR, SerialResult(m_oPort.ReadOneByte(m_c, 1)));
    EXPECT_EQ(0, errno);
    EXPECT_EQ('?', m_c);
}

TEST_F(KorSerialRead, WaitsAsLongAsAskedTo)
{
    const auto oStart = std::chrono::steady_clock::now();
    EXPECT_NE(OK, SerialResult(m_oPort.ReadOneByte(m_c, 0)));
    EXPECT_NE(OK, SerialResult(m_oPort.ReadOneByte(m_c, 1050)));
    EXPECT_GE(std::chrono::steady_clock::now() - oStart, std::chrono::milliseconds(1050));
}

TEST_F(KorSerialRead, AHungUpLineReadsAsNothing)
{
    m_oLine.HangUp();
    EXPECT_EQ(OK, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ('?', m_c);
}

TEST_F(KorSerialRead, WithoutADescriptorItIsAnIoError)
{
    const int hOpen = m_oPort.ReleaseDescriptor();
    errno = EAGAIN;
    EXPECT_EQ(IO_ERROR, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ('?', m_c);
    m_oPort.AdoptDescriptor(hOpen);
}

TEST_F(KorSerialRead, AClosedDescriptorIsAnIoError)
{
    ::close(m_oPort.m_hPort);
    EXPECT_EQ(IO_ERROR, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    m_oPort.ReleaseDescriptor();
}

void AllowDescriptorsUpTo(rlim_t nHighest)
{
    rlimit oLimit;
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &oLimit));
    ASSERT_GT(oLimit.rlim_max, nHighest);
    oLimit.rlim_cur = oLimit.rlim_max;
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &oLimit));
}

TEST_F(KorSerialRead, ADescriptorBeyondTheSetIsAnIoErrorAndReadsNothing)
{
    AllowDescriptorsUpTo(1500);
    const int hLow = m_oPort.ReleaseDescriptor();
    m_oLine.Send("AB");
    for (const int hHigh : {1024, 1025, 1500}) {
        ASSERT_EQ(hHigh, dup2(hLow, hHigh));
        m_oPort.AdoptDescriptor(hHigh);
        errno = EAGAIN;
        EXPECT_EQ(IO_ERROR, SerialResult(m_oPort.ReadOneByte(m_c, 60000))) << hHigh;
        EXPECT_EQ('?', m_c);
        ::close(hHigh);
    }
    ASSERT_EQ(1023, dup2(hLow, 1023));
    m_oPort.AdoptDescriptor(1023);
    EXPECT_EQ(OK, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ('A', m_c);
    ::close(hLow);
}

void IgnoreSignal(int) {}

TEST_F(KorSerialRead, ASignalThatEndsTheWaitIsAnIoErrorAndLosesNothing)
{
    struct sigaction oAction = {};
    oAction.sa_handler = IgnoreSignal;
    ASSERT_EQ(0, sigaction(SIGALRM, &oAction, nullptr));
    const itimerval oEvery5Ms = {{0, 5000}, {0, 5000}};
    ASSERT_EQ(0, setitimer(ITIMER_REAL, &oEvery5Ms, nullptr));
    errno = 0;
    EXPECT_EQ(IO_ERROR, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ(EINTR, errno);
    const itimerval oOff = {};
    setitimer(ITIMER_REAL, &oOff, nullptr);

    m_oLine.Send("A");
    EXPECT_EQ(OK, SerialResult(m_oPort.ReadOneByte(m_c, 60000)));
    EXPECT_EQ('A', m_c);
}

} // namespace
