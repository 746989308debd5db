/// @file
/// What an open port costs while it is idle and while it receives, and what the buffer between
/// the receive thread and the application costs.

#include "bench/RawTerminal.h"
#include "serial/KorSerial.h"
#include "text/KorMutexBuffer.h"

#include <benchmark/benchmark.h>
#include <ctime>
#include <signal.h>
#include <stdlib.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr unsigned int SECONDS = 5;
constexpr long CHARACTERS_PER_SECOND = 11520; // 115,200 baud, ten bits a character

/// A port on a raw pseudo-terminal.
class PortOnALine
{
public:
    PortOnALine() : m_nFarEnd(OpenRawTerminal())
    {
        m_oPort.open(ptsname(m_nFarEnd), CKorSerial::BAUD_115200, CKorSerial::PARITY_NONE,
                     CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr);
    }
    ~PortOnALine()
    {
        m_oPort.close();
        close(m_nFarEnd);
    }
    PortOnALine(const PortOnALine&) = delete;
    PortOnALine& operator=(const PortOnALine&) = delete;

    int m_nFarEnd;
    CKorSerial m_oPort;
};

double SecondsOn(clockid_t nClock)
{
    timespec oTime;
    clock_gettime(nClock, &oTime);
    return static_cast<double>(oTime.tv_sec) + static_cast<double>(oTime.tv_nsec) * 1e-9;
}

/// Measures the share of one core that this process uses.
class CoreShare
{
public:
    CoreShare()
        : m_nCpuStart(SecondsOn(CLOCK_PROCESS_CPUTIME_ID)), m_nStart(SecondsOn(CLOCK_MONOTONIC))
    {
    }
    double Percent() const
    {
        return 100 * (SecondsOn(CLOCK_PROCESS_CPUTIME_ID) - m_nCpuStart) /
               (SecondsOn(CLOCK_MONOTONIC) - m_nStart);
    }

private:
    double m_nCpuStart;
    double m_nStart;
};

/// Sends bursts at the pace of the line until it is killed.
[[noreturn]] void SendAtLineSpeed(int nFarEnd, long nBurst)
{
    const std::string strBurst(static_cast<std::size_t>(nBurst), 'U');
    timespec oNext;
    clock_gettime(CLOCK_MONOTONIC, &oNext);
    for (;;) {
        if (write(nFarEnd, strBurst.data(), strBurst.size()) < 0)
            _exit(1);
        oNext.tv_nsec += nBurst * (1000000000L / CHARACTERS_PER_SECOND);
        if (oNext.tv_nsec >= 1000000000L) {
            oNext.tv_nsec -= 1000000000L;
            ++oNext.tv_sec;
        }
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &oNext, nullptr);
    }
}

void IdlePort(benchmark::State& oState)
{
    const PortOnALine oLine;
    for ([[maybe_unused]] auto oStep : oState) {
        const CoreShare oShare;
        CKorThread::Sleep(SECONDS, 0);
        oState.counters["percent_of_core"] = oShare.Percent();
    }
}
BENCHMARK(IdlePort)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Another process sends; the application takes what came every 25 ms.
void ReceivingPort(benchmark::State& oState)
{
    PortOnALine oLine;
    const pid_t nSender = fork();
    if (nSender == 0)
        SendAtLineSpeed(oLine.m_nFarEnd, oState.range(0));
    std::size_t nReceived = 0;
    for ([[maybe_unused]] auto oStep : oState) {
        const CoreShare oShare;
        for (unsigned int nPoll = 0; nPoll < SECONDS * 40; ++nPoll) {
            CKorThread::Sleep(0, 25);
            nReceived += oLine.m_oPort.GetReceivedData(0xFFFFFFFF).size();
        }
        oState.counters["percent_of_core"] = oShare.Percent();
    }
    kill(nSender, SIGKILL);
    waitpid(nSender, nullptr, 0);
    oState.counters["characters"] =
        benchmark::Counter(static_cast<double>(nReceived), benchmark::Counter::kIsRate);
}
BENCHMARK(ReceivingPort)
    ->ArgName("burst")
    ->Arg(1)
    ->Arg(16)
    ->Arg(64)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BufferAddChar(benchmark::State& oState)
{
    CKorMutexBuffer oBuffer;
    for ([[maybe_unused]] auto oStep : oState) {
        oBuffer.AddChar('x');
        if (oBuffer.GetLength() >= 4096)
            oBuffer.ClearBuffer();
    }
}
BENCHMARK(BufferAddChar);

const std::string LINE = "$GPGLL,4916.45,N,12311.12,W*31\r\n"; // 32 characters

std::string Lines(std::size_t nLength)
{
    std::string strLines;
    while (strLines.size() < nLength)
        strLines += LINE;
    return strLines;
}

/// Takes one line while the buffer holds so many characters.
void BufferTakeLine(benchmark::State& oState)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString(Lines(static_cast<std::size_t>(oState.range(0))));
    for ([[maybe_unused]] auto oStep : oState) {
        benchmark::DoNotOptimize(oBuffer.RemoveString("\r\n"));
        oBuffer.AddString(LINE);
    }
}
BENCHMARK(BufferTakeLine)->ArgName("held")->Arg(32)->Arg(4096)->Arg(65536)->Arg(1048576);

/// The same with a string that becomes a copy of its own tail.
void StringTakeLine(benchmark::State& oState)
{
    std::string strBuffer = Lines(static_cast<std::size_t>(oState.range(0)));
    for ([[maybe_unused]] auto oStep : oState) {
        const std::size_t nLength = strBuffer.find("\r\n") + 2;
        benchmark::DoNotOptimize(strBuffer.substr(0, nLength));
        strBuffer = strBuffer.substr(nLength);
        strBuffer += LINE;
    }
}
BENCHMARK(StringTakeLine)->ArgName("held")->Arg(32)->Arg(4096)->Arg(65536)->Arg(1048576);

/// Drains a full buffer line by line.
void BufferDrain(benchmark::State& oState)
{
    const std::string strLines = Lines(static_cast<std::size_t>(oState.range(0)));
    CKorMutexBuffer oBuffer;
    for ([[maybe_unused]] auto oStep : oState) {
        oBuffer.AddString(strLines);
        while (!oBuffer.RemoveString("\r\n").empty()) {
        }
    }
    oState.SetBytesProcessed(oState.iterations() * oState.range(0));
}
BENCHMARK(BufferDrain)
    ->ArgName("held")
    ->Arg(4096)
    ->Arg(65536)
    ->Arg(1048576)
    ->Unit(benchmark::kMillisecond);

} // namespace
