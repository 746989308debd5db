#include "text/KorMemDump.h"

#include <algorithm>
#include <cstdint>

namespace
{

constexpr char DIGITS[] = "0123456789abcdef";
constexpr unsigned int BYTES_PER_LINE = 16;

// The columns behind the offset: a blank, two halves of 8 x 3 characters parted by a blank, and
// the characters.
constexpr unsigned int FIRST_HALF = 1;
constexpr unsigned int SECOND_HALF = FIRST_HALF + 8 * 3 + 1;
constexpr unsigned int CHARACTERS = SECOND_HALF + 8 * 3;
constexpr unsigned int WIDTH = CHARACTERS + BYTES_PER_LINE;

constexpr size_t LONGEST_HEADER = sizeof "Address: 0x0x0123456789abcdef  Length : 0x01234567\n";
constexpr size_t LONGEST_LINE = sizeof "0x01234567\n" + WIDTH;

size_t CountDigits(std::uintptr_t nValue)
{
    size_t nDigits = 1;
    while ((nValue >>= 4) != 0)
        ++nDigits;
    return nDigits;
}

void AppendHex(std::string& strText, std::uintptr_t nValue, size_t nMinDigits)
{
    const size_t nDigits = std::max(CountDigits(nValue), nMinDigits);
    strText.append(nDigits, '0');
    for (auto it = strText.rbegin(); nValue != 0; nValue >>= 4)
        *it++ = DIGITS[nValue & 0xF];
}

/// Writes "0x" and the digits, with zeros in front of the "0x" up to 8 characters.
void AppendPaddedAddress(std::string& strText, std::uintptr_t nAddress)
{
    const size_t nWidth = CountDigits(nAddress) + 2;
    strText.append(nWidth < 8 ? 8 - nWidth : 0, '0').append("0x");
    AppendHex(strText, nAddress, 1);
}

void AppendLine(std::string& strText, const char* data, unsigned int length, unsigned int offset)
{
    char acColumns[WIDTH];
    std::fill_n(acColumns, WIDTH, ' ');
    const unsigned int nBytes = data != nullptr ? std::min(length - offset, BYTES_PER_LINE) : 0;
    for (unsigned int i = 0; i < nBytes; ++i) {
        const unsigned char c = static_cast<unsigned char>(data[offset + i]);
        char* const pcHex = acColumns + (i < 8 ? FIRST_HALF + i * 3 : SECOND_HALF + (i - 8) * 3);
        pcHex[0] = DIGITS[c >> 4];
        pcHex[1] = DIGITS[c & 0xF];
        acColumns[CHARACTERS + i] = c >= 0x20 && c <= 0x7E ? data[offset + i] : '.';
    }
    strText += "0x";
    AppendHex(strText, offset, 4);
    strText.append(acColumns, WIDTH);
}

void AppendLines(std::string& strText, const char* data, unsigned int length, unsigned int nFirst,
                 unsigned int nEnd)
{
    for (unsigned int nLine = nFirst; nLine < nEnd; ++nLine) {
        AppendLine(strText, data, length, nLine * BYTES_PER_LINE);
        strText += '\n';
    }
}

void AppendHeader(std::string& strText, const char* data, unsigned int length)
{
    strText += "Address: 0x"; // Wanted: the address brings a "0x" of its own.
    AppendPaddedAddress(strText, reinterpret_cast<std::uintptr_t>(data));
    strText += "  Length : 0x";
    AppendHex(strText, length, 8);
    strText += '\n';
}

} // namespace

std::string KorMemDumpLine(const char* data, unsigned int length, unsigned int offset)
{
    std::string strText;
    strText.reserve(LONGEST_LINE);
    AppendLine(strText, data, length, offset);
    return strText;
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
    strText.reserve(LONGEST_HEADER + nShown * LONGEST_LINE);
    AppendHeader(strText, data, length);
    if (bAll) {
        AppendLines(strText, data, length, 0, nLines);
    } else {
        AppendLines(strText, data, length, 0, headLines);
        strText += "...\n";
        AppendLines(strText, data, length, nLines - tailLines, nLines);
    }
    return strText;
}
