#include "app/KorPidFile.h"

#include "app/KorOpenDetail.h"
#include "config/KorTextValue.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <mutex>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>

/// The PID files that this process holds. The lock belongs to the open file, which a forked copy of
/// the process shares and would keep locked after the end of this one; so the copy closes it.
class CKorPidFileList
{
public:
    static void Add(CKorPidFile& oFile)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        oFile.m_pNext = m_pFirst;
        m_pFirst = &oFile;
    }

    static void Remove(const CKorPidFile& oFile)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        CKorPidFile** ppFile = &m_pFirst;
        while (*ppFile != nullptr && *ppFile != &oFile)
            ppFile = &(*ppFile)->m_pNext;
        if (*ppFile != nullptr)
            *ppFile = oFile.m_pNext;
    }

private:
    static void Hold() { m_oMutex.lock(); }
    static void LetGo() { m_oMutex.unlock(); }
    static void CloseInCopy()
    {
        for (CKorPidFile* pFile = m_pFirst; pFile != nullptr; pFile = pFile->m_pNext) {
            close(pFile->m_hFile);
            pFile->m_hFile = -1;
        }
        m_pFirst = nullptr;
        LetGo();
    }

    static std::mutex m_oMutex;
    static CKorPidFile* m_pFirst;
    static const int m_nRegistered;
};

std::mutex CKorPidFileList::m_oMutex;
CKorPidFile* CKorPidFileList::m_pFirst = nullptr;
const int CKorPidFileList::m_nRegistered = pthread_atfork(&Hold, &LetGo, &CloseInCopy);

namespace
{

constexpr mode_t MODE = 0644;

/// Whether the name still names the locked file: its holder may have removed it, and the next one
/// created another, between opening and locking.
bool IsNamed(int hFile, const std::string& strName)
{
    struct stat oFile;
    struct stat oNamed;
    return fstat(hFile, &oFile) == 0 && lstat(strName.c_str(), &oNamed) == 0 &&
           oFile.st_dev == oNamed.st_dev && oFile.st_ino == oNamed.st_ino;
}

/// Reads the number that is a file's whole content, but for white space around it.
/// @return false for any other content; an empty file holds number 0
bool ReadNumber(int hFile, int& nNumber)
{
    char acContent[64];
    const ssize_t nRead = pread(hFile, acContent, sizeof acContent, 0);
    nNumber = 0;
    if (nRead < 0 || nRead == sizeof acContent)
        return false;
    const std::string_view strNumber =
        KorTrim(std::string_view(acContent, static_cast<size_t>(nRead)));
    if (strNumber.empty())
        return nRead == 0;
    const size_t nDigits = std::min(strNumber.find_first_not_of("0123456789"), strNumber.size());
    unsigned long long nValue = 0;
    if (KorReadUnsigned(strNumber.substr(0, nDigits), INT_MAX, nValue))
        nNumber = static_cast<int>(nValue);
    return nDigits == strNumber.size();
}

bool WriteNumber(int hFile)
{
    const std::string strNumber = KorWriteSigned(getpid()).append("\n");
    if (ftruncate(hFile, 0) != 0)
        return false;
    const ssize_t nWritten = pwrite(hFile, strNumber.data(), strNumber.size(), 0);
    if (nWritten >= 0 && nWritten != static_cast<ssize_t>(strNumber.size()))
        errno = ENOSPC;
    return nWritten == static_cast<ssize_t>(strNumber.size());
}

/// Opens nothing but a regular file: to open a device may have effects, or wait.
int OpenRegular(const std::string& strName)
{
    struct stat oNamed;
    if (lstat(strName.c_str(), &oNamed) == 0 && !S_ISREG(oNamed.st_mode)) {
        errno = EINVAL;
        return -1;
    }
    return KorOpenAboveStandard(strName.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, MODE);
}

} // namespace

CKorPidFile::CKorPidFile() : m_hFile(-1), m_nProcess(0), m_nOwner(0), m_nLastError(0), m_pNext() {}

CKorPidFile::~CKorPidFile()
{
    Release();
}

bool CKorPidFile::Acquire(const char* pszName)
{
    // Each further attempt means that somebody else came and went in between.
    constexpr int ATTEMPTS = 1000;
    m_nOwner = 0;
    m_nLastError = IsHeld() ? EBUSY : ESTALE;
    if (m_nLastError == ESTALE) {
        Close();
        m_strName = KorNameFromRoot(pszName);
    }
    for (int i = 0; i < ATTEMPTS && m_nLastError == ESTALE; ++i)
        m_nLastError = TryToAcquire();
    if (m_nLastError != 0)
        errno = m_nLastError;
    return m_nLastError == 0;
}

/// @return 0, or an errno value: ESTALE when the file was removed meanwhile
int CKorPidFile::TryToAcquire()
{
    const int hFile = OpenRegular(m_strName);
    if (hFile == -1)
        return errno;
    int nError = 0;
    if (flock(hFile, LOCK_EX | LOCK_NB) != 0) {
        nError = errno;
        ReadNumber(hFile, m_nOwner);
    } else if (!IsNamed(hFile, m_strName)) {
        nError = ESTALE;
    } else {
        nError = TakeOver(hFile);
    }
    if (nError != 0)
        close(hFile);
    return nError;
}

/// Makes a locked file this process's.
int CKorPidFile::TakeOver(int hFile)
{
    struct stat oFile;
    int nStaleNumber = 0;
    if (fstat(hFile, &oFile) != 0 || !S_ISREG(oFile.st_mode) || oFile.st_nlink != 1 ||
        !ReadNumber(hFile, nStaleNumber))
        return EINVAL;
    if (fchmod(hFile, MODE) != 0)
        return errno;
    if (!WriteNumber(hFile)) {
        const int nError = errno;
        unlink(m_strName.c_str());
        return nError;
    }
    m_hFile = hFile;
    m_nProcess = getpid();
    CKorPidFileList::Add(*this);
    return 0;
}

void CKorPidFile::Release()
{
    if (IsHeld()) {
        // Removed before it is unlocked: afterwards it may be somebody else's.
        const bool bOurs = IsNamed(m_hFile, m_strName);
        m_nLastError = bOurs && unlink(m_strName.c_str()) != 0 ? errno : 0;
    }
    Close();
}

void CKorPidFile::Close()
{
    if (m_hFile == -1)
        return;
    CKorPidFileList::Remove(*this);
    close(m_hFile);
    m_hFile = -1;
}

bool CKorPidFile::IsHeld() const
{
    return m_hFile != -1 && m_nProcess == getpid();
}
