#pragma once

/// @file
/// The application class of daemons.

#include "KorExport.h"
#include "app/KorConApplication.h"
#include "app/KorFormerSignals.h"
#include "app/KorOptionParser.h"
#include "event/KorEventLoop.h"

#include <atomic>
#include <cstdint>
#include <functional>

/// @addtogroup daemons
/// @{

/// A daemon: an event loop, an orderly end on a signal, reload, exit status, and what the service
/// manager wants to know. Take it for every new daemon; CKorConApplication, whose Finalize() runs
/// in the signal handler, is for programs that are there.
///
///     class Gateway : public CKorDaemonApplication
///     {
///     public:
///         Gateway() : CKorDaemonApplication(nullptr, "gateway", nullptr) {}
///         bool Initialize() override { return GetLoop().CallEvery(1000, [] { Poll(); }) > 0; }
///         int Finalize() override { Save(); return CKorDaemonApplication::Finalize(); }
///     };
///     int main(int argc, char** argv) { return Gateway().Start(argc, argv); }
///
/// **The end.** From the constructor on SIGINT and SIGTERM only ask for it: IsEndRequested() is
/// true, and the loop returns from Run() after the handler that is running. Finalize() is called
/// once, on the main thread, when Run() has returned. For a program that hangs the signals are
/// counted: one more of them later than 5 seconds after the end was asked for, and any third, ends
/// the process at once with `_exit(128 + signal)`, whatever its threads do. System calls that a
/// signal interrupts are begun again, so a Run() of the program's own must not wait for ever.
///
/// **The exit status** is 0. The first RequestEnd() with another one decides; signals never change
/// it. Where Initialize() returned false without a RequestEnd() it is 1, and where the system keeps
/// the loop from turning (the loop's Run() gave -1).
///
/// **Other signals.** SIGHUP calls ReloadInd(). SIGPIPE is caught and does nothing (an ignored one
/// would be inherited by programs that are started). SIGABRT and all other faults have their
/// default action, so that a crash looks like one and the service manager starts the program again.
/// No signal is blocked on any thread, so every program that is started gets an empty mask and
/// default actions. In a forked copy of the process the signals that are caught do nothing.
///
/// **The service manager** that named its socket in `NOTIFY_SOCKET` is told by Start(), Run() and
/// ReloadInd()'s caller: ready when the loop begins to turn, reloading and ready again around
/// ReloadInd(), stopping when Run() has returned, and, where it set `WATCHDOG_USEC`, alive at half
/// that interval, as long as the loop turns. A Run() that never runs the loop does that itself.
///
/// The constructor opens `/dev/null` on each of the handles 0 to 2 that is closed, and lets all
/// signals in. There is one instance a process, constructed and destroyed on the main thread when
/// that is the only one. Every operation is for that thread but RequestEnd(), IsEndRequested() and
/// GetExitStatus().
class TARVO_EXT_API CKorDaemonApplication : private CKorFormerSignals, public CKorConApplication
{
public:
    /// As the base constructor; the signals only ask for the end from here on.
    CKorDaemonApplication(const char* pszIniFile, const char* pszApplName, const char* pszLogFile);

    /// Gives the signals their former actions and the thread its former mask.
    ~CKorDaemonApplication() override;

    /// Runs the program as CKorBaseApplication::Start() does, with an exit status as described
    /// above. The program file needs no extension: the title of `/usr/bin/gateway` is "gateway".
    /// Call it on the object itself, not through a base class.
    ///
    /// What DeclareOptions() declares is read first, before ParseCommandLine(). `--help` and
    /// `--version` are answered on the standard output, with the result 0, and wrong usage on the
    /// standard error, with the result 2; Initialize() and Finalize() are not called then.
    /// @param argc  number of entries of @p argv
    /// @param argv  the arguments, the program file first; null leaves the names as they are
    /// @return the value of Finalize(), or as above
    /// @throws what the program's own steps throw; Finalize() is then not called
    int Start(int argc, char** argv);

    /// Runs the loop until the end is asked for, or until somebody calls its Stop().
    void Run() override;

    /// Returns GetExitStatus(). An override returns the result of this one.
    int Finalize() override;

    /// Lets SIGINT and SIGTERM ask for the end, and so on. The constructor has called it.
    void InstallSignalHandlers() override;

    /// Gives the signals their former actions.
    void RemoveSignalHandlers() override;

    /// The program's loop. It belongs to the main thread.
    CKorEventLoop& GetLoop() { return m_oLoop; }

    /// Asks for the end. On any thread, but not in a signal handler.
    /// @param nExitStatus  0 to 255; the first one other than 0 is the program's
    void RequestEnd(int nExitStatus = 0);

    /// Whether a signal or RequestEnd() asked for the end. On any thread.
    bool IsEndRequested() const { return m_nEndTime != 0; }

    /// The exit status so far. On any thread.
    int GetExitStatus() const { return m_nExitStatus; }

    /// Called on the main thread, by the loop, after SIGHUP came; signals that come close together
    /// may be told once. Does nothing here.
    virtual void ReloadInd();

    /// Declares the options and arguments of the program. Where it declares nothing, as here, the
    /// command line is left to DoCmdLineExchange().
    /// @param rParser  takes them; their variables must outlive the call of Start()
    virtual void DeclareOptions(CKorOptionParser& rParser);

    /// Goes to the background, for init systems that wait for the program that they started to
    /// leave. That one leaves with status 0, without exit handlers and Finalize(). The one that
    /// stays is no session leader, has no terminal and `/dev/null` on the handles 0 to 2, has the
    /// same working directory and umask, and keeps loop, timers and signals. A SIGINT or SIGTERM
    /// that reached the one that leaves is passed on.
    ///
    /// Call it in Initialize(), before there are threads, a held PID file or children. With
    /// `NOTIFY_SOCKET` in the environment it does nothing: such managers want a program that stays.
    /// @return whether this is the process that stays; false with `errno`, with nothing changed,
    ///         when there cannot be one
    bool Detach();

protected:
    CKorEventLoop m_oLoop;                 ///< see GetLoop()
    std::atomic<std::uint32_t> m_nEndTime; ///< when the end was asked for, in ms; 0: it was not
    std::atomic<int> m_nEndSignals;        ///< how many SIGINT and SIGTERM came
    std::atomic<int> m_nExitStatus;        ///< see GetExitStatus()
    std::atomic<bool> m_bEndByProgram;     ///< whether RequestEnd() was called
    int m_nReloadTicket;                   ///< the loop's ticket for SIGHUP

private:
    TARVO_EXT_LOCAL static void EndSignalHandler(int nSignal);
    TARVO_EXT_LOCAL void TakeProgramName(int argc, char** argv);
    TARVO_EXT_LOCAL CKorOptionParser::EResult TakeOptions(int argc, char** argv);
    TARVO_EXT_LOCAL void AskForEnd();
    TARVO_EXT_LOCAL void CountEndSignal(int nSignal);
    TARVO_EXT_LOCAL std::function<void()> Step(void (*pfnStep)(CKorDaemonApplication&));
    TARVO_EXT_LOCAL void TellReady();
    TARVO_EXT_LOCAL void TellAlive();
    TARVO_EXT_LOCAL void Reload();
    TARVO_EXT_LOCAL int Leave(int nCopy, int nNews);
    TARVO_EXT_LOCAL void Settle(int nNull);

    TARVO_EXT_LOCAL static std::atomic<CKorDaemonApplication*>
        m_pDaemon; // whose signals are handled
};

/// @}
