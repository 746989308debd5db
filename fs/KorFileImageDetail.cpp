#include "fs/KorFileImageDetail.h"

#include "fs/KorDescriptorDetail.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

bool IsReadable(const struct stat& oStat)
{
    if (!S_ISREG(oStat.st_mode))
        errno = S_ISDIR(oStat.st_mode) ? EISDIR : EINVAL;
    return S_ISREG(oStat.st_mode);
}

/// Reads up to the end of the file, which may lie elsewhere than its size says.
bool ReadToEnd(int hFile, size_t nExpected, std::string& rstrContent)
{
    constexpr size_t CHUNK = 4096;
    size_t nLength = 0;
    rstrContent.resize(nExpected + 1);
    for (;;) {
        const ssize_t nRead = read(hFile, &rstrContent[nLength], rstrContent.size() - nLength);
        if (nRead == -1 && errno == EINTR)
            continue;
        if (nRead <= 0) {
            rstrContent.resize(nLength);
            return nRead == 0;
        }
        nLength += static_cast<size_t>(nRead);
        if (nLength == rstrContent.size())
            rstrContent.resize(std::max(nLength * 2, CHUNK));
    }
}

} // namespace

KorFileState KorFileStateOf(const struct stat& oStat)
{
    return {static_cast<int64_t>(oStat.st_dev),
            static_cast<int64_t>(oStat.st_ino),
            oStat.st_size,
            oStat.st_mtim.tv_sec,
            oStat.st_mtim.tv_nsec,
            oStat.st_ctim.tv_sec,
            oStat.st_ctim.tv_nsec};
}

KorFileState KorFileStateOf(const char* pszName)
{
    struct stat oStat;
    return stat(pszName, &oStat) == 0 ? KorFileStateOf(oStat) : KorFileState{};
}

bool SKorFileImage::Read(const char* pszName)
{
    m_oState = {};
    m_strContent.clear();
    // Neither a FIFO nor a terminal may make the open wait.
    const CKorDescriptor oFile(open(pszName, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat oStat;
    if (!oFile.IsOpen() || fstat(oFile.Get(), &oStat) != 0 || !IsReadable(oStat))
        return false;
    if (!ReadToEnd(oFile.Get(), static_cast<size_t>(oStat.st_size), m_strContent)) {
        m_strContent.clear();
        return false;
    }
    m_oState = KorFileStateOf(oStat);
    return true;
}

bool SKorFileImage::IsCurrent(const char* pszName) const
{
    SKorFileImage oNow;
    if (!oNow.Read(pszName) && errno != ENOENT)
        return false;
    // The name comes last: it may have gone to another file while this one was read.
    if (oNow.m_strContent == m_strContent && KorFileStateOf(pszName) == m_oState)
        return true;
    errno = ESTALE;
    return false;
}
