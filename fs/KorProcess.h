#pragma once

/// @file
/// The calling process, its directories, and other programs.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#programs

#include "KorExport.h"

#include <string>

/// @addtogroup programs
/// @{

/// Tells a daemon about its process and starts other programs.
///
/// The static operations keep no state and may run on any number of threads.
class TARVO_EXT_API CKorProcess
{
public:
    /// Takes the process id, see Refresh().
    CKorProcess();
    virtual ~CKorProcess();

    /// Takes the id of the calling process anew, which differs after a fork.
    /// @return the process id
    int Refresh();

    /// Starts a program and forgets it: nobody waits for it, and the caller learns neither its
    /// process id nor whether it could be started. A child that could not start the program ends
    /// with exit status 255, without running the caller's exit handlers. The calling thread is
    /// suspended until the program runs or the child has ended. Without a file or without arguments
    /// the child ends with 255 too.
    ///
    /// A child that has ended stays a zombie, an entry in the system's table, until the program
    /// waits for it; `signal(SIGCHLD, SIG_IGN)` spares it that. The child inherits the calling
    /// thread's signal mask: a signal that the thread blocks does not reach the program either.
    /// @param pszFile    the program, searched along `PATH` when it holds no slash
    /// @param ppszArgs   its arguments, the program name first, a null pointer last; the caller's
    ///                   open descriptors and environment are inherited
    /// @return always -1
    static int Spawn(const char* pszFile, const char** ppszArgs);

    /// The current working directory with a trailing separator.
    /// @return the directory; "./" when the system does not tell it or when it is longer than 349
    ///         bytes
    static std::string GetCurrentWorkDir();

    /// The directory that holds the running program file, with a trailing separator.
    /// @return the directory; empty when the system does not tell it (no `/proc`). The system's
    ///         answer is cut at 2047 bytes.
    static std::string GetCurrentProgDir();

protected:
    int m_nProcessID;    ///< The process id that Refresh() took.
    int m_nHandle;       ///< -1: none. Only Refresh() sets it.
    std::string m_sName; ///< Empty; for derived classes.
};

/// @}
