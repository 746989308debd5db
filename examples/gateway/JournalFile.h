#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The file of a journal: bytes at places, for one process at a time.
///
/// Operations that fail leave `errno`.
class JournalFile
{
public:
    JournalFile() = default;
    ~JournalFile();
    JournalFile(const JournalFile&) = delete;
    JournalFile& operator=(const JournalFile&) = delete;

    /// Opens or makes the file, readable and writable by its owner alone, and locks it.
    /// @return false; with `EBUSY` when another process has it, with `EINVAL` for what is no
    ///         regular file, with `EPERM` for one of another user
    bool Open(const std::string& strFile);
    bool IsOpen() const { return m_nHandle != -1; }
    void Close();
    /// Closes the file and takes it away.
    void Remove();

    /// Its present size in bytes; 0 when it cannot be told.
    std::uint32_t Size() const;

    /// Writes all of the bytes. A size limit of the process is a failure, not a signal.
    bool Write(std::uint32_t nPlace, std::string_view strBytes) const;

    /// Reads as many bytes as there are, at most @p nLength; none when that fails.
    std::string Read(std::uint32_t nPlace, std::size_t nLength) const;

    /// Cuts the file off. What is shorter stays as it is.
    void Truncate(std::uint32_t nSize) const;

    /// Waits until everything written has reached the medium.
    bool Sync() const;

    /// The same on a thread of its own, which logs a failure: a slow medium holds nobody up.
    void SyncAside() const;

private:
    bool Lock() const;

    int m_nHandle = -1;
    std::string m_strFile;
};
