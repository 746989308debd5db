// ISO spans against a regular expression and 128-bit arithmetic, and back.

#include "tests/fuzz/Fuzz.h"
#include "time/KorIsoTime.h"

#include <limits>
#include <regex>

namespace
{

__extension__ using Wide = __int128;

constexpr std::int64_t TICKS_PER_SECOND = 100000000;
constexpr Wide LIMIT = Wide{1} << 90; // of seconds, far beyond any span

std::int64_t TicksOf(const CKorTimeDiff& oSpan)
{
    std::string strTicks;
    oSpan.Time2Str(strTicks);
    return std::stoll(strTicks);
}

/// A number of any length; LIMIT for all above.
Wide Number(const std::string& strDigits)
{
    Wide nNumber = 0;
    for (const char c : strDigits)
        nNumber = std::min(nNumber * 10 + (c - '0'), LIMIT);
    return nNumber;
}

bool ModelRead(const std::string& strText, std::int64_t& nTicks)
{
    static const std::regex FORM("([+-])?P(?:(\\d+)W)?(?:(\\d+)D)?"
                                 "(T(?:(\\d+)H)?(?:(\\d+)M)?(?:(\\d+)(?:[.,](\\d{1,9}))?S)?)?");
    std::smatch oParts;
    if (!std::regex_match(strText, oParts, FORM) || strText.back() == 'T' || strText.back() == 'P')
        return false;
    constexpr std::int64_t SECONDS[] = {604800, 86400, 0, 3600, 60, 1};
    Wide nSum = 0;
    for (std::size_t i = 2; i <= 7; ++i) {
        if (i != 4)
            nSum += std::min(Number(oParts[i].str()) * SECONDS[i - 2], LIMIT) * TICKS_PER_SECOND;
    }
    nSum += Number((oParts[8].str() + "00000000").substr(0, 8));
    nSum = oParts[1] == "-" ? -nSum : nSum;
    nTicks = static_cast<std::int64_t>(nSum);
    return nSum == nTicks;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const std::int64_t nTicks =
        oInput.ConsumeIntegral<std::int64_t>() >> oInput.ConsumeIntegralInRange(0, 63);
    const std::string strText = oInput.ConsumeRemainingBytesAsString();
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    CKorTimeDiff oRead;
    Expect(KorFromIsoDuration(KorToIsoDuration(oSpan), oRead), "what was written reads");
    ExpectEqual(nTicks, TicksOf(oRead), "what was written reads back");
    if (strText.size() >= 200) // the model's regular expression recurses
        return 0;
    std::int64_t nExpected = 0;
    const bool bExpected = ModelRead(strText, nExpected);
    ExpectEqual(bExpected, KorFromIsoDuration(strText, oSpan), "read or refused");
    ExpectEqual(bExpected ? nExpected : nTicks, TicksOf(oSpan), "the span");
    return 0;
}
