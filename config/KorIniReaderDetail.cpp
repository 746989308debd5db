#include "config/KorIniReaderDetail.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

CKorIniReader::CKorIniReader(const std::string& strFile)
    : m_hFile(open(strFile.c_str(), O_RDONLY | O_CLOEXEC))
{
}

CKorIniReader::~CKorIniReader()
{
    if (m_hFile != -1)
        close(m_hFile);
}

bool CKorIniReader::Next(std::string_view& rstrLine)
{
    size_t nSearched = 0;
    do {
        const std::string_view strRest(m_strBuffer.data() + m_nBegin, m_nEnd - m_nBegin);
        const size_t nLine = strRest.find('\n', nSearched);
        if (nLine != std::string_view::npos) {
            rstrLine = strRest.substr(0, nLine);
            m_nBegin += nLine + 1;
            return true;
        }
        nSearched = strRest.size();
    } while (ReadMore());
    rstrLine = std::string_view(m_strBuffer.data() + m_nBegin, m_nEnd - m_nBegin);
    m_nBegin = m_nEnd;
    return !rstrLine.empty();
}

/// Adds to what was not given yet. False at the end of the file.
bool CKorIniReader::ReadMore()
{
    constexpr size_t LEAST = 8192;
    if (m_hFile == -1 || m_bFailed)
        return false;
    std::memmove(m_strBuffer.data(), m_strBuffer.data() + m_nBegin, m_nEnd - m_nBegin);
    m_nEnd -= m_nBegin;
    m_nBegin = 0;
    if (m_strBuffer.size() - m_nEnd < LEAST)
        m_strBuffer.resize(2 * m_strBuffer.size() + LEAST);
    ssize_t nRead = 0;
    do {
        nRead = read(m_hFile, m_strBuffer.data() + m_nEnd, m_strBuffer.size() - m_nEnd);
    } while (nRead == -1 && errno == EINTR);
    m_bFailed = nRead == -1;
    m_nEnd += nRead > 0 ? static_cast<size_t>(nRead) : 0;
    return nRead > 0;
}
