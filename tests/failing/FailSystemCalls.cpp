// The calls beside those for files, in place of the C library's. No header of the C library that
// declares one of them may be included.

#include "tests/failing/DecideOnCall.h"
#include "tests/support/PassCall.h"

#include <stdarg.h>

namespace
{

using Id = int;

/// Whether a request of ioctl() sets the line of a terminal: TCSETS, TCSETSW, TCSETSF and the same
/// with free speeds.
bool SetsLine(unsigned long nRequest)
{
    return (nRequest >= 0x5402 && nRequest <= 0x5404) ||
           (nRequest & 0xC000FFFFUL) == 0x4000542BUL || (nRequest & 0xC000FFFFUL) == 0x4000542CUL ||
           (nRequest & 0xC000FFFFUL) == 0x4000542DUL;
}

} // namespace

extern "C" {

ssize_t recv(int hSocket, void* pBuffer, size_t nSize, int nFlags)
{
    return Pass<ssize_t>(DecideOnCall("read"), "recv", hSocket, pBuffer, nSize, nFlags);
}

ssize_t send(int hSocket, const void* pBuffer, size_t nSize, int nFlags)
{
    return Pass<ssize_t>(DecideOnCall("write"), "send", hSocket, pBuffer, nSize, nFlags);
}

ssize_t sendto(int hSocket, const void* pBuffer, size_t nSize, int nFlags, const void* pAddress,
               unsigned int nLength)
{
    return Pass<ssize_t>(DecideOnCall("write"), "sendto", hSocket, pBuffer, nSize, nFlags, pAddress,
                         nLength);
}

int pipe2(int* phEnds, int nFlags)
{
    return Pass<int>(DecideOnCall("handle"), "pipe2", phEnds, nFlags);
}

int eventfd(unsigned int nCount, int nFlags)
{
    return Pass<int>(DecideOnCall("handle"), "eventfd", nCount, nFlags);
}

int epoll_create1(int nFlags)
{
    return Pass<int>(DecideOnCall("handle"), "epoll_create1", nFlags);
}

int socket(int nDomain, int nType, int nProtocol)
{
    return Pass<int>(DecideOnCall("handle"), "socket", nDomain, nType, nProtocol);
}

// <sys/types.h> declares this one.
int select(int nCount, fd_set* pReading, fd_set* pWriting, fd_set* pExcepted, timeval* pTimeout)
{
    return Pass<int>(DecideOnCall("select"), "select", nCount, pReading, pWriting, pExcepted,
                     pTimeout);
}

int poll(void* pPolls, unsigned long nCount, int nTimeout)
{
    return Pass<int>(DecideOnCall("poll"), "poll", pPolls, nCount, nTimeout);
}

int ppoll(void* pPolls, unsigned long nCount, const void* pTimeout, const void* pMask)
{
    return Pass<int>(DecideOnCall("poll"), "ppoll", pPolls, nCount, pTimeout, pMask);
}

int epoll_wait(int hPoll, void* pEvents, int nSize, int nTimeout)
{
    return Pass<int>(DecideOnCall("poll"), "epoll_wait", hPoll, pEvents, nSize, nTimeout);
}

int tcsetattr(int hLine, int nWhen, const void* pSettings)
{
    return Pass<int>(DecideOnCall("tcsetattr"), "tcsetattr", hLine, nWhen, pSettings);
}

int ioctl(int hFile, unsigned long nRequest, ...)
{
    va_list pArguments;
    va_start(pArguments, nRequest);
    void* const pArgument = va_arg(pArguments, void*);
    va_end(pArguments);
    return Pass<int>(DecideOnCall(SetsLine(nRequest) ? "tcsetattr" : nullptr), "ioctl", hFile,
                     nRequest, pArgument);
}

int pthread_create(unsigned long* pThread, const void* pAttributes, void* (*pfnMain)(void*),
                   void* pArgument)
{
    if (const int nError = DecideOnCall("thread"))
        return nError;
    return reinterpret_cast<int (*)(unsigned long*, const void*, void* (*)(void*), void*)>(
        NextCall("pthread_create"))(pThread, pAttributes, pfnMain, pArgument);
}

Id fork()
{
    return Pass<Id>(DecideOnCall("fork"), "fork");
}

// The last call must be a jump: the child returns from it first and uses the stack that the parent
// returns to.
Id vfork()
{
    const int nError = DecideOnCall("fork");
    if (nError == 0)
        return reinterpret_cast<Id (*)()>(NextCall("vfork"))();
    errno = nError;
    return -1;
}
}
