#pragma once

#include "examples/gateway/GatewaySettings.h"
#include "examples/modbus/ModbusRtuClient.h"
#include "time/KorTimeout.h"

#include <cstdint>
#include <functional>
#include <string>

/// The line to the meters: opened again, with growing pauses, whenever it is not there.
class GatewayLine : public ModbusRtuClient
{
public:
    /// @param oLoop     serves the line and outlives it
    /// @param oSettings how it opens
    /// @param fnChanged called when the line was opened later than by Open(), and when it hung up
    GatewayLine(CKorEventLoop& oLoop, const LineSettings& oSettings,
                std::function<void()> fnChanged);
    ~GatewayLine() override;

    /// Opens the line, now or as soon as it can be opened.
    /// @return whether it is open now; the log and Error() say why not
    bool Open();
    void Close();
    bool IsOpen() const { return m_oLine.IsOpen() && !m_oLine.IsHungUp(); }

    const LineSettings& Settings() const { return m_oSettings; }
    /// Takes settings with which it would open in the same way.
    void SetSettings(const LineSettings& oSettings);

    /// Why the line is not open, or was not the last time.
    const std::string& Error() const { return m_strError; }
    /// How often it was opened.
    unsigned int Openings() const { return m_nOpenings; }
    /// How long the last answer took from the request on, in microseconds.
    std::uint32_t ResponseTime() const { return m_nResponseTime; }

protected:
    void TelegramSent(const std::string& strTelegram) override;
    void TelegramReceived(const std::string& strTelegram) override;
    void LineHungUp() override;

private:
    void OpenAgain();
    bool TryToOpen();

    CKorEventLoop& m_oLoop;
    LineSettings m_oSettings;
    std::function<void()> m_fnChanged;
    CKorSerialLine m_oLine;
    std::string m_strError;
    unsigned int m_nPause;
    unsigned int m_nOpenings = 0;
    int m_nRetryTicket = 0;
    CKorStopwatch m_oSinceRequest;
    std::uint32_t m_nResponseTime = 0;
};
