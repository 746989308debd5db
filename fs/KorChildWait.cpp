#include "fs/KorChildDetail.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <sys/eventfd.h>
#include <sys/wait.h>

namespace
{

constexpr unsigned int FOREVER = 0xFFFFFFFF;

/// Waits until the child has ended and leaves it where it is.
/// @return what it ended with; zeros when somebody else collected it
siginfo_t AwaitEnd(pid_t nProcessID)
{
    siginfo_t oEnd = {};
    while (waitid(P_PID, static_cast<id_t>(nProcessID), &oEnd, WEXITED | WNOWAIT) == -1) {
        if (errno != EINTR)
            return {};
    }
    return oEnd;
}

/// Collects the child. While the mutex is held nobody sends a signal to a number that is free.
void Collect(SKorChildState& oState, const siginfo_t& oEnd)
{
    const std::lock_guard<std::mutex> oLock(oState.m_oMutex);
    siginfo_t oCollected = {};
    waitid(P_PID, static_cast<id_t>(oState.m_nProcessID), &oCollected, WEXITED | WNOHANG);
    if (oEnd.si_pid != 0 && oEnd.si_code == CLD_EXITED)
        oState.m_nExitStatus = oEnd.si_status;
    else if (oEnd.si_pid != 0)
        oState.m_nEndSignal = oEnd.si_status;
    oState.m_bEnded = true;
    const std::uint64_t nOne = 1;
    const ssize_t nWritten = write(oState.m_oEnd.Get(), &nOne, sizeof nOne);
    static_cast<void>(nWritten); // a first number always fits
}

void* ThreadMain(void* pArgument)
{
    const std::unique_ptr<std::shared_ptr<SKorChildState>> pOwned(
        static_cast<std::shared_ptr<SKorChildState>*>(pArgument));
    SKorChildState& oState = **pOwned;
    oState.m_oMutex.lock();
    const pid_t nProcessID = oState.m_nProcessID;
    oState.m_oMutex.unlock();
    if (nProcessID != 0)
        Collect(oState, AwaitEnd(nProcessID));
    return nullptr;
}

} // namespace

SKorChildState::SKorChildState() : m_bEnded(false)
{
    m_oEnd = CKorHandle(eventfd(0, EFD_CLOEXEC));
}

bool KorStartToWait(const std::shared_ptr<SKorChildState>& pState, pthread_t& rnThread)
{
    auto pArgument = std::make_unique<std::shared_ptr<SKorChildState>>(pState);
    errno = pthread_create(&rnThread, nullptr, ThreadMain, pArgument.get());
    if (errno != 0)
        return false;
    static_cast<void>(pArgument.release());
    return true;
}

int KorPoll(pollfd* pPolls, unsigned int nCount, unsigned int nTimeout)
{
    constexpr unsigned int LONGEST = INT_MAX;
    const int nLimit = nTimeout == FOREVER ? -1 : static_cast<int>(std::min(nTimeout, LONGEST));
    return poll(pPolls, nCount, nLimit);
}
