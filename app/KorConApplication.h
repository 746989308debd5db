#pragma once

/// @file
/// The application class of daemons and console programs.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#applications

#include "KorExport.h"
#include "app/KorApplication.h"

/// @addtogroup daemons
/// @{

/// An application that ends cleanly on a signal.
///
/// | Signal    | Exit status |
/// |-----------|-------------|
/// | `SIGINT`  | 0           |
/// | `SIGTERM` | 0           |
/// | `SIGABRT` | 3           |
///
/// From the end of this class's constructor to the start of its destructor these signals call
/// Finalize() from the signal handler, on whichever thread receives them, and then `exit` the
/// process; Start() does not return and an application with automatic storage is not destroyed.
/// That begins before the constructor of a derived class has run and lasts until after its
/// destructor. It happens in the process that constructed the application only: a child that was
/// forked leaves the handler and goes on.
///
/// **Finalize() must bear that.** It must not throw: an exception cannot leave a signal handler.
/// It must be repeatable: the signal may come while the normal Finalize() runs or after it. And
/// it must not wait for what the interrupted thread may hold, memory allocation included. A
/// signal that arrives while it runs in the handler waits or is ignored. An exception that
/// nobody catches, and a failed assertion, come here too: they end the program by `SIGABRT`.
class TARVO_EXT_API CKorConApplication : public CKorBaseApplication
{
public:
    /// As the base constructor; then records the process and installs the signal handlers.
    CKorConApplication(const char* pszIniFile, const char* pszApplName, const char* pszLogFile);

    /// Gives the signals their default actions.
    ~CKorConApplication() override;

    /// Returns true, as the base version.
    bool Initialize() override;

    /// Returns 1, as the base version: a program that overrides nothing and returns the result
    /// of Start() ends with exit status 1. The handler ignores the result.
    int Finalize() override;

    /// Installs StdSignalHandler() for the three signals. The constructor calls this version and
    /// never an override, which the derived class must call itself; so does the destructor with
    /// RemoveSignalHandlers().
    virtual void InstallSignalHandlers();

    /// Restores the default actions of the three signals.
    virtual void RemoveSignalHandlers();

    /// The signal handler: finalizes the application, when there is one, and exits. Returns
    /// without effect for any other signal and in a forked child.
    static void StdSignalHandler(int nSignal);

    /// Calls Finalize() and makes GetApplication() null, so that no later signal does it again.
    /// An exception of Finalize() passes through; the application is then not forgotten.
    /// @return false, with nothing done, in another process than the one that constructed the
    ///         application, and while a call is already under way
    bool FinalizeFromSignalHandler();

protected:
    static int m_nPID; ///< the process that constructed the application last

private:
    TARVO_EXT_LOCAL static bool FinalizeOnce(CKorBaseApplication& oApplication);
};

/// @}
