#pragma once

// The bytes that a line holds. Not installed.

#include <cstddef>
#include <string>

/// Bytes that are appended in blocks and taken from the front. Appending, taking and searching
/// cost time in proportion to the bytes, however they are mixed.
class CKorLineBuffer
{
public:
    static constexpr std::size_t NOT_FOUND = static_cast<std::size_t>(-1);

    std::size_t Size() const { return m_strBytes.size() - m_nBegin; }
    const char* Data() const { return m_strBytes.data() + m_nBegin; }

    /// Makes the next Append() of so many bytes work without allocation.
    void MakeRoom(std::size_t nLength);
    void Append(const char* pData, std::size_t nLength);
    /// Removes the first @p nLength bytes, which are there.
    void Drop(std::size_t nLength);
    void Clear() { Drop(Size()); }

    /// The position behind the first delimiter among the first @p nMax bytes, or #NOT_FOUND.
    /// Remembers how far it searched for the same delimiter.
    std::size_t FindEnd(const std::string& strDelimiter, std::size_t nMax);

private:
    std::string m_strBytes;
    std::size_t m_nBegin = 0;    // of the bytes not taken yet
    std::string m_strDelimiter;  // the one searched for last
    std::size_t m_nSearched = 0; // no delimiter begins before this position
};
