#include "config/KorTextValue.h"
#include "text/KorStringDetail.h"
#include "time/KorInstantDetail.h"
#include "time/KorIsoTime.h"
#include "time/KorTimeTicksDetail.h"
#include "time/KorUnixTime.h"

#include <algorithm>
#include <cstdint>

namespace
{

struct SUnit
{
    char szName[4];
    std::uint64_t nTicks;
};

constexpr SUnit UNITS[] = {
    {"d", KorTicks::PER_DAY},          {"h", KorTicks::PER_HOUR},
    {"min", KorTicks::PER_MINUTE},     {"s", KorTicks::PER_SECOND},
    {"ms", KorTicks::PER_MILLISECOND}, {"us", KorTicks::PER_MICROSECOND},
};

std::string_view TakeDigits(std::string_view& rstrText)
{
    const size_t nDigits = std::min(rstrText.find_first_not_of("0123456789"), rstrText.size());
    const std::string_view strDigits = rstrText.substr(0, nDigits);
    rstrText.remove_prefix(nDigits);
    return strDigits;
}

/// Adds a number of units, when the sum stays below 2^64.
bool Add(std::uint64_t& rnTicks, std::string_view strDigits, std::uint64_t nUnit)
{
    unsigned long long nCount = 0;
    if (!KorReadUnsigned(strDigits, (UINT64_MAX - rnTicks) / nUnit, nCount))
        return false;
    rnTicks += nCount * nUnit;
    return true;
}

/// Whole ticks in a decimal fraction of a unit. Going from the last digit to the first, cutting
/// each quotient, cuts the whole.
std::uint64_t FractionOf(std::string_view strDigits, std::uint64_t nUnit)
{
    std::uint64_t nTicks = 0;
    for (size_t i = strDigits.size(); i > 0; --i)
        nTicks = (static_cast<std::uint64_t>(strDigits[i - 1] - '0') * nUnit + nTicks) / 10;
    return nTicks;
}

/// Takes "." and digits, when there is a ".". @return false for a "." without digits
bool TakeFraction(std::string_view& rstrText, std::string_view& rstrDigits)
{
    if (rstrText.substr(0, 1) != ".")
        return true;
    rstrText.remove_prefix(1);
    rstrDigits = TakeDigits(rstrText);
    return !rstrDigits.empty();
}

bool AddFraction(std::uint64_t& rnTicks, std::string_view strDigits, std::uint64_t nUnit)
{
    const std::uint64_t nFraction = FractionOf(strDigits, nUnit);
    if (nFraction > UINT64_MAX - rnTicks)
        return false;
    rnTicks += nFraction;
    return true;
}

/// Reads "1.5h".
bool ReadWithUnit(std::string_view strText, std::uint64_t& rnTicks)
{
    const std::string_view strWhole = TakeDigits(strText);
    std::string_view strFraction;
    if (!TakeFraction(strText, strFraction))
        return false;
    for (const SUnit& oUnit : UNITS) {
        if (strText == oUnit.szName)
            return Add(rnTicks, strWhole, oUnit.nTicks) &&
                   AddFraction(rnTicks, strFraction, oUnit.nTicks);
    }
    return false;
}

/// Takes ":" and two digits, below "60".
bool TakeSixty(std::string_view& rstrText, std::string_view& rstrDigits)
{
    if (rstrText.substr(0, 1) != ":")
        return false;
    rstrText.remove_prefix(1);
    rstrDigits = TakeDigits(rstrText);
    return rstrDigits.size() == 2 && rstrDigits < "60";
}

/// Reads "1:02:03.25".
bool ReadClock(std::string_view strText, std::uint64_t& rnTicks)
{
    const std::string_view strHours = TakeDigits(strText);
    std::string_view strMinutes;
    std::string_view strSeconds;
    std::string_view strFraction;
    return TakeSixty(strText, strMinutes) && TakeSixty(strText, strSeconds) &&
           TakeFraction(strText, strFraction) && strText.empty() &&
           Add(rnTicks, strHours, KorTicks::PER_HOUR) &&
           Add(rnTicks, strMinutes, KorTicks::PER_MINUTE) &&
           Add(rnTicks, strSeconds, KorTicks::PER_SECOND) &&
           AddFraction(rnTicks, strFraction, KorTicks::PER_SECOND);
}

/// A whole number of the largest unit that allows one, else microseconds with a fraction.
std::string WriteMagnitude(std::uint64_t nTicks)
{
    if (nTicks == 0)
        return "0s";
    for (const SUnit& oUnit : UNITS) {
        if (nTicks % oUnit.nTicks == 0)
            return KorDecimal(nTicks / oUnit.nTicks).append(oUnit.szName);
    }
    const std::uint64_t nHundredths = nTicks % 100;
    return KorConcat({KorDecimal(nTicks / 100), nHundredths < 10 ? ".0" : ".",
                      KorDecimal(nHundredths % 10 == 0 ? nHundredths / 10 : nHundredths), "us"});
}

} // namespace

bool KorReadText(std::string_view strText, CKorTimeDiff& roValue)
{
    const bool bNegative = strText.substr(0, 1) == "-";
    if (bNegative)
        strText.remove_prefix(1);
    std::uint64_t nTicks = 0;
    const bool bRead = strText.find(':') != std::string_view::npos ? ReadClock(strText, nTicks)
                                                                   : ReadWithUnit(strText, nTicks);
    if (!bRead || nTicks > (UINT64_MAX >> 1) + (bNegative ? 1 : 0))
        return false;
    roValue.SetTimeDiff(static_cast<long long>(bNegative ? 0 - nTicks : nTicks), true);
    return true;
}

std::string KorSimpleText::Of(const CKorTimeDiff& oValue)
{
    const std::int64_t nTicks = KorToDuration(oValue).count();
    const std::uint64_t nBits = KorTicks::Bits(nTicks);
    return KorConcat({nTicks < 0 ? "-" : "", WriteMagnitude(nTicks < 0 ? 0 - nBits : nBits)});
}

std::string KorSimpleText::Of(const CKorUTCTime& oValue)
{
    const std::uint64_t nTicks = KorTicks::Bits(KorInstant::TicksOf(oValue));
    unsigned int nDigits = 0;
    for (std::uint64_t nUnit = KorTicks::PER_SECOND; nDigits < 9 && nTicks % nUnit != 0;
         nUnit /= 1000)
        nDigits += 3;
    return KorToIsoString(oValue, 0, nDigits);
}
