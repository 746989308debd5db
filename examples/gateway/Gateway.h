#pragma once

#include "GatewaySettings.h"
#include "PidFile.h"
#include "app/KorConApplication.h"
#include "examples/modbus/ModbusRtuClient.h"
#include "serial/KorSerial.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A daemon that polls a Modbus RTU meter and keeps the readings in its INI file.
///
/// Finalize() stores them, and it runs in the signal handler. A handler may interrupt the program
/// anywhere, also where it holds a lock that storing needs. So the signals are blocked from
/// Initialize() on and let in where no such lock is held: while the gateway waits for the next
/// poll, before each request and while the device opens.
class Gateway : public CKorConApplication
{
public:
    Gateway();

    bool Initialize() override;
    void Run() override;
    int Finalize() override;
    void DoCmdLineExchange(CKorCmdLineApplExchange* pExchange) override;

private:
    bool LoadSettings();
    bool HoldPidFile();
    bool OpenLine();
    bool ConnectMeter();
    void ReopenLine();
    bool Fail(const std::string& strReason);
    void Poll();
    void TakeOver(const std::vector<std::uint16_t>& vecRegisters);
    std::string Summary() const;

    bool m_bHelp = false;
    bool m_bNoSettingsFile = false;
    bool m_bOnce = false;
    bool m_bVerbose = false;
    std::string m_strSettingsFile;
    std::string m_strUnknownArgument;

    std::unique_ptr<GatewaySettings> m_pSettings;
    std::unique_ptr<PidFile> m_pPidFile;
    std::unique_ptr<CKorSerial> m_pPort;
    std::unique_ptr<ModbusRtuClient> m_pMeter;
    bool m_bPolling = false;
    int m_nFailuresInARow = 0;
    int m_nExitStatus = 0;
};
