#pragma once

#include "examples/gateway/JournalFile.h"
#include "examples/gateway/JournalFormat.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

/// Records in a file of limited size, the oldest of which give way to new ones.
///
/// What was written with Write() outlives SIGKILL, and after Sync() a power cut too. A file that
/// was cut off or damaged anywhere gives back every record that is still whole, and nothing else.
/// Each record that waits takes 16 bytes of memory.
///
/// Operations that fail leave `errno`.
class Journal
{
public:
    /// Opens or makes the file and finds its records.
    /// @param strFile   its name
    /// @param nMaxSize  what it may grow to, in bytes
    /// @return false as JournalFile::Open() does
    bool Open(const std::string& strFile, std::uint32_t nMaxSize);
    bool IsOpen() const { return m_oFile.IsOpen(); }
    /// Takes the file away.
    void Remove() { m_oFile.Remove(); }

    /// Whether Open() found marks.
    bool HasMarks() const { return m_nGeneration != 0; }
    const JournalMarks& Marks() const { return m_oMarks; }
    /// Writes the marks at once.
    bool SetMarks(const JournalMarks& oMarks);

    /// Takes a record with a higher number than all before, to be written with Write() at the
    /// latest.
    /// @return false when something could not be written; see Newest() for what was
    bool Append(const JournalRecord& oRecord);
    /// Writes what Append() took. What cannot be written is forgotten.
    bool Write();
    /// Waits until everything written has reached the medium.
    bool Sync() const { return m_oFile.Sync(); }
    /// The same without waiting.
    void SyncAside() const { m_oFile.SyncAside(); }

    /// Reads the first written record beyond @p nSequence. Those that turn out to be damaged are
    /// forgotten and counted.
    /// @return false when there is none
    bool FindAfter(std::uint64_t nSequence, JournalRecord& rRecord);

    /// Forgets the records up to this one.
    void Forget(std::uint64_t nSequence);

    /// How many records there are.
    std::size_t Count() const { return m_deqIndex.size(); }
    /// The number of the newest one that was ever here; 0 when none was.
    std::uint64_t Newest() const { return m_nNewest; }
    /// Records that gave way to others.
    std::uint64_t Dropped() const { return m_nDropped; }
    /// The highest number of those; 0 for none.
    std::uint64_t NewestDropped() const { return m_nNewestDropped; }
    /// How many numbers beyond @p nLast have no record, up to the newest one: what was there was
    /// damaged. With 0 the first record is the first that ever was.
    std::uint64_t Missing(std::uint64_t nLast) const;
    /// Records that were found damaged since the journal is open.
    std::uint64_t Damaged() const { return m_nDamaged; }

private:
    /// Where a record stands.
    struct Entry
    {
        std::uint64_t m_nSequence;
        std::uint32_t m_nPlace;
        std::uint32_t m_nSize;
    };

    void ReadMarks();
    void Scan();
    std::uint32_t FindFrom(std::uint32_t nPlace, std::string_view strWindow, std::size_t nBegin);
    void Sort();
    void MakeRoom(std::uint32_t nSize);
    void DropOldest();
    bool ReadAt(std::uint32_t nPlace, JournalRecord& rRecord) const;

    JournalFile m_oFile;
    std::uint32_t m_nMaxSize = 0;
    std::uint64_t m_nGeneration = 0;
    JournalMarks m_oMarks;
    std::deque<Entry> m_deqIndex;          // in the order of the numbers
    std::uint32_t m_nEnd = JOURNAL_HEADER; // where the next record goes
    std::string m_strUnwritten;            // ends at m_nEnd
    std::uint64_t m_nNewest = 0;
    std::uint64_t m_nDropped = 0;
    std::uint64_t m_nNewestDropped = 0;
    std::uint64_t m_nDamaged = 0;
};

/// Numbers are given in runs. A run begins at a multiple of this, so that a gap in front of such a
/// number is no lost record.
constexpr std::uint64_t JOURNAL_RUN = 1000000;
