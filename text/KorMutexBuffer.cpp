#include "text/KorMutexBuffer.h"

namespace
{

constexpr unsigned int WAIT_FOREVER = 0xFFFFFFFF;

/// Holds the mutex until the end of the scope, also when an exception ends it.
class LockHold
{
public:
    explicit LockHold(CKorMutex& oMutex) : m_oMutex(oMutex) { m_oMutex.Lock(WAIT_FOREVER); }
    ~LockHold() { m_oMutex.Unlock(); }
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

private:
    CKorMutex& m_oMutex;
};

} // namespace

CKorMutexBuffer::CKorMutexBuffer() = default;

CKorMutexBuffer::~CKorMutexBuffer() = default;

void CKorMutexBuffer::AddChar(char c)
{
    const LockHold oHold(m_oMutex);
    m_sBuffer += c;
}

void CKorMutexBuffer::AddString(const std::string& strText)
{
    const LockHold oHold(m_oMutex);
    m_sBuffer += strText;
}

std::string CKorMutexBuffer::GetBuffer()
{
    const LockHold oHold(m_oMutex);
    return m_sBuffer;
}

unsigned int CKorMutexBuffer::GetLength()
{
    const LockHold oHold(m_oMutex);
    return static_cast<unsigned int>(m_sBuffer.length());
}

bool CKorMutexBuffer::ContainsString(const std::string& strText)
{
    const LockHold oHold(m_oMutex);
    return m_sBuffer.find(strText) != std::string::npos;
}

void CKorMutexBuffer::ClearBuffer()
{
    const LockHold oHold(m_oMutex);
    m_sBuffer.clear();
}

std::string CKorMutexBuffer::RemoveString(unsigned int nCount)
{
    const LockHold oHold(m_oMutex);
    std::string strTaken = m_sBuffer.substr(0, nCount);
    m_sBuffer.erase(0, strTaken.length());
    return strTaken;
}

std::string CKorMutexBuffer::RemoveString(const std::string& strDelimiter)
{
    std::string::size_type nPos;
    {
        const LockHold oHold(m_oMutex);
        nPos = m_sBuffer.find(strDelimiter);
    }
    // The lock is free here: the one consumer is the only remover, so what was found stays put.
    if (nPos == std::string::npos)
        return std::string();
    return RemoveString(static_cast<unsigned int>(nPos + strDelimiter.length()));
}
