#include "serial/KorLineBufferDetail.h"

#include <algorithm>
#include <cstring>

void CKorLineBuffer::MakeRoom(std::size_t nLength)
{
    // Moving no more bytes than were taken keeps the cost in proportion.
    if (m_strBytes.size() + nLength > m_strBytes.capacity() && m_nBegin >= Size()) {
        m_strBytes.erase(0, m_nBegin);
        m_nBegin = 0;
    }
    if (m_strBytes.size() + nLength > m_strBytes.capacity())
        m_strBytes.reserve(m_strBytes.size() + nLength);
}

void CKorLineBuffer::Append(const char* pData, std::size_t nLength)
{
    MakeRoom(nLength);
    m_strBytes.append(pData, nLength);
}

void CKorLineBuffer::Drop(std::size_t nLength)
{
    m_nBegin += nLength;
    m_nSearched -= std::min(m_nSearched, nLength);
    if (m_nBegin == m_strBytes.size()) {
        m_strBytes.clear();
        m_nBegin = 0;
    }
}

std::size_t CKorLineBuffer::FindEnd(const std::string& strDelimiter, std::size_t nMax)
{
    if (strDelimiter != m_strDelimiter) {
        m_strDelimiter = strDelimiter;
        m_nSearched = 0;
    }
    const std::size_t nEnd = std::min(Size(), nMax);
    const std::size_t nStart = std::min(m_nSearched, nEnd);
    const void* const pFound =
        memmem(Data() + nStart, nEnd - nStart, strDelimiter.data(), strDelimiter.size());
    if (pFound != nullptr)
        return static_cast<std::size_t>(static_cast<const char*>(pFound) - Data()) +
               strDelimiter.size();
    if (nEnd >= strDelimiter.size())
        m_nSearched = std::max(m_nSearched, nEnd - strDelimiter.size() + 1);
    return NOT_FOUND;
}
