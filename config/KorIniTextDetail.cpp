#include "config/KorIniTextDetail.h"

#include <algorithm>

bool CKorIniTextLines::Next(std::string_view& rstrLine)
{
    if (m_nNext == m_strText.size())
        return false;
    const size_t nEnd = std::min(m_strText.find('\n', m_nNext), m_strText.size());
    rstrLine = m_strText.substr(m_nNext, nEnd - m_nNext);
    m_nNext = std::min(nEnd + 1, m_strText.size());
    return true;
}

bool CKorIniText::Next()
{
    if (!m_oLines.Next(m_strLine))
        return false;
    ++m_nNumber;
    m_oParts = KorIniParse(m_strLine);
    if (Is(EKorIniLine::HEADER))
        m_strSection = m_oParts.m_strName;
    return true;
}
