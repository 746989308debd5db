#include "app/KorConApplication.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

int CKorConApplication::m_nPID = 0;

namespace
{

std::atomic<bool> bFinalizing(false);

/// Claims the right to finalize for the scope, unless somebody has it already.
class FinalizingScope
{
public:
    FinalizingScope() : m_bClaimed(!bFinalizing.exchange(true)) {}
    ~FinalizingScope()
    {
        if (m_bClaimed)
            bFinalizing = false;
    }
    FinalizingScope(const FinalizingScope&) = delete;
    FinalizingScope& operator=(const FinalizingScope&) = delete;
    bool IsClaimed() const { return m_bClaimed; }

private:
    const bool m_bClaimed;
};

/// One handler for all three signals, each of which blocks the others while it is handled.
void SetHandler(int nSignal, void (*pHandler)(int))
{
    struct sigaction oAction = {};
    oAction.sa_handler = pHandler;
    oAction.sa_flags = SA_RESTART;
    sigemptyset(&oAction.sa_mask);
    sigaddset(&oAction.sa_mask, SIGINT);
    sigaddset(&oAction.sa_mask, SIGTERM);
    sigaddset(&oAction.sa_mask, SIGABRT);
    sigaction(nSignal, &oAction, nullptr);
}

} // namespace

CKorConApplication::CKorConApplication(const char* pszIniFile, const char* pszApplName,
                                       const char* pszLogFile)
    : CKorBaseApplication(pszIniFile, pszApplName, pszLogFile)
{
    m_nPID = getpid();
    CKorConApplication::InstallSignalHandlers();
}

CKorConApplication::~CKorConApplication()
{
    CKorConApplication::RemoveSignalHandlers();
}

bool CKorConApplication::Initialize()
{
    return CKorBaseApplication::Initialize();
}

int CKorConApplication::Finalize()
{
    return CKorBaseApplication::Finalize();
}

void CKorConApplication::InstallSignalHandlers()
{
    SetHandler(SIGINT, &StdSignalHandler);
    SetHandler(SIGTERM, &StdSignalHandler);
    SetHandler(SIGABRT, &StdSignalHandler);
}

void CKorConApplication::RemoveSignalHandlers()
{
    SetHandler(SIGTERM, SIG_DFL);
    SetHandler(SIGINT, SIG_DFL);
    SetHandler(SIGABRT, SIG_DFL);
}

void CKorConApplication::StdSignalHandler(int nSignal)
{
    if (nSignal != SIGINT && nSignal != SIGTERM && nSignal != SIGABRT)
        return;
    if (CKorBaseApplication* const pApplication = GetApplication()) {
        if (!FinalizeOnce(*pApplication))
            return;
    }
    std::exit(nSignal == SIGABRT ? 3 : 0);
}

bool CKorConApplication::FinalizeFromSignalHandler()
{
    return FinalizeOnce(*this);
}

bool CKorConApplication::FinalizeOnce(CKorBaseApplication& oApplication)
{
    if (getpid() != m_nPID)
        return false;
    // Keeps a Finalize() that aborts, or a second signal on another thread, from running it again.
    const FinalizingScope oScope;
    if (!oScope.IsClaimed())
        return false;
    oApplication.Finalize();
    m_pApplication = nullptr;
    return true;
}
