#include "text/KorStringDetail.h"
#include "time/KorIsoDetail.h"
#include "time/KorIsoTime.h"

#include <limits>

using KorDigits::CCursor;

namespace
{

struct SUnit
{
    char cName;
    bool bOfClock; ///< stands behind "T"
    std::uint64_t nTicks;
};
constexpr SUnit UNITS[] = {{'W', false, 7 * KorTicks::PER_DAY},
                           {'D', false, KorTicks::PER_DAY},
                           {'H', true, KorTicks::PER_HOUR},
                           {'M', true, KorTicks::PER_MINUTE},
                           {'S', true, KorTicks::PER_SECOND}};
constexpr std::size_t UNIT_COUNT = sizeof UNITS / sizeof *UNITS;

void AppendPart(std::string& strText, std::uint64_t nNumber, char cUnit)
{
    if (nNumber != 0)
        strText.append(KorDecimal(nNumber)).push_back(cUnit);
}

/// Appends the seconds of a minute with as many digits behind the point as they need.
void AppendSeconds(std::string& strText, std::uint64_t nTicks)
{
    strText.append(KorDecimal(nTicks / KorTicks::PER_SECOND));
    const std::uint64_t nFraction = nTicks % KorTicks::PER_SECOND;
    if (nFraction != 0) {
        std::string strDigits = KorDecimal(KorTicks::PER_SECOND + nFraction);
        strDigits[0] = '.'; // in the place of the 1 that keeps the zeros in front
        while (strDigits.back() == '0')
            strDigits.resize(strDigits.size() - 1);
        strText.append(strDigits);
    }
    strText.push_back('S');
}

bool TakeNumber(CCursor& oText, std::uint64_t& nNumber)
{
    bool bAny = false;
    std::uint32_t nDigit = 0;
    for (nNumber = 0; oText.TakeDigits(1, nDigit) == 1; bAny = true) {
        if (__builtin_mul_overflow(nNumber, 10U, &nNumber) ||
            __builtin_add_overflow(nNumber, nDigit, &nNumber))
            return false;
    }
    return bAny;
}

/// Reads the parts of one span and adds them up.
class CDurationReader
{
public:
    explicit CDurationReader(const std::string& strText)
        : m_oText(strText.data(), strText.data() + strText.size())
    {
    }

    bool Read(std::int64_t& nTicks);

private:
    bool TakePart();
    bool TakeUnit();
    bool IsSecond() const { return m_nUnit == UNIT_COUNT; }

    CCursor m_oText;
    bool m_bInClock = false;
    std::size_t m_nUnit = 0; ///< the first one that may still come
    std::uint64_t m_nSum = 0;
};

bool CDurationReader::Read(std::int64_t& nTicks)
{
    const bool bNegative = m_oText.Take('-');
    if (!bNegative)
        m_oText.Take('+');
    if (!m_oText.Take('P'))
        return false;
    do {
        if (!TakePart())
            return false;
    } while (!m_oText.IsAtEnd());
    constexpr std::uint64_t MAX = std::numeric_limits<std::int64_t>::max();
    if (m_nSum > MAX + (bNegative ? 1 : 0))
        return false;
    nTicks = KorTicks::Signed(bNegative ? 0 - m_nSum : m_nSum);
    return true;
}

/// Takes a number and its unit, and a "T" in front of them.
bool CDurationReader::TakePart()
{
    if (!m_bInClock)
        m_bInClock = m_oText.Take('T');
    std::uint64_t nNumber = 0;
    if (!TakeNumber(m_oText, nNumber))
        return false;
    const bool bHasFraction = m_oText.Peek() == '.' || m_oText.Peek() == ',';
    std::int32_t nFraction = 0;
    if (!KorTakeFraction(m_oText, nFraction) || !TakeUnit() || (bHasFraction && !IsSecond()))
        return false;
    return !__builtin_mul_overflow(nNumber, UNITS[m_nUnit - 1].nTicks, &nNumber) &&
           !__builtin_add_overflow(nNumber, nFraction, &nNumber) &&
           !__builtin_add_overflow(m_nSum, nNumber, &m_nSum);
}

/// Takes the letter of a unit that may still come.
bool CDurationReader::TakeUnit()
{
    while (m_nUnit < UNIT_COUNT) {
        const SUnit& oUnit = UNITS[m_nUnit++];
        if (oUnit.bOfClock == m_bInClock && m_oText.Take(oUnit.cName))
            return true;
    }
    return false;
}

} // namespace

std::string KorToIsoDuration(const CKorTimeDiff& oSpan)
{
    const std::int64_t nTicks = KorInstant::SSpan::Ticks(oSpan);
    std::uint64_t nRest = nTicks < 0 ? 0 - KorTicks::Bits(nTicks) : KorTicks::Bits(nTicks);
    if (nRest == 0)
        return "PT0S";
    std::string strText = nTicks < 0 ? "-P" : "P";
    AppendPart(strText, nRest / KorTicks::PER_DAY, 'D');
    nRest %= KorTicks::PER_DAY;
    if (nRest == 0)
        return strText;
    strText.push_back('T');
    AppendPart(strText, nRest / KorTicks::PER_HOUR, 'H');
    AppendPart(strText, nRest % KorTicks::PER_HOUR / KorTicks::PER_MINUTE, 'M');
    nRest %= KorTicks::PER_MINUTE;
    if (nRest != 0)
        AppendSeconds(strText, nRest);
    return strText;
}

bool KorFromIsoDuration(const std::string& strText, CKorTimeDiff& rSpan)
{
    std::int64_t nTicks = 0;
    if (!CDurationReader(strText).Read(nTicks))
        return false;
    rSpan.SetTimeDiff(nTicks, true);
    return true;
}
