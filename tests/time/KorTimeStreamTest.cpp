// Times on streams that are not the usual ones: of other locales, with buffers that throw, and of
// classes that a program derives.

#include "time/KorLocalTime.h"

#include <gtest/gtest.h>
#include <iterator>
#include <locale>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace
{

const CKorUTCTime TIME(5, 3, 2024, 17, 7, 9, 250, 0, 0);
const std::string TEXT = "05.03.2024 17:07:09.250";

struct NoGrouping : std::numpunct<char>
{
    char do_thousands_sep() const override { return '\''; }
};

/// Writes another digit for 7.
struct OddDigits : std::ctype<char>
{
    char do_widen(char c) const override { return c == '7' ? 'x' : c; }
    const char* do_widen(const char* p, const char* pEnd, char* pTo) const override
    {
        for (; p != pEnd; ++p)
            *pTo++ = do_widen(*p);
        return pEnd;
    }
};

/// Marks every number.
struct OddNumbers : std::num_put<char>
{
    iter_type do_put(iter_type it, std::ios_base& oStream, char cFill, long nNumber) const override
    {
        *it++ = '<';
        return std::num_put<char>::do_put(it, oStream, cFill, nNumber);
    }
};

/// Takes one more character for white space.
struct OddSpace : std::ctype<char>
{
    explicit OddSpace(char c) : std::ctype<char>(Table(c)) {}
    static const mask* Table(char c)
    {
        // classic_table() is null with musl.
        static mask aMasks[table_size];
        char acAll[table_size];
        std::iota(std::begin(acAll), std::end(acAll), '\0');
        std::use_facet<std::ctype<char>>(std::locale::classic())
            .is(std::begin(acAll), std::end(acAll), aMasks);
        aMasks[static_cast<unsigned char>(c)] |= space;
        return aMasks;
    }
};

template <class TFacet>
std::locale With(TFacet* pFacet)
{
    return std::locale(std::locale::classic(), pFacet);
}

/// The process's locale for the length of a scope.
class LocaleScope
{
public:
    explicit LocaleScope(const std::locale& oLocale) : m_oOld(std::locale::global(oLocale)) {}
    ~LocaleScope() { std::locale::global(m_oOld); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    std::locale m_oOld;
};

std::string WrittenIn(const std::locale& oLocale)
{
    std::ostringstream oStream;
    oStream.imbue(oLocale);
    oStream << TIME;
    const LocaleScope oScope(oLocale);
    EXPECT_EQ(oStream.str(), TIME.Time2Str(CKorUTCTime::eDateTimeMs));
    return oStream.str();
}

TEST(KorTimeStream, WritesInOtherLocalesOfPlainNumbersAsInTheClassicOne)
{
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(TEXT, WrittenIn(With(new NoGrouping)));
        EXPECT_EQ(TEXT, WrittenIn(std::locale::classic()));
    }
}

TEST(KorTimeStream, WritesTheDigitsOfTheLocale)
{
    EXPECT_EQ("05.03.2024 1x:0x:09.250", WrittenIn(With(new OddDigits)));
}

TEST(KorTimeStream, WritesByTheNumberFacetOfTheLocale)
{
    EXPECT_EQ("<05.<03.<2024 <17:<07:<09.<250", WrittenIn(With(new OddNumbers)));
}

/// Reads as a text and from a stream, in a locale for both.
CKorUTCTime ReadIn(const std::locale& oLocale, const std::string& strText)
{
    const LocaleScope oScope(oLocale);
    std::istringstream oStream(strText + '\0');
    CKorUTCTime oFromStream;
    oStream >> oFromStream;
    CKorUTCTime oFromText;
    EXPECT_TRUE(KorFromString(oFromText, CKorUTCTime::eDateTimeMs, strText));
    EXPECT_EQ(oFromStream, oFromText);
    return oFromText;
}

TEST(KorTimeStream, SkipsWhatTheLocaleTakesForWhiteSpace)
{
    EXPECT_EQ(TIME, ReadIn(With(new OddSpace('_')), "__05.03.2024__17:07:09.250"));
    EXPECT_NE(TIME, ReadIn(std::locale::classic(), "05.03.2024_17:07:09.250"));
    EXPECT_EQ(TIME, ReadIn(With(new OddSpace('0')), "05.03.2024 17:07:09.250"));
    EXPECT_EQ(TIME, ReadIn(With(new OddSpace('1')), "05.03.2024 17:07:09.250") +
                        CKorTimeDiff(0, 10, 0, 0, 0, 0, 0));
}

/// Hands out one character at a time, and throws in front of one.
class ThrowingBuffer : public std::streambuf
{
public:
    explicit ThrowingBuffer(std::string strText, size_t nThrowAt = std::string::npos)
        : m_strText(std::move(strText)), m_nPos(0), m_nThrowAt(nThrowAt)
    {
    }
    std::string Rest() const { return m_strText.substr(m_nPos - (gptr() != egptr() ? 1 : 0)); }

protected:
    int_type underflow() override
    {
        if (m_nPos == m_nThrowAt)
            throw std::runtime_error("torn");
        if (m_nPos == m_strText.size())
            return traits_type::eof();
        char* pNext = &m_strText[m_nPos++];
        setg(pNext, pNext, pNext + 1);
        return traits_type::to_int_type(*pNext);
    }

private:
    std::string m_strText;
    size_t m_nPos;
    size_t m_nThrowAt;
};

TEST(KorTimeStream, ReadsFromABufferOfOneCharacterAndLeavesTheRest)
{
    ThrowingBuffer oBuffer(" " + TEXT + "999");
    std::istream oStream(&oBuffer);
    CKorUTCTime oTime;
    oStream >> oTime;
    EXPECT_TRUE(oStream.good());
    EXPECT_EQ(TIME, oTime);
    EXPECT_EQ("999", oBuffer.Rest());
}

TEST(KorTimeStream, ABufferThatThrowsFailsTheStreamAndTheTimeIsNotValid)
{
    for (size_t nThrowAt = 0; nThrowAt < TEXT.size(); ++nThrowAt) {
        ThrowingBuffer oBuffer(TEXT, nThrowAt);
        std::istream oStream(&oBuffer);
        CKorUTCTime oTime(TIME);
        EXPECT_NO_THROW(oStream >> oTime);
        EXPECT_EQ(std::ios_base::failbit, oStream.rdstate());
        EXPECT_FALSE(oTime.IsTimeValid());
        EXPECT_EQ(nThrowAt < 2 ? 1 : 5, oTime.GetDay()) << "up to the failure the text counts";
    }
}

TEST(KorTimeStream, AStreamThatIsToThrowPassesTheBuffersExceptionAndKeepsTheTime)
{
    for (size_t nThrowAt = 0; nThrowAt < TEXT.size(); ++nThrowAt) {
        ThrowingBuffer oBuffer(TEXT, nThrowAt);
        std::istream oStream(&oBuffer);
        oStream.exceptions(std::ios_base::badbit);
        CKorUTCTime oTime(9999LL);
        EXPECT_THROW(oStream >> oTime, std::runtime_error);
        EXPECT_EQ(std::ios_base::badbit, oStream.rdstate());
        EXPECT_EQ(CKorUTCTime(9999LL), oTime);
    }
}

TEST(KorTimeStream, AStreamThatIsToThrowAtItsEndKeepsTheTime)
{
    std::istringstream oStream("05.03.2024 17:07");
    oStream.exceptions(std::ios_base::eofbit);
    CKorUTCTime oTime(9999LL);
    EXPECT_THROW(oStream >> oTime, std::ios_base::failure);
    EXPECT_EQ(std::ios_base::eofbit, oStream.rdstate());
    EXPECT_EQ(CKorUTCTime(9999LL), oTime);
}

TEST(KorTimeStream, AFailedStreamIsNotTouched)
{
    ThrowingBuffer oBuffer(TEXT, 0);
    std::istream oStream(&oBuffer);
    oStream.setstate(std::ios_base::eofbit);
    CKorUTCTime oTime(TIME);
    EXPECT_NO_THROW(oStream >> oTime);
    EXPECT_EQ(std::ios_base::failbit, oStream.rdstate());
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ(TEXT, oBuffer.Rest());
}

TEST(KorTimeStream, ReadingFlushesTheTiedStream)
{
    struct : std::stringbuf
    {
        int nFlushes = 0;
        int sync() override { return ++nFlushes, 0; }
    } oPrompt;
    std::ostream oTied(&oPrompt);
    std::istringstream oStream(TEXT);
    oStream.tie(&oTied);
    CKorUTCTime oTime;
    oStream >> oTime;
    EXPECT_LT(0, oPrompt.nFlushes);
    EXPECT_EQ(TIME, oTime);
}

TEST(KorTimeStream, ABufferThatThrowsWhileASpanIsReadFailsTheStream)
{
    ThrowingBuffer oBuffer("12:34:56", 4);
    std::istream oStream(&oBuffer);
    CKorTimeDiff::SetDiffTimeFlag(oStream, CKorTimeDiff::eDiffHhMmSs);
    CKorTimeDiff oSpan;
    EXPECT_NO_THROW(oStream >> oSpan);
    EXPECT_EQ(std::ios_base::badbit | std::ios_base::failbit, oStream.rdstate());
    EXPECT_EQ(CKorTimeDiff(0, 12, 3, 0, 0, 0, 0), oSpan);
}

struct Other
{
    virtual ~Other() = default;
    int nNumber = 1;
};

/// Writes and reads in angle brackets.
template <class TBase>
struct Bracketed : TBase
{
    std::ostream& PutStream(std::ostream& oStream) const override
    {
        return CKorUTCTime::PutStream(oStream << '<') << '>';
    }
    std::istream& GetStream(std::istream& oStream) override
    {
        return CKorUTCTime::GetStream(oStream.ignore(1)).ignore(1);
    }
};

struct BehindAnother : Other, CKorLocalTime
{
};

struct OnVirtualBase : virtual CKorUTCTime
{
};

template <class TTime>
void ExpectOwnTexts()
{
    TTime oTime;
    EXPECT_TRUE(KorFromString(oTime, CKorUTCTime::eDate, "<06.03.2024>"));
    EXPECT_EQ("<06.03.2024>", oTime.Time2Str(CKorUTCTime::eDate));
    oTime.SetDate("<07.03.2024>", CKorUTCTime::eDate);
    EXPECT_EQ("<07.03.2024>", KorToString(oTime, CKorUTCTime::eDate));
}

TEST(KorTimeStream, TextsAreThoseOfADerivedClassThatHasItsOwn)
{
    ExpectOwnTexts<Bracketed<CKorUTCTime>>();
    ExpectOwnTexts<Bracketed<CKorLocalTime>>();
    ExpectOwnTexts<Bracketed<BehindAnother>>();
    ExpectOwnTexts<Bracketed<OnVirtualBase>>();
}

template <class TTime>
void ExpectUsualTexts()
{
    TTime oTime;
    EXPECT_TRUE(KorFromString(oTime, CKorUTCTime::eDateTimeMs, TEXT));
    EXPECT_EQ(TEXT, KorToString(oTime, CKorUTCTime::eDateTimeMs));
    oTime.SetDate("06.03.2024", CKorUTCTime::eDate);
    EXPECT_EQ("06.03.2024", oTime.Time2Str(CKorUTCTime::eDate));
}

TEST(KorTimeStream, TextsOfADerivedClassWithoutItsOwnAreTheUsualOnes)
{
    ExpectUsualTexts<BehindAnother>();
    ExpectUsualTexts<OnVirtualBase>();
}

/// A clock that is an hour ahead.
struct AnHourAhead : CKorUTCTime
{
    static constexpr long long TICKS = 360000000000;
    long long GetLocaltime() const override { return CKorUTCTime::GetLocaltime() + 3600000; }
    long long GetHighResolutionLocaltime() const override
    {
        return CKorUTCTime::GetHighResolutionLocaltime() + TICKS;
    }
    void SetHighResolutionLocaltime(long long nTicks) override
    {
        CKorUTCTime::SetHighResolutionLocaltime(nTicks - TICKS);
    }
};

TEST(KorTimeStream, TextsReadAndWriteTheClockOfADerivedClass)
{
    AnHourAhead oTime;
    oTime.SetDate("05.03.2024 23:30:00", CKorUTCTime::eDateTime);
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 22, 30, 0, 0, 0, 0), oTime);
    EXPECT_EQ("05.03.2024 23:30:00", oTime.Time2Str(CKorUTCTime::eDateTime));
}

} // namespace
