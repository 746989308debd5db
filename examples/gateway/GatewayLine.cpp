#include "examples/gateway/GatewayLine.h"

#include "app/KorLog.h"
#include "text/KorHexText.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

constexpr unsigned int FIRST_PAUSE_MS = 100;
constexpr unsigned int LONGEST_PAUSE_MS = 5000;
constexpr unsigned int BITS_OF_A_SILENCE = 39; // 3.5 characters of 11 bits
constexpr unsigned int TOP_SPEED = 19200;      // above it the silence stays the same

void Show(const char* pszWhat, const std::string& strTelegram)
{
    if (KorGetLog().IsEnabled(CKorLog::LEVEL_DEBUG))
        KorGetLog().Write(
            CKorLog::LEVEL_DEBUG, "%s %s", pszWhat,
            KorToHexText(strTelegram.data(), static_cast<unsigned int>(strTelegram.size()))
                .c_str());
}

/// What a line of this speed needs between two telegrams, and what its settings ask for.
unsigned int TurnAround(const LineSettings& oSettings)
{
    const unsigned int nSpeed = std::min(oSettings.m_oOptions.m_nSpeed, TOP_SPEED);
    return std::max(oSettings.m_nTurnAround, (BITS_OF_A_SILENCE * 1000 + nSpeed - 1) / nSpeed);
}

} // namespace

GatewayLine::GatewayLine(CKorEventLoop& oLoop, const LineSettings& oSettings,
                         std::function<void()> fnChanged)
    : ModbusRtuClient(oLoop, m_oLine, 0, 0),
      m_oLoop(oLoop),
      m_oSettings(oSettings),
      m_fnChanged(std::move(fnChanged)),
      m_nPause(FIRST_PAUSE_MS)
{
    SetTurnAround(TurnAround(oSettings));
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
    KorGetLog().Write(CKorLog::LEVEL_ERROR, "%s", m_strError.c_str());
    OpenAgain();
    return false;
}

bool GatewayLine::TryToOpen()
{
    if (m_oLine.Open(m_oSettings.m_strDevice.c_str(), m_oSettings.m_oOptions) ==
            CKorSerial::SERIAL_OK &&
        Attach()) {
        ++m_nOpenings;
        return true;
    }
    m_strError =
        "cannot open " + m_oSettings.m_strDevice + ": " + std::strerror(m_oLine.GetLastError());
    return false;
}

void GatewayLine::OpenAgain()
{
    m_nRetryTicket = m_oLoop.CallAfter(m_nPause, [this] {
        m_nPause = std::min(m_nPause * 2, LONGEST_PAUSE_MS);
        if (!TryToOpen())
            return OpenAgain();
        KorGetLog().Write(CKorLog::LEVEL_NOTICE, "opened %s", m_oSettings.m_strDevice.c_str());
        m_fnChanged();
    });
}

void GatewayLine::Close()
{
    m_oLoop.Cancel(std::exchange(m_nRetryTicket, 0));
    Detach();
    m_oLine.Close();
}

void GatewayLine::SetSettings(const LineSettings& oSettings)
{
    m_oSettings = oSettings;
    SetTurnAround(TurnAround(oSettings));
}

void GatewayLine::TelegramSent(const std::string& strTelegram)
{
    m_oSinceRequest.Restart();
    Show("sent", strTelegram);
}

void GatewayLine::TelegramReceived(const std::string& strTelegram)
{
    m_nResponseTime =
        static_cast<std::uint32_t>(m_oSinceRequest.GetElapsed().GetTotalMicroSeconds());
    Show("received", strTelegram);
}

void GatewayLine::LineHungUp()
{
    m_strError = m_oSettings.m_strDevice + " hung up";
    KorGetLog().Write(CKorLog::LEVEL_WARNING, "%s", m_strError.c_str());
    Close();
    m_nPause = FIRST_PAUSE_MS;
    OpenAgain();
    m_fnChanged();
}
