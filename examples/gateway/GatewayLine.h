#pragma once

#include "GatewaySettings.h"
#include "examples/modbus/ModbusRtuClient.h"

#include <string>

/// The line to the meter: opened again, with growing pauses, whenever it is not there.
class GatewayLine : public ModbusRtuClient
{
public:
    /// Both outlive the line. Its settings are taken when it opens.
    GatewayLine(CKorEventLoop& oLoop, const GatewaySettings& oSettings);
    ~GatewayLine() override;

    /// Opens the line, now or as soon as it can be opened.
    /// @return whether it is open now; the log says why not
    bool Open();
    void Close();
    bool IsOpen() const { return m_oLine.IsOpen() && !m_oLine.IsHungUp(); }

    /// Takes settings that have changed: the line stays open unless its own have.
    void Reload();

protected:
    void TelegramSent(const std::string& strTelegram) override;
    void TelegramReceived(const std::string& strTelegram) override;
    void LineHungUp() override;

private:
    void OpenAgain();
    bool TryToOpen();

    CKorEventLoop& m_oLoop;
    const GatewaySettings& m_oSettings;
    CKorSerialLine m_oLine;
    std::string m_strDevice;
    SKorLineOptions m_oOptions;
    unsigned int m_nPause;
    int m_nRetryTicket = 0;
};
