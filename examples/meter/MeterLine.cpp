#include "examples/meter/MeterLine.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace
{

constexpr timespec PAUSE = {0, 50 * 1000000L};

void CloseDescriptor(int& nDescriptor)
{
    if (nDescriptor != -1)
        close(nDescriptor);
    nDescriptor = -1;
}

} // namespace

MeterLine::MeterLine() : m_nFarEnd(-1), m_nDevice(-1)
{
    if (!Open())
        HangUp();
}

MeterLine::~MeterLine()
{
    HangUp();
}

bool MeterLine::Open()
{
    // Sending to a client that does not read must not wait, as no signal would end that.
    m_nFarEnd = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    char szName[64];
    if (m_nFarEnd == -1 || grantpt(m_nFarEnd) != 0 || unlockpt(m_nFarEnd) != 0 ||
        ptsname_r(m_nFarEnd, szName, sizeof szName) != 0)
        return false;
    m_strDeviceName = szName;

    m_nDevice = open(szName, O_RDWR | O_NOCTTY);
    termios oSettings;
    if (m_nDevice == -1 || tcgetattr(m_nDevice, &oSettings) != 0)
        return false;
    cfmakeraw(&oSettings);
    return tcsetattr(m_nDevice, TCSANOW, &oSettings) == 0;
}

bool MeterLine::Receive(std::size_t nLength, std::string& strTelegram)
{
    sigset_t oNoSignals;
    sigemptyset(&oNoSignals);
    strTelegram.clear();
    while (strTelegram.size() < nLength) {
        pollfd oFarEnd = {m_nFarEnd, POLLIN, 0};
        const int nReady = ppoll(&oFarEnd, 1, strTelegram.empty() ? nullptr : &PAUSE, &oNoSignals);
        if (nReady == -1 && errno == EINTR)
            continue;
        if (nReady == -1)
            return false;
        if (nReady == 0) {
            strTelegram.clear();
            continue;
        }
        char acBytes[256];
        const std::size_t nMissing = nLength - strTelegram.size();
        const ssize_t nRead =
            read(m_nFarEnd, acBytes, nMissing < sizeof acBytes ? nMissing : sizeof acBytes);
        if (nRead <= 0)
            return false;
        strTelegram.append(acBytes, static_cast<std::size_t>(nRead));
    }
    return true;
}

bool MeterLine::Send(const std::string& strTelegram)
{
    return write(m_nFarEnd, strTelegram.data(), strTelegram.size()) ==
           static_cast<ssize_t>(strTelegram.size());
}

void MeterLine::HangUp()
{
    CloseDescriptor(m_nDevice);
    CloseDescriptor(m_nFarEnd);
}
