#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

/// The text of a time, piece by piece: numbers and the texts between them.
///
/// Put() writes what the stream's own operators would write, one piece after the other, whatever
/// state the stream is in. The usual state (decimal, right-adjusted, no plus sign, the classic
/// locale) takes a shorter way, on which the digits go into one buffer and the stream gets that.
class CKorTimeText
{
public:
    CKorTimeText() : m_nPieces(0), m_bNegative(false), m_bFilled(false) {}

    /// Adds a text, which must outlive this object.
    void AddText(const char* pszText) { m_aoPieces[m_nPieces++] = {pszText, 0, 0, false}; }
    /// Adds an int. With a width it is written with that width and filled with '0'; with width 0
    /// the stream's own width and fill character hold.
    void AddInt(int nNumber, int nWidth)
    {
        Add(static_cast<unsigned long long>(nNumber), nWidth, true);
        m_bNegative = m_bNegative || nNumber < 0;
    }
    /// Adds an unsigned number in the same way.
    void AddUnsigned(unsigned long long nNumber, int nWidth) { Add(nNumber, nWidth, false); }

    /// Writes the pieces; without any, the stream is not touched.
    std::ostream& Put(std::ostream& oStream) const;
    /// What a new string stream would hold after Put().
    std::string ToString() const;

private:
    struct SPiece
    {
        const char* pszText; ///< null for a number
        unsigned long long nNumber;
        int nWidth;
        bool bInt; ///< whether the number is written as an int
    };
    static constexpr size_t MAX_PIECES = 17;
    /// Room for nine 64-bit numbers and eight texts of up to seven characters.
    static constexpr size_t MAX_LENGTH = 256;

    void Add(unsigned long long nNumber, int nWidth, bool bInt)
    {
        m_aoPieces[m_nPieces++] = {nullptr, nNumber, nWidth, bInt};
        m_bFilled = m_bFilled || nWidth != 0;
    }
    bool IsPlainFor(const std::ios& oStream) const;
    size_t Format(char* pBuffer) const;
    void PutPieces(std::ostream& oStream) const;

    SPiece m_aoPieces[MAX_PIECES];
    size_t m_nPieces;
    bool m_bNegative; ///< whether one of the numbers is negative
    bool m_bFilled;   ///< whether one of the numbers has a width of its own
};
