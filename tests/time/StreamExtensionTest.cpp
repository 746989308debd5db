#include "time/StreamExtension.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace
{

/// What is still to be read, whatever state the stream is in.
std::string Rest(std::istringstream& oStream)
{
    oStream.clear();
    std::string strRest;
    std::getline(oStream, strRest, '\0');
    return strRest;
}

TEST(GetSizedUInt, ReadsNoMoreThanItsDigits)
{
    std::istringstream oStream("123");
    unsigned nRead = 99;
    EXPECT_EQ(12U, GetSizedUInt(oStream, 2, &nRead, true));
    EXPECT_EQ(2U, nRead);
    EXPECT_TRUE(oStream.good());
    EXPECT_EQ("3", Rest(oStream));
}

TEST(GetSizedUInt, AcceptsAShortFieldUnlessStrict)
{
    for (const bool bStrict : {false, true}) {
        std::istringstream oStream("12:");
        unsigned nRead = 99;
        EXPECT_EQ(12U, GetSizedUInt(oStream, 4, &nRead, bStrict));
        EXPECT_EQ(2U, nRead);
        EXPECT_EQ(bStrict, oStream.fail());
        EXPECT_FALSE(oStream.eof());
        EXPECT_EQ(":", Rest(oStream));
    }
}

TEST(GetSizedUInt, ReadsNothingWithoutDigits)
{
    std::istringstream oStream("");
    unsigned nRead = 99;
    EXPECT_EQ(0U, GetSizedUInt(oStream, 0, &nRead, true));
    EXPECT_EQ(0U, nRead);
    EXPECT_TRUE(oStream.good());
}

TEST(GetSizedUInt, TakesTheEndOfTheInputForAMismatch)
{
    for (const bool bStrict : {false, true}) {
        std::istringstream oStream("7");
        EXPECT_EQ(7U, GetSizedUInt(oStream, 2, nullptr, bStrict));
        EXPECT_TRUE(oStream.eof());
        EXPECT_EQ(bStrict, oStream.fail());
    }
}

TEST(GetSizedUInt, SkipsNoWhiteSpaceAndNoSign)
{
    for (const char* pszText : {" 1", "-1", "+1"}) {
        std::istringstream oStream(pszText);
        unsigned nRead = 99;
        EXPECT_EQ(0U, GetSizedUInt(oStream, 2, &nRead, false));
        EXPECT_EQ(0U, nRead);
        EXPECT_EQ(pszText, Rest(oStream));
    }
}

TEST(GetSizedUInt, WrapsIn32Bits)
{
    std::istringstream oStream("4294967297");
    unsigned nRead = 0;
    EXPECT_EQ(1U, GetSizedUInt(oStream, 10, &nRead, true));
    EXPECT_EQ(10U, nRead);
}

TEST(GetSizedUInt, ReadsNothingFromAFailedStream)
{
    std::istringstream oStream("12");
    oStream.setstate(std::ios_base::failbit);
    unsigned nRead = 99;
    EXPECT_EQ(0U, GetSizedUInt(oStream, 2, &nRead, false));
    EXPECT_EQ(0U, nRead);
    EXPECT_TRUE(oStream.fail());
    EXPECT_EQ("12", Rest(oStream));
}

TEST(SeparateChar, TakesTheSeparator)
{
    std::istringstream oStream(":5");
    SeparateChar(oStream, ':', true);
    EXPECT_TRUE(oStream.good());
    EXPECT_EQ("5", Rest(oStream));
}

TEST(SeparateChar, LeavesAnotherCharacterAndFailsOnlyWhenStrict)
{
    for (const bool bStrict : {false, true}) {
        std::istringstream oStream(":5");
        SeparateChar(oStream, '.', bStrict);
        EXPECT_EQ(bStrict, oStream.fail());
        EXPECT_EQ(":5", Rest(oStream));
    }
}

TEST(SeparateChar, ComparesTheCharacterAsUnsigned)
{
    std::istringstream oStream("\xFF");
    SeparateChar(oStream, '\xFF', true);
    EXPECT_TRUE(oStream.good());
}

TEST(SeparateChar, DoesNotTakeTheEndOfTheInputForTheSeparator)
{
    std::istringstream oStream("");
    SeparateChar(oStream, '\xFF', true);
    EXPECT_TRUE(oStream.fail());
}

TEST(TryRemoveNonDigit, TakesOneCharacterThatIsNoDigit)
{
    std::istringstream oStream("-5");
    TryRemoveNonDigit(oStream);
    EXPECT_TRUE(oStream.good());
    EXPECT_EQ("5", Rest(oStream));
    std::istringstream oTwo("--");
    TryRemoveNonDigit(oTwo);
    EXPECT_EQ("-", Rest(oTwo));
}

TEST(TryRemoveNonDigit, LeavesADigit)
{
    for (const char* pszText : {"5", "0", "9"}) {
        std::istringstream oStream(pszText);
        TryRemoveNonDigit(oStream);
        EXPECT_TRUE(oStream.good());
        EXPECT_EQ(pszText, Rest(oStream));
    }
}

TEST(TryRemoveNonDigit, FailsAtTheEndOfTheInput)
{
    std::istringstream oStream("");
    TryRemoveNonDigit(oStream);
    EXPECT_TRUE(oStream.eof());
    EXPECT_TRUE(oStream.fail());
}

} // namespace
