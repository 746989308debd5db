// ISO times against regular expressions and the C library's calendar, and back.

#include "tests/fuzz/Fuzz.h"
#include "tests/time/InstantSupport.h"
#include "time/KorIsoTime.h"

#include <ctime>
#include <regex>

namespace
{

constexpr std::int64_t SECONDS_PER_DAY = 86400;

int Number(const std::ssub_match& oMatch)
{
    return oMatch.matched ? std::stoi(oMatch.str()) : 0;
}

/// Days since the epoch of the C library's calendar, which takes any day for one of the month.
std::int64_t Days(int nYear, int nMonth, int nDay)
{
    std::tm oTime = {};
    oTime.tm_year = nYear - 1900;
    oTime.tm_mon = nMonth - 1;
    oTime.tm_mday = nDay;
    return timegm(&oTime) / SECONDS_PER_DAY;
}

int WeekDay(std::int64_t nDays) // 0 is Monday
{
    return static_cast<int>(((nDays + 3) % 7 + 7) % 7);
}

/// The first day of the first week, which has the 4th of January.
std::int64_t FirstWeek(int nYear)
{
    const std::int64_t nFourth = Days(nYear, 1, 4);
    return nFourth - WeekDay(nFourth);
}

class Model
{
public:
    bool Read(const std::string& strText)
    {
        // Date; the fields of the clock, with colons or without as the date has dashes; offset.
        static const std::regex EXTENDED(
            "(\\d{4})-(?:(\\d\\d)-(\\d\\d)|(\\d{3})|W(\\d\\d)-(\\d))"
            "(?:[T ](\\d\\d):(\\d\\d)(?::(\\d\\d)(?:[.,](\\d{1,9}))?)?" +
            OFFSET + ")?");
        static const std::regex BASIC("(\\d{4})(?:(\\d\\d)(\\d\\d)|(\\d{3})|W(\\d\\d)(\\d))"
                                      "(?:[T ](\\d\\d)(\\d\\d)(?:(\\d\\d)(?:[.,](\\d{1,9}))?)?" +
                                      OFFSET + ")?");
        std::smatch oParts;
        if (!std::regex_match(strText, oParts, EXTENDED) &&
            !std::regex_match(strText, oParts, BASIC))
            return false;
        return ReadDate(oParts) && ReadClock(oParts);
    }

    std::int64_t m_nTicks = 0;
    int m_nOffset = 0;

private:
    static inline const std::string OFFSET = "(Z|([+-])(\\d\\d)(?::?(\\d\\d))?)?";

    bool ReadDate(const std::smatch& oParts)
    {
        const int nYear = Number(oParts[1]);
        if (oParts[2].matched) {
            m_nDays = Days(nYear, Number(oParts[2]), Number(oParts[3]));
            return Number(oParts[2]) >= 1 && Number(oParts[2]) <= 12 && Number(oParts[3]) >= 1 &&
                   m_nDays < Days(nYear, Number(oParts[2]) + 1, 1);
        }
        if (oParts[4].matched) {
            m_nDays = Days(nYear, 1, Number(oParts[4]));
            return Number(oParts[4]) >= 1 && m_nDays < Days(nYear + 1, 1, 1);
        }
        m_nDays =
            FirstWeek(nYear) + std::int64_t{Number(oParts[5]) - 1} * 7 + Number(oParts[6]) - 1;
        return Number(oParts[5]) >= 1 && Number(oParts[6]) >= 1 && Number(oParts[6]) <= 7 &&
               m_nDays < FirstWeek(nYear + 1);
    }

    bool ReadClock(const std::smatch& oParts)
    {
        const int nHour = Number(oParts[7]);
        const int nMinute = Number(oParts[8]);
        const int nSecond = Number(oParts[9]);
        const std::string strFraction = (oParts[10].str() + "000000000").substr(0, 9);
        const std::int64_t nFraction = std::stoll(strFraction) / 10;
        const int nOffset = Number(oParts[13]) * 60 + Number(oParts[14]);
        m_nOffset = oParts[12] == "-" ? -nOffset : nOffset;
        if (Number(oParts[13]) > 23 || Number(oParts[14]) > 59)
            return false;
        const bool bMidnight = nHour == 24 && nMinute == 0 && nSecond == 0 && nFraction == 0;
        const std::int64_t nSeconds =
            m_nDays * SECONDS_PER_DAY + ((nHour * 60 + nMinute - m_nOffset) * 60 + nSecond);
        const bool bLeap = nSecond == 60 && (nSeconds % SECONDS_PER_DAY) == 0;
        // Beyond the year 2922 there are no times.
        return !__builtin_mul_overflow(nSeconds + EPOCH_SECONDS, TICKS_PER_SECOND, &m_nTicks) &&
               !__builtin_add_overflow(m_nTicks, nFraction, &m_nTicks) &&
               (nHour < 24 || bMidnight) && nMinute < 60 && (nSecond < 60 || bLeap);
    }

    std::int64_t m_nDays = 0;
};

void CheckReading(const std::string& strText)
{
    constexpr int NO_OFFSET = 12345;
    Model oModel;
    const bool bExpected = oModel.Read(strText);
    CKorUTCTime oRead;
    int nOffset = NO_OFFSET;
    ExpectEqual(bExpected, KorFromIsoString(strText, oRead, &nOffset), "read or refused");
    if (!bExpected) {
        ExpectEqual(std::int64_t{0}, TicksOf(oRead), "a refusal leaves the time");
        ExpectEqual(NO_OFFSET, nOffset, "a refusal leaves the offset");
        return;
    }
    ExpectEqual(oModel.m_nTicks, TicksOf(oRead), "the instant");
    ExpectEqual(oModel.m_nOffset, nOffset, "the offset");
    Expect(oRead.IsTimeValid(), "it is valid");
}

void CheckWriting(std::int64_t nTicks, int nOffset, unsigned int nDigits)
{
    constexpr int DAY_MINUTES = 24 * 60;
    constexpr std::int64_t YEAR_10000 = 315569520000; // its seconds since the year 0
    const std::int64_t nClock = nTicks / TICKS_PER_SECOND + std::int64_t{nOffset} * 60;
    const std::string strText = KorToIsoString(TimeOfTicks(nTicks), nOffset, nDigits);
    const bool bHasText =
        std::abs(nOffset) < DAY_MINUTES && nTicks >= 0 && nClock >= 0 && nClock < YEAR_10000;
    if (nTicks >= 0)
        ExpectEqual(bHasText, !strText.empty(), "which times have a text");
    if (strText.empty())
        return;
    CKorUTCTime oRead;
    int nReadOffset = 0;
    Expect(KorFromIsoString(strText, oRead, &nReadOffset), "what was written reads", strText);
    ExpectEqual(nOffset, nReadOffset, "the offset reads back");
    std::int64_t nUnit = TICKS_PER_SECOND;
    for (unsigned int i = 0; i < std::min(nDigits, 8U); ++i)
        nUnit /= 10;
    const std::int64_t nLost = (nTicks % nUnit + nUnit) % nUnit;
    ExpectEqual(nTicks - nLost, TicksOf(oRead), "what was written reads back");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const auto nTicks = oInput.ConsumeIntegral<std::int64_t>();
    const auto nOffset = oInput.ConsumeIntegralInRange(-1500, 1500);
    const auto nDigits = oInput.ConsumeIntegralInRange(0U, 12U);
    const std::string strText = oInput.ConsumeRemainingBytesAsString();
    CheckWriting(nTicks, nOffset, nDigits);
    if (strText.size() < 100) // the model's regular expressions recurse
        CheckReading(strText);
    return 0;
}
