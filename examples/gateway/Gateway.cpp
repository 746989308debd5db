#include "Gateway.h"

#include "app/KorLog.h"
#include "time/KorZoneTime.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace
{

// Energy (two registers, Wh), voltage (0.1 V), current (0.01 A), power (W).
constexpr std::uint16_t METER_REGISTERS = 5;

std::string Banner(const CKorApplicationInfo& oInfo)
{
    return oInfo.GetVersionString() + ", " + oInfo.GetCopyrightString();
}

/// A number with its decimal point put before the last @p nDecimals digits.
std::string Fixed(unsigned long nValue, unsigned int nDecimals)
{
    std::string strDigits = std::to_string(nValue);
    if (strDigits.size() <= nDecimals)
        strDigits.insert(0, nDecimals + 1 - strDigits.size(), '0');
    return nDecimals == 0 ? strDigits : strDigits.insert(strDigits.size() - nDecimals, 1, '.');
}

/// Logs what is wrong with an INI file, one line a finding.
void LogFindings(const CKorSafeIniFile& oFile)
{
    for (const SKorIniFinding& oFinding : oFile.GetFindings())
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "%s:%u: %s", oFile.GetIniFileName().c_str(),
                          oFinding.m_nLine, oFinding.m_strText.c_str());
}

} // namespace

Gateway::Gateway() : CKorDaemonApplication(nullptr, "gateway", nullptr)
{
    m_oInfo = CKorApplicationInfo("gateway", TARVO_VERSION, "Quentor GmbH", "Meter gateway",
                                  "www.quentor.example", nullptr);
}

void Gateway::DeclareOptions(CKorOptionParser& rParser)
{
    rParser.AddOption("c,config", "FILE", m_strSettingsFile,
                      "the INI file (gateway.ini beside the program)");
    rParser.AddFlag("once", m_bOnce, "poll once and end; exit status 1 without a reading");
    rParser.AddFlag("v,verbose", m_bVerbose, "show every telegram");
}

bool Gateway::Initialize()
{
    if (m_bVerbose)
        KorGetLog().SetLevel(CKorLog::LEVEL_DEBUG);
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s", Banner(GetInfo()).c_str());
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s",
                      Banner(CKorApplicationInfo::GetLibraryInfo()).c_str());
    if (!LoadSettings() || !HoldPidFile())
        return false;
    m_pMeter = std::make_unique<GatewayLine>(GetLoop(), *m_pSettings);
    if (!m_pMeter->Open() && m_bOnce)
        return Fail("set [Line] Device in " + m_pSettings->GetIniFileName() +
                    " to the meter's line");
    GetLoop().Post([this] { Poll(); });
    StartTimers();
    return true;
}

bool Gateway::LoadSettings()
{
    // A name from the command line counts from where the user stands.
    m_pSettings =
        m_strSettingsFile.empty()
            ? std::make_unique<GatewaySettings>("gateway.ini", CKorIniFile::PATH_PROGRAM_DIR)
            : std::make_unique<GatewaySettings>(m_strSettingsFile.c_str(),
                                                CKorIniFile::PATH_UNCHANGED);
    const std::string strFile = m_pSettings->GetIniFileName();
    if (!m_pSettings->CreateDefaultFile())
        return Fail("cannot write " + strFile + ": " + std::strerror(errno));
    KorGetLog().Write(CKorLog::LEVEL_INFO, "settings in %s", strFile.c_str());
    const bool bGood = m_pSettings->Load();
    LogFindings(*m_pSettings);
    return bGood;
}

bool Gateway::HoldPidFile()
{
    const char* const pszFile = m_pSettings->m_strPidFile.c_str();
    if (m_oPidFile.Acquire(pszFile))
        return true;
    const int nOwner = m_oPidFile.GetOwner();
    return Fail(std::string(pszFile) + ": " +
                (nOwner != 0 ? "already running as process " + std::to_string(nOwner)
                             : std::strerror(m_oPidFile.GetLastError())));
}

bool Gateway::Fail(const std::string& strReason)
{
    KorGetLog().Write(CKorLog::LEVEL_ERROR, "%s", strReason.c_str());
    return false;
}

void Gateway::StartTimers()
{
    for (int* pTicket : {&m_nPollTicket, &m_nStoreTicket})
        GetLoop().Cancel(std::exchange(*pTicket, 0));
    if (m_bOnce)
        return;
    m_nPollTicket = GetLoop().CallEvery(m_pSettings->m_nPollInterval, [this] { Poll(); });
    m_nStoreTicket = GetLoop().CallEvery(m_pSettings->m_nStoreInterval * 1000, [this] { Store(); });
}

// New settings count when all of them are good; until then the old ones do.
void Gateway::ReloadInd()
{
    GatewaySettings oNew(m_pSettings->GetIniFileName().c_str(), CKorIniFile::PATH_UNCHANGED);
    const bool bGood = oNew.Load();
    LogFindings(oNew);
    if (!bGood || !Store() || !m_pSettings->Load()) {
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "the old settings stay in force");
        return;
    }
    m_pMeter->Reload();
    StartTimers();
    KorGetLog().Write(CKorLog::LEVEL_NOTICE, "settings read again");
}

void Gateway::Poll()
{
    if (!m_pMeter->IsOpen() || m_pMeter->IsBusy())
        return;
    const ModbusRequest oRequest = {static_cast<std::uint8_t>(m_pSettings->m_nStation),
                                    MODBUS_READ_HOLDING_REGISTERS, 0, METER_REGISTERS};
    m_pMeter->Start(oRequest,
                    [this](EModbusResult eResult, const std::vector<std::uint16_t>& vecRegisters) {
                        TakeResult(eResult, vecRegisters);
                    });
}

void Gateway::TakeResult(EModbusResult eResult, const std::vector<std::uint16_t>& vecRegisters)
{
    ++m_pSettings->m_nPolls;
    if (eResult == MODBUS_OK)
        TakeReading(vecRegisters);
    else
        Complain(eResult);
    if (m_bOnce)
        RequestEnd(eResult == MODBUS_OK ? EXIT_SUCCESS : EXIT_FAILURE);
}

void Gateway::TakeReading(const std::vector<std::uint16_t>& vecRegisters)
{
    GatewaySettings& oResults = *m_pSettings;
    oResults.m_strReadingTime = CKorZoneTime::CurrentTime().ToString();
    oResults.m_strEnergy = Fixed(vecRegisters[0] * 65536UL + vecRegisters[1], 3);
    oResults.m_strVoltage = Fixed(vecRegisters[2], 1);
    oResults.m_strCurrent = Fixed(vecRegisters[3], 2);
    oResults.m_strPower = Fixed(vecRegisters[4], 0);
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s V, %s A, %s W, %s kWh",
                      oResults.m_strVoltage.c_str(), oResults.m_strCurrent.c_str(),
                      oResults.m_strPower.c_str(), oResults.m_strEnergy.c_str());
}

void Gateway::Complain(EModbusResult eResult)
{
    ++m_pSettings->m_nErrors;
    std::string strReason = ModbusResultText(eResult);
    if (eResult == MODBUS_EXCEPTION)
        strReason += " " + std::to_string(m_pMeter->LastException());
    KorGetLog().Write(CKorLog::LEVEL_WARNING, "no reading: %s", strReason.c_str());
}

bool Gateway::Store()
{
    if (m_pSettings->UpdateOptions(true))
        return true;
    LogFindings(*m_pSettings);
    KorGetLog().Write(CKorLog::LEVEL_ERROR, "results not stored: %s",
                      std::strerror(m_pSettings->GetLastError()));
    return false;
}

int Gateway::Finalize()
{
    if (m_pMeter) {
        m_pMeter->Close();
        Store();
        LogSummary();
    }
    return CKorDaemonApplication::Finalize();
}

void Gateway::LogSummary() const
{
    const ModbusCounters& oCounters = m_pMeter->Counters();
    const std::string strRunning =
        KorToString(m_oRunning.GetElapsed(), CKorTimeDiff::eDiffHhMmSsMs);
    KorGetLog().Write(
        CKorLog::LEVEL_INFO,
        "ends after %s: %u polls, %u repetitions, %u time-outs, %u wrong CRCs, %u refusals",
        strRunning.c_str(), oCounters.nRequests, oCounters.nRetries, oCounters.nTimeouts,
        oCounters.nCrcErrors, oCounters.nExceptions);
}
