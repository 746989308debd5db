// Dates of mail headers: what reads is written and reads again, and plain forms agree with
// strptime().

#include "tests/fuzz/Fuzz.h"
#include "tests/time/InstantSupport.h"
#include "time/KorMailDate.h"

#include <ctime>
#include <map>
#include <regex>

namespace
{

constexpr std::int64_t YEAR_10000 = 315569520000; // its seconds since the year 0

void CheckWriting(std::int64_t nTicks, int nOffset)
{
    const std::string strText = KorToMailDate(TimeOfTicks(nTicks), nOffset);
    const std::int64_t nClock = nTicks / TICKS_PER_SECOND + std::int64_t{nOffset} * 60;
    if (nTicks >= 0)
        ExpectEqual(nClock >= 0 && nClock < YEAR_10000 && std::abs(nOffset) < 6000,
                    !strText.empty(), "which times have a text");
    // Years below 1900 are none that a mail can have, and their texts read as later ones.
    if (strText.empty() || nClock < 60000000000)
        return;
    CKorUTCTime oRead;
    int nReadOffset = 0;
    Expect(KorFromMailDate(strText, oRead, &nReadOffset), "what was written reads", strText);
    ExpectEqual(nTicks / TICKS_PER_SECOND * TICKS_PER_SECOND, TicksOf(oRead), "it reads back");
    ExpectEqual(nOffset, nReadOffset, "the offset reads back");
}

/// The C library reads the plain form too, but looks neither at the day of the week nor at ranges.
void CheckPlain(const std::string& strText, const CKorUTCTime& oRead)
{
    static const std::regex PLAIN("[A-Z][a-z]{2}, \\d{1,2} [A-Z][a-z]{2} \\d{4} "
                                  "\\d\\d:\\d\\d:[0-5]\\d [+-]\\d{4}");
    std::tm oTime = {};
    if (!std::regex_match(strText, PLAIN) ||
        strptime(strText.c_str(), "%a, %d %b %Y %H:%M:%S %z", &oTime) == nullptr)
        return;
    const std::int64_t nOffset = oTime.tm_gmtoff; // timegm() clears it
    const std::int64_t nUtc = timegm(&oTime) - nOffset;
    const std::size_t nZone = strText.size() - 4;
    if (std::stoi(strText.substr(nZone, 2)) <= 12) // beyond, the C library has no offset
        ExpectEqual(nUtc, TicksOf(oRead) / TICKS_PER_SECOND - EPOCH_SECONDS,
                    "as strptime() has it");
}

void CheckReading(const std::string& strText)
{
    constexpr int NO_OFFSET = 123456;
    CKorUTCTime oRead;
    int nOffset = NO_OFFSET;
    if (!KorFromMailDate(strText, oRead, &nOffset)) {
        ExpectEqual(std::int64_t{0}, TicksOf(oRead), "a refusal leaves the time");
        ExpectEqual(NO_OFFSET, nOffset, "a refusal leaves the offset");
        return;
    }
    Expect(oRead.IsTimeValid() && std::abs(nOffset) < 6000, "a time is valid", strText);
    ExpectEqual(std::int64_t{0}, TicksOf(oRead) % TICKS_PER_SECOND, "whole seconds");
    CheckWriting(TicksOf(oRead), nOffset);
    CheckPlain(strText, oRead);
    Expect(KorFromMailDate(" (comment \\) (nested)) \r\n " + strText, oRead), "comments may stand");
}

/// A name means its offset; one that nobody knows means UTC.
void CheckNamedZones(std::int64_t nTicks)
{
    static const std::map<std::string, int> ZONES = {
        {"UT", 0},   {"GMT", 0},  {"EST", -5}, {"EDT", -4}, {"CST", -6}, {"CDT", -5},
        {"MST", -7}, {"MDT", -6}, {"PST", -8}, {"PDT", -7}, {"A", 0},    {"CEST", 0}};
    const std::string strDate = KorToMailDate(TimeOfTicks(nTicks));
    const std::int64_t nSeconds = nTicks / TICKS_PER_SECOND;
    if (strDate.empty() || nSeconds < 60000000000 || nSeconds > 92000000000) // the ends of times
        return;
    for (const auto& oZone : ZONES) {
        CKorUTCTime oRead;
        int nOffset = 0;
        std::string strNamed = strDate;
        strNamed.replace(strNamed.size() - 5, 5, oZone.first);
        Expect(KorFromMailDate(strNamed, oRead, &nOffset), "a zone has a name", strNamed);
        ExpectEqual(oZone.second * 60, nOffset, "the offset of a name");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const auto nTicks = oInput.ConsumeIntegral<std::int64_t>();
    CheckWriting(nTicks, oInput.ConsumeIntegralInRange(-6100, 6100));
    CheckNamedZones(nTicks);
    CheckReading(oInput.ConsumeRemainingBytesAsString());
    return 0;
}
