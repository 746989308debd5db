// Programs that are started, fed, read and ended.

#include "fs/KorChild.h"
#include "fs/KorProcess.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/Emulation.h"

#include <cerrno>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr unsigned int PATIENCE_MS = 10000;

class CChildren : public CScenario
{
public:
    void Run() override
    {
        RunToTheEnd();
        StartAndStop();
        StartNothing();
        Forget();
    }

private:
    void RunToTheEnd()
    {
        std::string strOutput;
        int nStatus = -1;
        const auto fnRun = [&] {
            return KorRunProgram({"/bin/cat"}, m_strInput, strOutput, nStatus, PATIENCE_MS);
        };
        const bool bRun = Succeeds("a program is run", fnRun,
                                   [&] { Expect(nStatus == -1, "a failure has no exit status"); });
        Expect(!bRun || nStatus == 0, "a program that was run has its exit status");
        Expect(!bRun || strOutput == m_strInput, "a program that was run has got and given all");
    }

    void StartAndStop()
    {
        CKorChild oChild;
        SKorChildOptions oOptions;
        oOptions.m_eInput = SKorChildOptions::STREAM_PIPE;
        oOptions.m_eError = SKorChildOptions::STREAM_NULL;
        const bool bStarted = Succeeds(
            "a program is started", [&] { return oChild.Start({"/bin/cat"}, oOptions); },
            [&] { Expect(!oChild.IsRunning(), "a program that was not started runs not"); });
        if (!bStarted)
            return;
        Expect(oChild.IsRunning() && oChild.Signal(0), "a program that was started runs");
        const bool bEnded =
            Succeeds("a program is ended", [&] { return oChild.Stop(PATIENCE_MS); });
        Expect(!bEnded || (!oChild.IsRunning() && oChild.GetEndSignal() == SIGTERM),
               "a program that was ended does not run");
    }

    void StartNothing()
    {
        // There vfork() is a fork(), and a pipe of the process's own tells the failure.
        if (UnderEmulation() && (m_strFailing == "read" || m_strFailing == "write"))
            return;
        CKorChild oChild;
        const auto fnStart = [&] {
            const bool bStarted = oChild.Start({"/no/such/program"});
            Expect(!bStarted, "a program that does not exist is not started");
            return !bStarted && oChild.GetLastError() == ENOENT;
        };
        Succeeds("a program that does not exist is told", fnStart);
    }

    /// Nobody learns whether it started; so there must be none, or one to collect.
    static void Forget()
    {
        const char* apszArguments[] = {"/bin/true", nullptr};
        CKorProcess::Spawn("/bin/true", apszArguments);
        const CBeside oBeside;
        while (waitpid(-1, nullptr, 0) != -1 || errno == EINTR) {
        }
    }

    const std::string m_strInput = std::string(100000, 'x') + "end";
};

} // namespace

CScenario* MakeChild(const std::string&)
{
    return new CChildren;
}
