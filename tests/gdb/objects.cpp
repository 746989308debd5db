// Objects that GDB is asked to show. With WITH_DETAILS the program knows what lines and loops are
// made of, as one does that has the library's debug information.

#include "config/KorSafeIniFile.h"
#include "config/KorTypedOptions.h"
#include "event/KorEventLoop.h"
#include "serial/KorSerialLine.h"
#include "text/KorMutexBuffer.h"
#include "time/KorLocalTime.h"
#include "time/KorTimeZone.h"
#include "time/KorTimeout.h"
#include "time/KorZoneTime.h"
#ifdef WITH_DETAILS
#include "event/KorEventCoreDetail.h"
#include "serial/KorLineStateDetail.h"
#endif

#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

class Settings : public CKorSafeIniFile
{
public:
    Settings() : CKorSafeIniFile("/tmp/none.ini", PATH_UNCHANGED) {}
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        IOX_Value(pExchange, "Port", "Speed", m_nSpeed, 9600u);
    }
    unsigned int m_nSpeed = 0;
};

struct Times
{
    CKorTimeDiff m_oSpan{-1500};
    CKorTimeDiff m_oDays{2, 1, 2, 3, 250, 0, 0};
    CKorUTCTime m_oUtc{29, 2, 2024, 14, 7, 9, 250, 0, 0};
    CKorUTCTime m_oInvalid{31, 2, 2024, 0, 0, 0, 0, 0, 0};
    CKorLocalTime m_oLocal{31, 12, 1999, 23, 30, 0, 0, -2};
    CKorZoneTime m_oZone{m_oUtc, -210};
    CKorTimeZone m_oTimeZone;
    CKorTimeout m_oTimeout{500};
    CKorTimeout m_oForever{0xFFFFFFFF};
};

void Fill(CKorIniOptionExchange& oDocument)
{
    std::string strSection;
    for (const char* pszLine : {"# Gateway", "[Port]", "Device = /dev/ttyAM0  # upper"})
        oDocument.AddOptionLine(pszLine, strSection);
}

void Fill(CKorEventLoop& oLoop)
{
    oLoop.CallEvery(1000, [] {});
    oLoop.CallAfter(60000, [] {});
    oLoop.CallOnSignal(SIGUSR1, [] {});
    oLoop.Post([] {});
}

/// Leaves two bytes in the line.
void Fill(CKorSerialLine& oLine, int hFarEnd)
{
    std::string strAnswer;
    oLine.Open(ptsname(hFarEnd));
    if (write(hFarEnd, "ok\r\x01\xFF", 5) == 5)
        oLine.ReadUntil("\r", strAnswer, 10000);
}

extern "C" __attribute__((noinline)) void Look()
{
    __asm__ volatile("" ::: "memory");
}

int main()
{
    const int hFarEnd = posix_openpt(O_RDWR | O_NOCTTY);
    if (grantpt(hFarEnd) != 0 || unlockpt(hFarEnd) != 0)
        return 1;
    Times oTimes;
    Settings oSettings;
    oSettings.UpdateOptions(false);
    CKorIniOptionExchange oDocument;
    CKorMutexBuffer oBuffer;
    CKorSerialLine oClosed;
    CKorSerialLine oLine;
    CKorEventLoop oLoop;
    Fill(oDocument);
    Fill(oLoop);
    Fill(oLine, hFarEnd);
    oBuffer.AddString("two \"words\"\n");
    Look();
    return oTimes.m_oTimeout.IsExpired() ? 0 : 0;
}
