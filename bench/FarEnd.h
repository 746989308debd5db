#pragma once

/// @file
/// The far end of a serial line, in a process of its own, and what this end costs.

#include "bench/RawTerminal.h"

#include <cstddef>
#include <ctime>
#include <signal.h>
#include <stdlib.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

constexpr unsigned int TIMEOUT = 60000;
constexpr std::size_t LENGTH = 64;
constexpr std::size_t LINES = 1048576 / LENGTH;
const std::string LINE = std::string(LENGTH - 1, 'x') + "\n";

/// A raw pseudo-terminal and a process at its far end.
class FarEnd
{
public:
    FarEnd() : m_nMaster(OpenRawTerminal()) {}
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

/// The processor time of the calling thread so far.
inline double CpuSeconds()
{
    timespec oTime;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &oTime);
    return static_cast<double>(oTime.tv_sec) + static_cast<double>(oTime.tv_nsec) * 1e-9;
}
