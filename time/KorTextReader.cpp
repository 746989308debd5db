#include "time/KorTextReaderDetail.h"

#include <exception>

bool CKorTextSource::TakeForm(const char* pForm, int nLength, unsigned* pNumber)
{
    if (!m_oSpace.IsPlain() || m_pEnd - m_pNext < nLength)
        return false;
    *pNumber = 0;
    for (int i = 0; i < nLength; ++i) {
        const unsigned nDigit = static_cast<unsigned char>(m_pNext[i]) - unsigned('0');
        if (pForm[i] == '\0' && nDigit <= 9)
            *pNumber = *pNumber * 10 + nDigit;
        else if (pForm[i] != '\0' && pForm[i] == m_pNext[i])
            *++pNumber = 0;
        else
            return false;
    }
    m_pNext += nLength;
    return true;
}

int CKorStreamSource::Peek()
{
    if (!m_oStream.good()) {
        Fail();
        return END;
    }
    const int c = Call([](std::streambuf& oBuffer) { return oBuffer.sgetc(); });
    if (c == END && m_oStream.good())
        m_oStream.setstate(std::ios_base::eofbit);
    return c;
}

void CKorStreamSource::Skip()
{
    if (Take() == END)
        Fail();
}

unsigned CKorStreamSource::TakeNumber(unsigned nMaxDigits)
{
    std::uint32_t nNumber = 0;
    KorDigits::TakeDigits(*this, nMaxDigits, nNumber);
    return nNumber;
}

int CKorStreamSource::Take()
{
    return Call([](std::streambuf& oBuffer) { return oBuffer.sbumpc(); });
}

// Unlike std::ws of newer libraries, no failure on a stream that is at its end.
void CKorStreamSource::SkipWhiteSpace()
{
    if (!m_oStream.good())
        return;
    for (int c = Peek(); c != END && m_oSpace.Has(c); c = Peek()) {
        if (Take() == END)
            return;
    }
}

/// Calls the stream's buffer. An exception of the buffer's makes the stream bad; it goes on when the
/// stream is to throw then, and always when it is none: a thread that is cancelled unwinds as well,
/// and must not be kept from that.
template <class TOperation>
int CKorStreamSource::Call(TOperation fnOperation)
{
    try {
        return fnOperation(*m_oStream.rdbuf());
    } catch (...) {
        SetBad();
        if ((m_oStream.exceptions() & std::ios_base::badbit) != 0 ||
            std::current_exception() == nullptr)
            throw;
    }
    return END;
}

/// Sets the bad bit without the exception that the stream may be to throw for it.
void CKorStreamSource::SetBad()
{
    try {
        m_oStream.setstate(std::ios_base::badbit);
    } catch (const std::ios_base::failure&) {
        return; // the bit is set
    }
}
