// Reads its settings again when SIGHUP comes, and keeps the old ones when it cannot.
#include "app/KorDaemonApplication.h"
#include "app/KorLog.h"
#include "config/KorSafeIniFile.h"

class Reloader : public CKorDaemonApplication
{
public:
    Reloader() : CKorDaemonApplication(nullptr, "reload_settings", nullptr) {}
    bool Initialize() override { return TakeInterval(); }
    void ReloadInd() override { TakeInterval(); }
    bool TakeInterval()
    {
        CKorSafeIniFile oFile("gateway.ini", CKorIniFile::PATH_UNCHANGED);
        const std::string strValue = oFile.ReadOption("Poll", "Interval", "500"); // in ms
        unsigned int nValue = 0;
        const int nTicket = KorReadText(strValue, nValue) ? GetLoop().CallEvery(nValue, [] {}) : -1;
        if (nTicket > 0) // -1 for 0 ms
            GetLoop().Cancel(std::exchange(m_nTicket, nTicket));
        KorGetLog().Write(CKorLog::LEVEL_NOTICE, "Interval=%s is %s", strValue.c_str(),
                          nTicket > 0 ? "used" : "none, the former one stays");
        return nTicket > 0;
    }
    int m_nTicket = 0;
};

int main(int argc, char** argv)
{
    return Reloader().Start(argc, argv);
}
