#pragma once

/// @file
/// An event loop: handles, timers, signals and calls from other threads on one thread.

#include "KorExport.h"

#include <functional>
#include <memory>

/// @addtogroup events
/// @{

class CKorEventCore;

/// Waits for everything that a program waits for, on one thread, and calls a handler for each
/// thing that happened. Take it for every new program that waits for more than one thing; a
/// daemon finds one ready in its application object.
///
///     CKorEventLoop oLoop;
///     oLoop.CallEvery(1000, [] { Poll(); });
///     oLoop.WatchHandle(hSocket, CKorEventLoop::EVENT_READABLE, [](unsigned int) { Receive(); });
///     oLoop.CallOnSignal(SIGTERM, [&] { oLoop.Stop(); });
///     return oLoop.Run();
///
/// **Tickets.** Each thing that is waited for has a ticket, a number greater than 0, by which it
/// is cancelled. Numbers of the past come again only after 2^31 others.
///
/// **Handlers** may add, cancel and stop anything, themselves included, and destroy what they
/// hold. What a handler holds is released after it returned. An exception that a handler throws
/// leaves Run() or RunOnce(); the loop can be run again and goes on with what is left.
///
/// **Time** is in milliseconds on the monotonic clock; 0xFFFFFFFF never comes.
///
/// **Threads.** Post() and Stop() may be called from any thread, Stop() from signal handlers too,
/// everything else on the loop's thread: the one that runs it. Destroy the loop on that thread,
/// not in a handler, when no other thread uses it any more.
///
/// **Forks.** A process forked from the program has a copy of the loop that has nothing to do
/// with the program's own: what it posts, stops or receives as signals is not told here. The copy
/// works too, from its first operation in that process on; until then it sees no signals.
///
/// **Failures** show in the result and in `errno`: `EINVAL` for an argument that makes no sense
/// (also an empty handler), otherwise what the system says, such as `EMFILE`.
class TARVO_EXT_API CKorEventLoop
{
public:
    /// What can happen to a handle.
    enum EEvent : unsigned int
    {
        EVENT_READABLE = 1, ///< Reading does not block: there are data, or there is an end.
        EVENT_WRITABLE = 2, ///< Writing does not block.
        /// The far end is gone or the handle has an error: told whether asked for or not. A far
        /// end that only stopped sending counts for those that ask for it.
        EVENT_HANGUP = 4
    };

    /// Called for a timer, a signal or a posted call.
    using Handler = std::function<void()>;
    /// Called for a handle with what holds of that which was asked for, and #EVENT_HANGUP.
    using HandleHandler = std::function<void(unsigned int nEvents)>;

    /// A loop that waits for nothing yet. When the system has no handle left for it, operations
    /// that need one try again and fail with `EMFILE`.
    CKorEventLoop();
    /// Cancels everything, gives signals their former actions back and drops posted calls.
    virtual ~CKorEventLoop();
    CKorEventLoop(const CKorEventLoop&) = delete;
    CKorEventLoop& operator=(const CKorEventLoop&) = delete;

    /// Calls a handler as long as one of the events holds. Regular files, directories and
    /// `/dev/null` are always readable and writable. Any number of tickets may watch one handle;
    /// each is called only if its event still holds after the others were.
    ///
    /// Cancel the ticket before the handle is closed, or leave it: it is then dropped without a
    /// call. (A regular file that is opened again under the same number while its old ticket was
    /// not cancelled is taken for the one before.)
    /// @param nHandle    an open file descriptor; it stays the caller's
    /// @param nEvents    one or more of #EEvent; #EVENT_HANGUP alone is not woken by data
    /// @param fnHandler  called with the events that hold
    /// @return the ticket; -1 with `EBADF` for a handle that is not open
    int WatchHandle(int nHandle, unsigned int nEvents, HandleHandler fnHandler);

    /// Changes what a ticket of WatchHandle() waits for.
    /// @return false with `EINVAL` for another ticket, with `EBADF` when its handle was closed
    bool SetEvents(int nTicket, unsigned int nEvents);

    /// Calls a handler once. The ticket is used up when the handler is called.
    /// @param nMilliseconds  from now; 0: in the next round
    /// @param fnHandler      what to call
    /// @return the ticket, or -1
    int CallAfter(unsigned int nMilliseconds, Handler fnHandler);

    /// Calls a handler again and again, first after one period. The times are whole periods from
    /// now, whatever the calls take; turns that were missed are skipped.
    /// @param nMilliseconds  the period, not 0
    /// @param fnHandler      what to call
    /// @return the ticket, or -1
    int CallEvery(unsigned int nMilliseconds, Handler fnHandler);

    /// Calls a handler on the loop's thread after a signal came, wherever in the program it
    /// arrived; of signals that come close together some may be told as one. The signal's action
    /// is the loop's until its last ticket is cancelled, then the former one comes back.
    /// @param nSignal    a signal that can be caught and that is not blocked on every thread
    /// @param fnHandler  what to call
    /// @return the ticket; -1 with `EBUSY` when another loop has the signal
    int CallOnSignal(int nSignal, Handler fnHandler);

    /// Gives a ticket back. Its handler is not called any more.
    /// @return false with `EINVAL` when there is no such ticket (any more)
    bool Cancel(int nTicket);

    /// Whether a ticket still waits for something.
    bool IsActive(int nTicket) const;

    /// Has a handler called in the next round of the loop. Calls run in the order in which they
    /// were posted; those that a posted call posts run a round later. From any thread, but not
    /// from signal handlers.
    /// @return false with `EINVAL` for an empty handler
    bool Post(Handler fnHandler);

    /// Waits and calls handlers until Stop().
    /// @return the argument of the last Stop(); -1 with `EBUSY` when the loop runs already, on
    ///         this thread or on another
    int Run();

    /// Waits until handlers can be called, and calls them. After a Stop() it does not wait, and
    /// the Stop() stays for the next Run().
    /// @param nTimeout  the longest time to wait; 0 does not wait, 0xFFFFFFFF waits for ever
    /// @return whether a handler was called; false with `EBUSY` when the loop runs already
    bool RunOnce(unsigned int nTimeout);

    /// Ends Run() after the handler that runs; what else is ready stays for the next Run(). When
    /// the loop does not run, the next Run() returns at once; of several the last counts. From
    /// any thread and from signal handlers; leaves `errno` as it is.
    /// @param nResult  what Run() returns
    void Stop(int nResult = 0);

private:
    std::unique_ptr<CKorEventCore> m_pCore;
};

/// @}
