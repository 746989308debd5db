#pragma once

#include "tests/time/TimeForms.h"
#include "time/KorUTCTime.h"

#include <cctype>
#include <ios>
#include <string>

/// Reads a text by its positions, with a stream's end and fail bits.
class Reader
{
public:
    explicit Reader(const std::string& strText) : m_strText(strText) {}
    void SkipWhiteSpace()
    {
        if (m_bEnd || m_bFail)
            return;
        while (m_nPos < m_strText.size() &&
               std::isspace(static_cast<unsigned char>(m_strText[m_nPos])) != 0)
            ++m_nPos;
        m_bEnd = m_nPos == m_strText.size();
    }
    unsigned Number(int nDigits)
    {
        unsigned nValue = 0;
        for (; nDigits > 0 && Next() >= '0' && Next() <= '9'; --nDigits)
            nValue = nValue * 10 + static_cast<unsigned>(m_strText[m_nPos++] - '0');
        return nValue;
    }
    void Separator(char c, bool bStrict)
    {
        if (Next() == c)
            ++m_nPos;
        else if (bStrict)
            m_bFail = true;
    }
    std::string Rest() const { return m_strText.substr(m_nPos); }
    std::ios_base::iostate State() const
    {
        return (m_bEnd ? std::ios_base::eofbit : std::ios_base::goodbit) |
               (m_bFail ? std::ios_base::failbit : std::ios_base::goodbit);
    }
    bool HasFailed() const { return m_bFail; }

private:
    int Next()
    {
        if (m_bEnd || m_bFail) {
            m_bFail = true; // reading on after the end
            return -1;
        }
        m_bEnd = m_nPos == m_strText.size();
        return m_bEnd ? -1 : static_cast<unsigned char>(m_strText[m_nPos]);
    }

    const std::string& m_strText;
    size_t m_nPos = 0;
    bool m_bEnd = false;
    bool m_bFail = false;
};

struct Parts
{
    unsigned nDay = 0;
    unsigned nMonth = 0;
    unsigned nYear = 0;
    unsigned nHour = 0;
    unsigned nMinute = 0;
    unsigned nSecond = 0;
    unsigned anSubSeconds[3] = {0, 0, 0};
};

inline void ModelReadDate(Reader& oReader, const DateForm& oForm, Parts& oParts)
{
    for (const char* p = oForm.pszOrder; *p != '\0'; ++p) {
        if (p != oForm.pszOrder)
            oReader.Separator(oForm.cSeparator, false);
        if (*p == 'D')
            oParts.nDay = oReader.Number(2);
        else if (*p == 'M')
            oParts.nMonth = oReader.Number(2);
        else
            oParts.nYear = oReader.Number(4);
    }
}

inline void ModelReadMailDate(Reader& oReader, Parts& oParts)
{
    oParts.nDay = oReader.Number(2);
    oReader.SkipWhiteSpace();
    oParts.nMonth = oReader.Number(2);
    oReader.SkipWhiteSpace();
    const unsigned nYear = oReader.Number(2);
    oParts.nYear = nYear < 46 ? 2000 + nYear : 1900 + nYear;
}

inline void ModelReadClock(Reader& oReader, int nSubSeconds, Parts& oParts)
{
    oParts.nHour = oReader.Number(2);
    oReader.Separator(':', false);
    oParts.nMinute = oReader.Number(2);
    oReader.Separator(':', false);
    oParts.nSecond = oReader.Number(2);
    for (int i = 0; i < nSubSeconds; ++i) {
        oReader.Separator('.', false);
        oParts.anSubSeconds[i] = oReader.Number(3);
    }
}

/// What reading must give; the reader shows what is left and the stream's state.
inline CKorUTCTime ModelGet(Reader& oReader, int nFormat)
{
    oReader.SkipWhiteSpace();
    const DateForm& oForm = nFormat == 11 ? FORMS[1] : FORMS[nFormat];
    Parts oParts;
    if (nFormat == 11)
        ModelReadMailDate(oReader, oParts);
    else if (oForm.pszOrder != nullptr)
        ModelReadDate(oReader, oForm, oParts);
    if (oForm.pszOrder != nullptr && nFormat != CKorUTCTime::eDate)
        oReader.SkipWhiteSpace();
    if (oForm.nSubSeconds >= 0)
        ModelReadClock(oReader, oForm.nSubSeconds, oParts);
    return CKorUTCTime(oParts.nDay, oParts.nMonth, oParts.nYear, oParts.nHour, oParts.nMinute,
                       oParts.nSecond, oParts.anSubSeconds[0], oParts.anSubSeconds[1],
                       oParts.anSubSeconds[2]);
}

inline CKorTimeDiff ModelGetSpan(Reader& oReader, int nFormat)
{
    const int nDays = nFormat == 6 ? static_cast<int>(oReader.Number(4)) : 0;
    if (nFormat == 6)
        oReader.Separator('#', true);
    int anFields[4] = {0, 0, 0, 0};
    const int nFields = nFormat == 6 ? 3 : nFormat + 1;
    for (int i = 0; i < nFields; ++i) {
        if (i > 0)
            oReader.Separator(i == 3 ? '.' : ':', true);
        anFields[i] = static_cast<int>(oReader.Number(i == 3 ? 3 : 2));
    }
    return CKorTimeDiff(nDays, anFields[0], anFields[1], anFields[2], anFields[3], 0, 0);
}
