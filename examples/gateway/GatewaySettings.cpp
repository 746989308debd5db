#include "GatewaySettings.h"

#include "config/KorTypedOptions.h"
#include "fs/KorFile.h"
#include "fs/KorWholeFile.h"

namespace
{

constexpr char DEFAULT_FILE[] =
    R"(# Settings of the gateway. SIGHUP makes it read them again; results are stored while it runs.

[Line]
Device=/dev/ttyAM0 # serial device
Speed=9600 # bit/s
Parity=none # none, even or odd
StopBits=1 # 1 or 2

[Meter]
Station=1 # Modbus address, 1 to 247
PollInterval=1000 # ms from one poll to the next
Timeout=300 # ms to wait for an answer, at most 10000
Retries=2 # further requests after one without a good answer, at most 10

[Process]
PidFile=gateway.pid # relative to the working directory
StoreInterval=60 # s from one storing of the results to the next, at most 86400

[Reading]
# The last good answer of the meter: time, V, A, W, kWh.

[Counters]
# Since the first start.
Polls=0
Errors=0 # polls without a good answer
)";

} // namespace

void GatewaySettings::ExchangeSettings(CKorIniOptionExchange* pExchange)
{
    IOX_Value(pExchange, "Line", "Device", m_strDevice, "/dev/ttyAM0");
    IOX_Range(pExchange, "Line", "Speed", m_nSpeed, 9600, 1, 4000000);
    IOX_Enum(pExchange, "Line", "Parity", m_eParity, CKorSerial::PARITY_NONE,
             {{"none", CKorSerial::PARITY_NONE},
              {"even", CKorSerial::PARITY_EVEN},
              {"odd", CKorSerial::PARITY_ODD}});
    IOX_Range(pExchange, "Line", "StopBits", m_nStopBits, 1, 1, 2);
    IOX_Range(pExchange, "Meter", "Station", m_nStation, 1, 1, 247);
    IOX_Range(pExchange, "Meter", "PollInterval", m_nPollInterval, 1000, 1, 86400000);
    IOX_Range(pExchange, "Meter", "Timeout", m_nTimeout, 300, 1, 10000);
    IOX_Range(pExchange, "Meter", "Retries", m_nRetries, 2, 0, 10);
    IOX_Value(pExchange, "Process", "PidFile", m_strPidFile, "gateway.pid");
    IOX_Range(pExchange, "Process", "StoreInterval", m_nStoreInterval, 60, 1, 86400);
}

void GatewaySettings::DoOptionExchange(CKorIniOptionExchange* pExchange)
{
    // Settings are the user's: written, they would undo what somebody edits while the gateway runs.
    if (!pExchange->IsWriteBack())
        ExchangeSettings(pExchange);
    IOX_Value(pExchange, "Reading", "Time", m_strReadingTime, "");
    IOX_Value(pExchange, "Reading", "Voltage", m_strVoltage, "");
    IOX_Value(pExchange, "Reading", "Current", m_strCurrent, "");
    IOX_Value(pExchange, "Reading", "Power", m_strPower, "");
    IOX_Value(pExchange, "Reading", "Energy", m_strEnergy, "");
    IOX_Value(pExchange, "Counters", "Polls", m_nPolls, 0);
    IOX_Value(pExchange, "Counters", "Errors", m_nErrors, 0);
}

bool GatewaySettings::CreateDefaultFile() const
{
    const std::string strFile = GetIniFileName();
    return CKorFile::FileExist(strFile.c_str()) || KorReplaceFile(strFile.c_str(), DEFAULT_FILE);
}

SKorLineOptions GatewaySettings::LineOptions() const
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = m_nSpeed;
    oOptions.m_eParity = m_eParity;
    oOptions.m_eStopbits = m_nStopBits == 2 ? CKorSerial::STOPBITS_2 : CKorSerial::STOPBITS_1;
    return oOptions;
}
