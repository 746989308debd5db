#include "tools/linesim/LinePattern.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

std::string ErrorOf(const std::string& strText)
{
    LinePattern oPattern;
    std::string strError;
    EXPECT_FALSE(oPattern.Parse(strText, strError)) << strText;
    return strError;
}

LinePattern Parsed(const std::string& strText)
{
    LinePattern oPattern;
    std::string strError;
    EXPECT_TRUE(oPattern.Parse(strText, strError)) << strText << ": " << strError;
    return oPattern;
}

/// "NO 2", "PARTIAL", "YES 3".
std::string Matched(const std::string& strPattern, const std::string& strBytes)
{
    std::size_t nLength = 0;
    const EMatch eMatch = Parsed(strPattern).Match(strBytes, nLength);
    if (eMatch == EMatch::PARTIAL)
        return "PARTIAL";
    return (eMatch == EMatch::YES ? "YES " : "NO ") + std::to_string(nLength);
}

} // namespace

TEST(LinePattern, ReadsPairsOfDigitsTogetherAndApart)
{
    EXPECT_EQ("\x01\xab\xFF", Parsed("01 aBfF").Bytes());
}

TEST(LinePattern, ReadsTextWithItsEscapes)
{
    EXPECT_EQ(std::string("a b#\r\n\t\0\"\\\x1F", 11), Parsed(R"("a b#\r\n\t\0\"\\\x1F")").Bytes());
}

TEST(LinePattern, RepeatsTheItemInFrontOfBraces)
{
    EXPECT_EQ(std::string("\0\0\0abab", 7), Parsed("00{3} \"ab\"{2}").Bytes());
}

TEST(LinePattern, PutsTheCrcOfModbusBehindTheBytes)
{
    EXPECT_EQ(std::string("\x01\x03\0\0\0\x02\xC4\x0B", 8), Parsed("010300000002 crc16").Bytes());
}

TEST(LinePattern, IsExactWithoutOpenPlaces)
{
    EXPECT_TRUE(Parsed("01 crc16").IsExact());
    EXPECT_FALSE(Parsed("01 ??").IsExact());
    EXPECT_FALSE(Parsed("* 01").IsExact());
}

TEST(LinePattern, NamesWhatItCannotRead)
{
    EXPECT_EQ("no bytes are given", ErrorOf(" "));
    EXPECT_EQ("nothing follows \"*\"", ErrorOf("01 *"));
    for (const char* pszText :
         {"1", "0g", "\"open", "\"\\q\"", "\"\\x1\"", "01{", "01{}", "01{0}", "01{-1}", "01{2", "?",
          "* 01 * 02", "*{2} 01", "01\"a\"", "crc", "01{70000}", "\"ab\"{40000}", "01{65536} 02"})
        EXPECT_EQ(0U, ErrorOf(pszText).find("cannot read the bytes at '")) << pszText;
}

TEST(LinePattern, TakesAsManyBytesAsItHas)
{
    EXPECT_EQ("YES 2", Matched("01 02", "\x01\x02\x03"));
    EXPECT_EQ("PARTIAL", Matched("01 02", "\x01"));
    EXPECT_EQ("PARTIAL", Matched("01 02", ""));
    EXPECT_EQ("NO 1", Matched("01 02", "\x01\x03"));
    EXPECT_EQ("NO 0", Matched("01 02", "\x02"));
}

TEST(LinePattern, TakesAnyByteInAnOpenPlace)
{
    EXPECT_EQ("YES 3", Matched("01 ?? 03", "\x01\xFF\x03"));
    EXPECT_EQ("NO 2", Matched("01 ?? 03", "\x01\xFF\x04"));
}

TEST(LinePattern, ChecksTheCrcOfWhatCame)
{
    const std::string strRequest("\x01\x03\0\0\0\x02\xC4\x0B", 8);
    EXPECT_EQ("YES 8", Matched("01 03 ??{4} crc16", strRequest));
    EXPECT_EQ("PARTIAL", Matched("01 03 ??{4} crc16", strRequest.substr(0, 7)));
    EXPECT_EQ("NO 7", Matched("01 03 ??{4} crc16", strRequest.substr(0, 7) + "\x0C"));
    EXPECT_EQ("NO 6", Matched("01 03 ??{4} crc16", strRequest.substr(0, 6) + "\xC5"));
}

TEST(LinePattern, PassesOverAsLittleAsItCan)
{
    EXPECT_EQ("YES 4", Matched("* \"ab\"", "xxabab"));
    EXPECT_EQ("YES 2", Matched("* \"ab\"", "ab"));
    EXPECT_EQ("PARTIAL", Matched("* \"ab\"", "xxa"));
    EXPECT_EQ("YES 6", Matched("\"x\" * \"ab\"", "xaaaab"));
    EXPECT_EQ("NO 0", Matched("\"x\" * \"ab\"", "ab"));
}

TEST(LinePattern, CountsACrcFromTheGapOn)
{
    const std::string strRequest("\x01\x03\0\0\0\x02\xC4\x0B", 8);
    EXPECT_EQ("YES 11", Matched("* 01 03 ??{4} crc16", "\x01\x03\x07" + strRequest));
}
