#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>

// Texts of numbers as the operators of a stream write them. In the state in which a stream
// usually is, the text is put together in a buffer and the stream gets that; in every other state
// the operators themselves write it.

/// Whether a stream in this state writes numbers as plain digits. A width of the stream counts
/// only for what is written first: @p bOwnWidth says whether that has one of its own.
bool KorWritesPlainly(const std::ostream& oStream, bool bOwnWidth);

/// Whether a new string stream does so.
bool KorNewStreamWritesPlainly();

/// Writes a text that was put together. Leaves width and fill character as the operators do.
/// @param bFilled  whether one of the numbers in it was filled with '0' to a width
std::ostream& KorPutPlainText(std::ostream& oStream, const char* pText, const char* pEnd,
                              bool bFilled);

/// A text that is put together in a buffer.
class CKorPlainText
{
public:
    CKorPlainText() : m_pEnd(m_acText), m_bFilled(false) {}

    /// Adds a number that is not negative, filled with '0' to at least @p nWidth digits.
    template <class TNumber>
    void Number(TNumber nNumber, int nWidth)
    {
        Digits(static_cast<std::uint64_t>(nNumber), nWidth);
    }
    void Text(const char* pszText)
    {
        for (; *pszText != '\0'; ++pszText)
            *m_pEnd++ = *pszText;
    }

    std::ostream& Put(std::ostream& oStream) const
    {
        return KorPutPlainText(oStream, m_acText, m_pEnd, m_bFilled);
    }
    std::string ToString() const
    {
        return std::string(m_acText, static_cast<std::size_t>(m_pEnd - m_acText));
    }

private:
    void Digits(std::uint64_t nNumber, int nWidth);

    char m_acText[64]; ///< room for two numbers of 20 digits and what else the longest text has
    char* m_pEnd;
    bool m_bFilled;
};

/// A text that a stream's own operators write.
class CKorStreamText
{
public:
    explicit CKorStreamText(std::ostream& oStream) : m_oStream(oStream) {}

    /// Writes a number, filled with '0' to @p nWidth digits. With width 0 the stream's own width
    /// and fill character hold.
    template <class TNumber>
    void Number(TNumber nNumber, int nWidth)
    {
        if (nWidth != 0) {
            m_oStream.width(nWidth);
            m_oStream.fill('0'); // wanted: nobody restores it
        }
        m_oStream << nNumber;
    }
    void Text(const char* pszText) { m_oStream << pszText; }

private:
    std::ostream& m_oStream;
};

/// Writes the text that fnAdd adds to a CKorPlainText or a CKorStreamText.
/// @param bPlain  whether all of its numbers are plain ones, none of them negative
template <class TAdd>
std::ostream& KorPutText(std::ostream& oStream, bool bPlain, TAdd fnAdd)
{
    if (bPlain && KorWritesPlainly(oStream, false)) {
        CKorPlainText oText;
        fnAdd(oText);
        return oText.Put(oStream);
    }
    CKorStreamText oText(oStream);
    fnAdd(oText);
    return oStream;
}
