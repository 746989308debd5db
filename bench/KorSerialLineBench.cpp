/// @file
/// What a line costs beside a loop written by hand, libserialport, Asio and Qt: receiving a
/// mebibyte in lines, asking and being answered, holding much, waiting for many lines at once.

#include "bench/LibserialportLine.h"
#include "event/KorEventLoop.h"
#include "serial/KorSerialLine.h"

#include <QSerialPort>
#include <asio/io_context.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/serial_port.hpp>
#include <asio/streambuf.hpp>
#include <asio/write.hpp>
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr unsigned int TIMEOUT = 60000;
constexpr std::size_t LENGTH = 64;
constexpr std::size_t LINES = 1048576 / LENGTH;
const std::string LINE = std::string(LENGTH - 1, 'x') + "\n";

/// A raw pseudo-terminal and a process at its far end.
class FarEnd
{
public:
    FarEnd() : m_nMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        grantpt(m_nMaster);
        unlockpt(m_nMaster);
        termios oSettings;
        tcgetattr(m_nMaster, &oSettings);
        cfmakeraw(&oSettings);
        tcsetattr(m_nMaster, TCSANOW, &oSettings);
    }
    ~FarEnd()
    {
        if (m_nProcess > 0) {
            kill(m_nProcess, SIGKILL);
            waitpid(m_nProcess, nullptr, 0);
        }
        close(m_nMaster);
    }
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;

    std::string Name() const { return ptsname(m_nMaster); }
    bool Send() const { return write(m_nMaster, LINE.data(), LENGTH) == ssize_t(LENGTH); }

    /// Sends all lines as fast as they are taken.
    void StartSending()
    {
        Start([this]() {
            for (std::size_t i = 0; i < LINES && Send(); ++i) {
            }
            pause();
        });
    }
    /// Answers each line with the same.
    void StartAnswering()
    {
        Start([this]() {
            char acLine[LENGTH];
            for (;;) {
                for (std::size_t nHave = 0; nHave < LENGTH;) {
                    const ssize_t nRead = read(m_nMaster, acLine + nHave, LENGTH - nHave);
                    if (nRead <= 0)
                        _exit(1);
                    nHave += static_cast<std::size_t>(nRead);
                }
                if (write(m_nMaster, acLine, LENGTH) < 0)
                    _exit(1);
            }
        });
    }

private:
    template <typename TMain>
    void Start(TMain fnMain)
    {
        m_nProcess = fork();
        if (m_nProcess != 0)
            return;
        fnMain();
        _exit(0);
    }

    int m_nMaster;
    pid_t m_nProcess = -1;
};

/// What one writes by hand: poll() with a time-out, read() into a block, memchr().
class HandWritten
{
public:
    explicit HandWritten(const std::string& strName)
        : m_hLine(open(strName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~HandWritten() { close(m_hLine); }
    HandWritten(const HandWritten&) = delete;
    HandWritten& operator=(const HandWritten&) = delete;

    bool ReadLine(std::string& strLine)
    {
        for (;;) {
            const void* const pFound = memchr(m_acBlock + m_nBegin, '\n', m_nEnd - m_nBegin);
            if (pFound != nullptr) {
                const char* const pBegin = m_acBlock + m_nBegin;
                const std::size_t nLength =
                    static_cast<std::size_t>(static_cast<const char*>(pFound) - pBegin) + 1;
                strLine.assign(pBegin, nLength);
                m_nBegin += nLength;
                return true;
            }
            if (!Fill())
                return false;
        }
    }
    bool WriteLine() { return write(m_hLine, LINE.data(), LENGTH) == ssize_t(LENGTH); }

private:
    bool Fill()
    {
        memmove(m_acBlock, m_acBlock + m_nBegin, m_nEnd - m_nBegin);
        m_nEnd -= m_nBegin;
        m_nBegin = 0;
        pollfd oLine = {m_hLine, POLLIN, 0};
        if (poll(&oLine, 1, int(TIMEOUT)) != 1)
            return false;
        const ssize_t nRead = read(m_hLine, m_acBlock + m_nEnd, sizeof m_acBlock - m_nEnd);
        m_nEnd += nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
        return nRead > 0;
    }

    int m_hLine;
    std::size_t m_nBegin = 0;
    std::size_t m_nEnd = 0;
    char m_acBlock[8192];
};

class ByKorSerialLine
{
public:
    explicit ByKorSerialLine(const std::string& strName) { m_oLine.Open(strName.c_str()); }
    bool ReadLine(std::string& strLine)
    {
        return m_oLine.ReadUntil(m_strEnd, strLine, TIMEOUT) == CKorSerial::SERIAL_OK;
    }
    bool WriteLine() { return m_oLine.WriteText(LINE, TIMEOUT) == CKorSerial::SERIAL_OK; }

private:
    const std::string m_strEnd = "\n";
    CKorSerialLine m_oLine;
};

/// libserialport has no lines; it reads exactly as much as it is told.
class ByLibserialport
{
public:
    explicit ByLibserialport(const std::string& strName) : m_oLine(strName) {}
    bool ReadLine(std::string& strLine)
    {
        strLine.resize(LENGTH);
        return sp_blocking_read(m_oLine.Port(), strLine.data(), LENGTH, TIMEOUT) == int(LENGTH);
    }
    bool WriteLine()
    {
        return sp_blocking_write(m_oLine.Port(), LINE.data(), LENGTH, TIMEOUT) == int(LENGTH);
    }

private:
    LibserialportLine m_oLine;
};

/// Asio's synchronous calls, which have no time-out.
class ByAsio
{
public:
    explicit ByAsio(const std::string& strName) : m_oPort(m_oContext, strName) {}
    bool ReadLine(std::string& strLine)
    {
        const std::size_t nLength = asio::read_until(m_oPort, m_oBuffer, '\n');
        strLine.assign(static_cast<const char*>(m_oBuffer.data().data()), nLength);
        m_oBuffer.consume(nLength);
        return true;
    }
    bool WriteLine() { return asio::write(m_oPort, asio::buffer(LINE)) == LENGTH; }

private:
    asio::io_context m_oContext;
    asio::serial_port m_oPort;
    asio::streambuf m_oBuffer;
};

class ByQt
{
public:
    explicit ByQt(const std::string& strName)
    {
        m_oPort.setPortName(QString::fromStdString(strName));
        m_oPort.open(QIODevice::ReadWrite);
    }
    bool ReadLine(std::string& strLine)
    {
        while (!m_oPort.canReadLine()) {
            if (!m_oPort.waitForReadyRead(int(TIMEOUT)))
                return false;
        }
        strLine.resize(LENGTH + 1);
        strLine.resize(static_cast<std::size_t>(m_oPort.readLine(strLine.data(), LENGTH + 1)));
        return true;
    }
    bool WriteLine()
    {
        return m_oPort.write(LINE.data(), LENGTH) == LENGTH &&
               m_oPort.waitForBytesWritten(int(TIMEOUT));
    }

private:
    QSerialPort m_oPort;
};

double CpuSeconds()
{
    timespec oTime;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &oTime);
    return static_cast<double>(oTime.tv_sec) + static_cast<double>(oTime.tv_nsec) * 1e-9;
}

/// The receiver's processor time for all lines.
template <typename TLine>
void Receive(benchmark::State& oState)
{
    for ([[maybe_unused]] auto oStep : oState) {
        FarEnd oFarEnd;
        TLine oLine(oFarEnd.Name());
        std::string strLine;
        oFarEnd.StartSending();
        const double nStart = CpuSeconds();
        for (std::size_t i = 0; i < LINES; ++i) {
            if (!oLine.ReadLine(strLine) || strLine != LINE)
                return oState.SkipWithError("not all was received");
        }
        oState.SetIterationTime(CpuSeconds() - nStart);
    }
}

/// One request and its answer.
template <typename TLine>
void Ask(benchmark::State& oState)
{
    FarEnd oFarEnd;
    TLine oLine(oFarEnd.Name());
    std::string strLine;
    oFarEnd.StartAnswering();
    for ([[maybe_unused]] auto oStep : oState) {
        if (!oLine.WriteLine() || !oLine.ReadLine(strLine) || strLine != LINE)
            return oState.SkipWithError("no answer");
    }
}

#define PEERS(Operation, settings)                                                                 \
    BENCHMARK_TEMPLATE(Operation, HandWritten) settings;                                           \
    BENCHMARK_TEMPLATE(Operation, ByKorSerialLine) settings;                                       \
    BENCHMARK_TEMPLATE(Operation, ByLibserialport) settings;                                       \
    BENCHMARK_TEMPLATE(Operation, ByAsio) settings;                                                \
    BENCHMARK_TEMPLATE(Operation, ByQt) settings

PEERS(Receive, ->UseManualTime()->Iterations(1)->Repetitions(15)->ReportAggregatesOnly()->Unit(
                   benchmark::kMillisecond));
PEERS(Ask, ->UseRealTime()->Iterations(1000)->Repetitions(15)->ReportAggregatesOnly()->Unit(
               benchmark::kMicrosecond));

/// Takes a held line while so many bytes are held.
void TakeFromHeld(benchmark::State& oState)
{
    const std::size_t nHeld = static_cast<std::size_t>(oState.range(0));
    std::string strData;
    for ([[maybe_unused]] auto oStep : oState) {
        FarEnd oFarEnd;
        CKorSerialLine oLine;
        oLine.Open(oFarEnd.Name().c_str());
        for (std::size_t n = LENGTH; n <= nHeld; n += LENGTH) {
            oFarEnd.Send();
            if (n % 2048 == 0) // the terminal's room is small
                oLine.ReadBytes(static_cast<unsigned int>(n) + 1, strData, 1);
        }
        while (oLine.GetHeldCount() < nHeld)
            oLine.ReadBytes(static_cast<unsigned int>(nHeld) + 1, strData, 1);
        const double nStart = CpuSeconds();
        while (oLine.ReadUntil("\n", strData, 0) == CKorSerial::SERIAL_OK) {
        }
        oState.SetIterationTime(CpuSeconds() - nStart);
    }
    oState.SetBytesProcessed(oState.iterations() * oState.range(0));
}
BENCHMARK(TakeFromHeld)
    ->ArgName("held")
    ->Arg(16384)
    ->Arg(131072)
    ->Arg(1048576)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMicrosecond);

/// Searches all of the held bytes in vain as they come in, many times.
void SearchHeld(benchmark::State& oState)
{
    const std::size_t nHeld = static_cast<std::size_t>(oState.range(0));
    std::string strData;
    for ([[maybe_unused]] auto oStep : oState) {
        FarEnd oFarEnd;
        CKorSerialLine oLine;
        oLine.Open(oFarEnd.Name().c_str());
        const double nStart = CpuSeconds();
        for (std::size_t n = 0; n < nHeld; n += LENGTH) {
            oFarEnd.Send();
            oLine.ReadUntil("??", strData, 0, 0xFFFFFFFF);
        }
        oState.SetIterationTime(CpuSeconds() - nStart);
    }
    oState.SetBytesProcessed(oState.iterations() * oState.range(0));
}
BENCHMARK(SearchHeld)
    ->ArgName("held")
    ->Arg(16384)
    ->Arg(131072)
    ->Arg(1048576)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

/// So many lines in one event loop: the processor time for one line of text.
void EventLoop(benchmark::State& oState)
{
    struct SPort
    {
        FarEnd m_oFarEnd;
        CKorSerialLine m_oLine;
    };
    CKorEventLoop oLoop;
    std::vector<std::unique_ptr<SPort>> vecPorts;
    std::string strData;
    std::size_t nReceived = 0;
    for (int i = 0; i < oState.range(0); ++i) {
        vecPorts.push_back(std::make_unique<SPort>());
        CKorSerialLine& rLine = vecPorts.back()->m_oLine;
        rLine.Open(vecPorts.back()->m_oFarEnd.Name().c_str());
        oLoop.WatchHandle(rLine.GetHandle(), CKorEventLoop::EVENT_READABLE, [&](unsigned int) {
            while (rLine.Read(4096, strData, 0) == CKorSerial::SERIAL_OK)
                nReceived += strData.size();
        });
    }
    std::size_t nSent = 0;
    for ([[maybe_unused]] auto oStep : oState) {
        double nTime = 0;
        for (int nRound = 0; nRound < 6400 / oState.range(0); ++nRound) {
            for (const auto& pPort : vecPorts)
                nSent += pPort->m_oFarEnd.Send() ? LENGTH : 0;
            const double nStart = CpuSeconds();
            while (nReceived < nSent)
                oLoop.RunOnce(TIMEOUT);
            nTime += CpuSeconds() - nStart;
        }
        oState.SetIterationTime(nTime / 6400);
    }
}
BENCHMARK(EventLoop)
    ->ArgName("lines")
    ->Arg(1)
    ->Arg(8)
    ->Arg(64)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMicrosecond);

/// How often an open line that nobody uses makes the process run.
void IdleLine(benchmark::State& oState)
{
    FarEnd oFarEnd;
    CKorSerialLine oLine;
    oLine.Open(oFarEnd.Name().c_str());
    if (oState.range(0) != 0)
        oLine.StartReception([](const char*, unsigned int) {}, nullptr);
    for ([[maybe_unused]] auto oStep : oState) {
        rusage oBefore;
        rusage oAfter;
        const timespec oTime = {2, 0};
        getrusage(RUSAGE_SELF, &oBefore);
        nanosleep(&oTime, nullptr);
        getrusage(RUSAGE_SELF, &oAfter);
        // One is this thread's own, for its sleep.
        oState.counters["wake_ups"] = static_cast<double>(oAfter.ru_nvcsw - oBefore.ru_nvcsw - 1);
    }
}
BENCHMARK(IdleLine)->ArgName("reception")->Arg(0)->Arg(1)->Iterations(1)->UseRealTime();

} // namespace
