#include "tools/linesim/LineEnd.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr std::size_t BLOCK_SIZE = 4096;

bool MakeRaw(int nTerminal)
{
    termios oSettings;
    if (tcgetattr(nTerminal, &oSettings) != 0)
        return false;
    cfmakeraw(&oSettings);
    return tcsetattr(nTerminal, TCSANOW, &oSettings) == 0;
}

bool IsLinkOrNothing(const std::string& strName)
{
    struct stat oStatus;
    if (lstat(strName.c_str(), &oStatus) != 0)
        return errno == ENOENT;
    errno = EEXIST;
    return S_ISLNK(oStatus.st_mode);
}

} // namespace

LineEnd::LineEnd(CKorEventLoop& oLoop, LineTrace& oTrace) : m_oLoop(oLoop), m_oTrace(oTrace) {}

LineEnd::~LineEnd()
{
    HangUp();
    if (!m_strLink.empty())
        unlink(m_strLink.c_str());
}

bool LineEnd::OpenTerminal(const std::string& strLink)
{
    char szDevice[64];
    m_nHandle = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_nHandle == -1 || grantpt(m_nHandle) != 0 || unlockpt(m_nHandle) != 0 ||
        ptsname_r(m_nHandle, szDevice, sizeof szDevice) != 0)
        return false;
    m_nOtherSide = open(szDevice, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_nOtherSide == -1 || !MakeRaw(m_nOtherSide))
        return false;
    m_strName = strLink.empty() ? szDevice : strLink;
    if (!strLink.empty() && IsLinkOrNothing(strLink))
        m_strLink = strLink;
    return m_strLink == strLink && MakeLink(szDevice) && Watch();
}

// A new link takes the place of the old one at once, so that the name is never missing.
bool LineEnd::MakeLink(const char* pszDevice)
{
    if (m_strLink.empty())
        return true;
    const std::string strNew = m_strLink + ".new";
    unlink(strNew.c_str());
    return symlink(pszDevice, strNew.c_str()) == 0 &&
           rename(strNew.c_str(), m_strLink.c_str()) == 0;
}

bool LineEnd::OpenDevice(const std::string& strDevice, const SKorLineOptions& oOptions)
{
    if (m_oDevice.Open(strDevice.c_str(), oOptions) != CKorSerial::SERIAL_OK) {
        errno = m_oDevice.GetLastError();
        return false;
    }
    m_strName = strDevice;
    m_nHandle = m_oDevice.GetHandle();
    return Watch();
}

void LineEnd::SetReceiver(std::function<void(const std::string&)> fnReceiver)
{
    m_fnReceiver = std::move(fnReceiver);
}

void LineEnd::SetDrained(std::function<void()> fnDrained)
{
    m_fnDrained = std::move(fnDrained);
}

bool LineEnd::Watch()
{
    m_nTicket = m_oLoop.WatchHandle(m_nHandle, WantedEvents(),
                                    [this](unsigned int nEvents) { OnReady(nEvents); });
    return m_nTicket != -1;
}

unsigned int LineEnd::WantedEvents() const
{
    unsigned int nEvents = CKorEventLoop::EVENT_HANGUP;
    if (!m_bPaused)
        nEvents |= CKorEventLoop::EVENT_READABLE;
    if (!m_strPending.empty())
        nEvents |= CKorEventLoop::EVENT_WRITABLE;
    return nEvents;
}

void LineEnd::OnReady(unsigned int nEvents)
{
    if ((nEvents & CKorEventLoop::EVENT_WRITABLE) != 0)
        Flush();
    if (IsOpen() && (nEvents & CKorEventLoop::EVENT_READABLE) != 0)
        Receive();
    else if (IsOpen() && (nEvents & CKorEventLoop::EVENT_HANGUP) != 0)
        HangUp();
}

void LineEnd::Receive()
{
    char acBytes[BLOCK_SIZE];
    const ssize_t nCount = read(m_nHandle, acBytes, sizeof acBytes);
    if (nCount > 0) {
        const std::string strBytes(acBytes, static_cast<std::size_t>(nCount));
        m_oTrace.Bytes(m_strName, '<', strBytes);
        if (m_fnReceiver)
            m_fnReceiver(strBytes);
    } else if (nCount == 0 || (errno != EAGAIN && errno != EINTR)) {
        HangUp();
    }
}

void LineEnd::SetPaused(bool bPaused)
{
    m_bPaused = bPaused;
    if (IsOpen())
        m_oLoop.SetEvents(m_nTicket, WantedEvents());
}

void LineEnd::Send(const std::string& strBytes)
{
    if (!IsOpen() || strBytes.empty())
        return;
    m_oTrace.Bytes(m_strName, '>', strBytes);
    m_strPending += strBytes;
    Flush();
}

void LineEnd::Flush()
{
    const ssize_t nCount = write(m_nHandle, m_strPending.data(), m_strPending.size());
    if (nCount > 0)
        m_strPending.erase(0, static_cast<std::size_t>(nCount));
    else if (errno != EAGAIN && errno != EINTR)
        HangUp();
    if (IsOpen())
        m_oLoop.SetEvents(m_nTicket, WantedEvents());
    if (m_strPending.empty() && m_fnDrained)
        m_fnDrained();
}

int LineEnd::UnreadCount() const
{
    int nCount = 0;
    pollfd oOtherSide = {m_nOtherSide, POLLIN, 0};
    poll(&oOtherSide, 1, 0); // makes the kernel hand over what is still on its way
    if (m_nOtherSide != -1)
        ioctl(m_nOtherSide, FIONREAD, &nCount);
    return nCount;
}

void LineEnd::HangUp()
{
    if (!IsOpen())
        return;
    m_oTrace.Event(m_strName, "hung up");
    m_oLoop.Cancel(m_nTicket);
    m_strPending.clear();
    // Another program may get a terminal of the same number as soon as this one is closed.
    MakeLink((m_strLink + ".gone").c_str());
    if (m_oDevice.IsOpen())
        m_oDevice.Close();
    else
        close(m_nHandle);
    if (m_nOtherSide != -1)
        close(m_nOtherSide);
    m_nHandle = -1;
    m_nOtherSide = -1;
}

bool LineEnd::ComeBack()
{
    HangUp();
    m_oTrace.Event(m_strName, "came back");
    return OpenTerminal(m_strLink);
}
