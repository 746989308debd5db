// Texts of values: what reads is what regular expressions and the C library take for one, and what
// is written reads back.

#include "config/KorTextValue.h"
#include "tests/fuzz/Fuzz.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <regex>

namespace
{

__extension__ using Wide = __int128;

constexpr Wide LIMIT = Wide{1} << 80; // beyond any number of 64 bits

std::int64_t TicksOf(const CKorTimeDiff& oSpan)
{
    std::string strTicks;
    oSpan.Time2Str(strTicks);
    return std::stoll(strTicks);
}

Wide Number(const std::string& strDigits, int nBase)
{
    Wide nNumber = 0;
    for (const char c : strDigits)
        nNumber = std::min(nNumber * nBase + std::stoi(std::string(1, c), nullptr, nBase), LIMIT);
    return nNumber;
}

template <typename T>
bool ModelRead(const std::string& strText, T& rnValue)
{
    static const std::regex FORM("(-?)(?:0x([0-9a-fA-F]+)|(\\d+))");
    std::smatch oParts;
    if (!std::regex_match(strText, oParts, FORM) || (!std::is_signed_v<T> && oParts[1] == "-"))
        return false;
    const Wide nSize = oParts[2].matched ? Number(oParts[2], 16) : Number(oParts[3], 10);
    const Wide nNumber = oParts[1] == "-" ? -nSize : nSize;
    if (nNumber < std::numeric_limits<T>::min() || nNumber > std::numeric_limits<T>::max())
        return false;
    rnValue = static_cast<T>(nNumber);
    return true;
}

template <typename T>
void CheckWhole(const std::string& strText, std::uint64_t nBits)
{
    T nExpected = 42;
    T nRead = 42;
    ExpectEqual(ModelRead(strText, nExpected), KorReadText(strText, nRead), "a whole number");
    ExpectEqual(nExpected, nRead, "its value");
    const auto nNumber = static_cast<T>(nBits);
    Expect(KorReadText(KorWriteText(nNumber), nRead), "a number that was written reads");
    ExpectEqual(nNumber, nRead, "a number reads back");
}

/// Finite numbers, of which two are zeros.
template <typename T>
bool AreSame(T nLeft, T nRight)
{
    return !(nLeft < nRight) && !(nRight < nLeft) && std::signbit(nLeft) == std::signbit(nRight);
}

template <typename T>
void CheckFloating(const std::string& strText, T nNumber, T (*pfnParse)(const char*, char**))
{
    T nRead = 42;
    static const std::regex FORM("-?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?");
    const bool bRead = KorReadText(strText, nRead);
    const bool bForm = std::regex_match(strText, FORM);
    Expect(bForm || !bRead, "a number has digits", strText);
    const T nExpected = bForm ? pfnParse(strText.c_str(), nullptr) : T{42};
    if (bRead)
        Expect(AreSame(nExpected, nRead), "as the C library reads it", strText);
    if (bForm && std::isnormal(nExpected))
        Expect(bRead, "what the C library reads", strText);

    const std::string strWritten = KorWriteText(nNumber);
    ExpectEqual(std::isfinite(nNumber), KorReadText(strWritten, nRead), "finite numbers read back");
    if (std::isfinite(nNumber))
        Expect(AreSame(nNumber, nRead), "a number reads back", strWritten);
}

void CheckBool(std::string strText)
{
    bool bRead = false;
    const bool bIsOne = KorReadText(strText, bRead);
    for (char& c : strText)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    const bool bTrue = strText == "true" || strText == "yes" || strText == "on" || strText == "1";
    const bool bFalse = strText == "false" || strText == "no" || strText == "off" || strText == "0";
    ExpectEqual(bTrue || bFalse, bIsOne, "yes or no");
    ExpectEqual(bTrue, bRead, "yes");
}

/// Ticks in a number with a fraction of any length, cut.
Wide Ticks(const std::string& strWhole, const std::string& strFraction, std::int64_t nUnit)
{
    Wide nFraction = 0;
    for (auto it = strFraction.rbegin(); it != strFraction.rend(); ++it)
        nFraction = ((*it - '0') * nUnit + nFraction) / 10;
    return Number(strWhole, 10) * nUnit + nFraction;
}

bool ModelReadSpan(const std::string& strText, std::int64_t& rnTicks)
{
    static const std::regex UNIT("(-?)(\\d+)(?:\\.(\\d+))?(us|ms|s|min|h|d)");
    static const std::regex CLOCK("(-?)(\\d+):([0-5]\\d):([0-5]\\d)(?:\\.(\\d+))?");
    constexpr std::int64_t SECOND = 100000000;
    static const std::vector<std::pair<std::string, std::int64_t>> UNITS = {
        {"us", 100},          {"ms", 100000},       {"s", SECOND},
        {"min", 60 * SECOND}, {"h", 3600 * SECOND}, {"d", 86400 * SECOND}};
    std::smatch oParts;
    Wide nTicks = 0;
    if (std::regex_match(strText, oParts, UNIT)) {
        for (const auto& oUnit : UNITS) {
            if (oParts[4] == oUnit.first)
                nTicks = Ticks(oParts[2], oParts[3], oUnit.second);
        }
    } else if (std::regex_match(strText, oParts, CLOCK)) {
        nTicks = Ticks(oParts[2], "", 3600 * SECOND) + Ticks(oParts[3], "", 60 * SECOND) +
                 Ticks(oParts[4], oParts[5], SECOND);
    } else {
        return false;
    }
    nTicks = oParts[1] == "-" ? -nTicks : nTicks;
    rnTicks = static_cast<std::int64_t>(nTicks);
    return nTicks == rnTicks;
}

void CheckSpan(const std::string& strText, std::uint64_t nBits)
{
    CKorTimeDiff oWritten;
    oWritten.SetTimeDiff(static_cast<long long>(nBits), true);
    CKorTimeDiff oRead;
    Expect(KorReadText(KorWriteText(oWritten), oRead), "a span that was written reads");
    ExpectEqual(TicksOf(oWritten), TicksOf(oRead), "a span reads back");
    std::int64_t nExpected = 0;
    const bool bExpected = ModelReadSpan(strText, nExpected);
    ExpectEqual(bExpected, KorReadText(strText, oRead), "a span");
    if (bExpected)
        ExpectEqual(nExpected, TicksOf(oRead), "the ticks of a span");
}

void CheckTime(std::uint64_t nBits)
{
    CKorUTCTime oTime;
    oTime.SetHighResolutionLocaltime(static_cast<long long>(nBits >> 1));
    const std::string strText = KorWriteText(oTime);
    CKorUTCTime oRead;
    Expect(strText.empty() || (KorReadText(strText, oRead) && oRead == oTime), "a time reads back",
           strText);
}

void CheckLists(const std::string& strText, Input& oInput)
{
    std::vector<std::string> vecWritten;
    for (auto n = oInput.ConsumeIntegralInRange(0, 6); n > 0; --n)
        vecWritten.push_back(oInput.ConsumeRandomLengthString(12));
    const std::string strList = KorWriteText(vecWritten);
    std::vector<std::string> vecRead;
    Expect(KorReadText(strList, vecRead), "any text is a list of texts");
    if (!strList.empty())
        ExpectEqual(vecWritten, vecRead, "a list reads back");
    Expect(KorReadText(strText, vecRead), "any text is a list of texts");
    const auto nCommas = std::count(strText.begin(), strText.end(), ',');
    ExpectEqual(strText.empty() ? 0 : nCommas + 1, static_cast<std::ptrdiff_t>(vecRead.size()),
                "an item more than commas");
    std::vector<int> vecNumbers;
    if (KorReadText(strText, vecNumbers)) {
        std::vector<int> vecAgain;
        Expect(KorReadText(KorWriteText(vecNumbers), vecAgain), "a list of numbers reads back");
        ExpectEqual(vecNumbers, vecAgain, "the numbers of a list");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const auto nBits =
        oInput.ConsumeIntegral<std::uint64_t>() >> oInput.ConsumeIntegralInRange(0, 63);
    const std::string strText = oInput.ConsumeRandomLengthString(150);
    CheckWhole<std::int8_t>(strText, nBits);
    CheckWhole<std::uint16_t>(strText, nBits);
    CheckWhole<int>(strText, nBits);
    CheckWhole<std::int64_t>(strText, nBits);
    CheckWhole<std::uint64_t>(strText, nBits);
    double nDouble = 0;
    std::memcpy(&nDouble, &nBits, sizeof(nDouble));
    float nFloat = 0;
    std::memcpy(&nFloat, &nBits, sizeof(nFloat));
    CheckFloating<double>(strText, nDouble, &std::strtod);
    CheckFloating<float>(strText, nFloat, &std::strtof);
    CheckBool(strText);
    CheckSpan(strText, nBits);
    CheckTime(nBits);
    CheckLists(strText, oInput);
    return 0;
}
