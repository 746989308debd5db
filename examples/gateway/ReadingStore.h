#pragma once

#include "examples/gateway/Journal.h"
#include "examples/gateway/MqttSettings.h"

#include <cstdint>
#include <deque>
#include <string>

/// Where readings wait until the broker has acknowledged them.
///
/// A reading goes first into a journal in memory (a file below `/dev/shm`), which outlives SIGKILL
/// and costs no medium anything. What still waits when a write is due goes into the journal on
/// disk, with one write and one sync; a gateway whose broker answers never writes at all.
///
/// | After            | Lost                                  | Sent twice                        |
/// |------------------|---------------------------------------|-----------------------------------|
/// | SIGKILL          | nothing                               | what was not acknowledged yet     |
/// | a power cut      | what came after the last write        | what was acknowledged after it    |
///
/// Where there is no such directory the younger journal lies beside the other one, in the page
/// cache: the same holds, but the system writes it to the medium when it likes. When neither file
/// takes a reading it waits in the process, as long as there are no more than #MOST_IN_PROCESS
/// bytes of them.
///
/// Numbers rise without a gap as long as the system runs; after a power cut they go on with a
/// multiple of #JOURNAL_RUN that was never reached before.
class ReadingStore
{
public:
    /// @param oSettings  are taken by Open()
    explicit ReadingStore(const StoreSettings& oSettings) : m_oSettings(oSettings) {}

    /// Opens both journals, or logs why not and tries again with every Flush().
    /// @return false with `EBUSY` when another process has them
    bool Open();

    /// Writes what waits and leaves nothing in memory: at the orderly end of a process.
    void Close();

    /// The number that the next Append() gives.
    std::uint64_t NextSequence() const { return m_nNext; }
    /// Takes a reading.
    void Append(const std::string& strContent);

    /// Reads the first reading beyond @p nSequence.
    /// @return false when there is none
    bool FindAfter(std::uint64_t nSequence, JournalRecord& rRecord);
    /// No reading up to this one is needed any more.
    void Acknowledge(std::uint64_t nSequence);
    /// The last one that Acknowledge() named, in this process or before.
    std::uint64_t Acknowledged() const { return m_oMarks.m_nDone; }

    /// Whether Flush() has anything to write.
    bool IsFlushDue() const;
    /// Writes what waits to the disk.
    /// @param bWait  whether to wait until it is there
    /// @return false when not all could be written; it is kept and written the next time
    bool Flush(bool bWait);

    /// How many readings wait.
    std::uint64_t Count() const;
    /// Readings lost for lack of room.
    std::uint64_t Dropped() const;
    /// Readings that could not be read back.
    std::uint64_t Damaged() const { return m_nMissing + m_oDisk.Damaged() + m_oYoung.Damaged(); }
    /// Why the last write failed; empty when it did not.
    const std::string& LastError() const { return m_strLastError; }

    static constexpr std::size_t MOST_IN_PROCESS = 262144;

private:
    bool OpenDisk();
    bool OpenYoung();
    bool Fail(const std::string& strFile);
    void GoOnCounting();
    bool Keep(const JournalRecord& oRecord);
    void Shelter();
    void KeepInProcess(const JournalRecord& oRecord);
    void DropFromProcess();
    bool FindInProcess(std::uint64_t nSequence, JournalRecord& rRecord) const;
    bool MoveToDisk();
    bool IsReserveShort() const;
    void ForgetEverywhere(std::uint64_t nSequence);

    StoreSettings m_oSettings;
    Journal m_oDisk;
    Journal m_oYoung;
    std::deque<JournalRecord> m_deqInProcess;
    std::size_t m_nInProcess = 0; // bytes
    JournalMarks m_oMarks;        // of both journals, but for what is not written yet
    std::uint64_t m_nNext = 1;
    std::uint64_t m_nMissing = 0; // when the journals were opened
    std::uint64_t m_nDropped = 0; // before they reached a journal
    std::string m_strLastError;
};
