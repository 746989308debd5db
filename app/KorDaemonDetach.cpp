#include "app/KorDaemonApplication.h"

#include "fs/KorDescriptorDetail.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace
{

/// What the process that stays tells the one that waits to leave.
struct SNews
{
    pid_t nProcess; ///< who stays
    int nError;     ///< why nobody does; 0
};

bool HasManager()
{
    const char* const pszSocket = std::getenv("NOTIFY_SOCKET");
    return pszSocket != nullptr && *pszSocket != '\0';
}

/// Whoever cannot tell ends, since the one that waits, if it still does, goes on when it hears
/// nothing.
void Tell(int nNews, const SNews& oNews)
{
    if (write(nNews, &oNews, sizeof oNews) != sizeof oNews && errno != EPIPE)
        _exit(EXIT_FAILURE);
}

SNews Hear(int nNews)
{
    SNews oNews = {0, ECHILD};
    ssize_t nRead = 0;
    do {
        nRead = read(nNews, &oNews, sizeof oNews);
    } while (nRead == -1 && errno == EINTR);
    return oNews;
}

/// Of a new session that has no terminal the leader could get one; so a second copy of the process
/// goes on instead.
/// @return only in that one
void BecomeMember(int nNews)
{
    setsid();
    const pid_t nMember = fork();
    if (nMember == -1)
        Tell(nNews, {0, errno});
    if (nMember != 0)
        _exit(EXIT_SUCCESS);
}

} // namespace

bool CKorDaemonApplication::Detach()
{
    if (HasManager())
        return true;
    const CKorDescriptor oNull(open("/dev/null", O_RDWR | O_CLOEXEC));
    int anNews[2] = {-1, -1};
    if (!oNull.IsOpen() || pipe2(anNews, O_CLOEXEC) != 0)
        return false;
    const CKorDescriptor oReadNews(anNews[0]);
    CKorDescriptor oWriteNews(anNews[1]);
    HoldEndSignals(); // until it is clear whose they are
    const pid_t nCopy = fork();
    int nError = errno;
    if (nCopy == 0) {
        BecomeMember(oWriteNews.Get());
        Settle(oNull.Get());
        Tell(oWriteNews.Get(), {getpid(), 0});
    } else if (nCopy != -1) {
        oWriteNews = CKorDescriptor();
        nError = Leave(nCopy, oReadNews.Get());
    }
    LetAllSignalsIn();
    errno = nError;
    return nCopy == 0;
}

/// Leaves the program to its copy.
/// @return only when that failed, an errno value
int CKorDaemonApplication::Leave(int nCopy, int nNews)
{
    const int nSignalsBefore = m_nEndSignals;
    LetAllSignalsIn();
    const SNews oNews = Hear(nNews);
    if (oNews.nError == 0) {
        if (m_nEndSignals != nSignalsBefore)
            kill(oNews.nProcess, SIGTERM);
        _exit(EXIT_SUCCESS);
    }
    waitpid(nCopy, nullptr, 0);
    return oNews.nError;
}

/// Makes what the program has this process's.
void CKorDaemonApplication::Settle(int nNull)
{
    for (const int nHandle : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nNull, nHandle);
    m_nPID = getpid();
    // The loop sees to itself at the first operation.
    m_oLoop.Cancel(m_oLoop.CallAfter(0, Step([](CKorDaemonApplication&) {})));
}
