#include "PidFile.h"

#include "fs/KorFile.h"
#include "fs/KorProcess.h"
#include "text/KorStringFunc.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

bool PidFile::Acquire(std::string& strError)
{
    // CKorFile opens existing files only.
    m_hFile = open(m_strName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (m_hFile == -1) {
        strError = m_strName + ": " + std::strerror(errno);
        return false;
    }
    if (flock(m_hFile, LOCK_EX | LOCK_NB) != 0) {
        strError = m_strName + ": " +
                   (errno == EWOULDBLOCK ? "already running as process " + Content()
                                         : std::strerror(errno));
        close(m_hFile);
        m_hFile = -1;
        return false;
    }
    const std::string strID = std::to_string(CKorProcess().Refresh()) + "\n";
    if (ftruncate(m_hFile, 0) != 0 ||
        !CKorFile(m_hFile).Write(strID.data(), static_cast<unsigned int>(strID.size()))) {
        strError = m_strName + ": " + std::strerror(errno);
        Release();
        return false;
    }
    return true;
}

void PidFile::Release()
{
    if (m_hFile == -1)
        return;
    if (ftruncate(m_hFile, 0) != 0)
        unlink(m_strName.c_str());
    close(m_hFile);
    m_hFile = -1;
}

std::string PidFile::Content() const
{
    char szContent[32] = "";
    CKorFile(m_hFile).Read(szContent, sizeof szContent - 1);
    return KorStrTrim(szContent);
}
