#include "app/KorDaemonApplication.h"

#include "app/KorServiceNotify.h"
#include "fs/KorDescriptorDetail.h"
#include "fs/KorPathFunc.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>
#include <unistd.h>

std::atomic<CKorDaemonApplication*> CKorDaemonApplication::m_pDaemon(nullptr);

namespace
{

constexpr std::uint32_t PATIENCE_MS = 5000;
constexpr int WRONG_USAGE = 2;

/// The monotonic clock modulo 2^32, never 0.
std::uint32_t Now()
{
    timespec oNow;
    clock_gettime(CLOCK_MONOTONIC, &oNow);
    return (static_cast<std::uint32_t>(oNow.tv_sec) * 1000U +
            static_cast<std::uint32_t>(oNow.tv_nsec / 1000000)) |
           1U;
}

void SetAction(int nSignal, void (*pHandler)(int))
{
    struct sigaction oAction = {};
    oAction.sa_handler = pHandler;
    oAction.sa_flags = SA_RESTART;
    sigemptyset(&oAction.sa_mask);
    sigaction(nSignal, &oAction, nullptr);
}

void DoNothing(int) {}

/// Whether the manager may be told later: its queue is full, or the system has no room just now.
bool IsPassing(int nError)
{
    return nError == EAGAIN || nError == ENOBUFS || nError == ENOMEM || nError == EMFILE ||
           nError == ENFILE;
}

} // namespace

CKorDaemonApplication::CKorDaemonApplication(const char* pszIniFile, const char* pszApplName,
                                             const char* pszLogFile)
    : CKorConApplication(pszIniFile, pszApplName, pszLogFile),
      m_nEndTime(0),
      m_nEndSignals(0),
      m_nExitStatus(EXIT_SUCCESS),
      m_bEndByProgram(false),
      m_nReloadTicket(-1)
{
    CKorDaemonApplication::InstallSignalHandlers();
    LetAllSignalsIn();
}

CKorDaemonApplication::~CKorDaemonApplication()
{
    HoldEndSignals(); // the base class gives them their default actions
    CKorDaemonApplication::RemoveSignalHandlers();
}

int CKorDaemonApplication::Start(int argc, char** argv)
{
    TakeProgramName(argc, argv);
    const CKorOptionParser::EResult eResult = TakeOptions(argc, argv);
    if (eResult != CKorOptionParser::PARSE_OK)
        return eResult == CKorOptionParser::PARSE_DONE ? EXIT_SUCCESS : WRONG_USAGE;
    ParseCommandLine();
    if (Initialize()) {
        m_oLoop.Post(Step([](CKorDaemonApplication& oThis) {
            oThis.TellReady();
            oThis.TellAlive();
        }));
        Run();
        KorNotifyStopping();
    } else if (!m_bEndByProgram) {
        RequestEnd(EXIT_FAILURE);
    }
    return Finalize();
}

/// The base class takes the title of a program file with an extension only.
void CKorDaemonApplication::TakeProgramName(int argc, char** argv)
{
    if (argc <= 0 || argv == nullptr || argv[0] == nullptr)
        return InitializeClass(argc, argv);
    std::string strProgram = argv[0];
    size_t nTitle = strProgram.size();
    while (nTitle > 0 && !IsSeparator(strProgram[nTitle - 1]))
        --nTitle;
    if (strProgram.find('.', nTitle) != std::string::npos)
        return InitializeClass(argc, argv);
    strProgram.append(".");
    m_oCmdLine.Initialize(argc, argv); // refuses a null entry before anything else is done
    char* pszProgram = strProgram.data();
    InitializeClass(1, &pszProgram);
    for (int i = 1; i < argc; ++i)
        m_strCommandLine.append(argv[i]).append(" ");
    m_oCmdLine.Initialize(argc, argv);
}

/// Reads what the program declares, and prints what the parser has to say.
CKorOptionParser::EResult CKorDaemonApplication::TakeOptions(int argc, char** argv)
{
    CKorOptionParser oParser(m_oInfo);
    DeclareOptions(oParser);
    if (oParser.IsEmpty())
        return CKorOptionParser::PARSE_OK;
    const CKorOptionParser::EResult eResult = oParser.Parse(argc, argv);
    if (eResult != CKorOptionParser::PARSE_OK)
        KorWriteAll(eResult == CKorOptionParser::PARSE_DONE ? STDOUT_FILENO : STDERR_FILENO,
                    oParser.GetText());
    return eResult;
}

void CKorDaemonApplication::Run()
{
    if (!IsEndRequested() && m_oLoop.Run() == -1 && !IsEndRequested())
        RequestEnd(EXIT_FAILURE);
}

int CKorDaemonApplication::Finalize()
{
    return GetExitStatus();
}

void CKorDaemonApplication::InstallSignalHandlers()
{
    m_pDaemon = this;
    SetAction(SIGINT, &EndSignalHandler);
    SetAction(SIGTERM, &EndSignalHandler);
    SetAction(SIGABRT, SIG_DFL);
    SetAction(SIGPIPE, &DoNothing);
    if (m_nReloadTicket == -1)
        m_nReloadTicket = m_oLoop.CallOnSignal(
            SIGHUP, Step([](CKorDaemonApplication& oThis) { oThis.Reload(); }));
}

void CKorDaemonApplication::RemoveSignalHandlers()
{
    RestoreActions();
    m_oLoop.Cancel(m_nReloadTicket);
    m_nReloadTicket = -1;
    if (m_pDaemon == this)
        m_pDaemon = nullptr;
}

void CKorDaemonApplication::RequestEnd(int nExitStatus)
{
    int nNone = EXIT_SUCCESS;
    m_nExitStatus.compare_exchange_strong(nNone, nExitStatus);
    m_bEndByProgram = true;
    AskForEnd();
}

void CKorDaemonApplication::ReloadInd() {}

void CKorDaemonApplication::DeclareOptions(CKorOptionParser&) {}

// In a copy of the process, and above all in a child of vfork(), whose memory is the program's, a
// signal is not the program's.
void CKorDaemonApplication::EndSignalHandler(int nSignal)
{
    const int nError = errno;
    CKorDaemonApplication* const pDaemon = m_pDaemon;
    if (pDaemon != nullptr && getpid() == m_nPID)
        pDaemon->CountEndSignal(nSignal);
    errno = nError;
}

void CKorDaemonApplication::CountEndSignal(int nSignal)
{
    constexpr int LAST = 3;
    const std::uint32_t nEndTime = m_nEndTime;
    if (++m_nEndSignals >= LAST || (nEndTime != 0 && Now() - nEndTime > PATIENCE_MS))
        _exit(128 + nSignal);
    AskForEnd();
}

void CKorDaemonApplication::AskForEnd()
{
    std::uint32_t nNone = 0;
    m_nEndTime.compare_exchange_strong(nNone, Now());
    m_oLoop.Stop();
}

/// A handler for the loop: one kind of function object for all of them.
std::function<void()> CKorDaemonApplication::Step(void (*pfnStep)(CKorDaemonApplication&))
{
    return [this, pfnStep] { pfnStep(*this); };
}

/// A manager that waits for this takes a program that does not say it for one that failed.
void CKorDaemonApplication::TellReady()
{
    constexpr unsigned int PAUSE_MS = 100;
    if (!KorNotifyReady() && IsPassing(errno))
        m_oLoop.CallAfter(PAUSE_MS, Step([](CKorDaemonApplication& oThis) { oThis.TellReady(); }));
}

void CKorDaemonApplication::TellAlive()
{
    const unsigned int nInterval = KorGetAliveInterval();
    if (nInterval != 0 && std::getenv("NOTIFY_SOCKET") != nullptr)
        m_oLoop.CallEvery(nInterval, Step([](CKorDaemonApplication&) { KorNotifyAlive(); }));
}

void CKorDaemonApplication::Reload()
{
    KorNotifyReloading();
    ReloadInd();
    TellReady();
}
