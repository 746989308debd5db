#pragma once

#include "app/KorDaemonApplication.h"

#include "tests/app/PrintingDaemon.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

inline ChildResult EndWith(ChildProcess& oChild, int nSignal)
{
    EXPECT_TRUE(oChild.WaitForOutput("running "));
    oChild.Signal(nSignal);
    return oChild.Wait();
}

template <class TDaemon = PrintingDaemon>
int RunDaemon()
{
    TDaemon oDaemon;
    const int nStatus = oDaemon.Start(0, nullptr);
    Print("returned ");
    return nStatus;
}

/// Uses no loop, and waits for nothing but the signal.
class Waiting : public PrintingDaemon
{
public:
    void Run() override
    {
        Print("running ");
        while (!IsEndRequested())
            poll(nullptr, 0, 10);
    }
};

/// Never notices that it is to end.
class Deaf : public PrintingDaemon
{
public:
    void Run() override
    {
        Print("running ");
        while (true)
            pause();
    }
};

inline struct sigaction ActionOf(int nSignal)
{
    struct sigaction oAction = {};
    sigaction(nSignal, nullptr, &oAction);
    return oAction;
}
