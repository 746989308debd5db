#include "examples/gateway/RegisterMap.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using Words = std::vector<std::uint16_t>;

Register From(const std::string& strText)
{
    Register oRegister;
    EXPECT_EQ("", ReadRegister(strText, oRegister)) << strText;
    return oRegister;
}

double ValueOf(const std::string& strText, const Words& vecWords)
{
    return From(strText).Value(vecWords.data());
}

TEST(GatewayRegister, UnderstandsEachType)
{
    EXPECT_EQ(65535, ValueOf("0 u16", {0xFFFF}));
    EXPECT_EQ(-1, ValueOf("0 i16", {0xFFFF}));
    EXPECT_EQ(4294967295.0, ValueOf("0 u32", {0xFFFF, 0xFFFF}));
    EXPECT_EQ(-2, ValueOf("0 i32", {0xFFFF, 0xFFFE}));
    EXPECT_EQ(18446744073709551616.0, ValueOf("0 u64", {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}));
    EXPECT_EQ(-3, ValueOf("0 i64", {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFD}));
    EXPECT_EQ(230.5, ValueOf("0 f32", {0x4366, 0x8000}));
    EXPECT_TRUE(std::isnan(ValueOf("0 f32", {0x7FC0, 0})));
}

TEST(GatewayRegister, UnderstandsBothOrdersOfWords)
{
    EXPECT_EQ(0x00010002, ValueOf("0 u32 hi-lo", {1, 2}));
    EXPECT_EQ(0x00020001, ValueOf("0 u32 lo-hi", {1, 2}));
    EXPECT_EQ(1, ValueOf("0 i64 lo-hi", {1, 0, 0, 0}));
    EXPECT_EQ(230.5, ValueOf("0 f32 lo-hi", {0x8000, 0x4366}));
}

TEST(GatewayRegister, TakesScaleUnitKindAndOrderInAnyOrder)
{
    const Register oRegister = From("0x10  u32\tkWh input 0.001 lo-hi");
    EXPECT_EQ(16, oRegister.m_nAddress);
    EXPECT_TRUE(oRegister.m_bInput);
    EXPECT_TRUE(oRegister.m_bLowWordFirst);
    EXPECT_EQ("kWh", oRegister.m_strUnit);
    EXPECT_EQ(0.001, oRegister.m_dScale);
    EXPECT_FALSE(From("1 u16 holding").m_bInput);
    EXPECT_NEAR(-230.1, ValueOf("1 u16 -0.1", {2301}), 1e-9);
}

TEST(GatewayRegister, HasAsManyDecimalsAsItsScaleMeans)
{
    for (const auto& [pszText, nDecimals] : {std::pair<const char*, unsigned int>{"0 u16", 0},
                                             {"0 u16 10", 0},
                                             {"0 u16 0.1", 1},
                                             {"0 u16 -0.01", 2},
                                             {"0 u16 0.25", 2},
                                             {"0 u16 1e-3", 3},
                                             {"0 u16 1e-9", 9},
                                             {"0 u16 0.3333333333333", 9},
                                             {"0 f32", 3},
                                             {"0 f32 0.1", 1}})
        EXPECT_EQ(nDecimals, From(pszText).Decimals()) << pszText;
}

/// The requests of a plan: "holding 0+5".
std::vector<std::string> Requests(const RegisterPlan& oPlan)
{
    std::vector<std::string> vecRequests;
    for (const RegisterPlan::Block& oBlock : oPlan.Blocks())
        vecRequests.push_back((oBlock.m_bInput ? "input " : "holding ") +
                              std::to_string(oBlock.m_nFirst) + "+" +
                              std::to_string(oBlock.m_nCount));
    return vecRequests;
}

RegisterPlan PlanOf(const std::vector<std::string>& vecTexts)
{
    RegisterMap vecRegisters;
    for (const std::string& strText : vecTexts)
        vecRegisters.push_back(From(strText));
    return RegisterPlan(vecRegisters);
}

using Texts = std::vector<std::string>;

TEST(GatewayRegisterPlan, ReadsNeighboursTogetherAndNothingBetween)
{
    EXPECT_EQ((Texts{"holding 0+5"}), Requests(RegisterPlan(*FindReadyMap("simulated"))));
    EXPECT_EQ((Texts{"holding 0+9"}), Requests(RegisterPlan(*FindReadyMap("integer"))));
    EXPECT_EQ((Texts{"input 0+2", "input 6+2", "input 12+2", "input 70+4"}),
              Requests(RegisterPlan(*FindReadyMap("float"))));
    EXPECT_EQ((Texts{"holding 2+2", "holding 5+1", "input 4+1"}),
              Requests(PlanOf({"5 u16", "2 u32", "4 u16 input"})));
}

TEST(GatewayRegisterPlan, ReadsOverlappingRegistersOnce)
{
    EXPECT_EQ((Texts{"holding 0+4"}), Requests(PlanOf({"0 u64", "1 u16", "0 u16", "2 u32"})));
}

TEST(GatewayRegisterPlan, AsksForNoMoreThan125WordsAndSplitsNoValue)
{
    Texts vecTexts;
    for (int i = 0; i < 130; i += 2)
        vecTexts.push_back(std::to_string(i) + " u32");
    EXPECT_EQ((Texts{"holding 0+124", "holding 124+6"}), Requests(PlanOf(vecTexts)));
}

TEST(GatewayRegisterPlan, ReachesTheLastRegister)
{
    EXPECT_EQ((Texts{"holding 65532+4"}), Requests(PlanOf({"65532 u64", "65535 u16"})));
}

TEST(GatewayRegisterPlan, GivesTheValuesInTheOrderOfTheMap)
{
    const RegisterPlan oPlan = PlanOf({"9 u16 0.1 V", "0 u32", "2 i16 input", "1 u16"});
    ASSERT_EQ(3U, oPlan.Blocks().size());
    const std::vector<ReadingValue> vecValues = oPlan.Values({{1, 2}, {2301}, {0xFFFF}});
    ASSERT_EQ(4U, vecValues.size());
    EXPECT_NEAR(230.1, vecValues[0].m_dValue, 1e-9);
    EXPECT_EQ("V", vecValues[0].m_strUnit);
    EXPECT_EQ(1U, vecValues[0].m_nDecimals);
    EXPECT_EQ(65538, vecValues[1].m_dValue);
    EXPECT_EQ(-1, vecValues[2].m_dValue);
    EXPECT_EQ(2, vecValues[3].m_dValue);
}

TEST(GatewayRegisterPlan, KnowsReadyMapsByName)
{
    EXPECT_EQ("simulated, float, integer", ReadyMapNames());
    EXPECT_EQ(nullptr, FindReadyMap("Simulated"));
}

} // namespace
