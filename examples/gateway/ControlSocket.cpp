#include "examples/gateway/ControlSocket.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

constexpr int FLAGS = SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC;
constexpr mode_t MODE = 0660;
constexpr int BACKLOG = 16;

bool AddressOf(const std::string& strName, sockaddr_un& roAddress)
{
    roAddress = {};
    roAddress.sun_family = AF_UNIX;
    if (strName.size() >= sizeof roAddress.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(roAddress.sun_path, strName.c_str(), strName.size() + 1);
    return true;
}

/// The general kind of address, as the system takes it.
const sockaddr* General(const sockaddr_un& oAddress)
{
    return reinterpret_cast<const sockaddr*>(&oAddress);
}

/// Whether somebody listens at a name, or seems to.
bool IsAnswered(const std::string& strName)
{
    sockaddr_un oAddress;
    const int hSocket = socket(AF_UNIX, FLAGS, 0);
    const bool bRefused = hSocket != -1 && AddressOf(strName, oAddress) &&
                          connect(hSocket, General(oAddress), sizeof oAddress) != 0 &&
                          errno == ECONNREFUSED;
    close(hSocket);
    return !bRefused;
}

/// Whether a name may be taken. @return 0 or the reason why not
int CheckName(const std::string& strName)
{
    struct stat oStatus;
    if (lstat(strName.c_str(), &oStatus) != 0)
        return errno == ENOENT ? 0 : errno;
    if (!S_ISSOCK(oStatus.st_mode))
        return EEXIST;
    return IsAnswered(strName) ? EADDRINUSE : 0;
}

} // namespace

ControlSocket::~ControlSocket()
{
    Close();
}

bool ControlSocket::Open(const std::string& strPath)
{
    Close();
    if (const int nError = CheckName(strPath)) {
        errno = nError;
        return false;
    }
    const std::string strNew = strPath + ".new";
    unlink(strNew.c_str());
    struct stat oStatus;
    if (!Listen(strNew) || stat(strNew.c_str(), &oStatus) != 0 ||
        std::rename(strNew.c_str(), strPath.c_str()) != 0) {
        const int nError = errno;
        unlink(strNew.c_str());
        Close();
        errno = nError;
        return false;
    }
    m_strPath = strPath;
    m_nDevice = oStatus.st_dev;
    m_nFile = oStatus.st_ino;
    return true;
}

// Until the name has its mode it has none that anybody else could use.
bool ControlSocket::Listen(const std::string& strName)
{
    sockaddr_un oAddress;
    m_hSocket = socket(AF_UNIX, FLAGS, 0);
    return m_hSocket != -1 && AddressOf(strName, oAddress) && fchmod(m_hSocket, 0600) == 0 &&
           bind(m_hSocket, General(oAddress), sizeof oAddress) == 0 &&
           chmod(strName.c_str(), MODE) == 0 && listen(m_hSocket, BACKLOG) == 0;
}

void ControlSocket::Close()
{
    struct stat oStatus;
    if (!m_strPath.empty() && lstat(m_strPath.c_str(), &oStatus) == 0 &&
        oStatus.st_dev == m_nDevice && oStatus.st_ino == m_nFile)
        unlink(m_strPath.c_str());
    m_strPath.clear();
    if (m_hSocket != -1)
        close(m_hSocket);
    m_hSocket = -1;
}

int ControlSocket::Accept() const
{
    return accept4(m_hSocket, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
}
