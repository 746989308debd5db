#include "app/KorFormerSignals.h"

#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace
{

/// A file or socket that takes the place of a closed one would receive what is printed there.
void FillStandardHandles()
{
    for (const int nHandle : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest handle that is free is this one.
        if (fcntl(nHandle, F_GETFD) == -1 && errno == EBADF)
            static_cast<void>(open("/dev/null", O_RDWR));
    }
}

} // namespace

CKorFormerSignals::CKorFormerSignals() : m_aoActions()
{
    FillStandardHandles();
    struct sigaction* pAction = m_aoActions;
    for (const int nSignal : SIGNALS)
        sigaction(nSignal, nullptr, pAction++);
    pthread_sigmask(SIG_SETMASK, nullptr, &m_oMask);
    HoldEndSignals();
}

CKorFormerSignals::~CKorFormerSignals()
{
    RestoreActions();
    pthread_sigmask(SIG_SETMASK, &m_oMask, nullptr);
}

void CKorFormerSignals::RestoreActions() const
{
    const struct sigaction* pAction = m_aoActions;
    for (const int nSignal : SIGNALS)
        sigaction(nSignal, pAction++, nullptr);
}

void CKorFormerSignals::HoldEndSignals()
{
    sigset_t oSignals;
    sigemptyset(&oSignals);
    sigaddset(&oSignals, SIGINT);
    sigaddset(&oSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &oSignals, nullptr);
}

void CKorFormerSignals::LetAllSignalsIn()
{
    sigset_t oNone;
    sigemptyset(&oNone);
    pthread_sigmask(SIG_SETMASK, &oNone, nullptr);
}
