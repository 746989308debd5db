#pragma once

#include "config/KorSafeIniFile.h"
#include "serial/KorSerialLine.h"

#include <string>

/// The gateway's INI file: all its settings and results, moved by one routine.
class GatewaySettings : public CKorSafeIniFile
{
public:
    GatewaySettings(const char* pszFile, EPathMode eMode) : CKorSafeIniFile(pszFile, eMode)
    {
        SetReportUnknown(true);
    }

    /// Writes a file with every setting and a comment on each, unless there is a file.
    /// @return false with errno when there is none and none can be written
    bool CreateDefaultFile() const;

    /// Reads the file.
    /// @return whether every setting in it is a good one; GetFindings() tells which is not
    bool Load() { return UpdateOptions(false) && GetFindings().empty(); }

    /// The line settings in the terms of the serial line.
    SKorLineOptions LineOptions() const;

    void DoOptionExchange(CKorIniOptionExchange* pExchange) override;
    using CKorSafeIniFile::DoOptionExchange;

    // Settings
    std::string m_strDevice;
    unsigned int m_nSpeed = 0;
    CKorSerial::E_PARITY m_eParity = CKorSerial::PARITY_NONE;
    int m_nStopBits = 0;
    unsigned int m_nStation = 0;
    unsigned int m_nPollInterval = 0; // ms
    unsigned int m_nTimeout = 0;      // ms
    unsigned int m_nRetries = 0;
    std::string m_strPidFile;
    unsigned int m_nStoreInterval = 0; // s

    // Results
    std::string m_strReadingTime;
    std::string m_strVoltage;
    std::string m_strCurrent;
    std::string m_strPower;
    std::string m_strEnergy;
    unsigned int m_nPolls = 0;
    unsigned int m_nErrors = 0;

private:
    void ExchangeSettings(CKorIniOptionExchange* pExchange);
};
