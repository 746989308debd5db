#pragma once

/// @file
/// A character buffer that one thread fills and another drains.

#include "KorExport.h"
#include "base/KorMutex.h"
#include "base/KorThreadSafety.h"

#include <string>

/// @addtogroup threads
/// @{

/// A character buffer with a mutex of its own.
///
/// It holds any byte value, zero included, and grows as long as memory lasts; nothing is ever
/// discarded unasked. Any number of threads may call any operation at the same time, and each
/// sees and leaves the buffer whole. Only RemoveString(const std::string&) works in two steps:
/// while it runs, no other thread may remove, though all may append.
///
/// Taking characters from the front moves the rest up within the memory it already has, so a
/// removal costs the characters taken plus one move of those that stay.
class TARVO_EXT_API CKorMutexBuffer
{
public:
    /// Makes an empty buffer.
    CKorMutexBuffer();
    /// Frees the buffer. No thread may be using it any more.
    virtual ~CKorMutexBuffer();
    CKorMutexBuffer(const CKorMutexBuffer&) = delete;
    CKorMutexBuffer& operator=(const CKorMutexBuffer&) = delete;

    /// Appends one character. An exception for lack of memory passes through; the buffer is then
    /// unchanged and usable.
    void AddChar(char c);

    /// Appends a text. An exception for lack of memory passes through; the buffer is then
    /// unchanged and usable.
    void AddString(const std::string& strText);

    /// A copy of everything held. Removes nothing.
    std::string GetBuffer();

    /// The number of characters held.
    unsigned int GetLength();

    /// Whether @p strText occurs anywhere in the buffer. The empty text always does.
    bool ContainsString(const std::string& strText);

    /// Discards everything held.
    void ClearBuffer();

    /// Removes and returns the first @p nCount characters, or all when fewer are held.
    std::string RemoveString(unsigned int nCount);

    /// Removes and returns everything up to and including the first @p strDelimiter.
    /// @return the text with the delimiter at its end; empty, with nothing removed, when the
    ///         delimiter does not occur or is empty
    std::string RemoveString(const std::string& strDelimiter);

protected:
    std::string m_sBuffer KOR_GUARDED_BY(m_oMutex); ///< The characters held, in the order of their
                                                    ///< arrival.
    CKorMutex m_oMutex;                             ///< Guards #m_sBuffer.
};

/// @}
