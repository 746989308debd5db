#include "text/KorHexText.h"

#include <gtest/gtest.h>
#include <random>

namespace
{

std::string ToHex(const std::string& strData, char cSeparator = ' ')
{
    return KorToHexText(strData.data(), static_cast<unsigned int>(strData.size()), cSeparator);
}

std::string Dump(const std::string& strData, unsigned int nPerLine = 16)
{
    return KorToHexDump(strData.data(), static_cast<unsigned int>(strData.size()), nPerLine);
}

/// The bytes that the text stands for; "refused" when it is refused with the data unchanged.
std::string FromHex(const std::string& strHex)
{
    std::string strData = "refused";
    const bool bRead = KorFromHexText(strHex, strData);
    EXPECT_TRUE(bRead || strData == "refused") << strHex;
    return strData;
}

std::string AllBytes()
{
    std::string strBytes;
    for (int i = 0; i < 256; ++i)
        strBytes += static_cast<char>(i);
    return strBytes;
}

} // namespace

TEST(KorHexText, WritesPairsOfUpperCaseDigits)
{
    EXPECT_EQ("00 0A 6B FF 7F 80", ToHex(std::string("\0\x0a\x6b\xff\x7f\x80", 6)));
    EXPECT_EQ("4B", ToHex("K"));
}

TEST(KorHexText, SeparatesByAnyCharacterAndByNothing)
{
    EXPECT_EQ("61:62:63", ToHex("abc", ':'));
    EXPECT_EQ("616263", ToHex("abc", '\0'));
}

TEST(KorHexText, NoBytesAreNoText)
{
    EXPECT_EQ("", ToHex(""));
    EXPECT_EQ("", KorToHexText(nullptr, 0));
    EXPECT_EQ("", KorToHexText(nullptr, 5));
    EXPECT_EQ("", Dump(""));
    EXPECT_EQ("", KorToHexDump(nullptr, 5));
}

TEST(KorHexText, ReadsDigitsOfEitherCase)
{
    EXPECT_EQ("\xab\xcd\xef\xAB\xCD\xEF", FromHex("abcdefABCDEF"));
    EXPECT_EQ("\x01\x23\x45\x67\x89\xaF", FromHex("0123456789aF"));
}

TEST(KorHexText, ReadsAllSeparators)
{
    for (const char* pszHex : {"616263", "61 62 63", "61\t62\n63", "61\v62\f63", "61\r\n62  63",
                               "61:62:63", "61-62-63", "61,62,63", "61, 62 ,63", "61:6263"})
        EXPECT_EQ("abc", FromHex(pszHex)) << pszHex;
}

TEST(KorHexText, AnEmptyTextIsNoBytes)
{
    EXPECT_EQ("", FromHex(""));
}

TEST(KorHexText, RefusesAnythingElseAndLeavesTheData)
{
    for (const char* pszHex :
         {"6",     "61 6",   "6 1",    "61 62 6", "0x61", "6g",  "g6",    "61;62", "61.62",
          "61_62", "61::62", "61,-62", "61:",     ":61",  "-61", "61,",   " 61",   "61 ",
          " ",     ":",      "6\xe9",  "@1",      "/0",   "`1",  "61+62", "-1"})
        EXPECT_EQ("refused", FromHex(pszHex)) << pszHex;
    EXPECT_EQ("refused", FromHex(std::string("61\0", 3)));
    EXPECT_EQ("refused", FromHex(std::string("61\00062", 5)));
}

TEST(KorHexText, ReadsIntoTheSameString)
{
    std::string strText = "61 62";
    EXPECT_TRUE(KorFromHexText(strText, strText));
    EXPECT_EQ("ab", strText);
    EXPECT_FALSE(KorFromHexText(strText += "x", strText));
    EXPECT_EQ("abx", strText);
}

TEST(KorHexText, AllBytesComeBackWithEachSeparator)
{
    for (const char cSeparator : {'\0', ' ', ':', '-', ',', '\n'})
        EXPECT_EQ(AllBytes(), FromHex(ToHex(AllBytes(), cSeparator))) << int(cSeparator);
}

TEST(KorHexText, RandomTextNeverChangesDataThatItRefuses)
{
    std::mt19937 oRandom(7);
    const std::string strAlphabet = "0123456789abcdefABCDEF :-,\t;gG";
    for (int i = 0; i < 20000; ++i) {
        std::string strHex;
        for (unsigned int nLength = oRandom() % 8; strHex.size() < nLength;)
            strHex += strAlphabet[oRandom() % strAlphabet.size()];
        const std::string strData = FromHex(strHex);
        if (strData != "refused") {
            EXPECT_EQ(strData, FromHex(ToHex(strData))) << strHex;
        }
    }
}

TEST(KorHexText, DumpsOffsetBytesAndCharacters)
{
    EXPECT_EQ("0000  41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 0A  ABCDEFGHIJKLMNO.\n"
              "0010  61 62 63                                         abc\n",
              Dump("ABCDEFGHIJKLMNO\nabc"));
}

TEST(KorHexText, DumpsAsManyBytesInALineAsAsked)
{
    EXPECT_EQ("0000  61 62  ab\n0002  63 64  cd\n0004  65     e\n", Dump("abcde", 2));
    EXPECT_EQ("0000  61  a\n0001  62  b\n", Dump("ab", 1));
    EXPECT_EQ(Dump("abc", 16), Dump("abc", 0));
}

TEST(KorHexText, AVeryWideDumpIsOneLineOfTheDatasWidth)
{
    EXPECT_EQ(Dump("abc", 16), Dump("abc", 0xFFFFFFFF));
    const std::string strData(20, 'x');
    const std::string strDump = Dump(strData, 0xFFFFFFFF);
    EXPECT_EQ("0000  " + ToHex(strData) + "  " + strData + "\n", strDump);
}

TEST(KorHexText, ShowsOnlyPrintableCharacters)
{
    EXPECT_EQ("0000  1F 20 7E 7F 80 FF  . ~...\n", Dump("\x1f\x20\x7e\x7f\x80\xff", 6));
}

TEST(KorHexText, OffsetsGrowBeyondFourDigits)
{
    const std::string strDump = Dump(std::string(0x10010, 'x'));
    EXPECT_NE(std::string::npos, strDump.find("\nFFF0  78"));
    EXPECT_NE(std::string::npos, strDump.find("\n10000  78"));
}

TEST(KorHexText, DumpsOfEqualDataAreEqual)
{
    const std::string strOne = AllBytes();
    const std::string strOther = "behind" + AllBytes();
    EXPECT_EQ(Dump(strOne), KorToHexDump(strOther.data() + 6, 256));
}
