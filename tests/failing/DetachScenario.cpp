// A daemon that goes to the background.

#include "app/KorDaemonApplication.h"
#include "tests/failing/Beside.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/Arguments.h"

#include <cerrno>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

class CBackground : public CKorDaemonApplication
{
public:
    explicit CBackground(const std::string& strTrace)
        : CKorDaemonApplication(nullptr, "gateway", nullptr), m_strTrace(strTrace)
    {
    }
    bool Initialize() override
    {
        if (!Detach())
            return false;
        const CBeside oBeside;
        std::ofstream(m_strTrace, std::ios::app) << "stays\n";
        return GetLoop().Post([this] { RequestEnd(); });
    }

private:
    const std::string& m_strTrace;
};

class CDetaching : public CScenario
{
public:
    explicit CDetaching(const std::string& strDirectory) : m_strTrace(strDirectory + "/trace") {}
    void Prepare() override
    {
        unlink(m_strTrace.c_str());
        unsetenv("NOTIFY_SOCKET");
    }
    void Run() override
    {
        Succeeds("a daemon goes to the background", [this] { return IsInBackground(); });
    }

private:
    /// Starts a program that goes to the background and waits until all of it has ended.
    bool IsInBackground()
    {
        int ahAlive[2] = {-1, -1};
        int nStatus = 0;
        {
            const CBeside oBeside;
            Expect(pipe(ahAlive) == 0, "a pipe for the test");
            const pid_t nProgram = fork();
            if (nProgram != 0) {
                close(ahAlive[1]);
                waitpid(nProgram, &nStatus, 0);
                char cNothing = 0;
                while (read(ahAlive[0], &cNothing, 1) == -1 && errno == EINTR) {
                }
                close(ahAlive[0]);
                Expect(TextOf(m_strTrace) == (nStatus == 0 ? "stays\n" : ""),
                       "a program that leaves with 0 leaves one daemon, any other none");
                return nStatus == 0;
            }
        }
        Start();
    }
    [[noreturn]] void Start()
    {
        alarm(PATIENCE_S);
        try {
            CBackground oDaemon(m_strTrace);
            _exit(oDaemon.Start(m_oArguments.Count(), m_oArguments.Vector()));
        } catch (const std::bad_alloc&) {
            _exit(EXIT_FAILURE);
        }
    }

    static constexpr unsigned int PATIENCE_S = 10;
    const std::string m_strTrace;
    Arguments m_oArguments = {"gateway.bin"};
};

} // namespace

CScenario* MakeDetach(const std::string& strDirectory)
{
    return new CDetaching(strDirectory);
}
