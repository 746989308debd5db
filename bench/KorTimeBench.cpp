// The texts of times and the calendar beside the C library's, the C++ library's and a routine
// written by hand. All of them start from an instant that changes from one text to the next, and
// all write the same 19 characters: DD.MM.YYYY hh:mm:ss.

#include "time/KorLocalTime.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>

namespace
{

constexpr std::int64_t EPOCH_SECONDS = 62167219200;
constexpr std::int64_t TICKS_PER_SECOND = 100000000;

/// Unix times from 1970 to 2036, far apart.
class Instants
{
public:
    std::int64_t Next()
    {
        m_nSeconds = (m_nSeconds + 1234567891) % 2085978496;
        return m_nSeconds;
    }
    CKorUTCTime NextTime()
    {
        CKorUTCTime oTime;
        oTime.SetHighResolutionLocaltime((Next() + EPOCH_SECONDS) * TICKS_PER_SECOND);
        return oTime;
    }
    tm NextTm()
    {
        const auto nTime = static_cast<time_t>(Next());
        tm oTime;
        gmtime_r(&nTime, &oTime);
        return oTime;
    }

private:
    std::int64_t m_nSeconds = 0;
};

struct CivilDate
{
    unsigned nYear;
    unsigned nMonth;
    unsigned nDay;
};

/// The date of a day counted from 1970-01-01, which must not lie before 1970.
CivilDate DateByHand(unsigned nDays)
{
    nDays += 719468; // counted from 0000-03-01, so that leap days come last
    const unsigned nEra = nDays / 146097;
    const unsigned nOfEra = nDays % 146097;
    const unsigned nYearOfEra = (nOfEra - nOfEra / 1460 + nOfEra / 36524 - nOfEra / 146096) / 365;
    const unsigned nOfYear = nOfEra - (365 * nYearOfEra + nYearOfEra / 4 - nYearOfEra / 100);
    const unsigned nShifted = (5 * nOfYear + 2) / 153;
    const unsigned nDay = nOfYear - (153 * nShifted + 2) / 5 + 1;
    const unsigned nMonth = nShifted < 10 ? nShifted + 3 : nShifted - 9;
    return {nYearOfEra + nEra * 400 + (nMonth <= 2 ? 1 : 0), nMonth, nDay};
}

void PutTwoDigits(char* pText, unsigned nNumber)
{
    pText[0] = static_cast<char>('0' + nNumber / 10);
    pText[1] = static_cast<char>('0' + nNumber % 10);
}

std::string TextByHand(std::int64_t nSeconds)
{
    const CivilDate oDate = DateByHand(static_cast<unsigned>(nSeconds / 86400));
    const auto nOfDay = static_cast<unsigned>(nSeconds % 86400);
    char szText[] = "DD.MM.YYYY hh:mm:ss";
    PutTwoDigits(szText, oDate.nDay);
    PutTwoDigits(szText + 3, oDate.nMonth);
    PutTwoDigits(szText + 6, oDate.nYear / 100);
    PutTwoDigits(szText + 8, oDate.nYear % 100);
    PutTwoDigits(szText + 11, nOfDay / 3600);
    PutTwoDigits(szText + 14, nOfDay / 60 % 60);
    PutTwoDigits(szText + 17, nOfDay % 60);
    return std::string(szText, sizeof szText - 1);
}

void TextWrittenByHand(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState)
        benchmark::DoNotOptimize(TextByHand(oInstants.Next()));
}
BENCHMARK(TextWrittenByHand);

void TextByTime2Str(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState)
        benchmark::DoNotOptimize(oInstants.NextTime().Time2Str(CKorUTCTime::eDateTime));
}
BENCHMARK(TextByTime2Str);

void TextByKorToStringOfLocalTime(benchmark::State& oState)
{
    Instants oInstants;
    CKorLocalTime oTime;
    oTime.ChangeTimezone(1);
    for (auto _ : oState) {
        const std::int64_t nSeconds = oInstants.Next() + EPOCH_SECONDS;
        oTime.SetHighResolutionLocaltime(nSeconds * TICKS_PER_SECOND);
        benchmark::DoNotOptimize(KorToString(oTime, CKorUTCTime::eDateTime));
    }
}
BENCHMARK(TextByKorToStringOfLocalTime);

void TextByStrftime(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const tm oTime = oInstants.NextTm();
        char szText[32];
        const size_t nLength = std::strftime(szText, sizeof szText, "%d.%m.%Y %H:%M:%S", &oTime);
        benchmark::DoNotOptimize(std::string(szText, nLength));
    }
}
BENCHMARK(TextByStrftime);

void TextByPutTime(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const tm oTime = oInstants.NextTm();
        std::ostringstream oStream;
        oStream << std::put_time(&oTime, "%d.%m.%Y %H:%M:%S");
        benchmark::DoNotOptimize(oStream.str());
    }
}
BENCHMARK(TextByPutTime);

void StreamByInsertion(benchmark::State& oState)
{
    Instants oInstants;
    std::ostringstream oStream;
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDateTime);
    for (auto _ : oState) {
        oStream.seekp(0);
        oStream << oInstants.NextTime();
    }
}
BENCHMARK(StreamByInsertion);

void StreamByInsertionInAnOddState(benchmark::State& oState)
{
    Instants oInstants;
    std::ostringstream oStream;
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDateTime);
    oStream << std::internal;
    for (auto _ : oState) {
        oStream.seekp(0);
        oStream << oInstants.NextTime();
    }
}
BENCHMARK(StreamByInsertionInAnOddState);

void StreamByPutTime(benchmark::State& oState)
{
    Instants oInstants;
    std::ostringstream oStream;
    for (auto _ : oState) {
        const tm oTime = oInstants.NextTm();
        oStream.seekp(0);
        oStream << std::put_time(&oTime, "%d.%m.%Y %H:%M:%S");
    }
}
BENCHMARK(StreamByPutTime);

void DateByCalcDate(benchmark::State& oState)
{
    Instants oInstants;
    int anDate[3];
    for (auto _ : oState) {
        oInstants.NextTime().CalcDate(anDate[0], anDate[1], anDate[2]);
        benchmark::DoNotOptimize(anDate);
    }
}
BENCHMARK(DateByCalcDate);

void DateWrittenByHand(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState)
        benchmark::DoNotOptimize(DateByHand(static_cast<unsigned>(oInstants.Next() / 86400)));
}
BENCHMARK(DateWrittenByHand);

void DateByGmtime(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState)
        benchmark::DoNotOptimize(oInstants.NextTm());
}
BENCHMARK(DateByGmtime);

void SpanByKorToString(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const CKorTimeDiff oSpan(oInstants.Next());
        benchmark::DoNotOptimize(KorToString(oSpan, CKorTimeDiff::eDiffHhMmSsMs));
    }
}
BENCHMARK(SpanByKorToString);

} // namespace
