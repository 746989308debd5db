#include "serial/KorLineSettingsDetail.h"

#include <cstdint>
#include <termios.h>

namespace
{

constexpr unsigned int MARK_OR_SPACE_PARITY = 010000000000; // CMSPAR, which not all headers show

unsigned int ParityFlags(CKorSerial::E_PARITY eParity)
{
    if (eParity == CKorSerial::PARITY_NONE)
        return 0;
    return eParity == CKorSerial::PARITY_ODD ? PARENB | PARODD : PARENB;
}

unsigned int ControlFlags(const SKorLineOptions& oOptions)
{
    unsigned int nFlags = CREAD | CLOCAL | static_cast<unsigned int>(oOptions.m_eByteSize) |
                          ParityFlags(oOptions.m_eParity);
    if (oOptions.m_eStopbits == CKorSerial::STOPBITS_2)
        nFlags |= CSTOPB;
    if (oOptions.m_eFlow == SKorLineOptions::FLOW_RTS_CTS)
        nFlags |= CRTSCTS;
    return nFlags;
}

bool IsNear(unsigned int nSpeed, unsigned int nAsked)
{
    const std::int64_t nDifference = std::int64_t(nSpeed) - nAsked;
    const std::int64_t nLimit = std::int64_t(nAsked) * 3;
    return nDifference * 100 <= nLimit && -nDifference * 100 <= nLimit;
}

} // namespace

bool KorAreLineOptionsValid(const SKorLineOptions& oOptions)
{
    return oOptions.m_nSpeed != 0 && oOptions.m_eParity >= CKorSerial::PARITY_EVEN &&
           oOptions.m_eParity <= CKorSerial::PARITY_NONE &&
           (oOptions.m_eStopbits == CKorSerial::STOPBITS_1 ||
            oOptions.m_eStopbits == CKorSerial::STOPBITS_2) &&
           (static_cast<unsigned int>(oOptions.m_eByteSize) & ~static_cast<unsigned int>(CSIZE)) ==
               0 &&
           oOptions.m_eFlow >= SKorLineOptions::FLOW_NONE &&
           oOptions.m_eFlow <= SKorLineOptions::FLOW_XON_XOFF;
}

SKorLineSettings KorMakeLineSettings(const SKorLineSettings& oBefore,
                                     const SKorLineOptions& oOptions)
{
    SKorLineSettings oSettings = oBefore;
    // INPCK stays off, too: with it the kernel would put a NUL in place of a byte with wrong parity.
    oSettings.m_nInput = oOptions.m_eFlow == SKorLineOptions::FLOW_XON_XOFF ? IXON | IXOFF : 0U;
    oSettings.m_nOutput = 0;
    oSettings.m_nLocal = 0;
    oSettings.m_nControl &= ~static_cast<unsigned int>(CSIZE | CSTOPB | PARENB | PARODD | CRTSCTS) &
                            ~MARK_OR_SPACE_PARITY;
    oSettings.m_nControl |= ControlFlags(oOptions);
    KorSetLineSpeed(oSettings, oOptions.m_nSpeed);
    // An empty line is EAGAIN with these, and a read of 0 bytes is a hang-up.
    oSettings.m_anCharacters[VMIN] = 1;
    oSettings.m_anCharacters[VTIME] = 0;
    oSettings.m_anCharacters[VSTART] = static_cast<unsigned char>(oOptions.m_cXon);
    oSettings.m_anCharacters[VSTOP] = static_cast<unsigned char>(oOptions.m_cXoff);
    return oSettings;
}

bool KorDidLineTake(const SKorLineSettings& oAsked, const SKorLineSettings& oTaken,
                    bool bPseudoTerminal)
{
    unsigned int nFlags = CSTOPB | CRTSCTS;
    if (!bPseudoTerminal)
        nFlags |= CSIZE | PARENB | PARODD;
    return (oAsked.m_nControl & nFlags) == (oTaken.m_nControl & nFlags) &&
           IsNear(oTaken.m_nOutputSpeed, oAsked.m_nOutputSpeed);
}
