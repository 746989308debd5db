// Random times and spans, written and read in every format on streams in odd states, against a
// model that uses the stream's own operators field by field and reads character by character.

#include "tests/support/Seed.h"
#include "time/KorLocalTime.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <gtest/gtest.h>
#include <iomanip>
#include <iterator>
#include <locale>
#include <random>
#include <sstream>
#include <string>

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__arm__)
constexpr int ROUNDS = 3000;
#else
constexpr int ROUNDS = 30000;
#endif

/// Random choices.
class Dice
{
public:
    explicit Dice(unsigned nSeed) : m_oEngine(nSeed) {}
    /// 0 to nSides - 1.
    int Roll(int nSides) { return static_cast<int>(m_oEngine() % static_cast<unsigned>(nSides)); }
    bool OneIn(int nSides) { return Roll(nSides) == 0; }
    long long Bits()
    {
        const std::uint64_t nHigh = m_oEngine();
        return static_cast<long long>(nHigh << 32 | m_oEngine());
    }

private:
    std::mt19937 m_oEngine;
};

class KorTimeTextModel : public testing::Test
{
protected:
    KorTimeTextModel() : m_nSeed(TestSeed()), m_oDice(m_nSeed) {}

    const unsigned m_nSeed;
    Dice m_oDice;
};

struct Grouping : std::numpunct<char>
{
    std::string do_grouping() const override { return "\1\2"; }
    char do_thousands_sep() const override { return '\''; }
};

/// Leaves every second stream in its usual state but for one thing.
void MakeOdd(std::ostream& oStream, Dice& oDice)
{
    using std::ios_base;
    const ios_base::fmtflags aoBases[] = {ios_base::dec, ios_base::oct, ios_base::hex, {}};
    const ios_base::fmtflags aoSides[] = {ios_base::left, ios_base::right, ios_base::internal, {}};
    const bool bVery = oDice.OneIn(2);
    const int nThing = oDice.Roll(12);
    const auto IsOdd = [&](int nNumber) { return bVery ? oDice.OneIn(2) : nNumber == nThing; };
    if (IsOdd(0))
        oStream.setf(aoBases[oDice.Roll(4)], ios_base::basefield);
    if (IsOdd(1))
        oStream.setf(aoSides[oDice.Roll(4)], ios_base::adjustfield);
    if (IsOdd(2))
        oStream.setf(ios_base::showpos);
    if (IsOdd(3))
        oStream.setf(ios_base::showbase | ios_base::uppercase);
    if (IsOdd(4))
        oStream.setf(ios_base::unitbuf);
    if (IsOdd(5))
        oStream.fill(static_cast<char>('!' + oDice.Roll(90)));
    if (IsOdd(6))
        oStream.width(oDice.Roll(30));
    if (IsOdd(7))
        oStream.imbue(std::locale(std::locale::classic(), new Grouping));
    if (nThing == 8)
        oStream.setstate(oDice.OneIn(2) ? ios_base::failbit : ios_base::badbit);
}

/// Expects two streams to hold the same text and to be in the same state.
void ExpectSame(const std::ostringstream& oExpected, const std::ostringstream& oActual)
{
    EXPECT_EQ(oExpected.str(), oActual.str());
    EXPECT_EQ(oExpected.width(), oActual.width());
    EXPECT_EQ(oExpected.fill(), oActual.fill());
    EXPECT_EQ(oExpected.flags(), oActual.flags());
    EXPECT_EQ(oExpected.rdstate(), oActual.rdstate());
}

/// Writes with the model and with the library to streams in the same odd state.
template <typename Model, typename Library>
void CompareWriting(Dice& oDice, Model fnModel, Library fnLibrary)
{
    std::ostringstream oExpected;
    std::ostringstream oActual;
    MakeOdd(oExpected, oDice);
    oActual.copyfmt(oExpected);
    oActual.setstate(oExpected.rdstate());
    fnModel(oExpected);
    fnLibrary(oActual);
    ExpectSame(oExpected, oActual);
}

class Writer
{
public:
    explicit Writer(std::ostream& oStream) : m_oStream(oStream) {}
    template <typename Number>
    Writer& Field(int nWidth, Number nNumber)
    {
        m_oStream << std::setw(nWidth) << std::setfill('0') << nNumber;
        return *this;
    }
    template <typename Anything>
    Writer& Plain(Anything oAnything)
    {
        m_oStream << oAnything;
        return *this;
    }

private:
    std::ostream& m_oStream;
};

void ModelDate(Writer& o, const CKorUTCTime& oTime, const char* pszOrder, char cSeparator)
{
    for (const char* p = pszOrder; *p != '\0'; ++p) {
        if (p != pszOrder)
            o.Plain(cSeparator);
        if (*p == 'D')
            o.Field(2, oTime.GetDay());
        else if (*p == 'M')
            o.Field(2, oTime.GetMonth());
        else
            o.Field(4, oTime.GetYear());
    }
}

void ModelClock(Writer& o, const CKorUTCTime& oTime, int nSubSeconds)
{
    o.Field(2, oTime.GetHour()).Plain(':').Field(2, oTime.GetMinute()).Plain(':');
    o.Field(2, oTime.GetSecond());
    if (nSubSeconds > 0)
        o.Plain('.').Field(3, oTime.GetMilliSecond());
    if (nSubSeconds > 1)
        o.Plain('.').Field(3, oTime.GetMicroSecond());
    if (nSubSeconds > 2)
        o.Plain('.').Field(3, oTime.GetNanoSecond());
}

void ModelMail(std::ostream& oStream, const CKorUTCTime& oTime)
{
    const std::string strMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const auto nMonth = static_cast<size_t>(oTime.GetMonth() - 1);
    Writer o(oStream);
    o.Plain(oTime.GetDay()).Plain(" ").Plain(strMonths.substr(nMonth * 3, 3)).Plain(" ");
    o.Field(2, oTime.GetYear() % 100).Plain(" ").Field(2, oTime.GetHour()).Plain(":");
    o.Field(2, oTime.GetMinute()).Plain(" ").Plain("+0100");
    oStream.flush();
}

struct DateForm
{
    const char* pszOrder; ///< null for a form without a date
    char cSeparator;
    int nSubSeconds; ///< -1 for a form without a clock time
};

constexpr DateForm FORMS[] = {
    {"DMY", '.', 1},  {"DMY", '.', 0}, {"DMY", '.', -1}, {"DMY", '.', 2},
    {"DMY", '.', 3},  {nullptr, 0, 0}, {"MDY", '/', 0},  {"MDY", '/', -1},
    {"YMD", '-', -1}, {nullptr, 0, 1}, {"YMD", '-', 1},
};

void ModelPut(std::ostream& oStream, const CKorUTCTime& oTime, int nFormat)
{
    if (nFormat == 11)
        ModelMail(oStream, oTime);
    if (nFormat < 0 || nFormat > 10)
        return;
    const DateForm& oForm = FORMS[nFormat];
    Writer o(oStream);
    if (oForm.pszOrder != nullptr)
        ModelDate(o, oTime, oForm.pszOrder, oForm.cSeparator);
    if (oForm.pszOrder != nullptr && nFormat != CKorUTCTime::eDate)
        o.Plain(' ');
    if (oForm.nSubSeconds >= 0)
        ModelClock(o, oTime, oForm.nSubSeconds);
}

void ModelPut(std::ostream& oStream, long long nTicks, int nFormat)
{
    using Number = unsigned long long;
    const auto nUnsigned = static_cast<Number>(nTicks);
    const Number nAbsolute = nTicks < 0 ? 0 - nUnsigned : nUnsigned;
    Writer o(oStream);
    if (nTicks < 0)
        o.Plain('-');
    if (nFormat == 0 || nFormat == 7) {
        o.Plain(nAbsolute / (nFormat == 0 ? 100000U : 100U));
    } else if (nFormat >= 1 && nFormat <= 6) {
        if (nFormat == 6) {
            o.Plain(nUnsigned / 8640000000000ULL).Plain('#');
            o.Field(2, nAbsolute / 360000000000ULL);
        } else {
            o.Plain(nUnsigned / 360000000000ULL);
        }
        o.Plain(':').Field(2, nAbsolute / 6000000000ULL % 60);
        if (nFormat >= 2)
            o.Plain(':').Field(2, nAbsolute / 100000000U % 60);
        if (nFormat >= 3 && nFormat <= 5)
            o.Plain('.').Field(3, nAbsolute / 100000U % 1000);
        if (nFormat == 4 || nFormat == 5)
            o.Plain('.').Field(3, nAbsolute / 100U % 1000);
        if (nFormat == 5)
            o.Plain('.').Field(3, nAbsolute % 100U * 10);
    } else {
        o.Plain("Fehler ");
    }
}

/// An instant somewhere in the years that texts can hold, or anywhere at all.
long long RandomTicks(Dice& oDice)
{
    const long long nTicks = oDice.Bits();
    return oDice.OneIn(8) ? nTicks : static_cast<long long>(static_cast<std::uint64_t>(nTicks) / 2);
}

TEST_F(KorTimeTextModel, WritesTimesAsTheStreamsOwnOperatorsDo)
{
    for (int nRound = 0; nRound < ROUNDS && !HasFailure(); ++nRound) {
        const int nFormat = m_oDice.Roll(14) - 1;
        const auto eFormat = static_cast<CKorUTCTime::ETimeFormat>(nFormat);
        CKorLocalTime oLocal;
        oLocal.SetHighResolutionLocaltime(m_oDice.OneIn(8) ? 0 : RandomTicks(m_oDice));
        oLocal.ChangeTimezone(m_oDice.Roll(25) - 12);
        const CKorUTCTime oUTC(oLocal);
        const CKorUTCTime& oTime = m_oDice.OneIn(2) ? oLocal : oUTC;
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", format " +
                     std::to_string(nFormat));
        CompareWriting(
            m_oDice, [&](std::ostream& oStream) { ModelPut(oStream, oTime, nFormat); },
            [&](std::ostream& oStream) {
                CKorUTCTime::SetTimeFlag(oStream, eFormat);
                oStream << oTime;
            });
        std::ostringstream oPlain;
        ModelPut(oPlain, oTime, nFormat);
        EXPECT_EQ(oPlain.str(), KorToString(oTime, eFormat));
    }
}

TEST_F(KorTimeTextModel, WritesSpansAsTheStreamsOwnOperatorsDo)
{
    for (int nRound = 0; nRound < ROUNDS && !HasFailure(); ++nRound) {
        const int nFormat = m_oDice.Roll(10) - 1;
        const auto eFormat = static_cast<CKorTimeDiff::EDiffFormat>(nFormat);
        const long long nTicks = m_oDice.Bits() >> m_oDice.Roll(64);
        CKorTimeDiff oSpan;
        oSpan.SetTimeDiff(nTicks, true);
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", format " +
                     std::to_string(nFormat) + ", ticks " + std::to_string(nTicks));
        CompareWriting(
            m_oDice, [&](std::ostream& oStream) { ModelPut(oStream, nTicks, nFormat); },
            [&](std::ostream& oStream) {
                CKorTimeDiff::SetDiffTimeFlag(oStream, eFormat);
                oStream << oSpan;
            });
        std::ostringstream oPlain;
        ModelPut(oPlain, nTicks, nFormat);
        EXPECT_EQ(oPlain.str(), KorToString(oSpan, eFormat));
    }
}

/// Reads a text by its positions, with a stream's end and fail bits.
class Reader
{
public:
    explicit Reader(const std::string& strText) : m_strText(strText) {}
    void SkipWhiteSpace()
    {
        if (m_bEnd || m_bFail)
            return;
        while (m_nPos < m_strText.size() &&
               std::isspace(static_cast<unsigned char>(m_strText[m_nPos])) != 0)
            ++m_nPos;
        m_bEnd = m_nPos == m_strText.size();
    }
    unsigned Number(int nDigits)
    {
        unsigned nValue = 0;
        for (; nDigits > 0 && Next() >= '0' && Next() <= '9'; --nDigits)
            nValue = nValue * 10 + static_cast<unsigned>(m_strText[m_nPos++] - '0');
        return nValue;
    }
    void Separator(char c, bool bStrict)
    {
        if (Next() == c)
            ++m_nPos;
        else if (bStrict)
            m_bFail = true;
    }
    std::string Rest() const { return m_strText.substr(m_nPos); }
    std::ios_base::iostate State() const
    {
        return (m_bEnd ? std::ios_base::eofbit : std::ios_base::goodbit) |
               (m_bFail ? std::ios_base::failbit : std::ios_base::goodbit);
    }
    bool HasFailed() const { return m_bFail; }

private:
    int Next()
    {
        if (m_bEnd || m_bFail) {
            m_bFail = true; // reading on after the end
            return -1;
        }
        m_bEnd = m_nPos == m_strText.size();
        return m_bEnd ? -1 : static_cast<unsigned char>(m_strText[m_nPos]);
    }

    const std::string& m_strText;
    size_t m_nPos = 0;
    bool m_bEnd = false;
    bool m_bFail = false;
};

struct Parts
{
    unsigned nDay = 0;
    unsigned nMonth = 0;
    unsigned nYear = 0;
    unsigned nHour = 0;
    unsigned nMinute = 0;
    unsigned nSecond = 0;
    unsigned anSubSeconds[3] = {0, 0, 0};
};

void ModelReadDate(Reader& oReader, const DateForm& oForm, Parts& oParts)
{
    for (const char* p = oForm.pszOrder; *p != '\0'; ++p) {
        if (p != oForm.pszOrder)
            oReader.Separator(oForm.cSeparator, false);
        if (*p == 'D')
            oParts.nDay = oReader.Number(2);
        else if (*p == 'M')
            oParts.nMonth = oReader.Number(2);
        else
            oParts.nYear = oReader.Number(4);
    }
}

void ModelReadMailDate(Reader& oReader, Parts& oParts)
{
    oParts.nDay = oReader.Number(2);
    oReader.SkipWhiteSpace();
    oParts.nMonth = oReader.Number(2);
    oReader.SkipWhiteSpace();
    const unsigned nYear = oReader.Number(2);
    oParts.nYear = nYear < 46 ? 2000 + nYear : 1900 + nYear;
}

void ModelReadClock(Reader& oReader, int nSubSeconds, Parts& oParts)
{
    oParts.nHour = oReader.Number(2);
    oReader.Separator(':', false);
    oParts.nMinute = oReader.Number(2);
    oReader.Separator(':', false);
    oParts.nSecond = oReader.Number(2);
    for (int i = 0; i < nSubSeconds; ++i) {
        oReader.Separator('.', false);
        oParts.anSubSeconds[i] = oReader.Number(3);
    }
}

/// What reading must give; the reader shows what is left and the stream's state.
CKorUTCTime ModelGet(Reader& oReader, int nFormat)
{
    oReader.SkipWhiteSpace();
    const DateForm& oForm = nFormat == 11 ? FORMS[1] : FORMS[nFormat];
    Parts oParts;
    if (nFormat == 11)
        ModelReadMailDate(oReader, oParts);
    else if (oForm.pszOrder != nullptr)
        ModelReadDate(oReader, oForm, oParts);
    if (oForm.pszOrder != nullptr && nFormat != CKorUTCTime::eDate)
        oReader.SkipWhiteSpace();
    if (oForm.nSubSeconds >= 0)
        ModelReadClock(oReader, oForm.nSubSeconds, oParts);
    return CKorUTCTime(oParts.nDay, oParts.nMonth, oParts.nYear, oParts.nHour, oParts.nMinute,
                       oParts.nSecond, oParts.anSubSeconds[0], oParts.anSubSeconds[1],
                       oParts.anSubSeconds[2]);
}

CKorTimeDiff ModelGetSpan(Reader& oReader, int nFormat)
{
    const int nDays = nFormat == 6 ? static_cast<int>(oReader.Number(4)) : 0;
    if (nFormat == 6)
        oReader.Separator('#', true);
    int anFields[4] = {0, 0, 0, 0};
    const int nFields = nFormat == 6 ? 3 : nFormat + 1;
    for (int i = 0; i < nFields; ++i) {
        if (i > 0)
            oReader.Separator(i == 3 ? '.' : ':', true);
        anFields[i] = static_cast<int>(oReader.Number(i == 3 ? 3 : 2));
    }
    return CKorTimeDiff(nDays, anFields[0], anFields[1], anFields[2], anFields[3], 0, 0);
}

/// Changes, inserts and removes characters, or cuts the text off.
std::string Damaged(std::string strText, Dice& oDice)
{
    static const std::string CHARACTERS("0123456789.:/-# \t\nx\0\xFF", 21);
    for (int nChanges = oDice.Roll(4); nChanges > 0; --nChanges) {
        const auto nPos = static_cast<size_t>(oDice.Roll(static_cast<int>(strText.size()) + 1));
        const char c = CHARACTERS[static_cast<size_t>(oDice.Roll(21))];
        switch (oDice.Roll(4)) {
        case 0:
            strText.insert(nPos, 1, c);
            break;
        case 1:
            strText.erase(nPos, 1);
            break;
        case 2:
            strText.replace(nPos, 1, 1, c);
            break;
        default:
            if (oDice.OneIn(4))
                strText.erase(nPos);
        }
    }
    return strText;
}

std::string RestOf(std::istream& oStream)
{
    return std::string(std::istreambuf_iterator<char>(oStream.rdbuf()), {});
}

TEST_F(KorTimeTextModel, ReadsTimesCharacterByCharacter)
{
    for (int nRound = 0; nRound < ROUNDS && !HasFailure(); ++nRound) {
        const int nFormat = m_oDice.Roll(12);
        const auto eFormat = static_cast<CKorUTCTime::ETimeFormat>(nFormat);
        CKorUTCTime oTime;
        oTime.SetHighResolutionLocaltime(RandomTicks(m_oDice));
        const std::string strText =
            Damaged(nFormat == 11 ? "05 03 45 10:00:00" : KorToString(oTime, eFormat), m_oDice);
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", format " +
                     std::to_string(nFormat) + ", text " + strText);

        Reader oReader(strText);
        const CKorUTCTime oExpected = ModelGet(oReader, nFormat);
        std::istringstream oStream(strText);
        CKorUTCTime::SetTimeFlag(oStream, eFormat);
        oStream >> oTime;
        EXPECT_EQ(oExpected.GetHighResolutionLocaltime(), oTime.GetHighResolutionLocaltime());
        EXPECT_EQ(oExpected.IsTimeValid() && !oReader.HasFailed(), oTime.IsTimeValid());
        EXPECT_EQ(oReader.HasFailed() ? std::ios_base::failbit : oReader.State(),
                  oStream.rdstate());
        EXPECT_EQ(oReader.Rest(), RestOf(oStream));

        EXPECT_EQ(oTime, CKorUTCTime(strText, eFormat));
        EXPECT_EQ(oTime.IsTimeValid(), CKorUTCTime(strText, eFormat).IsTimeValid());
        const std::string strWithZero = strText + '\0';
        Reader oZeroReader(strWithZero);
        const CKorUTCTime oWithZero = ModelGet(oZeroReader, nFormat);
        EXPECT_TRUE(KorFromString(oTime, eFormat, strText));
        EXPECT_EQ(oWithZero, oTime);
        EXPECT_EQ(oWithZero.IsTimeValid(), oTime.IsTimeValid());
    }
}

TEST_F(KorTimeTextModel, ReadsSpansCharacterByCharacter)
{
    constexpr int FORMATS[] = {1, 2, 3, 6};
    for (int nRound = 0; nRound < ROUNDS && !HasFailure(); ++nRound) {
        const int nFormat = FORMATS[m_oDice.Roll(4)];
        const auto eFormat = static_cast<CKorTimeDiff::EDiffFormat>(nFormat);
        CKorTimeDiff oSpan(m_oDice.Bits() >> (24 + m_oDice.Roll(40)));
        const std::string strText = Damaged(KorToString(oSpan, eFormat), m_oDice);
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", format " +
                     std::to_string(nFormat) + ", text " + strText);

        Reader oReader(strText);
        const CKorTimeDiff oExpected = ModelGetSpan(oReader, nFormat);
        std::istringstream oStream(strText);
        CKorTimeDiff::SetDiffTimeFlag(oStream, eFormat);
        oStream >> oSpan;
        EXPECT_EQ(oExpected, oSpan);
        EXPECT_EQ(oReader.State(), oStream.rdstate());
        EXPECT_EQ(oReader.Rest(), RestOf(oStream));
    }
}

TEST_F(KorTimeTextModel, ReadsBackEveryTimeThatItWrites)
{
    for (int nRound = 0; nRound < ROUNDS && !HasFailure(); ++nRound) {
        const auto eFormat = static_cast<CKorUTCTime::ETimeFormat>(m_oDice.Roll(11));
        CKorUTCTime oTime;
        oTime.SetHighResolutionLocaltime(RandomTicks(m_oDice));
        const std::string strText = KorToString(oTime, eFormat);
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", text " + strText);
        const CKorUTCTime oRead(strText, eFormat);
        EXPECT_EQ(strText, KorToString(oRead, eFormat));
        EXPECT_EQ(FORMS[eFormat].pszOrder != nullptr, oRead.IsTimeValid());
        if (eFormat == CKorUTCTime::eDateTimeNs && oTime.GetYear() != 0) {
            EXPECT_EQ(oTime, oRead);
        }
    }
}

TEST_F(KorTimeTextModel, ReadsBackEveryTotalThatItWrites)
{
    for (int nRound = 0; nRound < ROUNDS && !HasFailure(); ++nRound) {
        const auto eFormat =
            m_oDice.OneIn(2) ? CKorTimeDiff::eDiffMilliSeconds : CKorTimeDiff::eDiffMicroSeconds;
        CKorTimeDiff oSpan(m_oDice.Bits() >> (18 + m_oDice.Roll(40)));
        CKorTimeDiff oRead;
        EXPECT_TRUE(KorFromString(oRead, eFormat, KorToString(oSpan, eFormat)));
        EXPECT_EQ(oSpan, oRead) << "TARVO_TEST_SEED=" << m_nSeed;
    }
}

} // namespace
