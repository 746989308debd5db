#include "serial/KorLineWaitDetail.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace
{

constexpr std::int64_t NS_PER_SECOND = 1000000000;
constexpr std::int64_t NS_PER_MS = 1000000;

timespec ToTimespec(std::int64_t nNanoseconds)
{
    timespec oTime = {};
    oTime.tv_sec = static_cast<time_t>(nNanoseconds / NS_PER_SECOND);
    oTime.tv_nsec = static_cast<long>(nNanoseconds % NS_PER_SECOND);
    return oTime;
}

} // namespace

std::int64_t KorLineClock()
{
    timespec oTime;
    clock_gettime(CLOCK_MONOTONIC, &oTime);
    return std::int64_t(oTime.tv_sec) * NS_PER_SECOND + oTime.tv_nsec;
}

std::int64_t CKorLineDeadline::Moment()
{
    if (m_nTimeout == WITHOUT_LIMIT)
        return NEVER;
    if (m_nTimeout != 0 && m_nMoment == AT_ONCE)
        m_nMoment = KorLineClock() + std::int64_t(m_nTimeout) * NS_PER_MS;
    return m_nMoment;
}

int CKorLineWake::Open()
{
    m_hWake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return m_hWake != -1 ? 0 : errno;
}

void CKorLineWake::Close()
{
    if (m_hWake != -1)
        close(m_hWake);
    m_hWake = -1;
}

void CKorLineWake::Raise() const
{
    const std::uint64_t nOne = 1;
    const ssize_t nWritten = write(m_hWake, &nOne, sizeof nOne);
    static_cast<void>(nWritten); // one that is full is raised
}

void CKorLineWake::Clear() const
{
    std::uint64_t nCount = 0;
    const ssize_t nRead = read(m_hWake, &nCount, sizeof nCount);
    static_cast<void>(nRead); // nothing to clear is cleared
}

int KorWaitForLine(int hLine, short nEvents, int hWake, std::int64_t nMoment)
{
    pollfd aoHandles[] = {{hLine, nEvents, 0}, {hWake, POLLIN, 0}};
    int nReady = 0;
    do {
        timespec oRest = {};
        if (nMoment != CKorLineDeadline::NEVER)
            oRest = ToTimespec(std::max<std::int64_t>(nMoment - KorLineClock(), 0));
        nReady =
            ppoll(aoHandles, 2, nMoment != CKorLineDeadline::NEVER ? &oRest : nullptr, nullptr);
    } while (nReady == -1 && errno == EINTR);
    if (nReady == -1)
        return errno;
    return nReady == 0 ? EAGAIN : 0;
}
