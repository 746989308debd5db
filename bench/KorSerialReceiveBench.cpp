/// @file
/// CPU time of receiving a mebibyte that another process sends as fast as the line takes it: a
/// port that keeps it in its buffer, and libserialport reading into one array.

#include "bench/LibserialportLine.h"
#include "bench/RawTerminal.h"
#include "serial/KorSerial.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr unsigned int SIZE = 1048576;

/// A raw pseudo-terminal and, from Start() on, a process that sends to it.
class SendingLine
{
public:
    SendingLine() : m_nFarEnd(OpenRawTerminal()) {}
    ~SendingLine()
    {
        if (m_nSender > 0) {
            kill(m_nSender, SIGKILL);
            waitpid(m_nSender, nullptr, 0);
        }
        close(m_nFarEnd);
    }
    SendingLine(const SendingLine&) = delete;
    SendingLine& operator=(const SendingLine&) = delete;

    std::string Name() const { return ptsname(m_nFarEnd); }
    void Start()
    {
        m_nSender = fork();
        if (m_nSender != 0)
            return;
        const std::string strBytes(SIZE, 'U');
        for (std::size_t nSent = 0; nSent < SIZE;) {
            const ssize_t nCount = write(m_nFarEnd, strBytes.data() + nSent, SIZE - nSent);
            if (nCount < 0)
                _exit(1);
            nSent += static_cast<std::size_t>(nCount);
        }
        for (;;)
            pause();
    }

private:
    int m_nFarEnd;
    pid_t m_nSender = -1;
};

void ReceiveByKorSerial(benchmark::State& oState)
{
    for ([[maybe_unused]] auto oStep : oState) {
        oState.PauseTiming();
        SendingLine oLine;
        CKorSerial oPort;
        oPort.open(oLine.Name().c_str(), CKorSerial::BAUD_115200, CKorSerial::PARITY_NONE,
                   CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr);
        oLine.Start();
        std::string strData;
        oState.ResumeTiming();
        if (oPort.WaitForData(SIZE, strData, 60000) != CKorSerial::SERIAL_OK)
            oState.SkipWithError("not all was received");
        oState.PauseTiming();
        oPort.close();
        oState.ResumeTiming();
    }
}

void ReceiveByLibserialport(benchmark::State& oState)
{
    for ([[maybe_unused]] auto oStep : oState) {
        oState.PauseTiming();
        SendingLine oLine;
        {
            const LibserialportLine oPort(oLine.Name());
            oLine.Start();
            std::vector<char> vecData(SIZE);
            oState.ResumeTiming();
            if (sp_blocking_read(oPort.Port(), vecData.data(), SIZE, 60000) !=
                static_cast<int>(SIZE))
                oState.SkipWithError("not all was received");
            oState.PauseTiming();
        }
        oState.ResumeTiming();
    }
}

BENCHMARK(ReceiveByKorSerial)
    ->Iterations(10)
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ReceiveByLibserialport)
    ->Iterations(10)
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
