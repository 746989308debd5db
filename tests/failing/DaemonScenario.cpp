// A daemon: started, ready, reloaded by SIGHUP, ended by SIGTERM.

#include "app/KorDaemonApplication.h"
#include "app/KorPidFile.h"
#include "tests/app/NotifySocket.h"
#include "tests/failing/Beside.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/Arguments.h"

#include <csignal>
#include <cstdlib>

namespace
{

class CWorkingDaemon : public CKorDaemonApplication
{
public:
    CWorkingDaemon(const std::string& strPidFile, const NotifySocket& oManager)
        : CKorDaemonApplication(nullptr, "gateway", nullptr),
          m_strPidFile(strPidFile),
          m_oManager(oManager)
    {
    }
    bool Initialize() override
    {
        return m_oPidFile.Acquire(m_strPidFile.c_str()) &&
               GetLoop().CallEvery(1, [this] { Work(); }) > 0;
    }
    void ReloadInd() override { m_bReloaded = true; }
    int Finalize() override
    {
        m_bFinalized = true;
        m_oPidFile.Release();
        return CKorDaemonApplication::Finalize();
    }

    bool m_bToldReady = false;
    bool m_bReloaded = false;
    bool m_bFinalized = false;

private:
    void Work()
    {
        constexpr int LONGEST = 1000;
        const CBeside oBeside;
        while (m_oManager.HasMessage())
            m_bToldReady = m_oManager.Receive() == "READY=1" || m_bToldReady;
        if (++m_nTurns == 1)
            std::raise(SIGHUP);
        if ((m_bReloaded && m_bToldReady) || m_nTurns > LONGEST)
            std::raise(SIGTERM);
    }

    const std::string& m_strPidFile;
    const NotifySocket& m_oManager;
    CKorPidFile m_oPidFile;
    int m_nTurns = 0;
};

class CDaemon : public CScenario
{
public:
    explicit CDaemon(const std::string& strDirectory)
        : m_strPidFile(strDirectory + "/gateway.pid"),
          m_strSocket(strDirectory + "/notify"),
          m_oSocket(m_strSocket)
    {
        setenv("NOTIFY_SOCKET", m_strSocket.c_str(), 1);
        for (int nSignal = 1; nSignal < SIGNALS; ++nSignal)
            sigaction(nSignal, nullptr, &m_aoActions[nSignal]);
    }
    void Prepare() override
    {
        while (m_oSocket.HasMessage())
            m_oSocket.Receive();
    }
    void Run() override
    {
        Succeeds("a daemon does its work", [this] { return IsDone(); });
    }

private:
    static constexpr int SIGNALS = 32;

    bool IsDone()
    {
        bool bDone = false;
        try {
            bDone = Start();
        } catch (const std::bad_alloc&) {
            // Told, as the exit status of a program that nobody catches it in.
        }
        const CBeside oBeside;
        Prepare();
        Expect(TextOf(m_strPidFile).empty(), "a daemon that has ended has no PID file");
        Expect(HasFormerActions(), "a daemon that has ended has given the signals back");
        return bDone;
    }
    bool Start()
    {
        CWorkingDaemon oDaemon(m_strPidFile, m_oSocket);
        const int nStatus = oDaemon.Start(m_oArguments.Count(), m_oArguments.Vector());
        Expect(oDaemon.m_bFinalized, "a daemon is finalized");
        if (nStatus != EXIT_SUCCESS)
            return false;
        Expect(oDaemon.m_bReloaded, "a daemon that tells success has reloaded");
        Expect(oDaemon.m_bToldReady, "a daemon that tells success was ready");
        return true;
    }
    bool HasFormerActions() const
    {
        struct sigaction oNow = {};
        for (int nSignal = 1; nSignal < SIGNALS; ++nSignal) {
            sigaction(nSignal, nullptr, &oNow);
            if (oNow.sa_handler != m_aoActions[nSignal].sa_handler)
                return false;
        }
        return true;
    }

    const std::string m_strPidFile;
    const std::string m_strSocket;
    NotifySocket m_oSocket;
    Arguments m_oArguments = {"gateway.bin"};
    struct sigaction m_aoActions[SIGNALS] = {};
};

} // namespace

CScenario* MakeDaemon(const std::string& strDirectory)
{
    return new CDaemon(strDirectory);
}
