/// @file
/// Keeps the programs running that an INI file names.

#include "app/KorDaemonApplication.h"
#include "app/KorLog.h"
#include "app/KorOptionParser.h"
#include "app/KorPidFile.h"
#include "app/KorServiceNotify.h"
#include "config/KorIniFile.h"
#include "fs/KorChild.h"
#include "time/KorTimeout.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

constexpr unsigned int SHORTEST_PAUSE = 250, LONGEST_PAUSE = 30000, GRACE = 3000; // ms

class Program
{
public:
    Program(CKorEventLoop& oLoop, const std::string& strName, const std::string& strCommand)
        : m_strCommand(strCommand), m_oLoop(oLoop), m_strName(strName)
    {
        Start();
    }
    ~Program()
    {
        m_oLoop.Cancel(m_nTicket);
        m_oChild.Stop(GRACE);
    }
    const std::string m_strCommand;

private:
    void Start()
    {
        m_oUptime.Restart();
        if (!m_oChild.Start({"/bin/sh", "-c", "exec " + m_strCommand}))
            return StartLater(std::strerror(m_oChild.GetLastError()));
        KorGetLog().Write(CKorLog::LEVEL_INFO, "%s: process %d", m_strName.c_str(),
                          m_oChild.GetProcessID());
        m_nTicket = m_oLoop.WatchHandle(m_oChild.GetEndHandle(), CKorEventLoop::EVENT_READABLE,
                                        [this](unsigned int) { Ended(); });
    }
    void Ended()
    {
        m_oLoop.Cancel(m_nTicket);
        if (m_oUptime.GetElapsed().GetTotalMilliSeconds() > LONGEST_PAUSE)
            m_nPause = SHORTEST_PAUSE;
        StartLater("status " + std::to_string(m_oChild.GetExitStatus()) + ", signal " +
                   std::to_string(m_oChild.GetEndSignal()));
    }
    void StartLater(const std::string& strReason)
    {
        KorGetLog().Write(CKorLog::LEVEL_WARNING, "%s: %s; again in %u ms", m_strName.c_str(),
                          strReason.c_str(), m_nPause);
        m_nTicket = m_oLoop.CallAfter(m_nPause, [this] { Start(); });
        m_nPause = std::min(2 * m_nPause, LONGEST_PAUSE);
    }
    CKorEventLoop& m_oLoop;
    std::string m_strName;
    CKorChild m_oChild;
    CKorStopwatch m_oUptime;
    unsigned int m_nPause = SHORTEST_PAUSE;
    int m_nTicket = -1; // of the end, or of the next start
};

class Supervisor : public CKorDaemonApplication
{
public:
    Supervisor() : CKorDaemonApplication(nullptr, "supervisor", nullptr)
    {
        m_oInfo = CKorApplicationInfo("supervisor", TARVO_VERSION, "Quentor GmbH",
                                      "Program supervisor", "www.quentor.example", nullptr);
    }
    void DeclareOptions(CKorOptionParser& rParser) override
    {
        rParser.AddArgument("FILE", m_strFile, "the INI file whose section [Programs] names them");
        rParser.AddArgument("PIDFILE", m_strPidFile, "go to the background, and hold this file",
                            false);
    }
    bool Initialize() override
    {
        if (!m_strPidFile.empty() && !(Detach() && m_oPidFile.Acquire(m_strPidFile.c_str()))) {
            KorGetLog().Write(CKorLog::LEVEL_ERROR, "%s: %s", m_strPidFile.c_str(),
                              std::strerror(errno));
            return false;
        }
        ReloadInd();
        return true;
    }
    void ReloadInd() override
    {
        CKorIniFile oSettings(m_strFile.c_str(), CKorIniFile::PATH_UNCHANGED);
        std::vector<std::string> vecNames;
        oSettings.ReadAllSectionEntries("Programs", vecNames);
        auto mapFormer = std::exchange(m_mapPrograms, {});
        for (const std::string& strName : vecNames) {
            const std::string strCommand = oSettings.ReadOption("Programs", strName.c_str(), "");
            std::unique_ptr<Program>& pFormer = mapFormer[strName];
            if (pFormer && pFormer->m_strCommand != strCommand)
                pFormer.reset();
            m_mapPrograms[strName] =
                pFormer ? std::move(pFormer)
                        : std::make_unique<Program>(GetLoop(), strName, strCommand);
        }
        KorNotifyStatus("keeps " + std::to_string(m_mapPrograms.size()) + " programs running");
    }

private:
    std::string m_strFile, m_strPidFile;
    CKorPidFile m_oPidFile;
    std::map<std::string, std::unique_ptr<Program>> m_mapPrograms;
};

int main(int argc, char** argv)
{
    return Supervisor().Start(argc, argv);
}
