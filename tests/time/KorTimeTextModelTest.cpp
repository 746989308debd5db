// Random times and spans, written and read in every format on streams in odd states, against a
// model that uses the stream's own operators field by field and reads character by character.

#include "tests/time/TimeTextModel.h"
#include "tests/time/TimeWriteModel.h"
#include "time/KorLocalTime.h"

#include <gtest/gtest.h>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

namespace
{

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
