#include "GatewaySettings.h"

#include "config/KorOptionExchange.h"
#include "fs/KorFile.h"

#include <charconv>
#include <fstream>

namespace
{

constexpr char DEFAULT_FILE[] =
    R"(# Settings of the gateway. Edit and start it again; results are stored at the end.

[Line]
Device=/dev/ttyAM0 # serial device
Baudrate=9600 # bit/s: 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200
Parity=none # none, even or odd
StopBits=1 # 1 or 2

[Meter]
Station=1 # Modbus address, 1 to 247
PollInterval=1000 # ms from the end of a poll to the next
Timeout=300 # ms to wait for an answer, at most 10000
Retries=2 # further requests after one without a good answer, at most 10

[Process]
PidFile=gateway.pid # relative to the working directory

[Reading]
# The last good answer of the meter: local time, V, A, W, kWh.

[Counters]
# Since the first start.
Polls=0
Errors=0 # polls without a good answer
)";

struct SBaudrate
{
    int nRate;
    CKorSerial::E_BAUDRATE eRate;
};

constexpr SBaudrate BAUDRATES[] = {
    {1200, CKorSerial::BAUD_1200},   {2400, CKorSerial::BAUD_2400},
    {4800, CKorSerial::BAUD_4800},   {9600, CKorSerial::BAUD_9600},
    {19200, CKorSerial::BAUD_19200}, {38400, CKorSerial::BAUD_38400},
    {57600, CKorSerial::BAUD_57600}, {115200, CKorSerial::BAUD_115200},
};

const SBaudrate* FindBaudrate(int nRate)
{
    for (const SBaudrate& oBaudrate : BAUDRATES) {
        if (oBaudrate.nRate == nRate)
            return &oBaudrate;
    }
    return nullptr;
}

} // namespace

/// The option exchange of numbers: the library's step for texts and a conversion. A text that is
/// no number reads as -1, which Complaint() reports.
template <>
void IOX_Std<int>(CKorIniOptionExchange* pExchange, const char* pszSection, const char* pszOption,
                  int& nValue, const int& nDefault)
{
    std::string strValue = std::to_string(nValue);
    IOX_Std<std::string>(pExchange, pszSection, pszOption, strValue, std::to_string(nDefault));
    if (pExchange->IsWriteBack())
        return;
    const char* const pEnd = strValue.data() + strValue.size();
    const auto oResult = std::from_chars(strValue.data(), pEnd, nValue);
    if (oResult.ec != std::errc() || oResult.ptr != pEnd)
        nValue = -1;
}

void GatewaySettings::DoOptionExchange(CKorIniOptionExchange* pExchange)
{
    // Written settings would undo what somebody edits while the gateway runs.
    if (!pExchange->IsWriteBack()) {
        IOX_Std<std::string>(pExchange, "Line", "Device", m_strDevice, "/dev/ttyAM0");
        IOX_Std<int>(pExchange, "Line", "Baudrate", m_nBaudrate, 9600);
        IOX_Std<std::string>(pExchange, "Line", "Parity", m_strParity, "none");
        IOX_Std<int>(pExchange, "Line", "StopBits", m_nStopBits, 1);
        IOX_Std<int>(pExchange, "Meter", "Station", m_nStation, 1);
        IOX_Std<int>(pExchange, "Meter", "PollInterval", m_nPollInterval, 1000);
        IOX_Std<int>(pExchange, "Meter", "Timeout", m_nTimeout, 300);
        IOX_Std<int>(pExchange, "Meter", "Retries", m_nRetries, 2);
        IOX_Std<std::string>(pExchange, "Process", "PidFile", m_strPidFile, "gateway.pid");
    }
    // A new option goes to the top of its section, so that the last one here is the first there.
    IOX_Std<std::string>(pExchange, "Reading", "Energy", m_strEnergy, "");
    IOX_Std<std::string>(pExchange, "Reading", "Power", m_strPower, "");
    IOX_Std<std::string>(pExchange, "Reading", "Current", m_strCurrent, "");
    IOX_Std<std::string>(pExchange, "Reading", "Voltage", m_strVoltage, "");
    IOX_Std<std::string>(pExchange, "Reading", "Time", m_strReadingTime, "");
    IOX_Std<int>(pExchange, "Counters", "Polls", m_nPolls, 0);
    IOX_Std<int>(pExchange, "Counters", "Errors", m_nErrors, 0);
}

bool GatewaySettings::CreateDefaultFile() const
{
    const std::string strFile = GetIniFileName();
    if (CKorFile::FileExist(strFile.c_str()))
        return true;
    std::ofstream oFile(strFile);
    oFile << DEFAULT_FILE;
    return oFile.flush().good();
}

std::string GatewaySettings::Complaint() const
{
    if (FindBaudrate(m_nBaudrate) == nullptr)
        return "[Line] Baudrate is none that the gateway knows";
    if (m_strParity != "none" && m_strParity != "even" && m_strParity != "odd")
        return "[Line] Parity is neither none nor even nor odd";
    if (m_nStopBits != 1 && m_nStopBits != 2)
        return "[Line] StopBits is neither 1 nor 2";
    if (m_nStation < 1 || m_nStation > 247)
        return "[Meter] Station is not in 1 to 247";
    if (m_nPollInterval < 1)
        return "[Meter] PollInterval is no number of ms";
    if (m_nTimeout < 1 || m_nTimeout > 10000)
        return "[Meter] Timeout is not in 1 to 10000";
    if (m_nRetries < 0 || m_nRetries > 10)
        return "[Meter] Retries is not in 0 to 10";
    if (m_nPolls < 0 || m_nErrors < 0)
        return "[Counters] Polls or Errors is no count";
    return "";
}

CKorSerial::E_BAUDRATE GatewaySettings::Baudrate() const
{
    return FindBaudrate(m_nBaudrate)->eRate;
}

CKorSerial::E_PARITY GatewaySettings::Parity() const
{
    if (m_strParity == "none")
        return CKorSerial::PARITY_NONE;
    return m_strParity == "odd" ? CKorSerial::PARITY_ODD : CKorSerial::PARITY_EVEN;
}

CKorSerial::E_NUM_STOPBITS GatewaySettings::StopBits() const
{
    return m_nStopBits == 2 ? CKorSerial::STOPBITS_2 : CKorSerial::STOPBITS_1;
}
