#include "text/KorMemDump.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <iomanip>
#include <random>
#include <sstream>
#include <vector>

namespace
{

constexpr unsigned int ALL = 0xFFFFFFFF;

std::string Dump(const std::string& strBlock, unsigned int nHead = ALL, unsigned int nTail = ALL)
{
    return KorMemDump(strBlock.data(), static_cast<unsigned int>(strBlock.size()), nHead, nTail);
}

std::string Line(const std::string& strBlock, unsigned int nOffset)
{
    return KorMemDumpLine(strBlock.data(), static_cast<unsigned int>(strBlock.size()), nOffset);
}

std::vector<std::string> Lines(const std::string& strText)
{
    std::vector<std::string> vecLines;
    std::istringstream oStream(strText);
    for (std::string strLine; std::getline(oStream, strLine);)
        vecLines.push_back(strLine);
    return vecLines;
}

/// The lines behind the header.
std::vector<std::string> BodyOf(const std::string& strText)
{
    std::vector<std::string> vecLines = Lines(strText);
    EXPECT_FALSE(vecLines.empty());
    vecLines.erase(vecLines.begin());
    return vecLines;
}

/// A header as the stream operators write it.
std::string HeaderByStream(const void* pBlock, unsigned int nLength)
{
    std::ostringstream oStream;
    oStream << "Address: 0x" << std::setfill('0') << std::setw(8) << pBlock << "  Length : 0x"
            << std::hex << std::setw(8) << nLength << '\n';
    return oStream.str();
}

/// A line as the stream operators write it.
std::string LineByStream(const std::string& strBlock, unsigned int nOffset)
{
    std::ostringstream oStream;
    oStream << "0x" << std::hex << std::setfill('0') << std::setw(4) << nOffset << ' ';
    const std::string strBytes = strBlock.substr(nOffset, 16);
    for (size_t i = 0; i < 16; ++i) {
        if (i == 8)
            oStream << ' ';
        if (i < strBytes.size())
            oStream << std::setw(2) << (strBytes[i] & 0xFF) << ' ';
        else
            oStream << "   ";
    }
    for (size_t i = 0; i < 16; ++i) {
        if (i < strBytes.size())
            oStream << (std::isprint(strBytes[i] & 0xFF) ? strBytes[i] : '.');
        else
            oStream << ' ';
    }
    return oStream.str();
}

std::string DumpByStream(const std::string& strBlock, unsigned int nHead, unsigned int nTail)
{
    const unsigned int nLength = static_cast<unsigned int>(strBlock.size());
    const unsigned int nLines = (nLength + 15) / 16;
    std::string strText = HeaderByStream(strBlock.data(), nLength);
    for (unsigned int nLine = 0; nLine < nLines; ++nLine) {
        const bool bHidden = nLine >= nHead && nLine + nTail < nLines;
        if (!bHidden)
            strText += LineByStream(strBlock, nLine * 16) + '\n';
        else if (nLine == nHead)
            strText += "...\n";
    }
    return strText;
}

std::string RandomBlock(std::mt19937& oRandom, size_t nSize)
{
    std::string strBlock(nSize, '\0');
    std::generate(strBlock.begin(), strBlock.end(), [&] { return static_cast<char>(oRandom()); });
    return strBlock;
}

TEST(KorMemDumpLine, ShowsOffsetBytesAndCharacters)
{
    const std::string strBlock = "0123456789abcdefABCDEFGHIJKLMNO\nabc";
    EXPECT_EQ("0x0000 30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66 0123456789abcdef",
              Line(strBlock, 0));
    EXPECT_EQ("0x0010 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 0a ABCDEFGHIJKLMNO.",
              Line(strBlock, 16));
    EXPECT_EQ("0x0020 61 62 63                                         abc             ",
              Line(strBlock, 32));
}

TEST(KorMemDumpLine, IsAsWideForEveryNumberOfBytes)
{
    for (size_t nBytes = 0; nBytes <= 16; ++nBytes) {
        const std::string strBlock(nBytes, 'x');
        EXPECT_EQ(72u, Line(strBlock, 0).size()) << nBytes;
        EXPECT_EQ(LineByStream(strBlock, 0), Line(strBlock, 0));
    }
}

TEST(KorMemDumpLine, ShowsUpTo16BytesFromAnyOffset)
{
    EXPECT_EQ("0x0003 64 65 66                                         def             ",
              Line("abcdef", 3));
    EXPECT_EQ(LineByStream("abcdef", 6), Line("abcdef", 6));
}

TEST(KorMemDumpLine, TakesMoreDigitsForOffsetsAbove64KiB)
{
    const std::string strBlock(0x10001, 'x');
    EXPECT_EQ("0xfff0 ", Line(strBlock, 0xFFF0).substr(0, 7));
    EXPECT_EQ("0x10000 78  ", Line(strBlock, 0x10000).substr(0, 12));
    EXPECT_EQ(73u, Line(strBlock, 0x10000).size());
}

TEST(KorMemDumpLine, ShowsADotForEveryByteThatIsNotPrintable)
{
    for (int c = 0; c < 256; ++c) {
        const char cShown = Line(std::string(1, static_cast<char>(c)), 0)[56];
        EXPECT_EQ(c >= 0x20 && c <= 0x7E ? static_cast<char>(c) : '.', cShown) << c;
    }
    EXPECT_EQ("0x0000 7f 09 20                                         ..              ",
              Line("\x7F\t ", 0));
}

TEST(KorMemDumpLine, ShowsNoBytesOfANullBlock)
{
    EXPECT_EQ("0x0010" + std::string(66, ' '), KorMemDumpLine(nullptr, 100, 16));
}

TEST(KorMemDumpLine, ShowsSixteenBytesBeyondTheLength)
{
    const std::string strBlock(64, 'x');
    EXPECT_EQ(LineByStream(strBlock, 32), KorMemDumpLine(strBlock.data(), 10, 32));
}

TEST(KorMemDump, IsEmptyForANullBlock)
{
    EXPECT_EQ("", KorMemDump(nullptr, 10, 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_EQ("", KorMemDump(nullptr, 0, 0, 0));
}

TEST(KorMemDump, IsTheHeaderAloneForAnEmptyBlock)
{
    const char c = 'x';
    EXPECT_EQ(HeaderByStream(&c, 0), KorMemDump(&c, 0, ALL, ALL));
    EXPECT_EQ(HeaderByStream(&c, 0), KorMemDump(&c, 0, 0, 0));
}

/// A pointer to an address at which there need be nothing.
const char* PointerTo(std::uintptr_t nAddress)
{
    const char* pBlock = nullptr;
    std::memcpy(&pBlock, &nAddress, sizeof pBlock);
    return pBlock;
}

/// The header of an empty block there.
std::string HeaderAt(std::uintptr_t nAddress)
{
    return KorMemDump(PointerTo(nAddress), 0, ALL, ALL);
}

TEST(KorMemDump, PadsAShortAddressInFrontOfItsPrefix)
{
    EXPECT_EQ("Address: 0x00x1f000  Length : 0x00000000\n", HeaderAt(0x1F000));
    EXPECT_EQ("Address: 0x000000x1  Length : 0x00000000\n", HeaderAt(1));
    EXPECT_EQ("Address: 0x0xabcdef  Length : 0x00000000\n", HeaderAt(0xABCDEF));
    EXPECT_EQ("Address: 0x0xbe8c1a20  Length : 0x00000000\n", HeaderAt(0xBE8C1A20));
}

TEST(KorMemDump, WritesEveryAddressAsTheStreamOperatorsDo)
{
    for (std::uintptr_t nAddress = UINTPTR_MAX; nAddress != 0; nAddress >>= 1)
        EXPECT_EQ(HeaderByStream(PointerTo(nAddress), 0), HeaderAt(nAddress));
}

TEST(KorMemDump, ShowsTheLengthInEightDigits)
{
    const std::string strBlock(0x123, 'x');
    EXPECT_EQ(HeaderByStream(strBlock.data(), 0x123) + "...\n", Dump(strBlock, 0, 0));
    EXPECT_NE(std::string::npos, Dump(strBlock).find("  Length : 0x00000123\n"));
}

TEST(KorMemDump, ShowsOneLineForSixteenBytes)
{
    EXPECT_EQ(std::vector<std::string>{Line("ABCDEFGHIJKLMNOP", 0)},
              BodyOf(Dump("ABCDEFGHIJKLMNOP")));
}

TEST(KorMemDump, ShowsTheSeventeenthByteInASecondLine)
{
    const std::vector<std::string> vecBody = BodyOf(Dump("ABCDEFGHIJKLMNOPQ"));
    ASSERT_EQ(2u, vecBody.size());
    EXPECT_EQ("0x0010 51 " + std::string(46, ' ') + "Q" + std::string(15, ' '), vecBody[1]);
}

TEST(KorMemDump, EndsEveryLineWithALineFeed)
{
    const std::string strBlock = "abc";
    EXPECT_EQ(HeaderByStream(strBlock.data(), 3) + Line(strBlock, 0) + "\n", Dump(strBlock));
}

TEST(KorMemDump, ShowsHeadAndTailOfALongBlock)
{
    const std::string strBlock(160, 'x');
    const std::vector<std::string> vecExpected = {
        Line(strBlock, 0),   Line(strBlock, 16),  "...",
        Line(strBlock, 112), Line(strBlock, 128), Line(strBlock, 144)};
    EXPECT_EQ(vecExpected, BodyOf(Dump(strBlock, 2, 3)));
}

TEST(KorMemDump, ShowsABlockWholeThatHasNoMoreLinesThanHeadAndTail)
{
    const std::string strBlock(160, 'x');
    EXPECT_EQ(10u, BodyOf(Dump(strBlock, 5, 5)).size());
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 5, 5));
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 10, 0));
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 0, 10));
    EXPECT_EQ(10u, BodyOf(Dump(strBlock, 5, 4)).size()) << "nine lines and the ellipsis";
}

TEST(KorMemDump, ShowsTheEllipsisAloneWithoutHeadAndTail)
{
    EXPECT_EQ(std::vector<std::string>{"..."}, BodyOf(Dump("x", 0, 0)));
}

TEST(KorMemDump, ShowsHeadOrTailAlone)
{
    const std::string strBlock(160, 'x');
    EXPECT_EQ((std::vector<std::string>{Line(strBlock, 0), "..."}), BodyOf(Dump(strBlock, 1, 0)));
    EXPECT_EQ((std::vector<std::string>{"...", Line(strBlock, 144)}), BodyOf(Dump(strBlock, 0, 1)));
}

TEST(KorMemDump, ShowsEveryLineWhenTheSumOfHeadAndTailWraps)
{
    const std::string strBlock(160, 'x');
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 0xFFFFFFFF, 1));
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 1, 0xFFFFFFFF));
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 0x80000000, 0x80000000));
    EXPECT_EQ(Dump(strBlock), Dump(strBlock, 0xFFFFFFFF, 0xFFFFFFFE));
}

TEST(KorMemDump, WritesWhatTheStreamOperatorsWrite)
{
    std::mt19937 oRandom(62);
    for (int i = 0; i < 300; ++i) {
        const std::string strBlock = RandomBlock(oRandom, oRandom() % 400);
        const unsigned int nHead = static_cast<unsigned int>(oRandom() % 12);
        const unsigned int nTail = static_cast<unsigned int>(oRandom() % 12);
        ASSERT_EQ(DumpByStream(strBlock, nHead, nTail), Dump(strBlock, nHead, nTail));
    }
}

TEST(KorMemDump, WritesABlockBeyond64KiB)
{
    std::mt19937 oRandom(63);
    const std::string strBlock = RandomBlock(oRandom, 0x10000 + 40);
    EXPECT_EQ(DumpByStream(strBlock, 1, 5), Dump(strBlock, 1, 5));
    EXPECT_EQ(4100u, Lines(Dump(strBlock)).size());
}

} // namespace
