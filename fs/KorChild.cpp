#include "fs/KorChild.h"

#include "fs/KorChildDetail.h"
#include "fs/KorSpawnDetail.h"
#include "text/KorSharedDetail.h"
#include "time/KorTimeout.h"

#include <cerrno>
#include <signal.h>

namespace
{

/// A program that got SIGKILL ends at once, unless it waits for a device that does not answer.
constexpr unsigned int LONGEST_DEATH = 10000;

bool IsPlain(SKorChildOptions::EStream eStream)
{
    return eStream == SKorChildOptions::STREAM_INHERIT ||
           eStream == SKorChildOptions::STREAM_NULL || eStream == SKorChildOptions::STREAM_PIPE;
}

bool AreStreams(const SKorChildOptions& oOptions)
{
    return IsPlain(oOptions.m_eInput) && IsPlain(oOptions.m_eOutput) &&
           (IsPlain(oOptions.m_eError) || oOptions.m_eError == SKorChildOptions::STREAM_STDOUT);
}

/// Both ends of a child's streams while it is started.
class CStreams
{
public:
    bool Open(const SKorChildOptions& oOptions, CKorSpawn& oSpawn)
    {
        return Open(STDIN_FILENO, oOptions.m_eInput, oSpawn) &&
               Open(STDOUT_FILENO, oOptions.m_eOutput, oSpawn) &&
               Open(STDERR_FILENO, oOptions.m_eError, oSpawn);
    }
    /// Hands the parent's ends over.
    void Give(int* pnHandles)
    {
        for (CKorHandle& oHandle : m_aoParents)
            *pnHandles++ = oHandle.Take();
    }

private:
    bool Open(int nStream, SKorChildOptions::EStream eStream, CKorSpawn& oSpawn)
    {
        CKorHandle& oParents = m_aoParents[nStream];
        CKorHandle& oChilds = m_aoChilds[nStream];
        bool bOpen = true;
        if (eStream == SKorChildOptions::STREAM_PIPE)
            bOpen = nStream == STDIN_FILENO ? KorOpenPipe(oChilds, oParents)
                                            : KorOpenPipe(oParents, oChilds);
        if (eStream == SKorChildOptions::STREAM_NULL) {
            oChilds = CKorHandle(open("/dev/null", O_RDWR | O_CLOEXEC));
            bOpen = oChilds.IsOpen();
        }
        oSpawn.SetStream(nStream, oChilds.Get());
        return bOpen;
    }

    CKorHandle m_aoParents[3];
    CKorHandle m_aoChilds[3];
};

} // namespace

CKorChild::CKorChild()
    : m_oThread(), m_nOwner(0), m_bNewGroup(false), m_ahStreams{-1, -1, -1}, m_nLastError(0)
{
}

CKorChild::~CKorChild()
{
    if (IsRunning())
        Stop(0);
    Release();
}

bool CKorChild::Start(const std::vector<std::string>& vecArguments,
                      const SKorChildOptions& oOptions)
{
    if (IsRunning())
        return Fail(EBUSY);
    Release();
    if (!AreStreams(oOptions))
        return Fail(EINVAL);
    return Launch(vecArguments, oOptions) || Fail(errno);
}

// The thread is there before the child is, so that no child remains that nobody waits for. The
// child is started on this thread, with whose end it may have to end.
bool CKorChild::Launch(const std::vector<std::string>& vecArguments,
                       const SKorChildOptions& oOptions)
{
    CKorSpawn oSpawn;
    CStreams oStreams;
    const auto pState = KorMakeShared<SKorChildState>();
    if (!oSpawn.Prepare(vecArguments, oOptions) || !pState->m_oEnd.IsOpen() ||
        !oStreams.Open(oOptions, oSpawn))
        return false;
    std::unique_lock<std::mutex> oLock(pState->m_oMutex);
    if (!KorStartToWait(pState, m_oThread))
        return false;
    const pid_t nProcessID = oSpawn.Run();
    const int nErrno = errno;
    pState->m_nProcessID = nProcessID == -1 ? 0 : nProcessID;
    oLock.unlock();
    if (nProcessID == -1) {
        pthread_join(m_oThread, nullptr);
        errno = nErrno;
        return false;
    }
    m_pState = pState;
    m_nOwner = getpid();
    m_bNewGroup = oOptions.m_bNewGroup;
    oStreams.Give(m_ahStreams);
    return true;
}

int CKorChild::GetProcessID() const
{
    return m_pState != nullptr ? m_pState->m_nProcessID : 0;
}

bool CKorChild::Wait(unsigned int nTimeout)
{
    if (m_pState == nullptr)
        return Fail(ESRCH);
    const CKorTimeout oTimeout(nTimeout);
    while (!m_pState->m_bEnded) {
        if (!IsOwn())
            return Fail(ESRCH);
        if (oTimeout.IsExpired())
            return false;
        pollfd oPoll = {m_pState->m_oEnd.Get(), POLLIN, 0};
        KorPoll(&oPoll, 1, oTimeout.GetRemaining());
    }
    return true;
}

bool CKorChild::IsRunning()
{
    return IsOwn() && !m_pState->m_bEnded;
}

int CKorChild::GetExitStatus() const
{
    return m_pState != nullptr && m_pState->m_bEnded ? m_pState->m_nExitStatus : -1;
}

int CKorChild::GetEndSignal() const
{
    return m_pState != nullptr && m_pState->m_bEnded ? m_pState->m_nEndSignal : 0;
}

bool CKorChild::Signal(int nSignal)
{
    return SendTo(GetProcessID(), nSignal);
}

bool CKorChild::Stop(unsigned int nGrace)
{
    if (m_pState == nullptr)
        return Fail(ESRCH);
    const pid_t nTarget = m_bNewGroup ? -GetProcessID() : GetProcessID();
    if (!SendTo(nTarget, SIGTERM) || Wait(nGrace) || !SendTo(nTarget, SIGKILL))
        return m_pState->m_bEnded;
    return Wait(LONGEST_DEATH) || Fail(ETIMEDOUT);
}

int CKorChild::GetEndHandle() const
{
    return m_pState != nullptr ? m_pState->m_oEnd.Get() : -1;
}

void CKorChild::CloseInput()
{
    CKorHandle oInput;
    oInput = CKorHandle(m_ahStreams[STDIN_FILENO]);
    m_ahStreams[STDIN_FILENO] = -1;
}

bool CKorChild::Fail(int nError)
{
    errno = nError;
    m_nLastError = nError;
    return false;
}

bool CKorChild::IsOwn() const
{
    return m_pState != nullptr && m_nOwner == getpid();
}

// Until it is collected, which happens under the same mutex, its number is no other process's.
bool CKorChild::SendTo(pid_t nTarget, int nSignal)
{
    if (!IsOwn())
        return Fail(ESRCH);
    const std::lock_guard<std::mutex> oLock(m_pState->m_oMutex);
    if (m_pState->m_bEnded)
        return Fail(ESRCH);
    return kill(nTarget, nSignal) == 0 || Fail(errno);
}

// A child that could not be ended is left to the thread, which collects it when it ends. In a
// forked process there is no such thread.
void CKorChild::Release()
{
    if (IsOwn() && m_pState->m_bEnded)
        pthread_join(m_oThread, nullptr);
    else if (IsOwn())
        pthread_detach(m_oThread);
    m_pState.reset();
    for (int& rhStream : m_ahStreams) {
        const CKorHandle oClosed(rhStream);
        rhStream = -1;
    }
}
