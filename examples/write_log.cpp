// Writes a log of at most four files of 100 kB, and lets others move the file.
#include "app/KorDaemonApplication.h"
#include "app/KorLog.h"

#include <cstring>

class Logger : public CKorDaemonApplication
{
public:
    Logger() : CKorDaemonApplication(nullptr, "write_log", nullptr) {}
    bool Initialize() override
    {
        CKorLog& rLog = KorGetLog(); // writes to standard error until it is told otherwise
        if (!rLog.UseFile("gateway.log", 100000, 3))
            rLog.Write(CKorLog::LEVEL_ERROR, "gateway.log: %s", std::strerror(errno));
        rLog.SetLevel(CKorLog::LEVEL_DEBUG); // everything
        return GetLoop().CallEvery(100, [this] { Work(); }) > 0;
    }
    void ReloadInd() override { KorGetLog().Reopen(); } // after logrotate moved the file
    void Work() { KorGetLog().Write(CKorLog::LEVEL_DEBUG, "round %u", ++m_nRound); }
    unsigned int m_nRound = 0;
};

int main(int argc, char** argv)
{
    return Logger().Start(argc, argv);
}
