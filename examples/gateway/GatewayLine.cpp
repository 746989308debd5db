#include "GatewayLine.h"

#include "app/KorLog.h"
#include "text/KorHexText.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

constexpr unsigned int FIRST_PAUSE_MS = 100;
constexpr unsigned int LONGEST_PAUSE_MS = 5000;

void Show(const char* pszWhat, const std::string& strTelegram)
{
    if (KorGetLog().IsEnabled(CKorLog::LEVEL_DEBUG))
        KorGetLog().Write(
            CKorLog::LEVEL_DEBUG, "%s %s", pszWhat,
            KorToHexText(strTelegram.data(), static_cast<unsigned int>(strTelegram.size()))
                .c_str());
}

bool IsSameLine(const SKorLineOptions& oLeft, const SKorLineOptions& oRight)
{
    return oLeft.m_nSpeed == oRight.m_nSpeed && oLeft.m_eParity == oRight.m_eParity &&
           oLeft.m_eStopbits == oRight.m_eStopbits;
}

} // namespace

GatewayLine::GatewayLine(CKorEventLoop& oLoop, const GatewaySettings& oSettings)
    : ModbusRtuClient(oLoop, m_oLine, oSettings.m_nTimeout, oSettings.m_nRetries),
      m_oLoop(oLoop),
      m_oSettings(oSettings),
      m_nPause(FIRST_PAUSE_MS)
{
}

GatewayLine::~GatewayLine()
{
    Close();
}

bool GatewayLine::Open()
{
    m_nPause = FIRST_PAUSE_MS;
    if (TryToOpen())
        return true;
    KorGetLog().Write(CKorLog::LEVEL_ERROR, "cannot open %s: %s", m_strDevice.c_str(),
                      std::strerror(m_oLine.GetLastError()));
    OpenAgain();
    return false;
}

bool GatewayLine::TryToOpen()
{
    m_strDevice = m_oSettings.m_strDevice;
    m_oOptions = m_oSettings.LineOptions();
    return m_oLine.Open(m_strDevice.c_str(), m_oOptions) == CKorSerial::SERIAL_OK && Attach();
}

void GatewayLine::OpenAgain()
{
    m_nRetryTicket = m_oLoop.CallAfter(m_nPause, [this] {
        m_nPause = std::min(m_nPause * 2, LONGEST_PAUSE_MS);
        if (TryToOpen())
            KorGetLog().Write(CKorLog::LEVEL_NOTICE, "opened %s", m_strDevice.c_str());
        else
            OpenAgain();
    });
}

void GatewayLine::Close()
{
    m_oLoop.Cancel(std::exchange(m_nRetryTicket, 0));
    Detach();
    m_oLine.Close();
}

void GatewayLine::Reload()
{
    SetLimits(m_oSettings.m_nTimeout, m_oSettings.m_nRetries);
    if (m_strDevice == m_oSettings.m_strDevice && IsSameLine(m_oOptions, m_oSettings.LineOptions()))
        return;
    Close();
    Open();
}

void GatewayLine::TelegramSent(const std::string& strTelegram)
{
    Show("sent", strTelegram);
}

void GatewayLine::TelegramReceived(const std::string& strTelegram)
{
    Show("received", strTelegram);
}

void GatewayLine::LineHungUp()
{
    KorGetLog().Write(CKorLog::LEVEL_WARNING, "%s hung up", m_strDevice.c_str());
    Close();
    m_nPause = FIRST_PAUSE_MS;
    OpenAgain();
}
