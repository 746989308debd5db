#include "time/KorIsoTime.h"

#include "tests/time/InstantSupport.h"
#include "tests/time/PythonPeer.h"
#include "time/KorTimeZone.h"

#include <gtest/gtest.h>

namespace
{

TEST(KorIsoTime, AgreesWithPythonOnDates)
{
    // Each day of two weeks at the turn of each year, in all three kinds.
    const std::vector<std::string> vecLines = LinesOfPython({"-c", R"(
import datetime
for year in range(2, 2922):
    first = datetime.date(year, 1, 1)
    for n in (-4, -3, -2, -1, 0, 1, 2, 3, 4, 5, 58, 59, 60):
        d = first + datetime.timedelta(n)
        print(d.isoformat(), '%04d-%03d' % (d.year, d.timetuple().tm_yday),
              '%04d-W%02d-%d' % tuple(d.isocalendar()), d.toordinal())
)"});
    ASSERT_EQ(2920U * 13, vecLines.size());
    constexpr std::int64_t ORDINAL_OF_YEAR_0 = -365; // 0001-01-01 is 1, year 0 a leap year
    for (const std::string& strLine : vecLines) {
        const std::string astrTexts[] = {strLine.substr(0, 10), strLine.substr(11, 8),
                                         strLine.substr(20, 10)};
        const std::int64_t nDay = std::stoll(strLine.substr(31)) - ORDINAL_OF_YEAR_0;
        for (const std::string& strText : astrTexts) {
            CKorUTCTime oTime;
            ASSERT_TRUE(KorFromIsoString(strText, oTime)) << strText;
            ASSERT_EQ(nDay * 86400 * TICKS_PER_SECOND, TicksOf(oTime)) << strText;
        }
        ASSERT_EQ(astrTexts[0],
                  KorToIsoString(TimeOfTicks(nDay * 86400 * TICKS_PER_SECOND)).substr(0, 10));
    }
}

TEST(KorIsoTime, AgreesWithPythonOnTexts)
{
    RandomTicks oRandom;
    std::string strInput;
    std::vector<std::string> vecExpected;
    for (int i = 0; i < 2000; ++i) {
        // Whole microseconds, which is what Python has.
        const std::int64_t nMicros =
            oRandom.Next(-62135000000000000, (std::int64_t{1} << 62) / 200); // from year 1 on
        const int nOffset = static_cast<int>(oRandom.Next(-1439, 1439));
        strInput += std::to_string(nMicros) + " " + std::to_string(nOffset) + "\n";
        const CKorUTCTime oTime = TimeOfTicks(nMicros * 100 + EPOCH_SECONDS * TICKS_PER_SECOND);
        vecExpected.push_back(KorToIsoString(oTime, nOffset, 6));
    }
    const std::vector<std::string> vecLines = LinesOfPython({"-c", R"(
import datetime, sys
epoch = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
for line in sys.stdin:
    micros, offset = map(int, line.split())
    zone = datetime.timezone(datetime.timedelta(minutes=offset))
    text = (epoch + datetime.timedelta(microseconds=micros)).astimezone(zone)
    print(text.isoformat(timespec='microseconds').replace('+00:00', 'Z'))
)"},
                                                            strInput);
    EXPECT_EQ(vecExpected, vecLines);
}

} // namespace
