// A daemon that any init system can start.
#include "app/KorDaemonApplication.h"
#include "app/KorLog.h"
#include "app/KorPidFile.h"

class Daemon : public CKorDaemonApplication
{
public:
    Daemon() : CKorDaemonApplication(nullptr, "start_at_boot", nullptr) {}
    void DeclareOptions(CKorOptionParser& rParser) override
    {
        rParser.AddOption("p,pid-file", "FILE", m_strPidFile,
                          "go to the background and hold FILE, for old init systems");
    }
    bool Initialize() override
    {
        KorGetLog().Write(CKorLog::LEVEL_NOTICE, "starts");
        return m_strPidFile.empty() || (Detach() && m_oPidFile.Acquire(m_strPidFile.c_str()));
    }
    std::string m_strPidFile;
    CKorPidFile m_oPidFile;
};

int main(int argc, char** argv)
{
    return Daemon().Start(argc, argv);
}
