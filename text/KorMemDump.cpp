#include "text/KorMemDump.h"

#include "text/KorStringDetail.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace
{

constexpr char DIGITS[] = "0123456789abcdef";
constexpr unsigned int BYTES_PER_LINE = 16;

/// What stands for each byte in the character column. A table, because whether a byte of a
/// telegram is printable cannot be predicted.
constexpr std::array<char, 256> CHARACTER_OF = [] {
    std::array<char, 256> acCharacters{};
    for (size_t c = 0; c < acCharacters.size(); ++c)
        acCharacters[c] = c >= 0x20 && c <= 0x7E ? static_cast<char>(c) : '.';
    return acCharacters;
}();

// The columns of a line: the offset, which ends at a fixed place, a blank, two halves of 8 x 3
// characters parted by a blank, the characters, and the line's end.
constexpr unsigned int OFFSET_END = sizeof "0x01234567" - 1;
constexpr unsigned int FIRST_HALF = OFFSET_END + 1;
constexpr unsigned int SECOND_HALF = FIRST_HALF + 8 * 3 + 1;
constexpr unsigned int CHARACTERS = SECOND_HALF + 8 * 3;
constexpr unsigned int LINE_END = CHARACTERS + BYTES_PER_LINE;
constexpr unsigned int LINE_SIZE = LINE_END + 1;

constexpr size_t LONGEST_HEADER = sizeof "Address: 0x0x0123456789abcdef  Length : 0x01234567\n";

/// Writes the digits of a number in front of pcEnd, zeros on the left up to nMinDigits.
/// @return where they begin
char* PutHex(char* pcEnd, std::uintptr_t nValue, size_t nMinDigits)
{
    for (size_t nDigits = 0; nDigits < nMinDigits || nValue != 0; ++nDigits, nValue >>= 4)
        *--pcEnd = DIGITS[nValue & 0xF];
    return pcEnd;
}

/// A number in hexadecimal, without leading zeros but for those that nMinDigits asks for.
std::string Hex(std::uintptr_t nValue, size_t nMinDigits)
{
    char acDigits[2 * sizeof nValue];
    char* const pcEnd = acDigits + sizeof acDigits;
    const char* const pcBegin = PutHex(pcEnd, nValue, nMinDigits);
    return std::string(pcBegin, static_cast<size_t>(pcEnd - pcBegin));
}

void PutBytes(char* pcHex, char* pcCharacters, const char* pcBytes, unsigned int nBytes)
{
    for (std::size_t i = 0; i < nBytes; ++i) {
        const unsigned char c = static_cast<unsigned char>(pcBytes[i]);
        pcHex[i * 3] = DIGITS[c >> 4];
        pcHex[i * 3 + 1] = DIGITS[c & 0xF];
        pcCharacters[i] = CHARACTER_OF[c];
    }
}

/// Writes a line that ends at LINE_END.
/// @return where it begins
char* PutLine(char (&acLine)[LINE_SIZE], const char* data, unsigned int length, unsigned int offset)
{
    std::fill(acLine + OFFSET_END, acLine + LINE_END, ' ');
    const unsigned int nBytes = data != nullptr ? std::min(length - offset, BYTES_PER_LINE) : 0;
    const unsigned int nFirst = std::min(nBytes, BYTES_PER_LINE / 2);
    PutBytes(acLine + FIRST_HALF, acLine + CHARACTERS, data + offset, nFirst);
    PutBytes(acLine + SECOND_HALF, acLine + CHARACTERS + nFirst, data + offset + nFirst,
             nBytes - nFirst);
    char* const pcBegin = PutHex(acLine + OFFSET_END, offset, 4) - 2;
    pcBegin[0] = '0';
    pcBegin[1] = 'x';
    return pcBegin;
}

void AppendLines(std::string& strText, const char* data, unsigned int length, unsigned int nFirst,
                 unsigned int nEnd)
{
    char acLine[LINE_SIZE];
    acLine[LINE_END] = '\n';
    for (unsigned int nLine = nFirst; nLine < nEnd; ++nLine) {
        const char* const pcBegin = PutLine(acLine, data, length, nLine * BYTES_PER_LINE);
        strText.append(pcBegin, static_cast<size_t>(acLine + LINE_SIZE - pcBegin));
    }
}

void AppendHeader(std::string& strText, const char* data, unsigned int length)
{
    // Wanted: the address brings a "0x" of its own, with zeros in front of it up to 8 characters.
    const std::string strAddress =
        KorConcat({"0x", Hex(reinterpret_cast<std::uintptr_t>(data), 1)});
    strText.append("Address: 0x").append(8 - std::min<size_t>(strAddress.size(), 8), '0');
    strText.append(strAddress).append("  Length : 0x").append(Hex(length, 8)).append("\n");
}

} // namespace

std::string KorMemDumpLine(const char* data, unsigned int length, unsigned int offset)
{
    char acLine[LINE_SIZE];
    const char* const pcBegin = PutLine(acLine, data, length, offset);
    return std::string(pcBegin, static_cast<size_t>(acLine + LINE_END - pcBegin));
}

std::string KorMemDump(const char* data, unsigned int length, unsigned int headLines,
                       unsigned int tailLines)
{
    if (data == nullptr)
        return "";

    const unsigned int nLines = length / BYTES_PER_LINE + (length % BYTES_PER_LINE != 0);
    const bool bAll = static_cast<std::uint64_t>(headLines) + tailLines >= nLines;
    const unsigned int nShown = bAll ? nLines : headLines + tailLines + 1;

    std::string strText;
    strText.reserve(LONGEST_HEADER + static_cast<size_t>(nShown) * LINE_SIZE);
    AppendHeader(strText, data, length);
    if (bAll) {
        AppendLines(strText, data, length, 0, nLines);
    } else {
        AppendLines(strText, data, length, 0, headLines);
        strText.append("...\n");
        AppendLines(strText, data, length, nLines - tailLines, nLines);
    }
    return strText;
}
