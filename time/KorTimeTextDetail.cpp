#include "time/KorTimeTextDetail.h"

#include <cstdint>
#include <locale>
#include <ostream>
#include <sstream>

namespace
{

char* FormatNumber(char* pEnd, unsigned long long nNumber, int nWidth)
{
    char aDigits[20];
    int nDigits = 0;
    for (; nNumber > UINT32_MAX; nNumber /= 10)
        aDigits[nDigits++] = static_cast<char>('0' + nNumber % 10);
    // On from here in 32 bits, which is much cheaper on 32-bit boards.
    auto nRest = static_cast<std::uint32_t>(nNumber);
    do {
        aDigits[nDigits++] = static_cast<char>('0' + nRest % 10);
        nRest /= 10;
    } while (nRest != 0);
    for (int nFilled = nDigits; nFilled < nWidth; ++nFilled)
        *pEnd++ = '0';
    while (nDigits > 0)
        *pEnd++ = aDigits[--nDigits];
    return pEnd;
}

} // namespace

CKorTimeText::CKorTimeText() : m_nPieces(0), m_bNegative(false), m_bFilled(false) {}

void CKorTimeText::AddText(const char* pszText)
{
    m_aoPieces[m_nPieces++] = {pszText, 0, 0, false};
}

void CKorTimeText::AddInt(int nNumber, int nWidth)
{
    AddUnsigned(static_cast<unsigned long long>(nNumber), nWidth);
    m_aoPieces[m_nPieces - 1].bInt = true;
    m_bNegative = m_bNegative || nNumber < 0;
}

void CKorTimeText::AddUnsigned(unsigned long long nNumber, int nWidth)
{
    m_aoPieces[m_nPieces++] = {nullptr, nNumber, nWidth, false};
    m_bFilled = m_bFilled || nWidth != 0;
}

std::ostream& CKorTimeText::Put(std::ostream& oStream) const
{
    if (m_nPieces == 0)
        return oStream;
    if (!IsPlainFor(oStream)) {
        PutPieces(oStream);
        return oStream;
    }
    char aBuffer[MAX_LENGTH];
    const size_t nLength = Format(aBuffer);
    oStream.width(0);
    if (m_bFilled)
        oStream.fill('0');
    return oStream.write(aBuffer, static_cast<std::streamsize>(nLength));
}

std::string CKorTimeText::ToString() const
{
    // A new stream would be plain but for the global locale.
    if (!m_bNegative && std::locale() == std::locale::classic()) {
        char aBuffer[MAX_LENGTH];
        return std::string(aBuffer, Format(aBuffer));
    }
    std::ostringstream oStream;
    PutPieces(oStream);
    return oStream.str();
}

bool CKorTimeText::IsPlainFor(const std::ios& oStream) const
{
    constexpr std::ios_base::fmtflags ODD_FLAGS = std::ios_base::oct | std::ios_base::hex |
                                                  std::ios_base::left | std::ios_base::internal |
                                                  std::ios_base::showpos;
    return !m_bNegative && oStream.good() && (oStream.flags() & ODD_FLAGS) == 0 &&
           (oStream.width() == 0 || m_aoPieces[0].nWidth != 0) &&
           oStream.getloc() == std::locale::classic();
}

size_t CKorTimeText::Format(char* pBuffer) const
{
    char* pEnd = pBuffer;
    for (size_t i = 0; i < m_nPieces; ++i) {
        const SPiece& oPiece = m_aoPieces[i];
        if (oPiece.pszText == nullptr)
            pEnd = FormatNumber(pEnd, oPiece.nNumber, oPiece.nWidth);
        else
            for (const char* pszText = oPiece.pszText; *pszText != '\0'; ++pszText)
                *pEnd++ = *pszText;
    }
    return static_cast<size_t>(pEnd - pBuffer);
}

void CKorTimeText::PutPieces(std::ostream& oStream) const
{
    for (size_t i = 0; i < m_nPieces; ++i) {
        const SPiece& oPiece = m_aoPieces[i];
        if (oPiece.nWidth != 0) {
            oStream.width(oPiece.nWidth);
            oStream.fill('0'); // wanted: nobody restores it
        }
        if (oPiece.pszText != nullptr)
            oStream << oPiece.pszText;
        else if (oPiece.bInt)
            oStream << static_cast<int>(oPiece.nNumber);
        else
            oStream << oPiece.nNumber;
    }
}
