#include "config/KorTextValue.h"

#include "time/KorUnixTime.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <locale>
#include <random>

namespace
{

/// What is read, or the value before when nothing is.
template <typename T>
T Read(std::string_view strText, T value)
{
    const T before = value;
    if (!KorReadText(strText, value)) {
        EXPECT_EQ(before, value) << strText << " has changed the value";
    }
    return value;
}

template <typename T>
bool IsRead(std::string_view strText)
{
    T value{};
    const bool bRead = KorReadText(strText, value);
    EXPECT_TRUE(bRead || value == T{});
    return bRead;
}

template <typename T>
void ExpectLimits(const char* pszBelow, const char* pszLeast, const char* pszMost,
                  const char* pszAbove)
{
    using Limits = std::numeric_limits<T>;
    EXPECT_FALSE(IsRead<T>(pszBelow)) << pszBelow;
    EXPECT_FALSE(IsRead<T>(pszAbove)) << pszAbove;
    EXPECT_EQ(Limits::min(), Read<T>(pszLeast, T(7)));
    EXPECT_EQ(Limits::max(), Read<T>(pszMost, T(7)));
    EXPECT_EQ(pszLeast, KorWriteText(Limits::min()));
    EXPECT_EQ(pszMost, KorWriteText(Limits::max()));
}

TEST(KorTextValue, WholeNumbersReachTheLimitsOfTheirTypes)
{
    ExpectLimits<signed char>("-129", "-128", "127", "128");
    ExpectLimits<unsigned char>("-1", "0", "255", "256");
    ExpectLimits<std::int16_t>("-32769", "-32768", "32767", "32768");
    ExpectLimits<std::uint16_t>("-1", "0", "65535", "65536");
    ExpectLimits<int>("-2147483649", "-2147483648", "2147483647", "2147483648");
    ExpectLimits<unsigned int>("-1", "0", "4294967295", "4294967296");
    ExpectLimits<long long>("-9223372036854775809", "-9223372036854775808", "9223372036854775807",
                            "9223372036854775808");
    ExpectLimits<unsigned long long>("-1", "0", "18446744073709551615", "18446744073709551616");
    EXPECT_TRUE(IsRead<long>("2147483647"));
    EXPECT_TRUE(IsRead<unsigned long>("4294967295"));
}

TEST(KorTextValue, WholeNumbersAreDecimalOrHexadecimal)
{
    EXPECT_EQ(500, Read("0500", 0));
    EXPECT_EQ(31, Read("0x1F", 0));
    EXPECT_EQ(31, Read("0x1f", 0));
    EXPECT_EQ(-31, Read("-0x1F", 0));
    EXPECT_EQ(0, Read("-0", 1));
    EXPECT_EQ(65535U, Read("0xffff", 0U));
    EXPECT_EQ(7, Read("000000000000000000000000000000007", 0));
    EXPECT_FALSE(IsRead<std::int16_t>("0xFFFF"));
}

TEST(KorTextValue, AnythingElseIsNoWholeNumber)
{
    for (const char* pszText :
         {"",   "-",   "+1",  " 1",  "1 ",  "1\n",   "0x",  "0x-1", "0xG", "0X1F",
          "1F", "--1", "- 1", "1.0", "1e3", "1,000", "abc", "0b1",  "1\"", "-+1"})
        EXPECT_FALSE(IsRead<int>(pszText)) << pszText;
    EXPECT_FALSE(IsRead<int>(std::string_view("1\0", 2)));
    EXPECT_FALSE(IsRead<unsigned int>("-0"));
}

TEST(KorTextValue, ACharacterIsOneCharacter)
{
    EXPECT_EQ('5', Read("5", 'x'));
    EXPECT_EQ(' ', Read(" ", 'x'));
    EXPECT_FALSE(IsRead<char>(""));
    EXPECT_FALSE(IsRead<char>("53"));
    EXPECT_EQ(5, Read("5", static_cast<signed char>(0)));
    EXPECT_EQ("A", KorWriteText('A'));
    EXPECT_EQ("65", KorWriteText(static_cast<unsigned char>(65)));
}

TEST(KorTextValue, TruthHasFourSpellingsInAnyCase)
{
    for (const char* pszText : {"true", "yes", "on", "1", "TRUE", "Yes", "oN"})
        EXPECT_TRUE(Read(pszText, false)) << pszText;
    for (const char* pszText : {"false", "no", "off", "0", "FALSE", "No", "oFf"})
        EXPECT_FALSE(Read(pszText, true)) << pszText;
    for (const char* pszText : {"", "t", "y", "2", "00", "true ", " no", "truex", "\xFF"})
        EXPECT_FALSE(IsRead<bool>(pszText)) << pszText;
    EXPECT_EQ("true", KorWriteText(true));
    EXPECT_EQ("false", KorWriteText(false));
}

TEST(KorTextValue, FloatingNumbersAreFiniteAndDecimal)
{
    EXPECT_EQ(0.5, Read("0.5", 0.0));
    EXPECT_EQ(-2.0, Read("-2", 0.0));
    EXPECT_EQ(1e-3, Read("1e-3", 0.0));
    EXPECT_EQ(1.5F, Read("1.5", 0.0F));
    for (const char* pszText : {"", "-", "+1", " 1", "1 ", "inf", "-inf", "nan", "infinity", "0x1F",
                                "1,5", "1e", "1e400", "-1e400", "1.5.2", "abc"})
        EXPECT_FALSE(IsRead<double>(pszText)) << pszText;
    EXPECT_FALSE(IsRead<float>("1e39"));
    EXPECT_TRUE(IsRead<double>("1e39"));
}

TEST(KorTextValue, FloatingNumbersHaveTheShortestTextThatReadsBack)
{
    EXPECT_EQ("0.1", KorWriteText(0.1));
    EXPECT_EQ("0.1", KorWriteText(0.1F));
    EXPECT_EQ("0.30000000000000004", KorWriteText(0.1 + 0.2));
    EXPECT_EQ("2", KorWriteText(2.0));
    EXPECT_EQ("", KorWriteText(std::numeric_limits<double>::infinity()));
    EXPECT_EQ("", KorWriteText(std::nanf("")));
    std::mt19937_64 oRandom(12);
    for (int i = 0; i < 2000; ++i) {
        const double nValue =
            std::ldexp(static_cast<double>(oRandom()), static_cast<int>(oRandom() % 2000) - 1060);
        EXPECT_EQ(nValue, Read(KorWriteText(nValue), -1.0));
    }
}

TEST(KorTextValue, NoLocaleHasASay)
{
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale oOld = std::locale::global(std::locale(std::locale(), new Comma));
    EXPECT_EQ("1234.5", KorWriteText(1234.5));
    EXPECT_EQ("1234567", KorWriteText(1234567));
    EXPECT_EQ(1234.5, Read("1234.5", 0.0));
    std::locale::global(oOld);
}

TEST(KorTextValue, ATextIsAsItIs)
{
    EXPECT_EQ(" a,b\n", Read<std::string>(" a,b\n", "x"));
    EXPECT_EQ("", Read<std::string>("", "x"));
    EXPECT_EQ(" \"q\" ", KorWriteText(std::string(" \"q\" ")));
    EXPECT_EQ("literal", KorWriteText("literal"));
}

std::int64_t Ticks(std::string_view strText)
{
    CKorTimeDiff oSpan(7LL);
    const bool bRead = KorReadText(strText, oSpan);
    EXPECT_TRUE(bRead) << strText;
    return KorToDuration(oSpan).count();
}

TEST(KorTextValue, ASpanIsANumberAndItsUnit)
{
    EXPECT_EQ(100, Ticks("1us"));
    EXPECT_EQ(100000, Ticks("1ms"));
    EXPECT_EQ(100000000, Ticks("1s"));
    EXPECT_EQ(6000000000, Ticks("1min"));
    EXPECT_EQ(360000000000, Ticks("1h"));
    EXPECT_EQ(8640000000000, Ticks("1d"));
    EXPECT_EQ(540000000000, Ticks("1.5h"));
    EXPECT_EQ(-150000000, Ticks("-1.5s"));
    EXPECT_EQ(1, Ticks("0.01us"));
    EXPECT_EQ(1, Ticks("0.019999999999999999999999999999999999999us"));
    EXPECT_EQ(2880000000000 - 1, Ticks("0.3333333333333333333333333333333333d"));
    EXPECT_EQ(0, Ticks("-0s"));
}

TEST(KorTextValue, ASpanIsHoursMinutesAndSeconds)
{
    EXPECT_EQ(372300000000, Ticks("1:02:03"));
    EXPECT_EQ(372325000000, Ticks("1:02:03.25"));
    EXPECT_EQ(-372325000000, Ticks("-1:02:03.25"));
    EXPECT_EQ(36000000000000, Ticks("100:00:00"));
    EXPECT_EQ(1, Ticks("0:00:00.00000001"));
}

TEST(KorTextValue, AnythingElseIsNoSpan)
{
    for (const char* pszText :
         {"",       "-",        "5",        "s",         ".5s",      "1.s",     "1,5s",
          "1 s",    " 1s",      "1s ",      "+1s",       "--1s",     "1S",      "1m",
          "1hour",  "0x1s",     "1.5.5s",   "1:2:3",     "1:02",     "1:60:00", "1:00:60",
          ":00:00", "1:00:00s", "1:00:00.", "1:00:00,5", "1:00:00 ", "1h30min", "1067519.9117d"})
        EXPECT_FALSE(IsRead<CKorTimeDiff>(pszText)) << pszText;
}

TEST(KorTextValue, ASpanReachesItsLimits)
{
    EXPECT_EQ(INT64_MAX, Ticks("92233720368547758.07us"));
    EXPECT_EQ(INT64_MIN, Ticks("-92233720368547758.08us"));
    EXPECT_FALSE(IsRead<CKorTimeDiff>("92233720368547758.08us"));
    EXPECT_FALSE(IsRead<CKorTimeDiff>("-92233720368547758.09us"));
    EXPECT_FALSE(IsRead<CKorTimeDiff>("99999999999999999999999999d"));
    EXPECT_FALSE(IsRead<CKorTimeDiff>("184467440737095516.16us"));
    EXPECT_FALSE(IsRead<CKorTimeDiff>("51240955:00:00"));
}

std::string SpanText(std::int64_t nTicks)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    return KorWriteText(oSpan);
}

TEST(KorTextValue, ASpanIsWrittenInItsLargestUnit)
{
    EXPECT_EQ("0s", SpanText(0));
    EXPECT_EQ("1d", SpanText(8640000000000));
    EXPECT_EQ("25h", SpanText(9000000000000));
    EXPECT_EQ("90min", SpanText(540000000000));
    EXPECT_EQ("-90s", SpanText(-9000000000));
    EXPECT_EQ("1500ms", SpanText(150000000));
    EXPECT_EQ("250us", SpanText(25000));
    EXPECT_EQ("0.01us", SpanText(1));
    EXPECT_EQ("1.5us", SpanText(150));
    EXPECT_EQ("1.25us", SpanText(125));
}

TEST(KorTextValue, EveryTickOfASpanReturns)
{
    std::mt19937_64 oRandom(13);
    for (int i = 0; i < 5000; ++i) {
        const std::int64_t nTicks = static_cast<std::int64_t>(oRandom()) >> (oRandom() % 64);
        EXPECT_EQ(nTicks, Ticks(SpanText(nTicks)));
    }
    for (const std::int64_t nTicks : {INT64_MIN, INT64_MIN + 1, INT64_MAX})
        EXPECT_EQ(nTicks, Ticks(SpanText(nTicks)));
}

TEST(KorTextValue, ATimeIsAnIsoText)
{
    CKorUTCTime oTime;
    ASSERT_TRUE(KorReadText("2024-03-05T14:07:09.25+01:00", oTime));
    EXPECT_EQ("2024-03-05T13:07:09.250Z", KorWriteText(oTime));
    EXPECT_FALSE(KorReadText("2024-03-05T14:07:09 ", oTime));
    EXPECT_EQ("2024-03-05T13:07:09.250Z", KorWriteText(oTime));
    for (const char* pszText : {"2024-03-05T14:07:09Z", "2024-03-05T14:07:09.000250Z",
                                "2024-03-05T14:07:09.000000250Z"}) {
        ASSERT_TRUE(KorReadText(pszText, oTime));
        EXPECT_EQ(pszText, KorWriteText(oTime));
    }
}

using Numbers = std::vector<int>;
using Texts = std::vector<std::string>;

TEST(KorTextValue, AListHasCommas)
{
    EXPECT_EQ((Numbers{1, 2, 3}), Read<Numbers>("1,2,3", {9}));
    EXPECT_EQ((Numbers{1, 2, 3}), Read<Numbers>("1 , 2,   3", {9}));
    EXPECT_EQ(Numbers{7}, Read<Numbers>("7", {9}));
    EXPECT_EQ(Numbers{}, Read<Numbers>("", {9}));
    for (const char* pszText : {",", "1,", ",1", "1,,2", "1;2", " 1", "1 ", "1,x", "1 2"})
        EXPECT_FALSE(IsRead<Numbers>(pszText)) << pszText;
    EXPECT_EQ((Texts{"a", "", "b c"}), Read<Texts>("a, ,b c", {}));
    EXPECT_EQ((Texts{" a", "b "}), Read<Texts>(" a,b ", {}));
    EXPECT_EQ((std::vector<bool>{true, false}), Read<std::vector<bool>>("yes,off", {}));
    std::vector<CKorTimeDiff> vecSpans;
    EXPECT_TRUE(KorReadText("1s, 2:00:00", vecSpans));
    EXPECT_EQ("1s,2h", KorWriteText(vecSpans));
}

TEST(KorTextValue, AListThatWouldNotReadBackHasNoText)
{
    EXPECT_EQ("1,-2", KorWriteText(Numbers{1, -2}));
    EXPECT_EQ("true,false", KorWriteText(std::vector<bool>{true, false}));
    EXPECT_EQ("a,,b", KorWriteText(Texts{"a", "", "b"}));
    EXPECT_EQ("", KorWriteText(Texts{"a", "b,c"}));
    EXPECT_EQ("", KorWriteText(Texts{"a ", "b"}));
    EXPECT_EQ("", KorWriteText(Texts{"a", "\tb"}));
    EXPECT_EQ("", KorWriteText(std::vector<char>{','}));
    EXPECT_EQ(" a,b ", KorWriteText(Texts{" a", "b "}));
    EXPECT_EQ("", KorWriteText(Numbers{}));
}

} // namespace

namespace Plant
{

/// A type of a program's own.
struct Valve
{
    int nNumber = 0;
};

bool KorReadText(std::string_view strText, Valve& roValve)
{
    return strText.substr(0, 1) == "V" && ::KorReadText(strText.substr(1), roValve.nNumber);
}

std::string KorWriteText(const Valve& oValve)
{
    return "V" + ::KorWriteText(oValve.nNumber);
}

} // namespace Plant

TEST(KorTextValue, AProgramAddsItsOwnTypes)
{
    std::vector<Plant::Valve> vecValves;
    ASSERT_TRUE(KorReadText("V1, V22", vecValves));
    EXPECT_EQ(22, vecValves[1].nNumber);
    EXPECT_EQ("V1,V22", KorWriteText(vecValves));
    EXPECT_FALSE(KorReadText("V1, 2", vecValves));
}
