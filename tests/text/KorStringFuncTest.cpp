#include "text/KorStringFunc.h"

#include <gtest/gtest.h>

namespace
{

using Items = std::vector<std::string>;

const std::string ALL_WHITE_SPACE = " \t\n\v\f\r";

std::string DeQuoted(std::string strText)
{
    KorDeQuoteString(strText);
    return strText;
}

std::string Quoted(std::string strText, bool bOnlyIfWhiteSpace)
{
    KorQuoteString(strText, bOnlyIfWhiteSpace);
    return strText;
}

TEST(KorStrTrim, RemovesWhiteSpaceFromBothEnds)
{
    EXPECT_EQ("a b", KorStrTrim(" \ta b\r\n"));
    EXPECT_EQ(
        "a" + ALL_WHITE_SPACE + "b",
        KorStrTrim((ALL_WHITE_SPACE + "a" + ALL_WHITE_SPACE + "b" + ALL_WHITE_SPACE).c_str()));
    EXPECT_EQ("ab", KorStrTrim("ab"));
}

TEST(KorStrTrim, LeavesNothingOfWhiteSpaceOnly)
{
    EXPECT_EQ("", KorStrTrim("   "));
    EXPECT_EQ("", KorStrTrim(ALL_WHITE_SPACE.c_str()));
    EXPECT_EQ("", KorStrTrim(""));
}

TEST(KorStrTrim, ReadsNullAsEmpty)
{
    EXPECT_EQ("", KorStrTrim(nullptr));
    EXPECT_EQ("", KorStrLTrim(nullptr));
    EXPECT_EQ("", KorStrRTrim(nullptr));
}

TEST(KorStrTrim, EachSideCanBeTrimmedAlone)
{
    EXPECT_EQ("a b \r\n", KorStrLTrim(" \ta b \r\n"));
    EXPECT_EQ(" \ta b", KorStrRTrim(" \ta b \r\n"));
    EXPECT_EQ("", KorStrLTrim(" \t"));
    EXPECT_EQ("", KorStrRTrim(" \t"));
}

TEST(KorStrTrim, KeepsBytesFrom128OnAndControlCharacters)
{
    EXPECT_EQ("\xA0\x85", KorStrTrim(" \xA0\x85 "));
    EXPECT_EQ("\x01\x7F", KorStrTrim("\x01\x7F\t"));
}

TEST(KorDeQuoteString, RemovesOneEnclosingPair)
{
    EXPECT_EQ("a b", DeQuoted("\"a b\""));
    EXPECT_EQ("\"a\"", DeQuoted("\"\"a\"\""));
    EXPECT_EQ("a\"b", DeQuoted("\"a\"b\""));
}

TEST(KorDeQuoteString, LeavesASingleQuoteCharacter)
{
    EXPECT_EQ("\"", DeQuoted("\""));
}

TEST(KorDeQuoteString, MakesTwoQuoteCharactersEmpty)
{
    EXPECT_EQ("", DeQuoted("\"\""));
}

TEST(KorDeQuoteString, LeavesATextThatIsNotEnclosed)
{
    EXPECT_EQ("\"a", DeQuoted("\"a"));
    EXPECT_EQ("a\"", DeQuoted("a\""));
    EXPECT_EQ("'a'", DeQuoted("'a'"));
    EXPECT_EQ("", DeQuoted(""));
}

TEST(KorQuoteString, EnclosesWhereThereIsWhiteSpace)
{
    EXPECT_EQ("\"a b\"", Quoted("a b", true));
    EXPECT_EQ("\"a\tb\"", Quoted("a\tb", true));
    EXPECT_EQ("\" \"", Quoted(" ", true));
}

TEST(KorQuoteString, LeavesATextWithoutWhiteSpace)
{
    EXPECT_EQ("ab", Quoted("ab", true));
    EXPECT_EQ("", Quoted("", true));
    EXPECT_EQ("a\xA0"
              "b",
              Quoted("a\xA0"
                     "b",
                     true));
}

TEST(KorQuoteString, RemovesQuotesThatAreNotNeeded)
{
    EXPECT_EQ("ab", Quoted("\"ab\"", true));
    EXPECT_EQ("", Quoted("\"\"", true));
}

TEST(KorQuoteString, NeverQuotesTwice)
{
    EXPECT_EQ("\"a b\"", Quoted("\"a b\"", false));
    EXPECT_EQ("\"a b\"", Quoted("\"a b\"", true));
}

TEST(KorQuoteString, AlwaysEnclosesWhenAsked)
{
    EXPECT_EQ("\"\"", Quoted("", false));
    EXPECT_EQ("\"ab\"", Quoted("ab", false));
    EXPECT_EQ("\"\"\"", Quoted("\"", false));
}

TEST(KorQuoteString, EscapesNothing)
{
    EXPECT_EQ("\"a \"b\"", Quoted("a \"b", true));
    EXPECT_EQ("\"a \\b\"", Quoted("a \\b", true));
}

TEST(KorGetParameterList, KeepsEmptyItems)
{
    EXPECT_EQ((Items{"", ""}), KorGetParameterList(",", ','));
    EXPECT_EQ((Items{"a", "", "b"}), KorGetParameterList("a,,b", ','));
    EXPECT_EQ((Items{"a", ""}), KorGetParameterList("a,", ','));
}

TEST(KorGetParameterList, AnEmptyTextIsOneEmptyItem)
{
    EXPECT_EQ((Items{""}), KorGetParameterList("", ','));
}

TEST(KorGetParameterList, ANullTextHasNoItems)
{
    EXPECT_EQ(Items{}, KorGetParameterList(nullptr, ','));
}

TEST(KorGetParameterList, KeepsWhiteSpaceAndSplitsInsideQuotes)
{
    EXPECT_EQ((Items{" a ", "\tb"}), KorGetParameterList(" a ;\tb", ';'));
    EXPECT_EQ((Items{"\"a", "b\""}), KorGetParameterList("\"a,b\"", ','));
    EXPECT_EQ((Items{"a;b"}), KorGetParameterList("a;b", ','));
}

TEST(KorBigString, SpacesEveryCharacter)
{
    EXPECT_EQ("a . b . ", KorBigString("ab"));
    EXPECT_EQ("", KorBigString(""));
}

TEST(KorFromString, AssignsAText)
{
    std::string strValue = "old";
    EXPECT_TRUE(KorFromString<std::string>(strValue, " new "));
    EXPECT_EQ(" new ", strValue);
    EXPECT_TRUE(KorFromString<std::string>(strValue, ""));
    EXPECT_EQ("", strValue);
}

TEST(KorFromString, CopiesATextWithItsTerminatingZero)
{
    char szBuffer[] = "........";
    char* pszValue = szBuffer;
    EXPECT_TRUE(KorFromString<char*>(pszValue, "new"));
    EXPECT_EQ(std::string("new\0....", 8), std::string(szBuffer, 8));
    EXPECT_EQ(szBuffer, pszValue);
}

TEST(KorFromString, CopiesNothingWithoutABuffer)
{
    char* pszValue = nullptr;
    EXPECT_TRUE(KorFromString<char*>(pszValue, "new"));
    EXPECT_EQ(nullptr, pszValue);
}

} // namespace
