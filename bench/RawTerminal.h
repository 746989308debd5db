#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

/// The descriptor of the far end of a new pseudo-terminal that is raw.
inline int OpenRawTerminal()
{
    const int nMaster = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    grantpt(nMaster);
    unlockpt(nMaster);
    termios oSettings;
    tcgetattr(nMaster, &oSettings);
    cfmakeraw(&oSettings);
    tcsetattr(nMaster, TCSANOW, &oSettings);
    return nMaster;
}
