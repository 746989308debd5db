#pragma once

/// @file
/// What a daemon application finds in its process and leaves behind.

#include "KorExport.h"

#include <signal.h>

/// @addtogroup daemons
/// @{

/// The signal actions and the signal mask before a CKorDaemonApplication. A part of that class, and
/// of no other use: as its first base class it comes before the constructor of the other one, which
/// changes the actions, and goes after its destructor, which does not know the former ones.
class TARVO_EXT_API CKorFormerSignals
{
public:
    CKorFormerSignals(const CKorFormerSignals&) = delete;
    CKorFormerSignals& operator=(const CKorFormerSignals&) = delete;

protected:
    /// Opens `/dev/null` on each of the handles 0 to 2 that is closed, remembers the actions and
    /// the mask, and calls HoldEndSignals().
    TARVO_EXT_LOCAL CKorFormerSignals();

    /// Gives back the actions, then the mask.
    TARVO_EXT_LOCAL ~CKorFormerSignals();

    /// Gives back the actions.
    TARVO_EXT_LOCAL void RestoreActions() const;

    /// Keeps SIGINT and SIGTERM waiting on the calling thread.
    TARVO_EXT_LOCAL static void HoldEndSignals();

    /// Lets every signal in on the calling thread, also one that the process began without.
    TARVO_EXT_LOCAL static void LetAllSignalsIn();

private:
    TARVO_EXT_LOCAL static constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGABRT, SIGPIPE};

    struct sigaction m_aoActions[sizeof SIGNALS / sizeof SIGNALS[0]];
    sigset_t m_oMask;
};

/// @}
