#include "time/KorTextWriterDetail.h"

#include "text/KorStringDetail.h"
#include "time/KorDigitsDetail.h"
#include "time/KorPlainLocaleDetail.h"

#include <algorithm>
#include <iterator>
#include <locale>

bool KorWritesPlainly(const std::ostream& oStream, bool bOwnWidth)
{
    constexpr std::ios_base::fmtflags ODD_FLAGS = std::ios_base::oct | std::ios_base::hex |
                                                  std::ios_base::left | std::ios_base::internal |
                                                  std::ios_base::showpos;
    return oStream.good() && (oStream.flags() & ODD_FLAGS) == 0 &&
           (oStream.width() == 0 || bOwnWidth) && KorIsPlainLocale(oStream.getloc());
}

bool KorNewStreamWritesPlainly()
{
    return KorIsPlainLocale(std::locale());
}

std::ostream& KorPutPlainText(std::ostream& oStream, const char* pText, const char* pEnd,
                              bool bFilled)
{
    oStream.width(0);
    if (bFilled)
        oStream.fill('0');
    return oStream.write(pText, pEnd - pText);
}

void CKorPlainText::Digits(std::uint64_t nNumber, int nWidth)
{
    m_bFilled = m_bFilled || nWidth != 0;
    if (nWidth == 2 && nNumber < 100) {
        m_pEnd = KorDigits::PutTwo(m_pEnd, static_cast<std::uint32_t>(nNumber));
    } else if (nWidth == 3 && nNumber < 1000) {
        m_pEnd = KorDigits::PutThree(m_pEnd, static_cast<std::uint32_t>(nNumber));
    } else {
        char acDigits[20];
        char* const pLast = std::end(acDigits);
        char* pFirst = KorPutDecimal(pLast, nNumber);
        while (pLast - pFirst < std::max(nWidth, 1))
            *--pFirst = '0';
        m_pEnd = std::copy(pFirst, pLast, m_pEnd);
    }
}
