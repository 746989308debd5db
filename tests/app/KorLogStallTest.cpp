#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/app/LogEnds.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <random>
#include <sys/resource.h>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace
{

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

/// Uses what a test uses without handles: the undefined-behaviour sanitizer needs some when it meets
/// a class for the first time.
void MeetClasses()
{
    CKorLog().Write(CKorLog::LEVEL_INFO, "a line while there are handles");
    const int nNull = open("/dev/null", O_RDONLY);
    Reader(nNull).TextToEnd();
    close(nNull);
}

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
    MeetClasses();
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

} // namespace
