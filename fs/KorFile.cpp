#include "fs/KorFile.h"

#include "fs/KorFileStatus.h"
#include "fs/KorPathFunc.h"
#include "fs/KorProcess.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr unsigned int FAILED = 0xFFFFFFFF;

const char* TextOf(const char* pszText)
{
    return pszText != nullptr ? pszText : "";
}

int AccessOf(unsigned int nOpenFlags)
{
    switch (nOpenFlags & 0x0003) {
    case CKorFile::OPEN_WRITE:
        return O_WRONLY;
    case CKorFile::OPEN_READWRITE:
        return O_RDWR;
    default:
        return O_RDONLY;
    }
}

mode_t PermissionOf(unsigned int nOpenFlags)
{
    switch (nOpenFlags & 0x0070) {
    case CKorFile::OPEN_PERM_READ:
        return S_IRUSR;
    case CKorFile::OPEN_PERM_WRITE:
        return S_IWUSR;
    case CKorFile::OPEN_PERM_READWRITE:
        return S_IRUSR | S_IWUSR;
    default:
        return 0;
    }
}

int WhenceOf(unsigned int nOrigin)
{
    switch (nOrigin) {
    case CKorFile::ORIGIN_CURRENT:
        return SEEK_CUR;
    case CKorFile::ORIGIN_END:
        return SEEK_END;
    default:
        return SEEK_SET;
    }
}

} // namespace

CKorFile::CKorFile() : CKorFile(HANDLE_FILE_NULL) {}

CKorFile::CKorFile(int hFile) : m_hFile(hFile), m_bCloseOnDelete(false), m_nLastError(0) {}

CKorFile::CKorFile(const char* pszPath, unsigned int nOpenFlags) : CKorFile()
{
    CKorFile::Open(pszPath, nOpenFlags);
}

CKorFile::~CKorFile()
{
    if (m_hFile != HANDLE_FILE_NULL && m_bCloseOnDelete)
        CKorFile::Close();
}

long long CKorFile::GetPosition() const
{
    // The position that Seek changes is the system's, and by 0 it stays.
    return const_cast<CKorFile*>(this)->Seek(0, ORIGIN_CURRENT);
}

std::string CKorFile::GetFile() const
{
    return m_strFileName;
}

void CKorFile::SetFile(const char* pszName)
{
    m_strFileName = TextOf(pszName);
}

// Wanted: the access mode goes without O_CREAT, so that only existing files are opened, and a
// descriptor that the object had before is dropped, not closed.
bool CKorFile::Open(const char* pszPath, unsigned int nOpenFlags)
{
    m_hFile = HANDLE_FILE_NULL;
    m_bCloseOnDelete = false;
    const int hFile = open(TextOf(pszPath), AccessOf(nOpenFlags), PermissionOf(nOpenFlags));
    if (hFile == -1) {
        SetLastError();
        return false;
    }
    m_hFile = hFile;
    m_bCloseOnDelete = true;
    return true;
}

long long CKorFile::Seek(unsigned long long nOffset, unsigned int nOrigin)
{
    if (m_hFile == HANDLE_FILE_NULL) {
        m_nLastError = EBADF;
        return 0;
    }
    // Offsets and positions have 32 bits, as on the board.
    const std::int32_t nLowOffset = static_cast<std::int32_t>(nOffset & 0xFFFFFFFF);
    const long long nPosition = lseek(m_hFile, nLowOffset, WhenceOf(nOrigin));
    if (nPosition == -1) {
        SetLastError();
        return -1;
    }
    if (nPosition > INT32_MAX) {
        errno = EOVERFLOW;
        SetLastError();
        return -1;
    }
    return nPosition;
}

bool CKorFile::SetLength(unsigned long long nLength)
{
    Seek(nLength, ORIGIN_BEGIN);
    return true; // Wanted: the position moves, the size stays, and no failure shows.
}

long long CKorFile::GetLength() const
{
    CKorFile& oFile = const_cast<CKorFile&>(*this);
    const long long nPosition = oFile.Seek(0, ORIGIN_CURRENT);
    const long long nLength = oFile.SeekToEnd();
    oFile.Seek(static_cast<unsigned long long>(nPosition), ORIGIN_BEGIN);
    return nLength;
}

unsigned int CKorFile::Read(void* pBuffer, unsigned int nCount)
{
    if (m_hFile == HANDLE_FILE_NULL) {
        m_nLastError = EBADF;
        return 0;
    }
    if (pBuffer == nullptr || nCount == 0)
        return 0;
    const ssize_t nRead = read(m_hFile, pBuffer, nCount);
    if (nRead == -1) {
        SetLastError();
        return FAILED;
    }
    return static_cast<unsigned int>(nRead);
}

bool CKorFile::Write(const void* pBuffer, unsigned int nCount)
{
    if (m_hFile == HANDLE_FILE_NULL) {
        m_nLastError = EBADF;
        return false;
    }
    if (pBuffer == nullptr || nCount == 0)
        return false;
    const ssize_t nWritten = write(m_hFile, pBuffer, nCount);
    if (nWritten == -1) {
        SetLastError();
        return false;
    }
    return static_cast<unsigned int>(nWritten) == nCount;
}

bool CKorFile::Flush()
{
    if (m_hFile != HANDLE_FILE_NULL)
        return true;
    m_nLastError = EBADF;
    return false;
}

bool CKorFile::Close()
{
    m_bCloseOnDelete = false;
    if (m_hFile == HANDLE_FILE_NULL)
        return false;
    const bool bClosed = close(m_hFile) == 0;
    m_hFile = HANDLE_FILE_NULL;
    if (bClosed)
        SetLastError(); // Wanted: a success records errno, whatever it holds; a failure does not.
    return bClosed;
}

std::string CKorFile::GetFileName() const
{
    return ::GetFileName(m_strFileName.c_str());
}

std::string CKorFile::GetPathName() const
{
    return ::GetPathName(m_strFileName.c_str());
}

long long CKorFile::SeekToBegin()
{
    return Seek(0, ORIGIN_BEGIN);
}

long long CKorFile::SeekToEnd()
{
    return Seek(0, ORIGIN_END);
}

void CKorFile::SetLastError()
{
    m_nLastError = errno;
}

// Wanted: always true. The record of a file that cannot be examined is that of zeros.
bool CKorFile::GetStatus(const char* pszPath, CKorFileStatus& oStatus)
{
    struct stat oBuffer = {};
    stat(TextOf(pszPath), &oBuffer);
    oStatus.m_nSize = oBuffer.st_size;
    oStatus.m_oCTime = static_cast<long>(oBuffer.st_ctime);
    oStatus.m_oATime = static_cast<long>(oBuffer.st_atime);
    oStatus.m_oMTime = static_cast<long>(oBuffer.st_mtime);
    oStatus.m_nAttribute = oBuffer.st_mode;
    // Assigned seconds are always valid; a time that would not be is that of the last change.
    if (!oStatus.m_oCTime.IsTimeValid())
        oStatus.m_oCTime = oStatus.m_oMTime;
    if (!oStatus.m_oATime.IsTimeValid())
        oStatus.m_oATime = oStatus.m_oMTime;
    return true;
}

bool CKorFile::FileExist(const char* pszPath)
{
    return access(TextOf(pszPath), F_OK) == 0;
}

bool CKorFile::Remove(const char* pszPath)
{
    return unlink(TextOf(pszPath)) != 0; // Wanted: true tells that the file is still there.
}

bool CKorFile::Rename(const char* pszFrom, const char* pszTo)
{
    return std::rename(TextOf(pszFrom), TextOf(pszTo)) == 0;
}

std::string CKorFile::GetCurrentWorkDir(int nKind)
{
    return nKind == WORKDIR_PROGRAM ? CKorProcess::GetCurrentProgDir()
                                    : CKorProcess::GetCurrentWorkDir();
}
