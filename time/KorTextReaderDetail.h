#pragma once

#include "time/KorDigitsDetail.h"
#include "time/KorPlainLocaleDetail.h"

#include <algorithm>
#include <cstddef>
#include <istream>
#include <locale>
#include <streambuf>

// Two sources of characters with the states of a stream: reading on after the end, or after a
// failure, fails and gives nothing more.

/// What a locale takes for white space.
class CKorWhiteSpace
{
public:
    /// In the locale of new streams.
    CKorWhiteSpace() : m_bPlain(KorIsPlainLocale(m_oLocale)) {}
    explicit CKorWhiteSpace(const std::locale& oLocale)
        : m_oLocale(oLocale), m_bPlain(KorIsPlainLocale(oLocale))
    {
    }

    /// Whether a digit is none and a blank is.
    bool IsPlain() const { return m_bPlain; }
    bool Has(int c) const
    {
        // The usual cases, in much less time than it takes to look into the locale.
        if (m_bPlain && (c == ' ' || KorDigits::IsDigit(c)))
            return c == ' ';
        return std::isspace(static_cast<char>(c), m_oLocale);
    }

private:
    std::locale m_oLocale;
    bool m_bPlain;
};

/// A text, read as a new string stream over it would read it.
class CKorTextSource
{
public:
    static constexpr int END = KorDigits::CCursor::END;

    CKorTextSource(const char* pBegin, const char* pEnd)
        : m_pNext(pBegin), m_pEnd(pEnd), m_bEnd(false), m_bFail(false)
    {
    }

    /// The next character as an unsigned one, or #END.
    int Peek()
    {
        if (m_pNext != m_pEnd)
            return static_cast<unsigned char>(*m_pNext);
        m_bFail = m_bFail || m_bEnd;
        m_bEnd = true;
        return END;
    }
    /// Passes the next character; only when Peek() found one.
    void Skip() { ++m_pNext; }
    /// Reads a number of at most @p nMaxDigits digits; 0 without any.
    unsigned TakeNumber(unsigned nMaxDigits)
    {
        unsigned nNumber = 0;
        for (const char* pNext = m_pNext; pNext != m_pEnd; ++pNext) {
            const unsigned nDigit = static_cast<unsigned char>(*pNext) - unsigned('0');
            if (nDigit > 9) {
                m_pNext = pNext;
                return nNumber;
            }
            nNumber = nNumber * 10 + nDigit;
            if (--nMaxDigits == 0) {
                m_pNext = pNext + 1;
                return nNumber;
            }
        }
        m_pNext = m_pEnd;
        Peek(); // the number ended at the end
        return nNumber;
    }
    void SkipWhiteSpace()
    {
        while (m_pNext != m_pEnd && m_oSpace.Has(static_cast<unsigned char>(*m_pNext)))
            ++m_pNext;
        m_bEnd = m_pNext == m_pEnd;
    }
    /// Reads the numbers of a text that has zeros in @p pForm where the digits of its numbers are
    /// and what stands between them elsewhere. Takes nothing when the text differs from that.
    /// @param[out] pNumber  receives the numbers, and a 0 behind what follows the last of them
    bool TakeForm(const char* pForm, int nLength, unsigned* pNumber);
    void Fail()
    {
        m_bFail = true;
        m_pEnd = m_pNext;
    }
    bool HasFailed() const { return m_bFail; }

private:
    const char* m_pNext;
    const char* m_pEnd;
    bool m_bEnd;  ///< a stream's end bit
    bool m_bFail; ///< a stream's fail bit
    CKorWhiteSpace m_oSpace;
};

/// A stream, of which the buffer is read and one sentry is made. State, exceptions and tied stream
/// are treated as by std::istream::peek() and get(), which would make a sentry for each character.
class CKorStreamSource
{
public:
    static constexpr int END = KorDigits::CCursor::END;

    explicit CKorStreamSource(std::istream& oStream)
        : m_oStream(oStream), m_oSpace(oStream.getloc())
    {
        if (oStream.good())
            std::istream::sentry(oStream, true);
    }

    /// The next character as an unsigned one, or #END.
    int Peek();
    /// Passes the next character; only when Peek() found one.
    void Skip();
    /// Reads a number of at most @p nMaxDigits digits; 0 without any.
    unsigned TakeNumber(unsigned nMaxDigits);
    void SkipWhiteSpace();
    void Fail() { m_oStream.setstate(std::ios_base::failbit); }
    bool HasFailed() const { return m_oStream.fail(); }

private:
    template <class TOperation>
    int Call(TOperation fnOperation);
    int Take();
    void SetBad();

    std::istream& m_oStream;
    CKorWhiteSpace m_oSpace;
};

/// Takes the next character when it is the separator.
/// @return whether it was
template <class TSource>
bool KorTakeSeparator(TSource& oSource, char cSeparator)
{
    const bool bFound = oSource.Peek() == static_cast<unsigned char>(cSeparator);
    if (bFound)
        oSource.Skip();
    return bFound;
}

/// Takes the next character unless it is a digit; fails at the end.
template <class TSource>
void KorTakeNonDigit(TSource& oSource)
{
    const int c = oSource.Peek();
    if (c == TSource::END)
        oSource.Fail();
    else if (!KorDigits::IsDigit(c))
        oSource.Skip();
}
