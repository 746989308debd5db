#include "fs/KorSuccessorFileDetail.h"

#include "fs/KorFileAttributesDetail.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

/// A write beyond the limit would end the process with a signal.
bool IsWithinSizeLimit(size_t nSize)
{
    struct rlimit oLimit
    {
    };
    if (getrlimit(RLIMIT_FSIZE, &oLimit) != 0)
        return false;
    const bool bWithin = oLimit.rlim_cur == RLIM_INFINITY || nSize <= oLimit.rlim_cur;
    if (!bWithin)
        errno = EFBIG;
    return bWithin;
}

} // namespace

CKorSuccessorFile::~CKorSuccessorFile()
{
    const int nError = errno;
    if (m_bTemporary)
        unlink(m_strName.c_str());
    errno = nError;
}

bool CKorSuccessorFile::Create(mode_t nMode)
{
    if (unlink(m_strName.c_str()) != 0 && errno != ENOENT)
        return false;
    m_oFile = CKorDescriptor(
        open(m_strName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, nMode));
    m_bTemporary = m_oFile.IsOpen();
    return m_bTemporary;
}

bool CKorSuccessorFile::Fill(const std::string& strContent, const CKorDescriptor& oOld)
{
    return IsWithinSizeLimit(strContent.size()) && KorWriteAll(m_oFile.Get(), strContent) &&
           (!oOld.IsOpen() || KorCopyFileAttributes(oOld.Get(), m_oFile.Get())) &&
           fsync(m_oFile.Get()) == 0;
}

bool CKorSuccessorFile::Rename(const std::string& strName)
{
    if (rename(m_strName.c_str(), strName.c_str()) != 0)
        return false;
    m_bTemporary = false;
    return true;
}

KorFileState CKorSuccessorFile::GetState() const
{
    struct stat oStat;
    return fstat(m_oFile.Get(), &oStat) == 0 ? KorFileStateOf(oStat) : KorFileState{};
}
