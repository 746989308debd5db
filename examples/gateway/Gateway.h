#pragma once

#include "GatewayLine.h"
#include "GatewaySettings.h"
#include "app/KorDaemonApplication.h"
#include "app/KorPidFile.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A daemon that polls a Modbus RTU meter and keeps the readings in its INI file.
class Gateway : public CKorDaemonApplication
{
public:
    Gateway();

    void DeclareOptions(CKorOptionParser& rParser) override;
    bool Initialize() override;
    void ReloadInd() override;
    int Finalize() override;

private:
    bool LoadSettings();
    bool HoldPidFile();
    bool Fail(const std::string& strReason);
    void StartTimers();
    void Poll();
    void TakeResult(EModbusResult eResult, const std::vector<std::uint16_t>& vecRegisters);
    void TakeReading(const std::vector<std::uint16_t>& vecRegisters);
    void Complain(EModbusResult eResult);
    bool Store();
    void LogSummary() const;

    bool m_bOnce = false;
    bool m_bVerbose = false;
    std::string m_strSettingsFile;

    std::unique_ptr<GatewaySettings> m_pSettings;
    CKorPidFile m_oPidFile;
    std::unique_ptr<GatewayLine> m_pMeter;
    CKorStopwatch m_oRunning;
    int m_nPollTicket = 0;
    int m_nStoreTicket = 0;
};
