#pragma once

#include "examples/gateway/Journal.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>

constexpr std::uint32_t JOURNAL_SIZE = 20000;

using JournalRecords = std::map<std::uint64_t, std::string>;

/// All that a journal has, by number.
inline JournalRecords All(Journal& rJournal)
{
    JournalRecords mapRecords;
    JournalRecord oRecord;
    for (std::uint64_t nLast = 0; rJournal.FindAfter(nLast, oRecord); nLast = oRecord.m_nSequence)
        mapRecords[oRecord.m_nSequence] = oRecord.m_strContent;
    return mapRecords;
}

/// What a fresh look at the file gives.
inline JournalRecords AllIn(const std::string& strFile)
{
    Journal oJournal;
    EXPECT_TRUE(oJournal.Open(strFile, JOURNAL_SIZE));
    return All(oJournal);
}

/// A content that tells its number, of a length between 1 and 200.
inline std::string Content(std::uint64_t nSequence)
{
    return std::to_string(nSequence) +
           std::string(static_cast<std::size_t>(nSequence * 37 % 200), 'x');
}

/// Writes records nFirst to nLast.
inline void Fill(Journal& rJournal, std::uint64_t nFirst, std::uint64_t nLast)
{
    for (std::uint64_t n = nFirst; n <= nLast; ++n)
        ASSERT_TRUE(rJournal.Append({n, Content(n)}) && rJournal.Write());
}

/// Where the whole records of a file stand: number to place and size.
inline std::map<std::uint64_t, std::pair<std::size_t, std::size_t>>
Places(const std::string& strBytes)
{
    std::map<std::uint64_t, std::pair<std::size_t, std::size_t>> mapPlaces;
    for (std::size_t n = JOURNAL_HEADER; n < strBytes.size(); n += JOURNAL_ALIGNMENT) {
        JournalRecord oRecord;
        const std::string_view strRest = std::string_view(strBytes).substr(n);
        if (DecodeJournalRecord(static_cast<std::uint32_t>(n), strRest, oRecord))
            mapPlaces[oRecord.m_nSequence] = {n,
                                              JOURNAL_RECORD_HEADER + oRecord.m_strContent.size()};
    }
    return mapPlaces;
}
