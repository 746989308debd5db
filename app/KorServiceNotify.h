#pragma once

/// @file
/// What a daemon tells the service manager that started it, by the protocol of sd_notify(3) and
/// without its library.
///
/// A CKorDaemonApplication tells all of this but the status by itself. A program of another kind
/// does it so:
///
///     bool bTold = KorNotifyReady();                 // false when nobody listens: go on
///     KorNotifyStatus("polls 3 meters");
///     if (const unsigned int nInterval = KorGetAliveInterval())
///         oLoop.CallEvery(nInterval, [] { KorNotifyAlive(); });
///     KorNotifyStopping();
///
/// The manager names its socket in `NOTIFY_SOCKET`: a path, or "@" and an abstract name. Every
/// operation reads the environment anew, never waits and may be called from any thread. It is true
/// when the message was sent, and false with `errno` otherwise: `EDESTADDRREQ` without
/// `NOTIFY_SOCKET`, `EAFNOSUPPORT` for another kind of address, `ENAMETOOLONG`, `EAGAIN` when the
/// manager does not read, or what the system says.

#include "KorExport.h"

#include <string>

/// @addtogroup daemons
/// @{

/// Sends a message as the protocol has it, such as "READY=1".
/// @param pszMessage  the message; null is an empty one, which tells the manager nothing
TARVO_EXT_API bool KorNotify(const char* pszMessage);

/// Tells that the start is over, or that a reload is.
inline bool KorNotifyReady()
{
    return KorNotify("READY=1");
}

/// Tells that the settings are read anew; KorNotifyReady() ends that. The message carries the
/// monotonic clock, which the manager needs to tell one reload from the next.
TARVO_EXT_API bool KorNotifyReloading();

/// Tells that the program is about to end.
inline bool KorNotifyStopping()
{
    return KorNotify("STOPPING=1");
}

/// Shows a text for people, for example in `systemctl status`.
/// @param strStatus  the text; a line feed, which would begin another message, becomes a blank, and
///                   so do a carriage return and a zero byte
TARVO_EXT_API bool KorNotifyStatus(const std::string& strStatus);

/// Tells that the program is alive, for the manager's watchdog. Due every KorGetAliveInterval().
inline bool KorNotifyAlive()
{
    return KorNotify("WATCHDOG=1");
}

/// How often the manager wants to hear that the program is alive, with a reserve: half of
/// `WATCHDOG_USEC`.
/// @return the interval in ms, at least 1; 0 when the manager does not want to hear it:
///         `WATCHDOG_USEC` is missing, 0 or no number, or `WATCHDOG_PID` names another process
TARVO_EXT_API unsigned int KorGetAliveInterval();

/// @}
