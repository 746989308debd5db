#include "app/KorLogWriteDetail.h"

#include "app/KorOpenDetail.h"
#include "fs/KorDescriptorDetail.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace
{

/// Keeps from the calling thread what writing may bring: SIGPIPE without a reader, SIGXFSZ at a
/// size limit, and SIGTTOU, which stops a background program at its terminal.
class CWriteSignals
{
public:
    CWriteSignals()
    {
        sigemptyset(&m_oBlocked);
        for (const int nSignal : {SIGPIPE, SIGXFSZ, SIGTTOU})
            sigaddset(&m_oBlocked, nSignal);
        pthread_sigmask(SIG_BLOCK, &m_oBlocked, &m_oFormer);
    }
    ~CWriteSignals()
    {
        constexpr timespec NOW = {0, 0};
        if (errno == EPIPE || errno == EFBIG)
            sigtimedwait(&m_oBlocked, nullptr, &NOW);
        pthread_sigmask(SIG_SETMASK, &m_oFormer, nullptr);
    }
    CWriteSignals(const CWriteSignals&) = delete;
    CWriteSignals& operator=(const CWriteSignals&) = delete;

private:
    sigset_t m_oBlocked;
    sigset_t m_oFormer;
};

bool CanWrite(int nHandle)
{
    pollfd oHandle = {nHandle, POLLOUT, 0};
    return poll(&oHandle, 1, 0) == 1 && (oHandle.revents & POLLOUT) != 0;
}

/// How to write without waiting.
enum EWay
{
    WAY_WRITE,  ///< the open file does not wait, or has nothing to wait for
    WAY_SEND,   ///< to a socket
    WAY_ASK,    ///< poll() promises room for all
    WAY_ASK_ONE ///< poll() promises room for one byte
};

ssize_t WriteSome(int nHandle, EWay eWay, const char* pBytes, std::size_t nLength)
{
    if (eWay == WAY_SEND)
        return send(nHandle, pBytes, nLength, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (eWay != WAY_WRITE && !CanWrite(nHandle))
        return 0;
    return write(nHandle, pBytes, eWay == WAY_ASK_ONE ? 1 : nLength);
}

/// Writes until no more is taken.
std::size_t WriteAll(int nHandle, EWay eWay, const char* pBytes, std::size_t nLength)
{
    std::size_t nDone = 0;
    while (nDone < nLength) {
        const ssize_t nWritten = WriteSome(nHandle, eWay, pBytes + nDone, nLength - nDone);
        if (nWritten > 0)
            nDone += static_cast<std::size_t>(nWritten);
        else if (nWritten == 0 || errno != EINTR)
            break;
    }
    return nDone;
}

/// Takes back what a full disk left of a line at the end of a file.
void CutOff(int nHandle, std::size_t nWritten)
{
    struct stat oFile;
    const off_t nEnd = lseek(nHandle, 0, SEEK_CUR);
    const off_t nStart = nEnd - static_cast<off_t>(nWritten);
    if (nStart >= 0 && fstat(nHandle, &oFile) == 0 && oFile.st_size == nEnd &&
        ftruncate(nHandle, nStart) == 0)
        lseek(nHandle, nStart, SEEK_SET);
}

std::size_t WriteToFile(int nHandle, const char* pBytes, std::size_t nLength)
{
    const std::size_t nDone = WriteAll(nHandle, WAY_WRITE, pBytes, nLength);
    if (nDone == nLength || nDone == 0)
        return nDone;
    const int nError = errno;
    CutOff(nHandle, nDone);
    errno = nError;
    return 0;
}

/// Whether a pipe is sure to take a text as a whole. One of at most PIPE_BUF bytes it takes or
/// refuses as a whole anyhow. A longer one needs pages: a pipe has a number of them, not all of them
/// full, but any two neighbours hold more than one page of bytes.
bool PipeHasRoom(int nPipe, std::size_t nLength)
{
    if (nLength <= PIPE_BUF)
        return true;
    const long nPage = sysconf(_SC_PAGESIZE);
    const long nPages = fcntl(nPipe, F_GETPIPE_SZ) / nPage;
    int nUnread = 0;
    if (ioctl(nPipe, FIONREAD, &nUnread) != 0)
        return false;
    const long nUsed = nUnread == 0 ? 0 : 2 * (nUnread / nPage) + 2;
    return nUsed + (static_cast<long>(nLength) + nPage - 1) / nPage <= nPages;
}

/// A pipe or a terminal, opened once more: an open file of our own, with a mode of its own.
std::size_t WriteToReader(int nHandle, bool bPipe, const char* pBytes, std::size_t nLength)
{
    if (bPipe && !PipeHasRoom(nHandle, nLength))
        return 0;
    char szName[32];
    std::snprintf(szName, sizeof szName, "/proc/self/fd/%d", nHandle);
    const CKorDescriptor oOwn(KorOpenAboveStandard(szName, O_WRONLY | O_NONBLOCK, 0));
    if (oOwn.IsOpen())
        return WriteAll(oOwn.Get(), WAY_WRITE, pBytes, nLength);
    return WriteAll(nHandle, bPipe ? WAY_ASK : WAY_ASK_ONE, pBytes, nLength);
}

} // namespace

std::size_t KorWriteWithoutWaiting(int nHandle, const char* pBytes, std::size_t nLength)
{
    struct stat oTarget;
    if (fstat(nHandle, &oTarget) != 0)
        return 0;
    if (S_ISSOCK(oTarget.st_mode))
        return WriteAll(nHandle, WAY_SEND, pBytes, nLength);
    errno = 0;
    const CWriteSignals oSignals;
    const bool bPipe = S_ISFIFO(oTarget.st_mode);
    if (bPipe || (S_ISCHR(oTarget.st_mode) && isatty(nHandle) == 1))
        return WriteToReader(nHandle, bPipe, pBytes, nLength);
    return WriteToFile(nHandle, pBytes, nLength);
}
