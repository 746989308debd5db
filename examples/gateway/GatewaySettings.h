#pragma once

/// @file
/// The settings of the gateway.

#include "config/KorSafeIniFile.h"
#include "examples/gateway/MqttSettings.h"
#include "examples/gateway/RegisterMap.h"
#include "serial/KorSerialLine.h"

#include <string>
#include <vector>

/// A serial line.
struct LineSettings
{
    std::string m_strSection; ///< its header in the file
    std::string m_strName;
    std::string m_strDevice;
    SKorLineOptions m_oOptions;
    unsigned int m_nTurnAround = 0; ///< ms from an answer to the next request, at least
};

/// Whether a line opens in the same way.
bool IsSameLine(const LineSettings& oLeft, const LineSettings& oRight);

/// A meter on a line.
struct MeterSettings
{
    std::string m_strSection; ///< its header in the file
    std::string m_strName;
    std::string m_strLine; ///< the name of its line
    unsigned int m_nUnit = 1;
    unsigned int m_nPollInterval = 0; ///< ms
    unsigned int m_nTimeout = 0;      ///< ms
    unsigned int m_nTries = 1;
    RegisterMap m_vecRegisters;
};

/// What concerns the process.
struct ProcessSettings
{
    std::string m_strPidFile;
    std::string m_strControlSocket;         ///< empty: nobody looks in
    unsigned int m_nStatisticsInterval = 0; ///< s
};

/// The gateway's INI file, which people write and the gateway only reads.
///
/// A file of the former gateway, which knew one meter, is read too: its [Line] and [Meter] are those
/// without a name, and what it stored in [Reading] and [Counters] is passed over.
class GatewaySettings : public CKorSafeIniFile
{
public:
    GatewaySettings(const char* pszFile, EPathMode eMode);

    /// Writes a file with every setting and a comment on each, unless there is a file.
    /// @return false with errno when there is none and none can be written
    bool CreateDefaultFile() const;

    /// Reads the file and checks it as a whole.
    /// @return whether there is nothing to find fault with; GetFindings() tells what there is, in
    ///         the order of the lines
    bool Load();

    void DoOptionExchange(CKorIniOptionExchange* pExchange) override;
    using CKorSafeIniFile::DoOptionExchange;

    std::vector<LineSettings> m_vecLines;
    std::vector<MeterSettings> m_vecMeters;
    MqttSettings m_oMqtt;
    StoreSettings m_oStore;
    ProcessSettings m_oProcess;

private:
    void ExchangeSection(CKorIniOptionExchange* pExchange, const std::string& strSection);
    void ExchangeOther(CKorIniOptionExchange* pExchange, const std::string& strSection);
    void ExchangeProcess(CKorIniOptionExchange* pExchange);

    bool m_bOneMeter = false; ///< a file of the former gateway
};

/// Whether two names mean the same: sections of an INI file do not tell letters by their case.
bool IsSameName(const std::string& strLeft, const std::string& strRight);

/// "gateway.ini:7: [Meter main] Unit=0 is not in 1 to 247"
std::string FindingText(const std::string& strFile, const SKorIniFinding& oFinding);
