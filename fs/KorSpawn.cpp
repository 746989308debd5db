#include "fs/KorSpawnDetail.h"

#include "fs/KorHandleDetail.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int EXEC_FAILED = 127;

/// Blocks all signals of the calling thread for the scope.
class CBlockedSignals
{
public:
    CBlockedSignals()
    {
        sigset_t oAll;
        sigfillset(&oAll);
        pthread_sigmask(SIG_BLOCK, &oAll, &m_oFormer);
    }
    ~CBlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_oFormer, nullptr); }
    CBlockedSignals(const CBlockedSignals&) = delete;
    CBlockedSignals& operator=(const CBlockedSignals&) = delete;

private:
    sigset_t m_oFormer;
};

/// What the child reported, where vfork() is a fork(), in emulators and under sanitizers.
int ReadError(int hReport)
{
    int nError = 0;
    ssize_t nRead = 0;
    do
        nRead = read(hReport, &nError, sizeof nError);
    while (nRead == -1 && errno == EINTR);
    return nRead == sizeof nError ? nError : 0;
}

void ResetSignals()
{
    struct sigaction oDefault = {};
    oDefault.sa_handler = SIG_DFL;
    for (int nSignal = 1; nSignal < _NSIG; ++nSignal)
        sigaction(nSignal, &oDefault, nullptr);
    sigset_t oNone;
    sigemptyset(&oNone);
    pthread_sigmask(SIG_SETMASK, &oNone, nullptr);
}

/// Has the child end with the thread that started it, which may be gone already.
bool EndWith(pid_t nParent)
{
    return prctl(PR_SET_PDEATHSIG, SIGTERM) == 0 && getppid() == nParent;
}

/// Makes a standard stream of the child out of a descriptor, or keeps the one that it has.
bool SetUpStream(int nStream, int nHandle)
{
    if (nHandle > STDERR_FILENO)
        return dup2(nHandle, nStream) != -1;
    const int nFlags = fcntl(nStream, F_GETFD);
    if (nFlags != -1)
        return fcntl(nStream, F_SETFD, nFlags & ~FD_CLOEXEC) != -1;
    // The lowest free number is this one: the streams are set up in their order.
    open("/dev/null", O_RDWR);
    return true;
}

} // namespace

bool KorOpenPipe(CKorHandle& oReader, CKorHandle& oWriter)
{
    int ahEnds[2];
    if (pipe2(ahEnds, O_CLOEXEC) != 0)
        return false;
    oReader = CKorHandle(ahEnds[0]);
    oWriter = CKorHandle(ahEnds[1]);
    return oReader.IsOpen() && oWriter.IsOpen();
}

pid_t CKorSpawn::Run()
{
    CKorHandle oReader;
    CKorHandle oWriter;
    if (!KorOpenPipe(oReader, oWriter))
        return -1;
    const pid_t nProcessID = Fork(oWriter.Get());
    if (nProcessID == -1)
        return -1;
    oWriter.Close();
    // After a true vfork() it has executed the program or ended already.
    const int nError = m_nError != NOT_SHARED ? m_nError : ReadError(oReader.Get());
    if (nError == 0)
        return nProcessID;
    while (waitpid(nProcessID, nullptr, 0) == -1 && errno == EINTR) {
    }
    errno = nError;
    return -1;
}

// A signal handler of the program must not run in the child, which may use the program's memory.
pid_t CKorSpawn::Fork(int hReport)
{
    const CBlockedSignals oBlocked;
    m_nParent = getpid();
    // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.vfork): fork needs twice the memory
    const pid_t nProcessID = vfork();
    if (nProcessID == 0)
        Become(hReport); // NOLINT(clang-analyzer-unix.Vfork): makes none but system calls
    return nProcessID;
}

void CKorSpawn::Become(int hReport)
{
    m_nError = 0;
    if (SetUp(hReport))
        Execute();
    const int nError = errno;
    m_nError = nError;
    const ssize_t nWritten = write(hReport, &nError, sizeof nError);
    _exit(nWritten == sizeof nError ? EXEC_FAILED : EXEC_FAILED + 1);
}

bool CKorSpawn::SetUp(int hReport) const
{
    if (m_bNewGroup && setpgid(0, 0) != 0)
        return false;
    if (m_bEndWithParent && !EndWith(m_nParent))
        return false;
    for (int nStream = 0; nStream <= STDERR_FILENO; ++nStream) {
        if (!SetUpStream(nStream, m_anStreams[nStream]))
            return false;
    }
    if (m_bErrorToOutput && dup2(STDOUT_FILENO, STDERR_FILENO) == -1)
        return false;
    KorCloseAllBut(hReport);
    if (*m_pszWorkDir != '\0' && chdir(m_pszWorkDir) != 0)
        return false;
    ResetSignals();
    return true;
}

// Goes on where a search along the path goes on; a program that was found and may not be executed
// tells more than one that was not found.
void CKorSpawn::Execute() const
{
    bool bForbidden = false;
    for (const std::string& strProgram : m_vecPrograms) {
        execve(strProgram.c_str(), m_vecArguments.data(), m_vecEnvironment.data());
        bForbidden = bForbidden || errno == EACCES;
        if (errno != EACCES && errno != ENOENT && errno != ENOTDIR)
            return;
    }
    if (bForbidden)
        errno = EACCES;
}
