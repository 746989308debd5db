#include "Gateway.h"

#include "Log.h"
#include "text/KorMemDump.h"
#include "time/KorLocalTime.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace
{

constexpr char USAGE[] = "usage: gateway.bin [-c FILE] [-once] [-v] [-help]\n"
                         "Polls a Modbus RTU meter and keeps its readings in an INI file.\n"
                         "  -c FILE  the INI file (default: gateway.ini beside the program)\n"
                         "  -once    poll once and end; exit status 1 without a reading\n"
                         "  -v       show every telegram\n"
                         "  -help    show this text\n";

// Energy (two registers, Wh), voltage (0.1 V), current (0.01 A), power (W).
constexpr std::uint16_t METER_REGISTERS = 5;

constexpr int FAILURES_UNTIL_REOPENED = 3;

constexpr unsigned int ALL_LINES = 0xFFFFFFFF;

/// Waits up to @p nMilliseconds and lets the signals that end the gateway in meanwhile.
void LetSignalsIn(int nMilliseconds)
{
    const timespec oTime = {nMilliseconds / 1000, nMilliseconds % 1000 * 1000000L};
    sigset_t oNoSignals;
    sigemptyset(&oNoSignals);
    ppoll(nullptr, 0, &oTime, &oNoSignals);
}

/// The gateway's client: can be ended between two requests, and shows telegrams when asked.
class GatewayClient : public ModbusRtuClient
{
public:
    GatewayClient(CKorSerial& oPort, int nTimeout, unsigned int nRetries, bool bVerbose)
        : ModbusRtuClient(oPort, nTimeout, nRetries), m_bVerbose(bVerbose)
    {
    }

private:
    void TelegramSent(const std::string& strTelegram) override
    {
        LetSignalsIn(0);
        Dump("sent", strTelegram);
    }
    void TelegramReceived(const std::string& strTelegram) override
    {
        Dump("received", strTelegram);
    }
    void Dump(const char* pszWhat, const std::string& strTelegram) const
    {
        const auto nLength = static_cast<unsigned int>(strTelegram.size());
        if (m_bVerbose)
            LogLine(std::string(pszWhat) + "\n" +
                    KorMemDump(strTelegram.data(), nLength, ALL_LINES, ALL_LINES));
    }

    bool m_bVerbose;
};

std::string Banner(const CKorApplicationInfo& oInfo)
{
    return oInfo.GetVersionString() + ", " + oInfo.GetCopyrightString();
}

/// Blocks or lets in the signals that end the gateway.
void MaskEndSignals(int nHow)
{
    sigset_t oSignals;
    sigemptyset(&oSignals);
    sigaddset(&oSignals, SIGINT);
    sigaddset(&oSignals, SIGTERM);
    sigprocmask(nHow, &oSignals, nullptr);
}

/// Opens the device once and closes it again. That tells why it cannot be opened, and where a
/// device waits for a carrier it is the place where a signal can end the wait.
/// @return an errno value, 0 when it opened
int TryDevice(const std::string& strDevice)
{
    MaskEndSignals(SIG_UNBLOCK);
    const int hDevice = open(strDevice.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const int nError = hDevice == -1 ? errno : 0;
    MaskEndSignals(SIG_BLOCK);
    if (hDevice != -1)
        close(hDevice);
    return nError;
}

/// A number with its decimal point put before the last @p nDecimals digits.
std::string Fixed(unsigned long nValue, unsigned int nDecimals)
{
    std::string strDigits = std::to_string(nValue);
    if (strDigits.size() <= nDecimals)
        strDigits.insert(0, nDecimals + 1 - strDigits.size(), '0');
    return nDecimals == 0 ? strDigits : strDigits.insert(strDigits.size() - nDecimals, 1, '.');
}

} // namespace

Gateway::Gateway() : CKorConApplication(nullptr, "gateway", nullptr)
{
    m_oInfo = CKorApplicationInfo("gateway", "1.0.0", "Quentor GmbH", "Meter gateway",
                                  "www.quentor.example", nullptr);
}

void Gateway::DoCmdLineExchange(CKorCmdLineApplExchange* pExchange)
{
    for (const char* pszFlag : {"once", "v", "help"})
        pExchange->AddParamDescription(pszFlag, false);
    pExchange->AddParamDescription("c", true);

    std::string strValue;
    m_bOnce = pExchange->GetParameter("once", false, strValue);
    m_bVerbose = pExchange->GetParameter("v", false, strValue);
    m_bHelp = pExchange->GetParameter("help", false, strValue);
    const bool bNamed = pExchange->GetParameter("c", true, m_strSettingsFile);
    if (!bNamed)
        m_strSettingsFile.clear();
    m_bNoSettingsFile = bNamed && m_strSettingsFile.empty();
    pExchange->GetParameter(nullptr, false, strValue); // the program itself
    pExchange->GetParameter(nullptr, false, m_strUnknownArgument);
}

bool Gateway::Initialize()
{
    if (m_bHelp) {
        std::fputs(USAGE, stdout);
        return false;
    }
    if (m_bNoSettingsFile || !m_strUnknownArgument.empty()) {
        const std::string strError =
            m_bNoSettingsFile ? "-c needs a file" : "unknown argument " + m_strUnknownArgument;
        std::fprintf(stderr, "gateway.bin: %s\n%s", strError.c_str(), USAGE);
        m_nExitStatus = 2;
        return false;
    }
    MaskEndSignals(SIG_BLOCK);
    LogLine(Banner(GetInfo()));
    LogLine(Banner(CKorApplicationInfo::GetLibraryInfo()));
    return LoadSettings() && HoldPidFile() && ConnectMeter();
}

bool Gateway::LoadSettings()
{
    // A name from the command line counts from where the user stands.
    if (m_strSettingsFile.empty())
        m_pSettings =
            std::make_unique<GatewaySettings>("gateway.ini", CKorIniFile::PATH_PROGRAM_DIR);
    else
        m_pSettings = std::make_unique<GatewaySettings>(m_strSettingsFile.c_str(),
                                                        CKorIniFile::PATH_UNCHANGED);
    const std::string strFile = m_pSettings->GetIniFileName();
    if (!m_pSettings->CreateDefaultFile())
        return Fail("cannot write " + strFile);
    LogLine("settings in " + strFile);
    m_pSettings->UpdateOptions(false);
    const std::string strComplaint = m_pSettings->Complaint();
    return strComplaint.empty() || Fail(strFile + ": " + strComplaint);
}

bool Gateway::HoldPidFile()
{
    m_pPidFile = std::make_unique<PidFile>(m_pSettings->m_strPidFile);
    std::string strError;
    return m_pPidFile->Acquire(strError) || Fail(strError);
}

bool Gateway::ConnectMeter()
{
    m_pPort = std::make_unique<CKorSerial>();
    m_pMeter = std::make_unique<GatewayClient>(*m_pPort, m_pSettings->m_nTimeout,
                                               static_cast<unsigned int>(m_pSettings->m_nRetries),
                                               m_bVerbose);
    return OpenLine() ||
           Fail("set [Line] Device in " + m_pSettings->GetIniFileName() + " to the meter's line");
}

bool Gateway::OpenLine()
{
    const std::string& strDevice = m_pSettings->m_strDevice;
    const int nError = TryDevice(strDevice);
    if (nError == 0 && m_pPort->open(strDevice.c_str(), m_pSettings->Baudrate(),
                                     m_pSettings->Parity(), m_pSettings->StopBits(),
                                     CKorSerial::BYTESIZE_8, nullptr) == CKorSerial::SERIAL_OK)
        return true;
    m_pPort->close();
    LogLine("cannot open " + strDevice + ": " +
            (nError != 0 ? std::strerror(nError) : "no serial line"));
    return false;
}

/// After a hang-up the open device stays dead, though a new one may have come in its place.
void Gateway::ReopenLine()
{
    m_nFailuresInARow = 0;
    m_pPort->close();
    if (OpenLine())
        LogLine("opened " + m_pSettings->m_strDevice + " again");
}

bool Gateway::Fail(const std::string& strReason)
{
    LogLine("error: " + strReason);
    m_nExitStatus = 1;
    return false;
}

void Gateway::Run()
{
    m_bPolling = true;
    Poll();
    while (!m_bOnce) {
        LetSignalsIn(m_pSettings->m_nPollInterval);
        Poll();
    }
}

void Gateway::Poll()
{
    const ModbusRequest oRequest = {static_cast<std::uint8_t>(m_pSettings->m_nStation),
                                    MODBUS_READ_HOLDING_REGISTERS, 0, METER_REGISTERS};
    std::vector<std::uint16_t> vecRegisters;
    const unsigned int nRetriesBefore = m_pMeter->Counters().nRetries;
    const EModbusResult eResult = m_pMeter->Read(oRequest, vecRegisters);
    const unsigned int nRetries = m_pMeter->Counters().nRetries - nRetriesBefore;
    if (nRetries != 0)
        LogLine("asked again, repetitions: " + std::to_string(nRetries));
    ++m_pSettings->m_nPolls;
    if (eResult == MODBUS_OK) {
        m_nFailuresInARow = 0;
        TakeOver(vecRegisters);
        return;
    }
    ++m_pSettings->m_nErrors;
    LogLine(std::string("no reading: ") + ModbusResultText(eResult));
    if (m_bOnce)
        m_nExitStatus = 1;
    else if (++m_nFailuresInARow == FAILURES_UNTIL_REOPENED)
        ReopenLine();
}

void Gateway::TakeOver(const std::vector<std::uint16_t>& vecRegisters)
{
    GatewaySettings& oResults = *m_pSettings;
    oResults.m_strReadingTime =
        CKorLocalTime::CurrentLocalTime().Time2Str(CKorUTCTime::eIsoDateTimeMs);
    oResults.m_strEnergy = Fixed(vecRegisters[0] * 65536UL + vecRegisters[1], 3);
    oResults.m_strVoltage = Fixed(vecRegisters[2], 1);
    oResults.m_strCurrent = Fixed(vecRegisters[3], 2);
    oResults.m_strPower = Fixed(vecRegisters[4], 0);
    LogLine(oResults.m_strVoltage + " V, " + oResults.m_strCurrent + " A, " + oResults.m_strPower +
            " W, " + oResults.m_strEnergy + " kWh");
}

int Gateway::Finalize()
{
    m_pPort.reset(); // ends the receive thread: nothing is destroyed after a signal
    if (m_bPolling) {
        m_bPolling = false;
        m_pSettings->UpdateOptions(true);
        LogLine(Summary());
    }
    if (m_pPidFile)
        m_pPidFile->Release();
    return m_nExitStatus;
}

std::string Gateway::Summary() const
{
    // Both in the same zone, or a change to summer time would add an hour.
    CKorLocalTime oStart = GetStartZeit();
    CKorLocalTime oEnd = CKorLocalTime::CurrentLocalTime();
    oStart.ChangeTimezone(0);
    oEnd.ChangeTimezone(0);
    const ModbusCounters& oCounters = m_pMeter->Counters();
    return "ends after " + KorToString(oEnd - oStart, CKorTimeDiff::eDiffHhMmSsMs) + ": " +
           std::to_string(oCounters.nRequests) + " polls, " + std::to_string(oCounters.nRetries) +
           " repetitions, " + std::to_string(oCounters.nTimeouts) + " time-outs, " +
           std::to_string(oCounters.nCrcErrors) + " wrong CRCs";
}
