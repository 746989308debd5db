#include "tests/support/Seed.h"
#include "tests/time/TimeTextModel.h"
#include "time/KorLocalTime.h"

#include <cctype>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>

namespace
{

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

} // namespace
