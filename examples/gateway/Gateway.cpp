#include "examples/gateway/Gateway.h"

#include "app/KorLog.h"
#include "app/KorServiceNotify.h"
#include "examples/gateway/MeterReports.h"
#include "time/KorTimeDiff.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace
{

constexpr unsigned int FAREWELL_MS = 3000;
constexpr unsigned long LOG_SIZE = 100000;
constexpr unsigned int FORMER_LOGS = 3;
constexpr int EXIT_UNREADABLE = 2;

std::string Banner(const CKorApplicationInfo& oInfo)
{
    return oInfo.GetVersionString() + ", " + oInfo.GetCopyrightString();
}

/// Logs what is wrong with an INI file, one line a finding.
void LogFindings(const CKorSafeIniFile& oFile)
{
    for (const SKorIniFinding& oFinding : oFile.GetFindings())
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "%s",
                          FindingText(oFile.GetIniFileName(), oFinding).c_str());
}

} // namespace

Gateway::Gateway()
    : CKorDaemonApplication(nullptr, "gateway", nullptr),
      m_oOutlet(GetLoop()),
      m_oPoller(GetLoop(), m_oOutlet),
      m_oCommands(m_oPoller, m_oOutlet, m_pSettings, [this] { return Reload(); }),
      m_oControl(GetLoop(), [this](const std::string& strRequest, const ControlReply& fnReply) {
          m_oCommands.Answer(strRequest, fnReply);
      })
{
    m_oInfo = CKorApplicationInfo("gateway", TARVO_VERSION, "Quentor GmbH", "Meter gateway",
                                  "www.quentor.example", nullptr);
}

void Gateway::DeclareOptions(CKorOptionParser& rParser)
{
    rParser.AddOption("c,config", "FILE", m_strSettingsFile,
                      "the INI file (gateway.ini beside the program)");
    rParser.AddOption("check", "FILE", m_strCheckFile,
                      "only say what is wrong with an INI file; exit status 1 when something is, 2 "
                      "when it cannot be read");
    rParser.AddFlag("once", m_bOnce,
                    "poll each meter once and end; exit status 1 unless all answered");
    rParser.AddOption("log", "FILE", m_strLogFile,
                      "log into this file and up to three former ones of 100,000 bytes each "
                      "(standard error)");
    rParser.AddFlag("v,verbose", m_bVerbose, "show every telegram");
}

bool Gateway::Initialize()
{
    if (!m_strCheckFile.empty()) {
        RequestEnd(Check());
        return false;
    }
    if (!OpenLog())
        return false;
    if (m_bVerbose)
        KorGetLog().SetLevel(CKorLog::LEVEL_DEBUG);
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s", Banner(GetInfo()).c_str());
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s",
                      Banner(CKorApplicationInfo::GetLibraryInfo()).c_str());
    if (!LoadSettings() || !HoldPidFile())
        return false;
    if (!Apply())
        return Fail("another process has the store " + m_pSettings->m_oStore.m_strFile);
    if (m_bOnce)
        PollOnce();
    else
        OpenControl();
    return true;
}

bool Gateway::OpenLog()
{
    return m_strLogFile.empty() ||
           KorGetLog().UseFile(m_strLogFile.c_str(), LOG_SIZE, FORMER_LOGS) ||
           Fail("cannot log into " + m_strLogFile + ": " + std::strerror(errno));
}

int Gateway::Check() const
{
    GatewaySettings oSettings(m_strCheckFile.c_str(), CKorIniFile::PATH_UNCHANGED);
    const bool bGood = oSettings.Load();
    for (const SKorIniFinding& oFinding : oSettings.GetFindings())
        std::puts(FindingText(m_strCheckFile, oFinding).c_str());
    if (bGood)
        std::printf("%s: good\n", m_strCheckFile.c_str());
    std::fflush(stdout);
    if (bGood)
        return EXIT_SUCCESS;
    const bool bRead = oSettings.GetFindings()[0].m_eKind != SKorIniFinding::FINDING_IO_ERROR;
    return bRead ? EXIT_FAILURE : EXIT_UNREADABLE;
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
    const char* const pszFile = m_pSettings->m_oProcess.m_strPidFile.c_str();
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

void Gateway::ReloadInd()
{
    KorGetLog().Reopen(); // somebody may have moved it
    Reload();
}

// New settings count when all of them are good; until then the old ones do.
std::vector<SKorIniFinding> Gateway::Reload()
{
    auto pNew = std::make_unique<GatewaySettings>(m_pSettings->GetIniFileName().c_str(),
                                                  CKorIniFile::PATH_UNCHANGED);
    if (!pNew->Load()) {
        LogFindings(*pNew);
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "the old settings stay in force");
        return pNew->GetFindings();
    }
    m_pSettings = std::move(pNew);
    if (!Apply())
        Fail("another process has the store " + m_pSettings->m_oStore.m_strFile +
             "; readings go to the log");
    OpenControl();
    KorGetLog().Write(CKorLog::LEVEL_NOTICE, "settings read again");
    return {};
}

bool Gateway::Apply()
{
    const bool bOutlet = m_oOutlet.Apply(m_pSettings->m_oMqtt, m_pSettings->m_oStore);
    m_oPoller.Apply(*m_pSettings);
    StartStatistics();
    KorNotifyStatus("polls " + std::to_string(m_oPoller.Meters().size()) + " meters on " +
                    std::to_string(m_oPoller.Lines().size()) + " lines");
    return bOutlet;
}

// Meters are polled all the same where nobody can look in.
void Gateway::OpenControl()
{
    const std::string& strPath = m_pSettings->m_oProcess.m_strControlSocket;
    if (strPath == m_oControl.Path())
        return;
    m_oControl.Close();
    if (!strPath.empty() && !m_oControl.Open(strPath))
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "cannot make the socket %s: %s", strPath.c_str(),
                          std::strerror(errno));
}

void Gateway::StartStatistics()
{
    GetLoop().Cancel(m_nStatisticsTicket);
    m_nStatisticsTicket =
        GetLoop().CallEvery(m_pSettings->m_oProcess.m_nStatisticsInterval * 1000, [this] {
            for (const std::shared_ptr<PolledMeter>& pMeter : m_oPoller.Meters())
                m_oOutlet.TakeStatistics(pMeter->Settings().m_strName, StatisticsJson(*pMeter));
        });
}

void Gateway::PollOnce()
{
    m_nOutstanding = m_oPoller.Meters().size();
    const auto fnWaiter = [this](const Reading* pReading, const std::string&) {
        if (pReading == nullptr)
            RequestEnd(EXIT_FAILURE);
        if (--m_nOutstanding == 0)
            RequestEnd();
    };
    for (const std::shared_ptr<PolledMeter>& pMeter : m_oPoller.Meters())
        m_oPoller.PollNow(pMeter->Settings().m_strName, fnWaiter);
}

int Gateway::Finalize()
{
    if (m_pSettings && m_oPidFile.IsHeld()) {
        LogSummary();
        m_oControl.Close();
        m_oPoller.Stop();
        m_oOutlet.Stop(FAREWELL_MS);
    }
    return CKorDaemonApplication::Finalize();
}

void Gateway::LogSummary() const
{
    ModbusCounters oSum;
    for (const std::unique_ptr<LinePoller>& pLine : m_oPoller.Lines()) {
        const ModbusCounters& oCounters = pLine->Line().Counters();
        oSum.nRequests += oCounters.nRequests;
        oSum.nRetries += oCounters.nRetries;
        oSum.nTimeouts += oCounters.nTimeouts;
        oSum.nCrcErrors += oCounters.nCrcErrors;
        oSum.nExceptions += oCounters.nExceptions;
    }
    KorGetLog().Write(
        CKorLog::LEVEL_INFO,
        "ends after %s: %u requests, %u repetitions, %u time-outs, %u wrong CRCs, %u refusals",
        KorToString(m_oRunning.GetElapsed(), CKorTimeDiff::eDiffHhMmSsMs).c_str(), oSum.nRequests,
        oSum.nRetries, oSum.nTimeouts, oSum.nCrcErrors, oSum.nExceptions);
}
