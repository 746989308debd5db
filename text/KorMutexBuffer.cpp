#include "text/KorMutexBuffer.h"

#include "base/KorMutexHoldDetail.h"

CKorMutexBuffer::CKorMutexBuffer() = default;

CKorMutexBuffer::~CKorMutexBuffer() = default;

void CKorMutexBuffer::AddChar(char c)
{
    const KorMutexHold oHold(m_oMutex);
    m_sBuffer += c;
}

void CKorMutexBuffer::AddString(const std::string& strText)
{
    const KorMutexHold oHold(m_oMutex);
    m_sBuffer.append(strText);
}

std::string CKorMutexBuffer::GetBuffer()
{
    const KorMutexHold oHold(m_oMutex);
    return m_sBuffer;
}

unsigned int CKorMutexBuffer::GetLength()
{
    const KorMutexHold oHold(m_oMutex);
    return static_cast<unsigned int>(m_sBuffer.length());
}

bool CKorMutexBuffer::ContainsString(const std::string& strText)
{
    const KorMutexHold oHold(m_oMutex);
    return m_sBuffer.find(strText) != std::string::npos;
}

void CKorMutexBuffer::ClearBuffer()
{
    const KorMutexHold oHold(m_oMutex);
    m_sBuffer.clear();
}

std::string CKorMutexBuffer::RemoveString(unsigned int nCount)
{
    const KorMutexHold oHold(m_oMutex);
    std::string strTaken = m_sBuffer.substr(0, nCount);
    m_sBuffer.erase(0, strTaken.length());
    return strTaken;
}

std::string CKorMutexBuffer::RemoveString(const std::string& strDelimiter)
{
    std::string::size_type nPos;
    {
        const KorMutexHold oHold(m_oMutex);
        nPos = m_sBuffer.find(strDelimiter);
    }
    // The lock is free here: the one consumer is the only remover, so what was found stays put.
    if (nPos == std::string::npos)
        return std::string();
    return RemoveString(static_cast<unsigned int>(nPos + strDelimiter.length()));
}
