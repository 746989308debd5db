#pragma once

#include <string>

/// A process id file that one process at a time can hold.
///
/// The lock on the file says whether somebody runs, not the file's presence: a file that a power
/// cut left behind does not keep the next start from succeeding.
class PidFile
{
public:
    explicit PidFile(const std::string& strName) : m_strName(strName) {}
    ~PidFile() { Release(); }
    PidFile(const PidFile&) = delete;
    PidFile& operator=(const PidFile&) = delete;

    /// Writes the process id into the file and holds it until Release().
    /// @param[out] strError  why it failed
    /// @return false when another process holds the file or it cannot be written
    bool Acquire(std::string& strError);

    /// Empties the file and lets go of it.
    void Release();

private:
    std::string Content() const;

    std::string m_strName;
    int m_hFile = -1;
};
