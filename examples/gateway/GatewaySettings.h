#pragma once

#include "config/KorIniFile.h"
#include "serial/KorSerial.h"

#include <string>

/// The gateway's INI file: all its settings and results, moved by one routine.
class GatewaySettings : public CKorIniFile
{
public:
    GatewaySettings(const char* pszFile, EPathMode eMode) : CKorIniFile(pszFile, eMode) {}

    /// Writes a file with every setting and a comment on each, unless there is a file.
    /// @return false when there is none and none can be written
    bool CreateDefaultFile() const;

    /// What is wrong with the settings that were read; empty when nothing is.
    std::string Complaint() const;

    /// The line settings in the terms of the serial port, for settings without complaint.
    CKorSerial::E_BAUDRATE Baudrate() const;
    CKorSerial::E_PARITY Parity() const;
    CKorSerial::E_NUM_STOPBITS StopBits() const;

    void DoOptionExchange(CKorIniOptionExchange* pExchange) override;
    using CKorIniFile::DoOptionExchange;

    // Settings
    std::string m_strDevice;
    int m_nBaudrate = 0;
    std::string m_strParity;
    int m_nStopBits = 0;
    int m_nStation = 0;
    int m_nPollInterval = 0; // ms
    int m_nTimeout = 0;      // ms
    int m_nRetries = 0;
    std::string m_strPidFile;

    // Results
    std::string m_strReadingTime;
    std::string m_strVoltage;
    std::string m_strCurrent;
    std::string m_strPower;
    std::string m_strEnergy;
    int m_nPolls = 0;
    int m_nErrors = 0;
};
