#include "serial/KorLineDeviceDetail.h"

#include "serial/KorLineDriverDetail.h"
#include "serial/KorLineSettingsDetail.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace
{

int OpenDevice(const char* pszDevice)
{
    int hLine = 0;
    do {
        hLine =
            open(pszDevice != nullptr ? pszDevice : "", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    } while (hLine == -1 && errno == EINTR);
    return hLine;
}

bool IsPseudoTerminal(int hLine)
{
    constexpr unsigned int FIRST_MAJOR = 136;
    constexpr unsigned int LAST_MAJOR = 143;
    struct stat oStatus;
    return fstat(hLine, &oStatus) == 0 && major(oStatus.st_rdev) >= FIRST_MAJOR &&
           major(oStatus.st_rdev) <= LAST_MAJOR;
}

bool IsInExclusiveMode(int hLine)
{
    int nExclusive = 0;
    return ioctl(hLine, TIOCGEXCL, &nExclusive) == 0 && nExclusive != 0;
}

int SetAndVerify(int hLine, const SKorLineSettings& oAsked)
{
    SKorLineSettings oTaken;
    if (!KorSetLineSettings(hLine, oAsked) || !KorGetLineSettings(hLine, oTaken))
        return errno;
    return KorDidLineTake(oAsked, oTaken, IsPseudoTerminal(hLine)) ? 0 : EINVAL;
}

} // namespace

int CKorLineDevice::Open(const char* pszDevice, const SKorLineOptions& oOptions)
{
    if (!KorAreLineOptionsValid(oOptions))
        return EINVAL;
    m_hLine = OpenDevice(pszDevice);
    if (m_hLine == NO_HANDLE)
        return errno;
    const int nErrno = Take(oOptions);
    if (nErrno == 0)
        Start(oOptions);
    else
        GiveBack();
    return nErrno;
}

int CKorLineDevice::Take(const SKorLineOptions& oOptions)
{
    const bool bExclusiveBefore = IsInExclusiveMode(m_hLine);
    int nErrno = Lock(oOptions.m_bExclusive);
    if (nErrno == 0 && !KorGetLineSettings(m_hLine, m_oBefore))
        nErrno = errno;
    if (nErrno == 0)
        nErrno = Configure(oOptions);
    if (nErrno != 0 && bExclusiveBefore)
        m_oDone.m_bExclusiveMode = false; // somebody else's, who keeps it
    return nErrno;
}

/// Takes the lock, or changes its kind. A failure may lose a lock that was held.
int CKorLineDevice::Lock(bool bExclusive)
{
    // Exclusive mode alone would not keep root out.
    if (flock(m_hLine, (bExclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? EBUSY : errno;
    m_oDone.m_bLocked = true;
    SetExclusiveMode(bExclusive);
    return 0;
}

void CKorLineDevice::SetExclusiveMode(bool bExclusive)
{
    if (bExclusive)
        m_oDone.m_bExclusiveMode = ioctl(m_hLine, TIOCEXCL) == 0;
    else if (m_oDone.m_bExclusiveMode)
        m_oDone.m_bExclusiveMode = ioctl(m_hLine, TIOCNXCL) != 0;
}

int CKorLineDevice::Configure(const SKorLineOptions& oOptions)
{
    m_oDone.m_bSettings = true;
    int nErrno = SetAndVerify(m_hLine, KorMakeLineSettings(m_oBefore, oOptions));
    if (nErrno == 0 && oOptions.m_oRS485.m_bEnabled)
        nErrno = SetRS485(oOptions.m_oRS485);
    if (nErrno == 0)
        m_oOptions = oOptions;
    return nErrno;
}

void CKorLineDevice::Start(const SKorLineOptions& oOptions)
{
    const bool bDriverMovesRts =
        oOptions.m_eFlow == SKorLineOptions::FLOW_RTS_CTS || oOptions.m_oRS485.m_bEnabled;
    SKorModemLines oLines;
    if (KorGetModemLines(m_hLine, oLines) == 0)
        KorSetModemLines(m_hLine, bDriverMovesRts ? oLines.m_bRts : oOptions.m_bRts,
                         oOptions.m_bDtr);
    ioctl(m_hLine, TCXONC, TCOON); // somebody may have stopped the output and left it so
    ioctl(m_hLine, TCFLSH, TCIFLUSH);
}

void CKorLineDevice::Close()
{
    if (m_hLine == NO_HANDLE)
        return;
    // Else the system would wait for it. Only then: a pseudo-terminal has no unsent bytes, and
    // flushing it would take from the far end what that has received already.
    unsigned int nUnsent = 0;
    if (KorCountUnsentBytes(m_hLine, nUnsent) == 0 && nUnsent != 0)
        ioctl(m_hLine, TCFLSH, TCOFLUSH);
    GiveBack();
}

void CKorLineDevice::GiveBack()
{
    if (m_oDone.m_bLowLatency)
        KorSetLowLatency(m_hLine, m_bLowLatencyBefore);
    if (m_oDone.m_bRS485)
        KorSetLineRS485(m_hLine, m_oRS485Before);
    if (m_oDone.m_bSettings)
        KorSetLineSettings(m_hLine, m_oBefore);
    // Explicitly, since a forked child may keep the same open file.
    SetExclusiveMode(false);
    if (m_oDone.m_bLocked)
        flock(m_hLine, LOCK_UN);
    close(m_hLine);
    m_hLine = NO_HANDLE;
    m_oDone = SDone();
}

int CKorLineDevice::SetOptions(const SKorLineOptions& oOptions)
{
    if (!KorAreLineOptionsValid(oOptions))
        return EINVAL;
    SKorLineSettings oOld;
    if (!KorGetLineSettings(m_hLine, oOld))
        return errno;
    const bool bRelock = oOptions.m_bExclusive != m_oOptions.m_bExclusive;
    const bool bWasExclusive = m_oOptions.m_bExclusive;
    int nErrno = bRelock ? Lock(oOptions.m_bExclusive) : 0;
    if (nErrno == 0) {
        nErrno = Configure(oOptions);
        if (nErrno != 0)
            KorSetLineSettings(m_hLine, oOld);
    }
    if (nErrno != 0 && bRelock)
        Lock(bWasExclusive);
    return nErrno;
}

int CKorLineDevice::SetRS485(const SKorRS485& oRS485)
{
    serial_rs485 oNow = {};
    int nErrno = KorGetLineRS485(m_hLine, oNow);
    if (nErrno == 0)
        nErrno = KorSetLineRS485(m_hLine, KorMakeLineRS485(oNow, oRS485));
    if (nErrno == 0 && !m_oDone.m_bRS485) {
        m_oRS485Before = oNow;
        m_oDone.m_bRS485 = true;
    }
    return nErrno;
}

int CKorLineDevice::SetLowLatency(bool bLowLatency)
{
    bool bNow = false;
    int nErrno = KorGetLowLatency(m_hLine, bNow);
    if (nErrno == 0)
        nErrno = KorSetLowLatency(m_hLine, bLowLatency);
    if (nErrno == 0 && !m_oDone.m_bLowLatency) {
        m_bLowLatencyBefore = bNow;
        m_oDone.m_bLowLatency = true;
    }
    return nErrno;
}
