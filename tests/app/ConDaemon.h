#pragma once

#include "app/KorConApplication.h"

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

inline void Print(const std::string& strText)
{
    const ssize_t nWritten = write(STDOUT_FILENO, strText.data(), strText.size());
    if (nWritten != static_cast<ssize_t>(strText.size()))
        _exit(99);
}

/// Prints what is called; Run() waits for a signal.
class Daemon : public CKorConApplication
{
public:
    Daemon() : CKorConApplication(nullptr, "daemon", nullptr) {}

    void Run() override
    {
        Print("running ");
        while (true)
            pause();
    }
    int Finalize() override
    {
        Print("finalized ");
        return CKorConApplication::Finalize();
    }
};

inline int RunDaemon()
{
    Daemon oDaemon;
    return oDaemon.Start(0, nullptr);
}

inline ChildResult EndDaemonWith(int nSignal)
{
    ChildProcess oChild(&RunDaemon);
    EXPECT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(nSignal);
    return oChild.Wait();
}

inline bool HasDefaultAction(int nSignal)
{
    struct sigaction oAction;
    sigaction(nSignal, nullptr, &oAction);
    return oAction.sa_handler == SIG_DFL;
}
