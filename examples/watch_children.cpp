// Starts two programs and tells of each when it ends.
#include "event/KorEventLoop.h"
#include "fs/KorChild.h"

#include <cstdio>

class Watched
{
public:
    bool Start(CKorEventLoop& oLoop, const char* pszCommand)
    {
        if (!m_oChild.Start({"/bin/sh", "-c", pszCommand}))
            return false;
        const auto fnEnded = [this, &oLoop, pszCommand](unsigned int) {
            std::printf("%s: status %d, signal %d\n", pszCommand, m_oChild.GetExitStatus(),
                        m_oChild.GetEndSignal());
            oLoop.Cancel(m_nTicket); // the handle stays readable
        };
        m_nTicket =
            oLoop.WatchHandle(m_oChild.GetEndHandle(), CKorEventLoop::EVENT_READABLE, fnEnded);
        return m_nTicket > 0;
    }
    bool IsWatched(const CKorEventLoop& oLoop) const { return oLoop.IsActive(m_nTicket); }

private:
    CKorChild m_oChild;
    int m_nTicket = 0;
};

int main(int argc, char** argv)
{
    CKorEventLoop oLoop;
    Watched oFirst, oSecond;
    if (argc < 3 || !oFirst.Start(oLoop, argv[1]) || !oSecond.Start(oLoop, argv[2]))
        return 2;
    while (oFirst.IsWatched(oLoop) || oSecond.IsWatched(oLoop))
        oLoop.RunOnce(0xFFFFFFFF);
}
