#include "examples/meter/MeterLine.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr unsigned int PAUSE_MS = 50;

void CloseDescriptor(int& nDescriptor)
{
    if (nDescriptor != -1)
        close(nDescriptor);
    nDescriptor = -1;
}

} // namespace

MeterLine::MeterLine(CKorEventLoop& oLoop, std::size_t nLength,
                     std::function<void(const std::string&)> fnTelegram)
    : m_oLoop(oLoop), m_nLength(nLength), m_fnTelegram(std::move(fnTelegram))
{
    if (!Open())
        HangUp();
}

MeterLine::~MeterLine()
{
    HangUp();
    m_oLoop.Cancel(m_nPause);
}

bool MeterLine::Open()
{
    // Sending to a client that does not read must not wait.
    m_nFarEnd = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    char szName[64];
    if (m_nFarEnd == -1 || grantpt(m_nFarEnd) != 0 || unlockpt(m_nFarEnd) != 0 ||
        ptsname_r(m_nFarEnd, szName, sizeof szName) != 0)
        return false;
    m_strDeviceName = szName;

    m_nDevice = open(szName, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios oSettings;
    if (m_nDevice == -1 || tcgetattr(m_nDevice, &oSettings) != 0)
        return false;
    cfmakeraw(&oSettings);
    return tcsetattr(m_nDevice, TCSANOW, &oSettings) == 0 &&
           m_oLoop.WatchHandle(m_nFarEnd, CKorEventLoop::EVENT_READABLE,
                               [this](unsigned int) { Receive(); }) > 0;
}

void MeterLine::Receive()
{
    char acBytes[256];
    const ssize_t nRead = read(m_nFarEnd, acBytes, sizeof acBytes);
    if (nRead > 0)
        m_strReceived.append(acBytes, static_cast<std::size_t>(nRead));
    m_oLoop.Cancel(m_nPause);
    m_nPause = m_oLoop.CallAfter(PAUSE_MS, [this] { m_strReceived.clear(); });
    while (m_strReceived.size() >= m_nLength) {
        const std::string strTelegram = m_strReceived.substr(0, m_nLength);
        m_strReceived.erase(0, m_nLength);
        m_fnTelegram(strTelegram);
    }
}

bool MeterLine::Send(const std::string& strTelegram)
{
    return write(m_nFarEnd, strTelegram.data(), strTelegram.size()) ==
           static_cast<ssize_t>(strTelegram.size());
}

void MeterLine::HangUp()
{
    CloseDescriptor(m_nDevice);
    CloseDescriptor(m_nFarEnd); // the loop drops a handle that was closed
}
