#include "serial/KorLineTermiosDetail.h"

#include <algorithm>
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <sys/ioctl.h>

namespace
{

struct SNamedSpeed
{
    unsigned int m_nSpeed;
    unsigned int m_nName;
};

constexpr SNamedSpeed NAMED_SPEEDS[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000}};

unsigned int SpeedOf(unsigned int nControl)
{
    for (const SNamedSpeed& oSpeed : NAMED_SPEEDS) {
        if (oSpeed.m_nName == (nControl & CBAUD))
            return oSpeed.m_nSpeed;
    }
    return 0;
}

/// #BOTHER for a speed without a name.
unsigned int NameOf(unsigned int nSpeed)
{
    for (const SNamedSpeed& oSpeed : NAMED_SPEEDS) {
        if (oSpeed.m_nSpeed == nSpeed)
            return oSpeed.m_nName;
    }
    return BOTHER;
}

// The older calls know the first part of what the newer ones know.
static_assert(sizeof(termios) == offsetof(termios2, c_ispeed));

/// Whether the last call failed because the kernel, or an emulator of one, does not know it.
bool IsUnknownCall()
{
    return errno == ENOTTY || errno == EINVAL || errno == ENOSYS;
}

} // namespace

bool KorGetLineSettings(int hLine, SKorLineSettings& rSettings)
{
    termios2 oKernel = {};
    if (ioctl(hLine, TCGETS2, &oKernel) != 0) {
        if (!IsUnknownCall() || ioctl(hLine, TCGETS, &oKernel) != 0)
            return false;
        oKernel.c_ispeed = oKernel.c_ospeed = SpeedOf(oKernel.c_cflag);
    }
    static_assert(sizeof oKernel.c_cc == sizeof rSettings.m_anCharacters);
    rSettings.m_nInput = oKernel.c_iflag;
    rSettings.m_nOutput = oKernel.c_oflag;
    rSettings.m_nControl = oKernel.c_cflag;
    rSettings.m_nLocal = oKernel.c_lflag;
    rSettings.m_nDiscipline = oKernel.c_line;
    std::copy(std::begin(oKernel.c_cc), std::end(oKernel.c_cc), rSettings.m_anCharacters);
    rSettings.m_nInputSpeed = oKernel.c_ispeed;
    rSettings.m_nOutputSpeed = oKernel.c_ospeed;
    return true;
}

bool KorSetLineSettings(int hLine, const SKorLineSettings& oSettings)
{
    termios2 oKernel = {};
    oKernel.c_iflag = oSettings.m_nInput;
    oKernel.c_oflag = oSettings.m_nOutput;
    oKernel.c_cflag = oSettings.m_nControl;
    oKernel.c_lflag = oSettings.m_nLocal;
    oKernel.c_line = oSettings.m_nDiscipline;
    std::copy(std::begin(oSettings.m_anCharacters), std::end(oSettings.m_anCharacters),
              oKernel.c_cc);
    oKernel.c_ispeed = oSettings.m_nInputSpeed;
    oKernel.c_ospeed = oSettings.m_nOutputSpeed;
    if (ioctl(hLine, TCSETS2, &oKernel) == 0)
        return true;
    if (!IsUnknownCall())
        return false;
    if ((oSettings.m_nControl & CBAUD) == BOTHER) {
        errno = EINVAL;
        return false;
    }
    return ioctl(hLine, TCSETS, &oKernel) == 0;
}

void KorSetLineSpeed(SKorLineSettings& rSettings, unsigned int nSpeed)
{
    // No speed of its own for the input: it follows the output.
    rSettings.m_nControl &= ~static_cast<unsigned int>(CBAUD | CIBAUD);
    rSettings.m_nControl |= NameOf(nSpeed);
    rSettings.m_nInputSpeed = rSettings.m_nOutputSpeed = nSpeed;
}
