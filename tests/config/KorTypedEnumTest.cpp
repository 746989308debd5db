#include "config/KorTypedOptions.h"

#include "config/KorSafeIniFile.h"
#include "serial/KorSerial.h"
#include "tests/config/TypedOptionsTest.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace
{

enum class Parity
{
    EVEN,
    ODD,
    NONE,
    MARK
};

auto Enum(Parity& reValue)
{
    return [&reValue](CKorIniOptionExchange* pExchange) {
        return IOX_Enum(pExchange, "Port", "Parity", reValue, Parity::NONE,
                        {{"even", Parity::EVEN},
                         {"odd", Parity::ODD},
                         {"none", Parity::NONE},
                         {"off", Parity::NONE}});
    };
}

TEST_F(KorTypedOptions, AnEnumerationHasNames)
{
    Parity eValue = Parity::MARK;
    EXPECT_TRUE(ReadFrom("", Enum(eValue)));
    EXPECT_EQ(Parity::NONE, eValue);
    EXPECT_TRUE(ReadFrom("[Port]\nParity=odd\n", Enum(eValue)));
    EXPECT_EQ(Parity::ODD, eValue);
    EXPECT_TRUE(ReadFrom("[Port]\nParity=\"Even\"\n", Enum(eValue)));
    EXPECT_EQ(Parity::EVEN, eValue);
    EXPECT_FALSE(ReadFrom("[Port]\nParity=odds\n", Enum(eValue)));
    EXPECT_EQ(Parity::NONE, eValue);
    EXPECT_EQ("[Port] Parity=odds is none of even, odd, none, off; none is used", Finding());
}

TEST_F(KorTypedOptions, AnEnumerationIsWrittenByItsFirstNameUnlessItReadsTheSame)
{
    Parity eValue = Parity::NONE;
    EXPECT_TRUE(WriteInto("[Port]\nParity=odd\n", Enum(eValue)));
    EXPECT_EQ("[Port]\nParity=none\n", Content());
    EXPECT_TRUE(WriteInto("[Port]\nParity=OFF\n", Enum(eValue)));
    EXPECT_EQ("[Port]\nParity=OFF\n", Content());
    eValue = Parity::MARK;
    EXPECT_FALSE(WriteInto("[Port]\nParity=odd\n", Enum(eValue)));
    EXPECT_EQ(Parity::MARK, eValue);
    EXPECT_EQ("[Port]\nParity=odd\n", Content());
    EXPECT_EQ(1U, m_vecFindings.size());
}

TEST_F(KorTypedOptions, NamesThatDifferInCaseAloneAreDifferentNames)
{
    int nValue = 0;
    const auto fnExchange = [&nValue](CKorIniOptionExchange* pExchange) {
        return IOX_Enum(pExchange, "A", "x", nValue, 0, {{"m", 1}, {"M", 2}, {nullptr, 3}});
    };
    EXPECT_TRUE(ReadFrom("[A]\nx=M\n", fnExchange));
    EXPECT_EQ(2, nValue);
    EXPECT_TRUE(ReadFrom("[A]\nx=\n", fnExchange));
    EXPECT_EQ(3, nValue);
}

TEST_F(KorTypedOptions, TheDefaultOfAnEnumerationNeedsNoName)
{
    int nValue = 0;
    const auto fnExchange = [&nValue](CKorIniOptionExchange* pExchange) {
        return IOX_Enum(pExchange, "A", "x", nValue, 12345, {{"on", 1}, {"off", 2}});
    };
    EXPECT_TRUE(ReadFrom("", fnExchange));
    EXPECT_EQ(12345, nValue);
    EXPECT_FALSE(ReadFrom("[A]\nx=half\n", fnExchange));
    EXPECT_EQ(12345, nValue);
}

TEST_F(KorTypedOptions, ATextThatTwoNamesAreAlikeIsNeither)
{
    int nValue = 0;
    const auto fnExchange = [&nValue](CKorIniOptionExchange* pExchange) {
        return IOX_Enum(pExchange, "A", "x", nValue, 3, {{"on", 1}, {"ON", 2}, {"off", 3}});
    };
    EXPECT_FALSE(ReadFrom("[A]\nx=On\n", fnExchange));
    EXPECT_EQ(3, nValue);
    EXPECT_EQ("[A] x=On is none of on, ON, off; off is used", Finding());
}

TEST_F(KorTypedOptions, ThePlainIniFileTakesThemToo)
{
    int nValue = 0;
    bool bResult = true;
    Options<CKorIniFile> oOptions(m_strFile, [&](CKorIniOptionExchange* pExchange) {
        bResult = IOX_Range(pExchange, "Poll", "Interval", nValue, 500, 10, 1000);
    });
    WriteFile(m_strFile, "[Poll]\nInterval=5\n");
    oOptions.UpdateOptions(false);
    EXPECT_FALSE(bResult);
    EXPECT_EQ(500, nValue);
    oOptions.UpdateOptions(true);
    EXPECT_TRUE(bResult);
    EXPECT_NE(std::string::npos, Content().find("Interval=500"));
    nValue = 5;
    oOptions.UpdateOptions(true);
    EXPECT_FALSE(bResult);
    EXPECT_NE(std::string::npos, Content().find("Interval=500"));
}

} // namespace
