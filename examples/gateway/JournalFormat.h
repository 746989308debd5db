#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// @file
/// How a journal looks on disk: a page with two copies of the marks, then records that follow each
/// other in a ring. Numbers have their lowest byte first. A record, padded to 4 bytes:
///
/// | Bytes | What                                                              |
/// |-------|-------------------------------------------------------------------|
/// | 4     | "GwR1"                                                            |
/// | 4     | length of the content                                             |
/// | 8     | sequence number                                                   |
/// | 4     | CRC-32 of all of the above, the record's place in the file and the content |
///
/// The place is in the check sum, so that no copy of a record within the content of another one,
/// and none that was moved, is taken for a record.

/// One entry of a journal.
struct JournalRecord
{
    std::uint64_t m_nSequence = 0; ///< rises from record to record
    std::string m_strContent;      ///< at most #JOURNAL_MAX_CONTENT bytes
};

/// What a journal knows apart from its records.
struct JournalMarks
{
    std::uint64_t m_nDone = 0;     ///< no record up to this one is needed any more
    std::uint64_t m_nReserved = 0; ///< no record beyond this one was ever made
    std::uint32_t m_nBoot = 0;     ///< tells one run of the system from another, or #JOURNAL_CLOSED
};

/// In place of a run of the system: the records were given up to JournalMarks::m_nReserved, which is
/// the next one.
constexpr std::uint32_t JOURNAL_CLOSED = 0;
constexpr std::uint32_t JOURNAL_MAX_CONTENT = 65536;
constexpr std::uint32_t JOURNAL_HEADER = 4096;        ///< what precedes the records
constexpr std::uint32_t JOURNAL_MARKS_SPACING = 2048; ///< from one copy of the marks to the other
constexpr std::uint32_t JOURNAL_MARKS_SIZE = 36;
constexpr std::uint32_t JOURNAL_RECORD_HEADER = 20;
constexpr std::uint32_t JOURNAL_ALIGNMENT = 4;
constexpr std::string_view JOURNAL_RECORD_MAGIC = "GwR1";

/// How many bytes a record takes.
std::uint32_t JournalRecordSize(std::size_t nContent);

/// The bytes of a record that stands at @p nPlace.
std::string EncodeJournalRecord(std::uint32_t nPlace, std::uint64_t nSequence,
                                std::string_view strContent);

/// How many bytes the record takes that begins with these 20; 0 when none does.
std::uint32_t AnnouncedJournalRecordSize(std::string_view strHeader);

/// Reads the bytes of a record that stands at @p nPlace.
/// @return false, with nothing changed, when they are not exactly what was written there
bool DecodeJournalRecord(std::uint32_t nPlace, std::string_view strBytes, JournalRecord& rRecord);

/// The bytes of the marks. The copy with the higher generation counts.
std::string EncodeJournalMarks(std::uint64_t nGeneration, const JournalMarks& oMarks);

/// @return false, with nothing changed, when they are not exactly what was written
bool DecodeJournalMarks(std::string_view strBytes, std::uint64_t& rnGeneration,
                        JournalMarks& rMarks);
