#include "examples/gateway/GatewaySettings.h"

#include "config/KorTypedOptions.h"
#include "examples/gateway/SettingsExchange.h"
#include "fs/KorFile.h"
#include "fs/KorWholeFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace
{

constexpr char DEFAULT_FILE[] =
    R"(# Settings of the gateway. SIGHUP makes it read them again; "gateway --check FILE" checks them.

[Line main]
Device=/dev/ttyAM0 # serial device
Speed=9600 # bit/s
Parity=none # none, even or odd
StopBits=1 # 1 or 2
TurnAround=0 # ms from an answer to the next request; 3.5 characters are kept in any case
RS485=no # yes: the driver switches the transmitter of a two-wire line

[Meter meter]
Line=main # one of the lines above
Unit=1 # Modbus address, 1 to 247
PollInterval=1000 # ms from one poll to the next
Timeout=300 # ms to wait for an answer, at most 10000
Tries=3 # requests before the meter counts as silent, at most 11
Map=simulated # simulated, float or integer, or registers of your own, such as
# Register.Frequency=5 u16 0.01 Hz

[Mqtt]
# Host=localhost # broker; without one readings go to the log
# Port=1883
# User=gateway
# PasswordFile=/etc/gateway.password # its first line is the password
# CaFile=/etc/ssl/certs/ca-certificates.crt # certificates to trust; without them no TLS
# CertFile=/etc/gateway.crt # certificate to show, with its KeyFile
# Prefix=gateway # begins every topic; of each gateway another one
# Qos=1 # 0, 1 or 2

[Store]
# File=/var/lib/gateway/readings # where readings wait for the broker; without it in memory
# MaxSize=4194304 # bytes
# WriteInterval=60 # s from one write to the next

[Process]
PidFile=gateway.pid # relative to the working directory, as the socket is
ControlSocket=gateway.sock # for gatewayctl; nothing: none
StatisticsInterval=60 # s from one publishing of the statistics to the next, at most 86400
)";

/// The line of a section's first header; 0 for none.
unsigned int HeaderLine(const std::string& strText, const std::string& strSection)
{
    unsigned int nLine = 0;
    for (std::size_t nBegin = 0; nBegin < strText.size();) {
        const std::size_t nEnd = std::min(strText.find('\n', nBegin), strText.size());
        const std::string strLine = strText.substr(nBegin, nEnd - nBegin);
        const std::size_t nOpen = strLine.find_first_not_of(" \t\v\f\r");
        ++nLine;
        nBegin = nEnd + 1;
        if (nOpen == std::string::npos || strLine[nOpen] != '[')
            continue;
        const std::string strName = strLine.substr(nOpen + 1);
        if (IsSameName(strName.substr(0, strName.find_first_of("]#\r")), strSection))
            return nLine;
    }
    return 0;
}

/// A gateway refuses a wrong setting rather than use another value.
void DropConsequence(std::string& rstrText)
{
    static const std::string USED = " is used";
    const std::size_t nBegin = rstrText.rfind("; ");
    if (nBegin != std::string::npos && rstrText.size() > USED.size() &&
        rstrText.compare(rstrText.size() - USED.size(), USED.size(), USED) == 0)
        rstrText.erase(nBegin);
}

bool Contains(const std::vector<std::string>& vecNames, const char* pszName)
{
    return std::any_of(vecNames.begin(), vecNames.end(), [pszName](const std::string& strName) {
        return IsSameName(strName, pszName);
    });
}

/// Whether these are the sections of the former gateway: none has a name, and one is there.
bool IsOfOneMeter(const std::vector<std::string>& vecSections)
{
    std::string strName;
    for (const std::string& strSection : vecSections) {
        if ((IsSectionOf("Line", strSection, strName) ||
             IsSectionOf("Meter", strSection, strName)) &&
            !strName.empty())
            return false;
    }
    return Contains(vecSections, "Line") || Contains(vecSections, "Meter");
}

/// Asks for every option of a section, so that none is called unknown.
void PassOver(CKorIniOptionExchange* pExchange, const std::string& strSection)
{
    std::vector<std::string> vecOptions;
    std::string strValue;
    pExchange->GetOptions(strSection.c_str(), vecOptions);
    for (const std::string& strOption : vecOptions)
        pExchange->GetOptionString(strSection.c_str(), strOption.c_str(), strValue);
}

} // namespace

bool IsSameLine(const LineSettings& oLeft, const LineSettings& oRight)
{
    const SKorLineOptions& oA = oLeft.m_oOptions;
    const SKorLineOptions& oB = oRight.m_oOptions;
    return oLeft.m_strDevice == oRight.m_strDevice && oA.m_nSpeed == oB.m_nSpeed &&
           oA.m_eParity == oB.m_eParity && oA.m_eStopbits == oB.m_eStopbits &&
           oA.m_oRS485.m_bEnabled == oB.m_oRS485.m_bEnabled &&
           oA.m_oRS485.m_bRtsOnSend == oB.m_oRS485.m_bRtsOnSend &&
           oA.m_oRS485.m_nDelayBefore == oB.m_oRS485.m_nDelayBefore &&
           oA.m_oRS485.m_nDelayAfter == oB.m_oRS485.m_nDelayAfter;
}

GatewaySettings::GatewaySettings(const char* pszFile, EPathMode eMode)
    : CKorSafeIniFile(pszFile, eMode)
{
    SetReportUnknown(true);
}

bool GatewaySettings::CreateDefaultFile() const
{
    const std::string strFile = GetIniFileName();
    return CKorFile::FileExist(strFile.c_str()) || KorReplaceFile(strFile.c_str(), DEFAULT_FILE);
}

bool GatewaySettings::Load()
{
    std::string strText;
    const std::string strFile = GetIniFileName();
    if (!KorReadFile(strFile.c_str(), strText) || !UpdateOptions(false)) {
        const int nError = errno;
        m_vecFindings = {{SKorIniFinding::FINDING_IO_ERROR, 0, "", "",
                          std::string("the file cannot be read: ") + std::strerror(nError)}};
        return false;
    }
    std::vector<SKorIniFinding> vecLines;
    if (!m_bOneMeter) // such a file was never checked by the line
        KorCheckIniFile(strFile.c_str(), false, vecLines);
    m_vecFindings.insert(m_vecFindings.end(), vecLines.begin(), vecLines.end());
    for (SKorIniFinding& roFinding : m_vecFindings) {
        DropConsequence(roFinding.m_strText);
        if (roFinding.m_nLine == 0)
            roFinding.m_nLine = HeaderLine(strText, roFinding.m_strSection);
    }
    std::stable_sort(m_vecFindings.begin(), m_vecFindings.end(),
                     [](const SKorIniFinding& oLeft, const SKorIniFinding& oRight) {
                         return oLeft.m_nLine < oRight.m_nLine;
                     });
    return m_vecFindings.empty();
}

void GatewaySettings::DoOptionExchange(CKorIniOptionExchange* pExchange)
{
    std::vector<std::string> vecSections;
    pExchange->GetSections(vecSections);
    m_bOneMeter = IsOfOneMeter(vecSections);
    m_vecLines.clear();
    m_vecMeters.clear();
    for (const std::string& strSection : vecSections)
        ExchangeSection(pExchange, strSection);
    if (m_bOneMeter && m_vecLines.empty())
        ExchangeSection(pExchange, "Line");
    if (m_bOneMeter && m_vecMeters.empty())
        ExchangeSection(pExchange, "Meter");
    ExchangeMqtt(pExchange, m_oMqtt);
    ExchangeStore(pExchange, m_oStore);
    ExchangeProcess(pExchange);
    CheckSettings(pExchange, *this);
}

void GatewaySettings::ExchangeSection(CKorIniOptionExchange* pExchange,
                                      const std::string& strSection)
{
    std::string strName;
    if (IsSectionOf("Line", strSection, strName)) {
        LineSettings oLine = {strSection, strName, "", {}, 0};
        if (m_bOneMeter) {
            oLine.m_strName = "line";
            oLine.m_strDevice = "/dev/ttyAM0";
        }
        ExchangeLine(pExchange, oLine);
        m_vecLines.push_back(oLine);
    } else if (IsSectionOf("Meter", strSection, strName)) {
        MeterSettings oMeter;
        oMeter.m_strSection = strSection;
        oMeter.m_strName = m_bOneMeter ? "meter" : strName;
        ExchangeMeter(pExchange, oMeter, m_bOneMeter);
        m_vecMeters.push_back(oMeter);
    } else {
        ExchangeOther(pExchange, strSection);
    }
}

void GatewaySettings::ExchangeOther(CKorIniOptionExchange* pExchange, const std::string& strSection)
{
    const auto fnIsOneOf = [&strSection](const std::vector<std::string>& vecNames) {
        return Contains(vecNames, strSection.c_str());
    };
    if (strSection.empty() || fnIsOneOf({"Mqtt", "Store", "Process"}))
        return;
    PassOver(pExchange, strSection);
    if (!m_bOneMeter || !fnIsOneOf({"Reading", "Counters"}))
        Complain(pExchange, strSection, "", "is no section of the gateway");
}

void GatewaySettings::ExchangeProcess(CKorIniOptionExchange* pExchange)
{
    IOX_Value(pExchange, "Process", "PidFile", m_oProcess.m_strPidFile, "gateway.pid");
    IOX_Value(pExchange, "Process", "ControlSocket", m_oProcess.m_strControlSocket, "gateway.sock");
    IOX_Range(pExchange, "Process", "StatisticsInterval", m_oProcess.m_nStatisticsInterval, 60, 1,
              86400);
    std::string strFormer;
    if (m_bOneMeter) // nothing is stored there any more
        pExchange->GetOptionString("Process", "StoreInterval", strFormer);
}

std::string FindingText(const std::string& strFile, const SKorIniFinding& oFinding)
{
    const std::string strLine =
        oFinding.m_nLine != 0 ? ":" + std::to_string(oFinding.m_nLine) : std::string();
    return strFile + strLine + ": " + oFinding.m_strText;
}
