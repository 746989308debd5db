#pragma once

/// @file
/// A daemon's one instance, shown by a file with its process number.

#include "KorExport.h"

#include <string>

/// @addtogroup daemons
/// @{

/// A PID file that one process at a time can hold.
///
///     CKorPidFile oPidFile;
///     if (!oPidFile.Acquire("/run/gateway.pid"))
///         KorGetLog().Write(CKorLog::LEVEL_ERROR, "process %d runs already: %s",
///                           oPidFile.GetOwner(), std::strerror(oPidFile.GetLastError()));
///
/// A lock on the file says that somebody runs, not its presence: what a crash or a power cut left
/// behind keeps nobody from starting. Programs that are started do not inherit the lock, and a
/// forked copy of the process closes it: the object holds nothing there.
///
/// An object serves one thread at a time; different objects may be used on different threads.
class TARVO_EXT_API CKorPidFile
{
public:
    /// Holds nothing.
    CKorPidFile();

    /// Calls Release().
    virtual ~CKorPidFile();

    CKorPidFile(const CKorPidFile&) = delete;
    CKorPidFile& operator=(const CKorPidFile&) = delete;

    /// Takes the file: creates it where it is missing, locks it, and writes the process number and
    /// a line feed into it. Its mode is 0644 then. Never waits.
    /// @param pszName  the file; a relative name counts from the present working directory
    /// @return false, with the reason in `errno` and GetLastError():
    ///         - `EWOULDBLOCK`: another process, or another object of this one, holds it, see
    ///           GetOwner();
    ///         - `EINVAL`: it cannot be a PID file - neither empty nor a single number, no regular
    ///           file, or a link (a file with a second name included) - and is unchanged;
    ///         - `EBUSY`: the object holds a file already, and goes on holding it;
    ///         - what the system says, for example `EACCES`.
    bool Acquire(const char* pszName);

    /// Removes the file and lets go of it. A file that somebody put in its place stays. Without
    /// effect when nothing is held, in a forked copy of the process above all.
    void Release();

    /// Whether the object holds its file, in this process.
    bool IsHeld() const;

    /// Who held the file when the last Acquire() failed with `EWOULDBLOCK`.
    /// @return the process number; 0 when nobody did, or when the other one was about to write it
    int GetOwner() const { return m_nOwner; }

    /// The reason of the last Acquire() that failed, or why the last Release() could not remove the
    /// file; 0 after a success.
    int GetLastError() const { return m_nLastError; }

protected:
    std::string m_strName; ///< the file's name from the root
    int m_hFile;           ///< the locked file, or -1
    int m_nProcess;        ///< the process that locked it
    int m_nOwner;          ///< see GetOwner()
    int m_nLastError;      ///< see GetLastError()

private:
    friend class CKorPidFileList;

    TARVO_EXT_LOCAL int TryToAcquire();
    TARVO_EXT_LOCAL int TakeOver(int hFile);
    TARVO_EXT_LOCAL void Close();

    CKorPidFile* m_pNext; // of the files that this process holds
};

/// @}
