#pragma once

/// @file
/// Programs that are started, watched and ended.
///
/// For new programs; CKorProcess::Spawn() starts a program and forgets it.
///
///     CKorChild oChild;
///     if (!oChild.Start({"ntpd", "-n"}))
///         return Report(oChild.GetLastError());
///     oLoop.WatchHandle(oChild.GetEndHandle(), CKorEventLoop::EVENT_READABLE,
///                       [&](unsigned int) { Restart(oChild.GetExitStatus()); });

#include "KorExport.h"

#include <atomic>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// @addtogroup programs
/// @{

struct SKorChildState;

/// How CKorChild::Start() starts a program.
struct SKorChildOptions
{
    /// The working directory; empty: the parent's. A program that is named by a relative path is
    /// looked up from there.
    std::string m_strWorkDir;
    /// "NAME=value", added to the parent's environment or replacing what is there; of several for
    /// one name the last.
    std::vector<std::string> m_vecEnvironment;
    /// Whether #m_vecEnvironment is all that the program gets.
    bool m_bClearEnvironment = false;
    /// Whether the program leads a process group of its own; CKorChild::Stop() then signals all
    /// of the group.
    bool m_bNewGroup = false;
    /// Whether the program gets SIGTERM when the thread ends that started it.
    bool m_bEndWithParent = false;

    /// Where a standard stream leads.
    enum EStream
    {
        STREAM_INHERIT, ///< Where the parent's leads; `/dev/null` when that is closed.
        STREAM_NULL,    ///< To `/dev/null`.
        STREAM_PIPE,    ///< To the parent, which holds the other end.
        STREAM_STDOUT   ///< Standard error only: where standard output leads.
    };
    EStream m_eInput = STREAM_INHERIT;  ///< Standard input.
    EStream m_eOutput = STREAM_INHERIT; ///< Standard output.
    EStream m_eError = STREAM_INHERIT;  ///< Standard error.
};

/// A program that runs as a child process.
///
/// The program gets its arguments, its environment without the variables by which a service
/// manager talks to its own child (`NOTIFY_SOCKET`, `WATCHDOG_USEC`, `WATCHDOG_PID`, `LISTEN_PID`,
/// `LISTEN_FDS`, `LISTEN_FDNAMES`), three standard streams, default actions and an empty mask for
/// all signals, and nothing else: every other descriptor is closed.
///
/// A thread of the library waits for its end and collects it at once, so that no dead process
/// remains, whether anybody asks or not. Other children of the program are not touched, and
/// SIGCHLD, which comes for every child, stays the program's. A program that ignores SIGCHLD or
/// waits for all children takes the status away: the end is known then, the exit status stays -1.
///
/// **Results.** Operations that fail keep `errno`, which GetLastError() tells.
///
/// **Threads.** Start(), CloseInput() and the destructor belong to one thread; everything else may
/// be called from any thread while that one leaves the object alone. In a process forked from the
/// program the object knows no running child, and its destructor leaves the program's alone.
class TARVO_EXT_API CKorChild
{
public:
    /// No program yet.
    CKorChild();
    /// Ends a program that still runs, as Stop(0) does, and closes the handles.
    virtual ~CKorChild();
    CKorChild(const CKorChild&) = delete;
    CKorChild& operator=(const CKorChild&) = delete;

    /// Starts a program and waits until it runs: a program that cannot be started is told by the
    /// result. Handles of a former start are closed.
    /// @param vecArguments  the program, then its arguments. Without a slash it is searched along
    ///                      the parent's `PATH`.
    /// @param oOptions      how to start it
    /// @return false when it does not run: `ENOENT`, `EACCES` and the like for a program or a
    ///         working directory, `EINVAL` for no arguments, a zero byte within a text, an
    ///         environment entry without name and "=" and for #SKorChildOptions::STREAM_STDOUT
    ///         elsewhere than in the standard error, `EBUSY` while a program runs
    bool Start(const std::vector<std::string>& vecArguments, const SKorChildOptions& oOptions = {});

    /// The process id, also after the end; 0 before a start.
    int GetProcessID() const;

    /// Waits until the program has ended.
    /// @param nTimeout  in milliseconds; 0 only looks, 0xFFFFFFFF waits for ever
    /// @return whether it has ended; false with `ESRCH` before a start
    bool Wait(unsigned int nTimeout);

    /// Whether a program runs.
    bool IsRunning();

    /// The exit status; -1 while it runs, when a signal ended it and when somebody else took the
    /// status away.
    int GetExitStatus() const;

    /// The signal that ended the program, 0 when it runs or exited.
    int GetEndSignal() const;

    /// Sends a signal to the program. A process that has the same id later never gets it.
    /// @return false when it could not be sent: `ESRCH` when the program has ended
    bool Signal(int nSignal);

    /// Ends the program: SIGTERM, and SIGKILL when it still runs after the grace. All of the group
    /// gets both if it leads one.
    /// @param nGrace  in milliseconds; 0xFFFFFFFF never sends SIGKILL
    /// @return whether it has ended; false with `ESRCH` before a start, with `EPERM` for a program
    ///         that runs as somebody else, and with `ETIMEDOUT` for one that the system does not
    ///         let die within ten seconds
    bool Stop(unsigned int nGrace);

    /// A handle that becomes readable when the program has ended and its status is known, for an
    /// event loop. It stays readable, so cancel its ticket then; nobody reads from it. This and the
    /// other handles belong to the object, are closed when a program is executed, and stay open
    /// until the destructor or the next Start().
    /// @return -1 before a start
    int GetEndHandle() const;

    /// Writes to the program's standard input; a blocking handle. -1 unless it is a pipe.
    int GetInputHandle() const { return m_ahStreams[0]; }
    /// Reads the program's standard output; a blocking handle. -1 unless it is a pipe.
    int GetOutputHandle() const { return m_ahStreams[1]; }
    /// Reads the program's standard error; a blocking handle. -1 unless it is a pipe.
    int GetErrorHandle() const { return m_ahStreams[2]; }

    /// Closes the input handle: the program reads the end of its standard input.
    void CloseInput();

    /// `errno` of the last operation that failed, 0 before.
    int GetLastError() const { return m_nLastError; }

protected:
    std::shared_ptr<SKorChildState> m_pState; ///< What the thread that waits shares; null at first.
    pthread_t m_oThread;                      ///< Waits for the end of the program.
    pid_t m_nOwner;                           ///< The process that started the program.
    bool m_bNewGroup;                         ///< Whether the program leads a group.
    int m_ahStreams[3];                       ///< The parent's ends of the pipes, or -1.
    std::atomic<int> m_nLastError;            ///< `errno` of the last operation that failed.

private:
    TARVO_EXT_LOCAL bool Fail(int nError);
    TARVO_EXT_LOCAL bool IsOwn() const;
    TARVO_EXT_LOCAL bool Launch(const std::vector<std::string>& vecArguments,
                                const SKorChildOptions& oOptions);
    TARVO_EXT_LOCAL bool SendTo(pid_t nTarget, int nSignal);
    TARVO_EXT_LOCAL void Release();
};

/// Runs a program to its end and keeps what it writes to its standard output. Its standard error is
/// the parent's.
/// @param pstrInput      its standard input, which may be the same string as @p rstrOutput, or null
///                       for `/dev/null`. A program that does not read all of it is no failure.
/// @param vecArguments   as in CKorChild::Start()
/// @param[out] rstrOutput    the output, also when the result is false
/// @param[out] rnExitStatus  the exit status; 128 and the signal when a signal ended the program;
///                           -1 when the result is false or when somebody else took the status
/// @param nTimeout       in milliseconds; 0xFFFFFFFF waits for ever
/// @return true when it was started and has ended; false with `errno` otherwise, `ETIMEDOUT` after
///         a program that takes too long was killed. A process of its own that still holds its
///         output is not waited for.
TARVO_EXT_API bool KorRunProgram(const std::vector<std::string>& vecArguments,
                                 const std::string* pstrInput, std::string& rstrOutput,
                                 int& rnExitStatus, unsigned int nTimeout);

/// The same without an input.
inline bool KorRunProgram(const std::vector<std::string>& vecArguments, std::string& rstrOutput,
                          int& rnExitStatus, unsigned int nTimeout)
{
    return KorRunProgram(vecArguments, nullptr, rstrOutput, rnExitStatus, nTimeout);
}

/// The same with an input.
inline bool KorRunProgram(const std::vector<std::string>& vecArguments, const std::string& strInput,
                          std::string& rstrOutput, int& rnExitStatus, unsigned int nTimeout)
{
    return KorRunProgram(vecArguments, &strInput, rstrOutput, rnExitStatus, nTimeout);
}

/// @}
