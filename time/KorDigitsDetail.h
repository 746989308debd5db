#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Decimal digits of fixed width, written and read without a stream.
namespace KorDigits
{

/// "00" to "99", one behind the other.
constexpr char PAIRS[] = "0001020304050607080910111213141516171819"
                         "2021222324252627282930313233343536373839"
                         "4041424344454647484950515253545556575859"
                         "6061626364656667686970717273747576777879"
                         "8081828384858687888990919293949596979899";

/// Writes one digit; @p nNumber in [0, 9].
/// @return the place behind it
inline char* PutOne(char* pEnd, std::uint32_t nNumber)
{
    *pEnd = static_cast<char>('0' + nNumber);
    return pEnd + 1;
}

/// Writes two digits; @p nNumber in [0, 99].
inline char* PutTwo(char* pEnd, std::uint32_t nNumber)
{
    std::memcpy(pEnd, PAIRS + std::size_t(2) * nNumber, 2);
    return pEnd + 2;
}

/// Writes three digits; @p nNumber in [0, 999].
inline char* PutThree(char* pEnd, std::uint32_t nNumber)
{
    return PutTwo(PutOne(pEnd, nNumber / 100), nNumber % 100);
}

/// Writes four digits; @p nNumber in [0, 9999].
inline char* PutFour(char* pEnd, std::uint32_t nNumber)
{
    return PutTwo(PutTwo(pEnd, nNumber / 100), nNumber % 100);
}

constexpr bool IsDigit(int c)
{
    return c >= '0' && c <= '9';
}

/// Reads at most @p nMaxDigits digits from a source that has Peek() and Skip().
/// @param[out] nNumber  their number, modulo 2^32; 0 without any
/// @return how many there were
template <class TSource>
unsigned TakeDigits(TSource& oSource, unsigned nMaxDigits, std::uint32_t& nNumber)
{
    nNumber = 0;
    for (unsigned nRead = 0; nRead < nMaxDigits; ++nRead) {
        const int c = oSource.Peek();
        if (!IsDigit(c))
            return nRead;
        oSource.Skip();
        nNumber = nNumber * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return nMaxDigits;
}

/// Reads a text from its first to its last character; characters are never taken twice.
class CCursor
{
public:
    static constexpr int END = -1;

    CCursor(const char* pBegin, const char* pEnd) : m_pNext(pBegin), m_pEnd(pEnd) {}

    bool IsAtEnd() const { return m_pNext == m_pEnd; }
    /// The next character as an unsigned one, or #END.
    int Peek() const { return IsAtEnd() ? END : static_cast<unsigned char>(*m_pNext); }
    /// Passes the next character; only when Peek() found one.
    void Skip() { ++m_pNext; }
    /// Passes the next character when it is @p c.
    bool Take(char c)
    {
        const bool bTaken = !IsAtEnd() && *m_pNext == c;
        m_pNext += bTaken ? 1 : 0;
        return bTaken;
    }
    /// Reads at most @p nMaxDigits digits as KorDigits::TakeDigits() does.
    unsigned TakeDigits(unsigned nMaxDigits, std::uint32_t& nNumber)
    {
        return KorDigits::TakeDigits(*this, nMaxDigits, nNumber);
    }
    /// Reads exactly two digits, quicker than TakeDigits().
    /// @return whether there were two; nothing is read when not
    bool TakeTwo(std::uint32_t& nNumber)
    {
        if (m_pEnd - m_pNext < 2)
            return false;
        const std::uint32_t nTens = static_cast<unsigned char>(m_pNext[0]) - std::uint32_t{'0'};
        const std::uint32_t nOnes = static_cast<unsigned char>(m_pNext[1]) - std::uint32_t{'0'};
        if (nTens > 9 || nOnes > 9)
            return false;
        nNumber = nTens * 10 + nOnes;
        m_pNext += 2;
        return true;
    }

private:
    const char* m_pNext;
    const char* m_pEnd;
};

} // namespace KorDigits
