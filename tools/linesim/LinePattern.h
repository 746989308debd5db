#pragma once

/// @file
/// Bytes as a script of linesim writes them: some that are sent, or a pattern for some that come.

#include <cstddef>
#include <string>
#include <vector>

/// What a pattern says of the bytes that came so far.
enum class EMatch
{
    NO,      ///< they are others, whatever follows
    PARTIAL, ///< they fit so far, more are needed
    YES      ///< they fit
};

/// A sequence of bytes, some of which may be open.
class LinePattern
{
public:
    /// Reads `01 03 "text\r\n" ?? 00{4} * crc16`.
    /// @param strText         the items, with blanks between them
    /// @param[out] strError   why it is none, a part of a sentence
    /// @return whether it was read
    bool Parse(const std::string& strText, std::string& strError);

    /// Compares the first bytes of a text.
    /// @param strBytes      what came
    /// @param[out] nLength  how many bytes the pattern takes; when it does not fit, how many come
    ///                      before the first wrong one
    EMatch Match(const std::string& strBytes, std::size_t& nLength) const;

    /// Whether every byte is given, so that they can be sent.
    bool IsExact() const;

    /// The bytes of an exact pattern.
    std::string Bytes() const;

private:
    enum EItem : int
    {
        ITEM_ANY = 256, // below it: that byte
        ITEM_CRC_LOW,
        ITEM_CRC_HIGH,
        ITEM_GAP
    };

    bool ParseItem(const std::string& strText, std::size_t& nPos, std::string& strError);
    bool Repeat(const std::string& strText, std::size_t& nPos, std::size_t nFirst);
    std::size_t FittingItems(const std::string& strBytes, std::size_t nPos, std::size_t nFirst,
                             std::size_t nEnd) const;
    EMatch MatchBehindGap(const std::string& strBytes, std::size_t& nLength) const;

    std::vector<int> m_vecItems;
    std::size_t m_nGap = 0; // index of ITEM_GAP, or the number of items
};
