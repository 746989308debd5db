#pragma once

#include "app/KorDaemonApplication.h"
#include "app/KorPidFile.h"
#include "examples/gateway/ControlCommands.h"
#include "examples/gateway/ControlServer.h"
#include "examples/gateway/GatewaySettings.h"
#include "examples/gateway/Poller.h"
#include "examples/gateway/ReadingOutlet.h"

#include <memory>
#include <string>
#include <vector>

/// A daemon that polls Modbus RTU meters on serial lines and publishes what they say.
class Gateway : public CKorDaemonApplication
{
public:
    Gateway();

    void DeclareOptions(CKorOptionParser& rParser) override;
    bool Initialize() override;
    void ReloadInd() override;
    int Finalize() override;

private:
    bool OpenLog();
    int Check() const;
    bool LoadSettings();
    bool HoldPidFile();
    bool Fail(const std::string& strReason);
    std::vector<SKorIniFinding> Reload();
    bool Apply();
    void OpenControl();
    void StartStatistics();
    void PollOnce();
    void LogSummary() const;

    bool m_bOnce = false;
    bool m_bVerbose = false;
    std::string m_strLogFile;
    std::string m_strSettingsFile;
    std::string m_strCheckFile;

    std::unique_ptr<GatewaySettings> m_pSettings;
    CKorPidFile m_oPidFile;
    ReadingOutlet m_oOutlet;
    Poller m_oPoller;
    ControlCommands m_oCommands;
    ControlServer m_oControl;
    CKorStopwatch m_oRunning;
    int m_nStatisticsTicket = 0;
    std::size_t m_nOutstanding = 0; // meters that have not been polled yet, with --once
};
