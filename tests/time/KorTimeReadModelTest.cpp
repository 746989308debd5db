#include "tests/time/TimeReadModel.h"
#include "tests/time/TimeTextModel.h"

#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>

namespace
{

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

} // namespace
