#pragma once

#include "serial/KorLineTermiosDetail.h"
#include "tests/serial/LineTestPeer.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

inline std::string AllBytes()
{
    std::string strBytes;
    for (int i = 0; i < 256; ++i)
        strBytes += static_cast<char>(i);
    return strBytes + strBytes;
}

inline SKorLineOptions Speed(unsigned int nSpeed)
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = nSpeed;
    return oOptions;
}

inline SKorLineOptions Shared()
{
    SKorLineOptions oOptions;
    oOptions.m_bExclusive = false;
    return oOptions;
}

/// What no pseudo-terminal has, so that it is refused late.
inline SKorLineOptions TwoWire()
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 4800;
    oOptions.m_oRS485.m_bEnabled = true;
    return oOptions;
}

inline Outcome NotOpened(int nErrno)
{
    return {OPEN_ERROR, nErrno};
}

/// Settings that differ from those of a raw line in as many bits as a pseudo-terminal allows.
inline termios StrangeSettings(const PseudoTerminal& oPeer)
{
    termios oSettings = oPeer.Settings();
    oSettings.c_iflag = IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF |
                        IXANY | INPCK | IGNPAR | IMAXBEL;
    oSettings.c_oflag = OPOST | ONLCR | OCRNL | ONOCR | ONLRET;
    oSettings.c_lflag = ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL | NOFLSH | TOSTOP | IEXTEN;
    oSettings.c_cflag &= ~static_cast<tcflag_t>(CREAD | CLOCAL);
    oSettings.c_cflag |= CSTOPB | PARODD;
    oSettings.c_cc[VMIN] = 7;
    oSettings.c_cc[VTIME] = 5;
    return oSettings;
}

inline void ExpectSameSettings(const termios& oExpected, const termios& oActual)
{
    EXPECT_EQ(oExpected.c_iflag, oActual.c_iflag);
    EXPECT_EQ(oExpected.c_oflag, oActual.c_oflag);
    EXPECT_EQ(oExpected.c_cflag, oActual.c_cflag);
    EXPECT_EQ(oExpected.c_lflag, oActual.c_lflag);
    EXPECT_EQ(std::vector<cc_t>(oExpected.c_cc, oExpected.c_cc + NCCS),
              std::vector<cc_t>(oActual.c_cc, oActual.c_cc + NCCS));
}

/// Another user of the device.
struct Descriptor
{
    explicit Descriptor(const PseudoTerminal& oPeer)
        : m_strName(oPeer.Name()),
          m_nHandle(open(oPeer.Name(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        EXPECT_NE(-1, m_nHandle);
    }
    ~Descriptor() { close(m_nHandle); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsExclusive() const
    {
        int nExclusive = 0;
        if (ioctl(m_nHandle, TIOCGEXCL, &nExclusive) == 0)
            return nExclusive != 0;
        return !CanBeOpened(); // emulators do not know the question, and run without privileges
    }
    /// Whether a further user, with the privileges of this process, may open the device.
    bool CanBeOpened() const
    {
        const int nFurther = open(m_strName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (nFurther != -1)
            close(nFurther);
        return nFurther != -1;
    }
    std::string Read() const
    {
        char acBytes[64];
        const ssize_t nRead = read(m_nHandle, acBytes, sizeof acBytes);
        return std::string(acBytes, nRead > 0 ? static_cast<std::size_t>(nRead) : 0);
    }

    const std::string m_strName;
    const int m_nHandle;
};
