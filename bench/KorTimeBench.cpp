// The texts of times and the calendar beside the C library's and Howard Hinnant's date. All
// start from an instant that changes from one call to the next. Text jobs come in pairs that write
// or read the same 23 characters, DD.MM.YYYY hh:mm:ss.mmm; strftime and strptime know no fractions,
// so their callers add the three digits by hand.

#include "time/KorLocalTime.h"

#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <date/date.h>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

namespace
{

constexpr std::int64_t EPOCH_SECONDS = 62167219200;
constexpr std::int64_t TICKS_PER_MILLISECOND = 100000;

/// Unix times in milliseconds from 1970 to 2036, far apart.
class Instants
{
public:
    std::int64_t Next()
    {
        m_nMilliSeconds = (m_nMilliSeconds + 1234567891234) % 2085978496000;
        return m_nMilliSeconds;
    }
    std::int64_t NextTicks() { return (Next() + EPOCH_SECONDS * 1000) * TICKS_PER_MILLISECOND; }

private:
    std::int64_t m_nMilliSeconds = 0;
};

/// As many texts as instants must differ for no branch to be foreseen.
std::array<std::string, 256> Texts()
{
    Instants oInstants;
    CKorUTCTime oTime;
    std::array<std::string, 256> astrTexts;
    for (std::string& strText : astrTexts) {
        oTime.SetHighResolutionLocaltime(oInstants.NextTicks());
        strText = oTime.Time2Str(CKorUTCTime::eDateTimeMs);
    }
    return astrTexts;
}

/// The C library's text of a Unix time in milliseconds; szText needs 24 characters.
size_t Format(char* szText, std::int64_t nMilliSeconds)
{
    const auto nSeconds = static_cast<time_t>(nMilliSeconds / 1000);
    tm oTime;
    gmtime_r(&nSeconds, &oTime);
    const size_t nLength = std::strftime(szText, 24, "%d.%m.%Y %H:%M:%S", &oTime);
    const auto nRest = static_cast<int>(nMilliSeconds % 1000);
    szText[nLength] = '.';
    szText[nLength + 1] = static_cast<char>('0' + nRest / 100);
    szText[nLength + 2] = static_cast<char>('0' + nRest / 10 % 10);
    szText[nLength + 3] = static_cast<char>('0' + nRest % 10);
    return nLength + 4;
}

/// Makes a locale the process's for the length of a benchmark.
class GlobalLocale
{
public:
    explicit GlobalLocale(const char* pszName) : m_oOld(std::locale::global(std::locale(pszName)))
    {
    }
    ~GlobalLocale() { std::locale::global(m_oOld); }
    GlobalLocale(const GlobalLocale&) = delete;
    GlobalLocale& operator=(const GlobalLocale&) = delete;

private:
    std::locale m_oOld;
};

void TextByTime2Str(benchmark::State& oState)
{
    Instants oInstants;
    CKorUTCTime oTime;
    for (auto _ : oState) {
        oTime.SetHighResolutionLocaltime(oInstants.NextTicks());
        benchmark::DoNotOptimize(oTime.Time2Str(CKorUTCTime::eDateTimeMs));
    }
}
BENCHMARK(TextByTime2Str);

void TextByTime2StrInUtf8Locale(benchmark::State& oState)
{
    const GlobalLocale oLocale("C.UTF-8");
    TextByTime2Str(oState);
}
BENCHMARK(TextByTime2StrInUtf8Locale);

void TextByKorToStringOfLocalTime(benchmark::State& oState)
{
    Instants oInstants;
    CKorLocalTime oTime;
    oTime.ChangeTimezone(1);
    for (auto _ : oState) {
        oTime.SetHighResolutionLocaltime(oInstants.NextTicks());
        benchmark::DoNotOptimize(KorToString(oTime, CKorUTCTime::eDateTimeMs));
    }
}
BENCHMARK(TextByKorToStringOfLocalTime);

/// A time of a user's own, which is written like every other one.
struct OwnTime : CKorUTCTime
{
};

void TextByKorToStringOfADerivedClass(benchmark::State& oState)
{
    Instants oInstants;
    OwnTime oTime;
    for (auto _ : oState) {
        oTime.SetHighResolutionLocaltime(oInstants.NextTicks());
        benchmark::DoNotOptimize(KorToString(oTime, CKorUTCTime::eDateTimeMs));
    }
}
BENCHMARK(TextByKorToStringOfADerivedClass);

void TextByStrftime(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        char szText[24];
        const size_t nLength = Format(szText, oInstants.Next());
        benchmark::DoNotOptimize(std::string(szText, nLength));
    }
}
BENCHMARK(TextByStrftime);

void Insert(benchmark::State& oState, std::ostringstream& oStream)
{
    Instants oInstants;
    CKorUTCTime oTime;
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDateTimeMs);
    for (auto _ : oState) {
        oTime.SetHighResolutionLocaltime(oInstants.NextTicks());
        oStream.seekp(0);
        oStream << oTime;
    }
}

void StreamByInsertion(benchmark::State& oState)
{
    std::ostringstream oStream;
    Insert(oState, oStream);
}
BENCHMARK(StreamByInsertion);

void StreamByInsertionInUtf8Locale(benchmark::State& oState)
{
    std::ostringstream oStream;
    oStream.imbue(std::locale("C.UTF-8"));
    Insert(oState, oStream);
}
BENCHMARK(StreamByInsertionInUtf8Locale);

void StreamByInsertionInAnOddState(benchmark::State& oState)
{
    std::ostringstream oStream;
    oStream << std::internal;
    Insert(oState, oStream);
}
BENCHMARK(StreamByInsertionInAnOddState);

void StreamByStrftime(benchmark::State& oState)
{
    Instants oInstants;
    std::ostringstream oStream;
    for (auto _ : oState) {
        char szText[24];
        const size_t nLength = Format(szText, oInstants.Next());
        oStream.seekp(0);
        oStream.write(szText, static_cast<std::streamsize>(nLength));
    }
}
BENCHMARK(StreamByStrftime);

void ReadByKorFromString(benchmark::State& oState)
{
    const auto astrTexts = Texts();
    CKorUTCTime oTime;
    size_t nNext = 0;
    for (auto _ : oState) {
        KorFromString(oTime, CKorUTCTime::eDateTimeMs, astrTexts[nNext++ % 256]);
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(ReadByKorFromString);

void ReadByKorFromStringInUtf8Locale(benchmark::State& oState)
{
    const GlobalLocale oLocale("C.UTF-8");
    ReadByKorFromString(oState);
}
BENCHMARK(ReadByKorFromStringInUtf8Locale);

void ReadByExtraction(benchmark::State& oState)
{
    const auto astrTexts = Texts();
    std::istringstream oStream;
    CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eDateTimeMs);
    CKorUTCTime oTime;
    size_t nNext = 0;
    for (auto _ : oState) {
        oStream.clear();
        oStream.str(astrTexts[nNext++ % 256]);
        oStream >> oTime;
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(ReadByExtraction);

void ReadByStrptime(benchmark::State& oState)
{
    const auto astrTexts = Texts();
    size_t nNext = 0;
    for (auto _ : oState) {
        tm oTime = {};
        const char* pszRest =
            strptime(astrTexts[nNext++ % 256].c_str(), "%d.%m.%Y %H:%M:%S", &oTime);
        const int nRest = (pszRest[1] * 10 + pszRest[2]) * 10 + pszRest[3] - '0' * 111;
        benchmark::DoNotOptimize(timegm(&oTime) * std::int64_t(1000) + nRest);
    }
}
BENCHMARK(ReadByStrptime);

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 100000000>>;

void DateByCalcDate(benchmark::State& oState)
{
    Instants oInstants;
    CKorUTCTime oTime;
    int anDate[3];
    for (auto _ : oState) {
        oTime.SetHighResolutionLocaltime(oInstants.NextTicks());
        oTime.CalcDate(anDate[0], anDate[1], anDate[2]);
        benchmark::DoNotOptimize(anDate);
    }
}
BENCHMARK(DateByCalcDate);

void DateByHinnant(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const date::sys_time<Ticks> oTime(Ticks(oInstants.Next() * TICKS_PER_MILLISECOND));
        const auto oDay = date::floor<date::days>(oTime);
        benchmark::DoNotOptimize(date::year_month_day(oDay));
        benchmark::DoNotOptimize(date::make_time(oTime - oDay));
    }
}
BENCHMARK(DateByHinnant);

void DateByGmtime(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const auto nTime = static_cast<time_t>(oInstants.Next() / 1000);
        tm oTime;
        benchmark::DoNotOptimize(gmtime_r(&nTime, &oTime));
    }
}
BENCHMARK(DateByGmtime);

/// Nine parts that change from call to call and are possible ones.
struct Parts
{
    void Next()
    {
        ++n;
        nDay = n % 28 + 1;
        nMonth = n * 5 % 12 + 1;
        nYear = 1970 + n % 67;
        nHour = n % 24;
        nMinute = n % 60;
    }
    unsigned n = 0;
    unsigned nDay = 1;
    unsigned nMonth = 1;
    unsigned nYear = 1970;
    unsigned nHour = 0;
    unsigned nMinute = 0;
};

void SetByNineParts(benchmark::State& oState)
{
    Parts o;
    CKorUTCTime oTime;
    for (auto _ : oState) {
        o.Next();
        oTime.SetDate(o.nDay, o.nMonth, o.nYear, o.nHour, o.nMinute, o.nMinute, o.n & 511,
                      o.n & 255, o.n & 127);
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(SetByNineParts);

void SetByHinnant(benchmark::State& oState)
{
    Parts o;
    for (auto _ : oState) {
        o.Next();
        const date::year_month_day oDate(date::year(static_cast<int>(o.nYear)),
                                         date::month(o.nMonth), date::day(o.nDay));
        benchmark::DoNotOptimize(oDate.ok());
        const date::sys_time<Ticks> oTime =
            date::sys_days(oDate) + std::chrono::hours(o.nHour) + std::chrono::minutes(o.nMinute) +
            std::chrono::seconds(o.nMinute) + std::chrono::milliseconds(o.n & 511) +
            std::chrono::microseconds(o.n & 255) + Ticks((o.n & 127) / 10);
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(SetByHinnant);

void SpanByKorToString(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const CKorTimeDiff oSpan(oInstants.Next());
        benchmark::DoNotOptimize(KorToString(oSpan, CKorTimeDiff::eDiffHhMmSsMs));
    }
}
BENCHMARK(SpanByKorToString);

void SpanByKorFromString(benchmark::State& oState)
{
    const std::string strText = "12:34:56.789";
    CKorTimeDiff oSpan;
    for (auto _ : oState) {
        KorFromString(oSpan, CKorTimeDiff::eDiffHhMmSsMs, strText);
        benchmark::DoNotOptimize(oSpan);
    }
}
BENCHMARK(SpanByKorFromString);

} // namespace
