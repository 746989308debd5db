/// @file
/// CPU time of receiving a mebibyte that another process sends as fast as the line takes it: a
/// port that keeps it in its buffer, and libserialport reading into one array.

#include "serial/KorSerial.h"

#include <benchmark/benchmark.h>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <libserialport.h>
#include <signal.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

// libserialport opens devices with modem lines only. A pseudo-terminal has none: here it answers
// as if all of them were off.
extern "C" int ioctl(int hFile, unsigned long nRequest, ...) noexcept
{
    va_list args;
    va_start(args, nRequest);
    void* const pArgument = va_arg(args, void*);
    va_end(args);
    if (nRequest == TIOCMGET) {
        *static_cast<int*>(pArgument) = 0;
        return 0;
    }
    if (nRequest == TIOCMSET || nRequest == TIOCMBIS || nRequest == TIOCMBIC)
        return 0;
    return static_cast<int>(syscall(SYS_ioctl, hFile, nRequest, pArgument));
}

namespace
{

constexpr unsigned int SIZE = 1048576;

/// A raw pseudo-terminal and, from Start() on, a process that sends to it.
class SendingLine
{
public:
    SendingLine() : m_nFarEnd(posix_openpt(O_RDWR | O_NOCTTY))
    {
        grantpt(m_nFarEnd);
        unlockpt(m_nFarEnd);
        termios oSettings;
        tcgetattr(m_nFarEnd, &oSettings);
        cfmakeraw(&oSettings);
        tcsetattr(m_nFarEnd, TCSANOW, &oSettings);
    }
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

/// The name under which libserialport accepts a pseudo-terminal: behind "/dev/" it has to lead to
/// something from the directory of the kernel's serial devices as well.
std::string NameForLibserialport(const std::string& strLink)
{
    return "/dev/../../.." + strLink;
}

void ReceiveByLibserialport(benchmark::State& oState)
{
    const std::string strLink = "/tmp/tarvo-bench-line-" + std::to_string(getpid());
    for ([[maybe_unused]] auto oStep : oState) {
        oState.PauseTiming();
        SendingLine oLine;
        unlink(strLink.c_str());
        sp_port* pPort = nullptr;
        if (symlink(oLine.Name().c_str(), strLink.c_str()) != 0 ||
            sp_get_port_by_name(NameForLibserialport(strLink).c_str(), &pPort) != SP_OK ||
            sp_open(pPort, SP_MODE_READ_WRITE) != SP_OK) {
            oState.SkipWithError("the line cannot be opened");
            break;
        }
        oLine.Start();
        std::vector<char> vecData(SIZE);
        oState.ResumeTiming();
        if (sp_blocking_read(pPort, vecData.data(), SIZE, 60000) != static_cast<int>(SIZE))
            oState.SkipWithError("not all was received");
        oState.PauseTiming();
        sp_close(pPort);
        sp_free_port(pPort);
        oState.ResumeTiming();
    }
    unlink(strLink.c_str());
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
