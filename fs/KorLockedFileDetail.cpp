#include "fs/KorLockedFileDetail.h"

#include "fs/KorSuccessorFileDetail.h"
#include "time/KorTimeout.h"

#include <climits>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr unsigned int LOCK_PATIENCE_MS = 2000;
// Short, since a writer that works in a loop leaves only short gaps.
constexpr useconds_t LOCK_INTERVAL_US = 250;

constexpr mode_t MODE_OF_NEW = 0666;
constexpr mode_t MODE_UNREADABLE = 0200;
constexpr int MAX_LINKS = 40;
constexpr size_t MAX_NAME_IN_TEMPORARY = 240;

/// Up to the last separator, which is the end; the working directory for a bare name.
std::string DirectoryOf(const std::string& strPath)
{
    const size_t nSlash = strPath.rfind('/');
    return nSlash == std::string::npos ? "./" : strPath.substr(0, nSlash + 1);
}

/// Follows the symbolic links that a path ends in, to a target that need not exist.
bool ResolveLinks(std::string& rstrPath)
{
    for (int i = 0; i <= MAX_LINKS; ++i) {
        char acTarget[PATH_MAX];
        const ssize_t nLength = readlink(rstrPath.c_str(), acTarget, sizeof acTarget);
        if (nLength == -1)
            return errno == EINVAL || errno == ENOENT;
        rstrPath = acTarget[0] == '/' ? std::string() : DirectoryOf(rstrPath);
        rstrPath.append(acTarget, static_cast<size_t>(nLength));
    }
    errno = ELOOP;
    return false;
}

bool WaitForLock(int hFile)
{
    const CKorTimeout oPatience(LOCK_PATIENCE_MS);
    while (flock(hFile, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return false;
        if (oPatience.IsExpired()) {
            errno = EBUSY;
            return false;
        }
        usleep(LOCK_INTERVAL_US);
    }
    return true;
}

bool IsReplaceable(const struct stat& oStat)
{
    if (!S_ISREG(oStat.st_mode))
        errno = EINVAL;
    else if (oStat.st_nlink > 1)
        errno = EMLINK;
    return S_ISREG(oStat.st_mode) && oStat.st_nlink == 1;
}

} // namespace

CKorLockedFile::CKorLockedFile(const char* pszName)
    : m_strName(pszName != nullptr ? pszName : ""), m_strPath(m_strName)
{
}

// A child that another thread forked meanwhile shares the lock, which closing alone would leave it.
CKorLockedFile::~CKorLockedFile()
{
    const int nError = errno;
    if (m_oDirectory.IsOpen())
        flock(m_oDirectory.Get(), LOCK_UN);
    errno = nError;
}

bool CKorLockedFile::Lock()
{
    if (m_strName.empty()) {
        errno = ENOENT;
        return false;
    }
    if (!ResolveLinks(m_strPath))
        return false;
    m_oDirectory =
        CKorDescriptor(open(DirectoryOf(m_strPath).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return m_oDirectory.IsOpen() && WaitForLock(m_oDirectory.Get());
}

bool CKorLockedFile::Replace(const std::string& strContent, const SKorFileImage* pExpected)
{
    CKorDescriptor oOld;
    CKorSuccessorFile oNew(TemporaryName());
    if (!OpenOld(oOld) || !oNew.Create(oOld.IsOpen() ? MODE_UNREADABLE : MODE_OF_NEW) ||
        !oNew.Fill(strContent, oOld))
        return false;
    if (pExpected != nullptr && !pExpected->IsCurrent(m_strName.c_str()))
        return false;
    if (!oNew.Rename(m_strPath))
        return false;

    m_bReplaced = true;
    m_oState = oNew.GetState();
    return fsync(m_oDirectory.Get()) == 0;
}

/// Opens the file for writing, as the caller names it, so that the system applies all of its rules;
/// nothing is written there. True without a descriptor when there is no file.
bool CKorLockedFile::OpenOld(CKorDescriptor& roOld) const
{
    struct stat oStat;
    if (lstat(m_strPath.c_str(), &oStat) != 0)
        return errno == ENOENT;
    if (!IsReplaceable(oStat))
        return false;
    roOld = CKorDescriptor(open(m_strName.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return roOld.IsOpen();
}

std::string CKorLockedFile::TemporaryName() const
{
    const std::string strName = m_strPath.substr(m_strPath.rfind('/') + 1, MAX_NAME_IN_TEMPORARY);
    return DirectoryOf(m_strPath).append(".").append(strName).append(".kor-new");
}
