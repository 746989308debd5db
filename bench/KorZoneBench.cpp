// Zones and ISO texts beside abseil, date and the C library. All start from the same instants, far
// apart in the years 1970 to 2036 unless a name says otherwise, and texts end in a std::string.

#include "time/KorIsoTime.h"
#include "time/KorTimeZone.h"
#include "time/KorUnixTime.h"

#include <absl/time/time.h>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <date/date.h>
#include <date/tz.h>
#include <sstream>
#include <string>

namespace
{

constexpr const char* ZONE = "Europe/Berlin";

/// Unix seconds from a begin on, far apart, and the times of them.
class Instants
{
public:
    explicit Instants(std::int64_t nBegin = 0) : m_nBegin(nBegin) {}

    std::int64_t Next()
    {
        m_nSeconds = (m_nSeconds + 1234567891) % 2085978496;
        return m_nBegin + m_nSeconds;
    }
    const CKorUTCTime& NextTime()
    {
        m_oTime.SetHighResolutionLocaltime((Next() + 62167219200) * 100000000);
        return m_oTime;
    }

private:
    std::int64_t m_nBegin;
    std::int64_t m_nSeconds = 0;
    CKorUTCTime m_oTime{0LL};
};

/// Unix seconds one behind the other, as a log takes them.
class Seconds
{
public:
    std::int64_t Next() { return ++m_nSeconds; }
    const CKorUTCTime& NextTime()
    {
        m_oTime.SetHighResolutionLocaltime((Next() + 62167219200) * 100000000);
        return m_oTime;
    }

private:
    std::int64_t m_nSeconds = 1709647629;
    CKorUTCTime m_oTime{0LL};
};

template <class TInstants>
void OffsetByTimeZone(benchmark::State& oState, TInstants oInstants)
{
    CKorTimeZone oZone;
    if (!oZone.Load(ZONE))
        oState.SkipWithError("no zone");
    for (auto _ : oState)
        benchmark::DoNotOptimize(oZone.GetOffset(oInstants.NextTime()));
}

template <class TInstants>
void OffsetByAbseil(benchmark::State& oState, TInstants oInstants)
{
    absl::TimeZone oZone;
    if (!absl::LoadTimeZone(ZONE, &oZone))
        oState.SkipWithError("no zone");
    for (auto _ : oState)
        benchmark::DoNotOptimize(oZone.At(absl::FromUnixSeconds(oInstants.Next())).offset);
}

template <class TInstants>
void OffsetByDate(benchmark::State& oState, TInstants oInstants)
{
    const date::time_zone* pZone = date::locate_zone(ZONE);
    for (auto _ : oState) {
        const date::sys_seconds oTime(std::chrono::seconds(oInstants.Next()));
        benchmark::DoNotOptimize(pZone->get_info(oTime).offset);
    }
}

template <class TInstants>
void OffsetOfTheProcess(benchmark::State& oState, TInstants oInstants)
{
    for (auto _ : oState)
        benchmark::DoNotOptimize(KorGetUtcOffset(oInstants.NextTime()));
}

template <class TInstants>
void OffsetByLocaltime(benchmark::State& oState, TInstants oInstants)
{
    tzset();
    for (auto _ : oState) {
        const time_t nTime = oInstants.Next();
        tm oLocal;
        localtime_r(&nTime, &oLocal);
        benchmark::DoNotOptimize(oLocal.tm_gmtoff);
    }
}

BENCHMARK_CAPTURE(OffsetByTimeZone, FarApart, Instants());
BENCHMARK_CAPTURE(OffsetByAbseil, FarApart, Instants());
BENCHMARK_CAPTURE(OffsetByDate, FarApart, Instants());
BENCHMARK_CAPTURE(OffsetOfTheProcess, FarApart, Instants());
BENCHMARK_CAPTURE(OffsetByLocaltime, FarApart, Instants());
BENCHMARK_CAPTURE(OffsetByTimeZone, InARow, Seconds());
BENCHMARK_CAPTURE(OffsetByAbseil, InARow, Seconds());
BENCHMARK_CAPTURE(OffsetByDate, InARow, Seconds());
BENCHMARK_CAPTURE(OffsetByTimeZone, ByTheRuleAfter2040, Instants(2208988800));
BENCHMARK_CAPTURE(OffsetByAbseil, ByTheRuleAfter2040, Instants(2208988800));

void IsoWritten(benchmark::State& oState, unsigned int nDigits)
{
    Instants oInstants;
    for (auto _ : oState)
        benchmark::DoNotOptimize(KorToIsoString(oInstants.NextTime(), 0, nDigits));
}
BENCHMARK_CAPTURE(IsoWritten, Seconds, 0);
BENCHMARK_CAPTURE(IsoWritten, MilliSeconds, 3);

void IsoWrittenByStrftime(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const time_t nTime = oInstants.Next();
        tm oTime;
        gmtime_r(&nTime, &oTime);
        char szText[32];
        const size_t nLength = strftime(szText, sizeof szText, "%Y-%m-%dT%H:%M:%SZ", &oTime);
        benchmark::DoNotOptimize(std::string(szText, nLength));
    }
}
BENCHMARK(IsoWrittenByStrftime);

/// Strftime alone, without the calendar and without a text of its own.
void IsoWrittenByStrftimeAlone(benchmark::State& oState)
{
    Instants oInstants;
    tm oTime = {};
    oTime.tm_mday = 1;
    for (auto _ : oState) {
        oTime.tm_year = static_cast<int>(oInstants.Next() % 100);
        char szText[32];
        benchmark::DoNotOptimize(strftime(szText, sizeof szText, "%Y-%m-%dT%H:%M:%SZ", &oTime));
        benchmark::DoNotOptimize(szText);
    }
}
BENCHMARK(IsoWrittenByStrftimeAlone);

void IsoWrittenByAbseil(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState)
        benchmark::DoNotOptimize(absl::FormatTime(
            "%Y-%m-%dT%H:%M:%SZ", absl::FromUnixSeconds(oInstants.Next()), absl::UTCTimeZone()));
}
BENCHMARK(IsoWrittenByAbseil);

void IsoWrittenByDate(benchmark::State& oState)
{
    Instants oInstants;
    for (auto _ : oState) {
        const date::sys_seconds oTime(std::chrono::seconds(oInstants.Next()));
        benchmark::DoNotOptimize(date::format("%FT%TZ", oTime));
    }
}
BENCHMARK(IsoWrittenByDate);

/// Texts of instants far apart.
class Texts
{
public:
    Texts()
    {
        Instants oInstants;
        for (std::string& strText : m_astrTexts)
            strText = KorToIsoString(oInstants.NextTime(), 0, 0);
    }
    const std::string& Next() { return m_astrTexts[m_nNext++ % COUNT]; }

private:
    static constexpr std::size_t COUNT = 1024;
    std::string m_astrTexts[COUNT];
    std::size_t m_nNext = 0;
};

void IsoRead(benchmark::State& oState)
{
    Texts oTexts;
    CKorUTCTime oTime;
    for (auto _ : oState) {
        benchmark::DoNotOptimize(KorFromIsoString(oTexts.Next(), oTime));
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(IsoRead);

/// Gives the fields only, and no instant yet.
void IsoReadByStrptime(benchmark::State& oState)
{
    Texts oTexts;
    for (auto _ : oState) {
        tm oTime = {};
        benchmark::DoNotOptimize(strptime(oTexts.Next().c_str(), "%Y-%m-%dT%H:%M:%SZ", &oTime));
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(IsoReadByStrptime);

void IsoReadByAbseil(benchmark::State& oState)
{
    Texts oTexts;
    absl::Time oTime;
    for (auto _ : oState) {
        benchmark::DoNotOptimize(
            absl::ParseTime(absl::RFC3339_full, oTexts.Next(), &oTime, nullptr));
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(IsoReadByAbseil);

void IsoReadByDate(benchmark::State& oState)
{
    Texts oTexts;
    for (auto _ : oState) {
        std::istringstream oStream(oTexts.Next());
        date::sys_seconds oTime{};
        oStream >> date::parse("%FT%TZ", oTime);
        benchmark::DoNotOptimize(oTime);
    }
}
BENCHMARK(IsoReadByDate);

} // namespace
