#include "app/KorServiceNotify.h"

#include "config/KorTextValue.h"
#include "fs/KorDescriptorDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

/// Fills in the manager's address.
/// @return its length, 0 with errno when there is none
socklen_t ManagerAddress(sockaddr_un& oAddress)
{
    const char* const pszName = std::getenv("NOTIFY_SOCKET");
    const size_t nLength = pszName != nullptr ? std::strlen(pszName) : 0;
    oAddress.sun_family = AF_UNIX;
    if (nLength == 0)
        errno = EDESTADDRREQ;
    else if (*pszName != '/' && *pszName != '@')
        errno = EAFNOSUPPORT;
    else if (nLength > sizeof oAddress.sun_path)
        errno = ENAMETOOLONG;
    else {
        std::memcpy(oAddress.sun_path, pszName, nLength);
        if (*pszName == '@')
            oAddress.sun_path[0] = '\0';
        return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + nLength);
    }
    return 0;
}

/// @return false for anything but decimal digits, and for a number beyond 64 bits
bool ReadNumber(const char* pszText, unsigned long long& rnNumber)
{
    constexpr std::uint64_t GREATEST = ~std::uint64_t{0};
    return *pszText != '\0' &&
           std::string_view(pszText).find_first_not_of("0123456789") == std::string_view::npos &&
           KorReadUnsigned(pszText, GREATEST, rnNumber);
}

bool WatchdogIsForAnother()
{
    const char* const pszProcess = std::getenv("WATCHDOG_PID");
    unsigned long long nProcess = 0;
    return pszProcess != nullptr && (!ReadNumber(pszProcess, nProcess) ||
                                     nProcess != static_cast<unsigned long long>(getpid()));
}

} // namespace

bool KorNotify(const char* pszMessage)
{
    sockaddr_un oAddress = {};
    const socklen_t nAddress = ManagerAddress(oAddress);
    const std::string_view strMessage = KorText(pszMessage);
    const CKorDescriptor oSocket(
        nAddress != 0 ? socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0) : -1);
    return oSocket.IsOpen() &&
           sendto(oSocket.Get(), strMessage.data(), strMessage.size(), MSG_NOSIGNAL,
                  reinterpret_cast<const sockaddr*>(&oAddress), nAddress) != -1;
}

bool KorNotifyReloading()
{
    timespec oNow;
    clock_gettime(CLOCK_MONOTONIC, &oNow);
    const std::int64_t nMicroseconds = std::int64_t{oNow.tv_sec} * 1000000 + oNow.tv_nsec / 1000;
    return KorNotify(
        KorConcat({"RELOADING=1\nMONOTONIC_USEC=", KorWriteSigned(nMicroseconds)}).c_str());
}

bool KorNotifyStatus(const std::string& strStatus)
{
    std::string strMessage = KorConcat({"STATUS=", strStatus});
    // The manager ends a message at a carriage return as well, and drops one with a zero byte.
    std::replace_if(
        strMessage.begin(), strMessage.end(),
        [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
    return KorNotify(strMessage.c_str());
}

unsigned int KorGetAliveInterval()
{
    // The next greater number means "for ever" to the event loop.
    constexpr std::uint64_t LONGEST = 0xFFFFFFFE;
    const char* const pszTime = std::getenv("WATCHDOG_USEC");
    unsigned long long nMicroseconds = 0;
    if (pszTime == nullptr || !ReadNumber(pszTime, nMicroseconds) || nMicroseconds == 0 ||
        WatchdogIsForAnother())
        return 0;
    const std::uint64_t nHalf = std::max<std::uint64_t>(nMicroseconds / 2000, 1);
    return static_cast<unsigned int>(std::min(nHalf, LONGEST));
}
