#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <random>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace
{

/// The two ends of something that standard error can be.
struct Ends
{
    int nReader;
    int nWriter;
};

Ends Pipe()
{
    int anEnds[2];
    EXPECT_EQ(0, pipe(anEnds));
    return {anEnds[0], anEnds[1]};
}

Ends SmallPipe()
{
    const Ends oEnds = Pipe();
    EXPECT_GT(fcntl(oEnds.nWriter, F_SETPIPE_SZ, 8192), 0);
    return oEnds;
}

Ends Socket(int nType)
{
    int anEnds[2];
    EXPECT_EQ(0, socketpair(AF_UNIX, nType, 0, anEnds));
    return {anEnds[0], anEnds[1]};
}

Ends StreamSocket()
{
    return Socket(SOCK_STREAM);
}

/// Takes lines in parts.
Ends NarrowSocket()
{
    const Ends oEnds = Socket(SOCK_STREAM);
    const int nSize = 4608;
    setsockopt(oEnds.nWriter, SOL_SOCKET, SO_SNDBUF, &nSize, sizeof nSize);
    return oEnds;
}

Ends PacketSocket()
{
    return Socket(SOCK_SEQPACKET);
}

Ends Terminal()
{
    const PseudoTerminal oTerminal;
    oTerminal.MakeRaw();
    const int nReader = dup(oTerminal.FarEnd());
    return {nReader, open(oTerminal.Name(), O_RDWR | O_NOCTTY)};
}

std::string ReadToEnd(int nHandle)
{
    std::string strText;
    char acBytes[16384];
    ssize_t nRead = 0;
    while ((nRead = read(nHandle, acBytes, sizeof acBytes)) > 0)
        strText.append(acBytes, static_cast<std::size_t>(nRead));
    return strText;
}

constexpr unsigned int MOST_ENDS = 600; // in a minute

/// Reads on a thread of its own, to the end.
class Reader
{
public:
    explicit Reader(int nHandle)
        : m_oThread([this, nHandle] {
              char acBytes[16384];
              ssize_t nRead = 0;
              while ((nRead = read(nHandle, acBytes, sizeof acBytes)) > 0) {
                  const std::lock_guard<std::mutex> oLock(m_oMutex);
                  m_strText.append(acBytes, static_cast<std::size_t>(nRead));
              }
          })
    {
    }

    bool EndsWith(const std::string& strEnd)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        return m_strText.size() >= strEnd.size() &&
               m_strText.compare(m_strText.size() - strEnd.size(), strEnd.size(), strEnd) == 0;
    }
    const std::string& TextToEnd()
    {
        m_oThread.join();
        return m_strText;
    }

private:
    std::mutex m_oMutex;
    std::string m_strText;
    std::thread m_oThread;
};

/// Writes lines of all lengths, the shorter the likelier.
class RandomLines
{
public:
    void Write(CKorLog& oLog)
    {
        const unsigned int nLongest = 16u << (m_oRandom() % 10); // to 8192
        const std::string strFill(m_oRandom() % (nLongest - 15), 'x');
        oLog.Write(CKorLog::LEVEL_INFO, "%u:%s", static_cast<unsigned int>(strFill.size()),
                   strFill.c_str());
        ++m_nWritten;
    }
    unsigned int Written() const { return m_nWritten; }

private:
    std::mt19937 m_oRandom{7};
    unsigned int m_nWritten = 0;
};

/// What a reader found.
struct Found
{
    unsigned int nLines = 0;
    unsigned int nEnds = 0;
    unsigned long nToldLost = 0;
};

Found Check(const std::string& strText)
{
    Found oFound;
    for (const std::string& strLine : Lines(strText)) {
        const std::string strMessage = WithoutTime(strLine);
        unsigned int nLength = 0;
        int nBehind = 0;
        unsigned long nLost = 0;
        if (std::sscanf(strMessage.c_str(), "warning: %lu log line", &nLost) == 1) {
            oFound.nToldLost += nLost;
        } else if (strMessage == "info: end") {
            ++oFound.nEnds;
        } else {
            EXPECT_EQ(1, std::sscanf(strMessage.c_str(), "info: %u:%n", &nLength, &nBehind))
                << strMessage.substr(0, 100);
            EXPECT_EQ(std::string(nLength, 'x'),
                      strMessage.substr(static_cast<std::size_t>(nBehind)));
            ++oFound.nLines;
        }
    }
    return oFound;
}

/// Keeps the process from opening anything until the end of the scope, so that standard error cannot
/// be opened once more.
class NoMoreHandles
{
public:
    NoMoreHandles()
    {
        const int nNext = dup(STDERR_FILENO);
        close(nNext);
        getrlimit(RLIMIT_NOFILE, &m_oFormer);
        const rlimit oNone = {static_cast<rlim_t>(nNext), m_oFormer.rlim_max};
        setrlimit(RLIMIT_NOFILE, &oNone);
    }
    ~NoMoreHandles() { setrlimit(RLIMIT_NOFILE, &m_oFormer); }
    NoMoreHandles(const NoMoreHandles&) = delete;
    NoMoreHandles& operator=(const NoMoreHandles&) = delete;

private:
    rlimit m_oFormer;
};

using Stall = std::tuple<Ends (*)(), bool>;

class KorLogStall : public testing::TestWithParam<Stall>
{
};

TEST_P(KorLogStall, CostsWholeLinesThatAreCountedAndNoTime)
{
    const auto& [fnEnds, bCanOpen] = GetParam();
    const Ends oEnds = fnEnds();
    const int nMode = fcntl(oEnds.nWriter, F_GETFL);
    EXPECT_EQ(0, nMode & O_NONBLOCK);
    CKorLog oLog;
    RandomLines oLines;
    std::optional<Reader> oReader;
    unsigned int nEnds = 0;
    {
        const StandardErrorTo oStandardError(oEnds.nWriter);
        close(oEnds.nWriter);
        std::optional<NoMoreHandles> oLimit;
        if (!bCanOpen)
            oLimit.emplace();
        while (oLog.GetLostCount() < 200)
            oLines.Write(oLog);
        EXPECT_EQ(nMode, fcntl(STDERR_FILENO, F_GETFL));

        oReader.emplace(oEnds.nReader);
        for (int i = 0; i < 1000; ++i)
            oLines.Write(oLog);
        // Until the last line has arrived: a terminal may have taken only a part of it.
        while (!oReader->EndsWith("info: end\n") && nEnds < MOST_ENDS) {
            oLog.Write(CKorLog::LEVEL_INFO, "end");
            std::this_thread::sleep_for(std::chrono::milliseconds(std::min(++nEnds, 100u)));
        }
    }
    const std::string& strText = oReader->TextToEnd();
    close(oEnds.nReader);
    const Found oFound = Check(strText);
    EXPECT_EQ(oLog.GetLostCount(), oFound.nToldLost);
    EXPECT_EQ(oLines.Written() + nEnds, oFound.nLines + oFound.nEnds + oLog.GetLostCount());
}

constexpr Ends (*ALL_KINDS[])() = {&Pipe,         &SmallPipe,    &StreamSocket,
                                   &NarrowSocket, &PacketSocket, &Terminal};

INSTANTIATE_TEST_SUITE_P(Of, KorLogStall,
                         testing::Combine(testing::ValuesIn(ALL_KINDS), testing::Bool()));

TEST(KorLogPipe, LeavesWholeLinesWhenTheReaderComesAfterTheEnd)
{
    const Ends oEnds = Pipe();
    CKorLog oLog;
    RandomLines oLines;
    {
        const StandardErrorTo oStandardError(oEnds.nWriter);
        close(oEnds.nWriter);
        for (int i = 0; i < 2000; ++i)
            oLines.Write(oLog);
    }
    const Found oFound = Check(ReadToEnd(oEnds.nReader));
    EXPECT_EQ(oLines.Written(), oFound.nLines + oLog.GetLostCount());
    EXPECT_GT(oFound.nLines, 30u);
    close(oEnds.nReader);
}

TEST(KorLogPipe, ALineIsOneWrite)
{
    const Ends oEnds = PacketSocket();
    CKorLog oLog;
    const StandardErrorTo oStandardError(oEnds.nWriter);
    for (const std::size_t nLength : {0, 1, 5000, 8000, 20000}) {
        oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(nLength, 'x').c_str());
        char acPacket[20000];
        const ssize_t nRead = recv(oEnds.nReader, acPacket, sizeof acPacket, MSG_DONTWAIT);
        ASSERT_GT(nRead, 0);
        EXPECT_EQ('\n', acPacket[nRead - 1]);
    }
    EXPECT_EQ(-1, recv(oEnds.nReader, nullptr, 0, MSG_DONTWAIT));
    close(oEnds.nReader);
    close(oEnds.nWriter);
}

TEST(KorLogPipe, AReaderThatWentAwayCostsLines)
{
    for (const auto fnEnds : {&Pipe, &StreamSocket, &PacketSocket}) {
        ChildProcess oChild([fnEnds] {
            const Ends oEnds = fnEnds();
            dup2(oEnds.nWriter, STDERR_FILENO);
            close(oEnds.nReader);
            signal(SIGPIPE, SIG_DFL);
            CKorLog oLog;
            for (int i = 0; i < 3; ++i)
                oLog.Write(CKorLog::LEVEL_INFO, "text");
            sigset_t oPending;
            sigpending(&oPending);
            return oLog.GetLostCount() == 3 && sigismember(&oPending, SIGPIPE) == 0 ? 42 : 1;
        });
        EXPECT_EQ(42, oChild.Wait().nExitStatus);
    }
}

TEST(KorLogPipe, AClosedStandardErrorCostsLines)
{
    ChildProcess oChild([] {
        close(STDERR_FILENO);
        KorGetLog().Write(CKorLog::LEVEL_INFO, "text");
        return KorGetLog().GetLostCount() == 1 ? 42 : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
}

TEST(KorLogPipe, AFullDiskCostsLines)
{
    const int nFull = open("/dev/full", O_WRONLY);
    CKorLog oLog;
    {
        const StandardErrorTo oStandardError(nFull);
        oLog.Write(CKorLog::LEVEL_INFO, "text");
        EXPECT_EQ(1u, oLog.GetLostCount());
    }
    CapturedLog oCapture;
    oLog.Write(CKorLog::LEVEL_INFO, "text");
    EXPECT_EQ("warning: 1 log line was lost\ninfo: text\n", oCapture.TakeMessages());
    close(nFull);
}

TEST(KorLogPipe, ASizeLimitLeavesWholeLines)
{
    ChildProcess oChild([] {
        const rlimit oLimit = {1000, 1000};
        setrlimit(RLIMIT_FSIZE, &oLimit);
        signal(SIGXFSZ, SIG_DFL);
        CKorLog oLog;
        for (int i = 0; i < 30; ++i)
            oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(100, 'x').c_str());
        return static_cast<int>(oLog.GetLostCount());
    });
    EXPECT_EQ(23, oChild.Wait().nExitStatus); // a line has 137 bytes
    EXPECT_EQ(7u, Lines(oChild.Wait().strErr).size());
}

TEST(KorLogPipe, ABackgroundProgramIsNotStoppedAtItsTerminal)
{
    const PseudoTerminal oTerminal;
    oTerminal.MakeRaw();
    termios oSettings = oTerminal.Settings();
    oSettings.c_lflag |= TOSTOP;
    oTerminal.Apply(oSettings);
    ChildProcess oChild([&oTerminal] {
        setsid();
        const int nTerminal = open(oTerminal.Name(), O_RDWR); // becomes the controlling one
        dup2(nTerminal, STDERR_FILENO);
        const pid_t nBackground = fork();
        if (nBackground == 0) {
            setpgid(0, 0);
            KorGetLog().Write(CKorLog::LEVEL_INFO, "text");
            _exit(42);
        }
        int nStatus = 0;
        waitpid(nBackground, &nStatus, WUNTRACED);
        return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 1;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ("info: text\n", WithoutTime(oTerminal.Receive(41)));
}

} // namespace
