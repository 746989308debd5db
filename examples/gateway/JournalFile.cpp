#include "JournalFile.h"

#include "app/KorLog.h"
#include "examples/gateway/DetachedThread.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// A write beyond the limit would end the process with a signal.
bool IsWithinSizeLimit(std::uint64_t nEnd)
{
    rlimit oLimit = {};
    if (getrlimit(RLIMIT_FSIZE, &oLimit) != 0 || oLimit.rlim_cur == RLIM_INFINITY ||
        nEnd <= oLimit.rlim_cur)
        return true;
    errno = EFBIG;
    return false;
}

bool Refuse(int nError)
{
    errno = nError;
    return false;
}

bool IsOurs(int nHandle)
{
    struct stat oFile = {};
    if (fstat(nHandle, &oFile) != 0)
        return false;
    if (!S_ISREG(oFile.st_mode))
        return Refuse(EINVAL);
    return oFile.st_uid == geteuid() || Refuse(EPERM);
}

} // namespace

JournalFile::~JournalFile()
{
    Close();
}

bool JournalFile::Open(const std::string& strFile)
{
    Close();
    m_strFile = strFile;
    // O_NONBLOCK: a FIFO of that name must not hold us up.
    m_nHandle =
        open(strFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
             S_IRUSR | S_IWUSR);
    if (m_nHandle == -1)
        return false;
    if (IsOurs(m_nHandle) && Lock())
        return true;
    const int nError = errno;
    Close();
    return Refuse(nError);
}

bool JournalFile::Lock() const
{
    return flock(m_nHandle, LOCK_EX | LOCK_NB) == 0 || (errno == EWOULDBLOCK && Refuse(EBUSY));
}

void JournalFile::Close()
{
    if (m_nHandle == -1)
        return;
    flock(m_nHandle, LOCK_UN); // a thread that syncs may have a copy of the handle still
    close(m_nHandle);
    m_nHandle = -1;
}

void JournalFile::Remove()
{
    if (IsOpen())
        unlink(m_strFile.c_str());
    Close();
}

std::uint32_t JournalFile::Size() const
{
    struct stat oFile = {};
    if (fstat(m_nHandle, &oFile) != 0)
        return 0;
    constexpr off_t LARGEST = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::min(oFile.st_size, LARGEST));
}

bool JournalFile::Write(std::uint32_t nPlace, std::string_view strBytes) const
{
    if (!IsWithinSizeLimit(std::uint64_t{nPlace} + strBytes.size()))
        return false;
    while (!strBytes.empty()) {
        const ssize_t nWritten =
            pwrite(m_nHandle, strBytes.data(), strBytes.size(), static_cast<off_t>(nPlace));
        if (nWritten == 0)
            return Refuse(ENOSPC);
        if (nWritten < 0 && errno != EINTR)
            return false;
        const auto nDone = static_cast<std::uint32_t>(std::max<ssize_t>(nWritten, 0));
        nPlace += nDone;
        strBytes.remove_prefix(nDone);
    }
    return true;
}

std::string JournalFile::Read(std::uint32_t nPlace, std::size_t nLength) const
{
    std::string strBytes(nLength, '\0');
    std::size_t nDone = 0;
    while (nDone < nLength) {
        const ssize_t nRead =
            pread(m_nHandle, &strBytes[nDone], nLength - nDone, static_cast<off_t>(nPlace + nDone));
        if (nRead <= 0 && (nRead == 0 || errno != EINTR))
            break;
        nDone += static_cast<std::size_t>(std::max<ssize_t>(nRead, 0));
    }
    strBytes.resize(nDone);
    return strBytes;
}

void JournalFile::Truncate(std::uint32_t nSize) const
{
    // A file that stays longer than it needs to be harms nobody.
    if (Size() > nSize && ftruncate(m_nHandle, static_cast<off_t>(nSize)) != 0)
        KorGetLog().Write(CKorLog::LEVEL_DEBUG, "cannot cut a journal: %s", std::strerror(errno));
}

bool JournalFile::Sync() const
{
    return fdatasync(m_nHandle) == 0;
}

void JournalFile::SyncAside() const
{
    const int nHandle = fcntl(m_nHandle, F_DUPFD_CLOEXEC, 0);
    const bool bAside =
        nHandle != -1 && RunDetached([nHandle] {
            if (fdatasync(nHandle) != 0)
                KorGetLog().Write(CKorLog::LEVEL_ERROR, "readings may not be on the disk: %s",
                                  std::strerror(errno));
            close(nHandle);
        });
    if (bAside)
        return;
    if (nHandle != -1)
        close(nHandle);
    Sync();
}
