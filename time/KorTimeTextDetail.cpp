#include "time/KorTimeTextDetail.h"

#include <algorithm>
#include <cstdint>
#include <locale>
#include <ostream>
#include <sstream>

namespace
{

/// Writes a number that fits into 32 bits and a field; returns null when it does not fit.
char* FormatField(char* pEnd, unsigned long long nNumber, int nWidth)
{
    auto nRest = static_cast<std::uint32_t>(nNumber);
    for (int nDigit = nWidth; nDigit > 0; nRest /= 10)
        pEnd[--nDigit] = static_cast<char>('0' + nRest % 10);
    return nRest == 0 && nNumber <= UINT32_MAX ? pEnd + nWidth : nullptr;
}

/// Writes a number of any size in as many digits as it has.
char* FormatNumber(char* pEnd, unsigned long long nNumber)
{
    char aDigits[20];
    char* pFirst = aDigits + sizeof aDigits;
    for (; nNumber > UINT32_MAX; nNumber /= 10)
        *--pFirst = static_cast<char>('0' + nNumber % 10);
    // On from here in 32 bits, which is much cheaper on 32-bit boards.
    auto nRest = static_cast<std::uint32_t>(nNumber);
    do {
        *--pFirst = static_cast<char>('0' + nRest % 10);
        nRest /= 10;
    } while (nRest != 0);
    return std::copy(pFirst, aDigits + sizeof aDigits, pEnd);
}

} // namespace

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
        if (oPiece.pszText != nullptr) {
            for (const char* pszText = oPiece.pszText; *pszText != '\0'; ++pszText)
                *pEnd++ = *pszText;
            continue;
        }
        char* pFieldEnd =
            oPiece.nWidth != 0 ? FormatField(pEnd, oPiece.nNumber, oPiece.nWidth) : nullptr;
        pEnd = pFieldEnd != nullptr ? pFieldEnd : FormatNumber(pEnd, oPiece.nNumber);
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
