// Tells the service manager that it is alive, but only as long as its device talks.
#include "app/KorServiceNotify.h"
#include "event/KorEventLoop.h"
#include "serial/KorSerialLine.h"
#include "time/KorTimeout.h"

#include <cstdlib>

int main(int argc, char** argv)
{
    CKorEventLoop oLoop;
    CKorSerialLine oLine;
    if (argc < 3 || oLine.Open(argv[1]) != CKorSerial::SERIAL_OK)
        return 1;
    CKorTimeout oSilence(static_cast<unsigned int>(std::atoi(argv[2]))); // ms
    oLoop.WatchHandle(oLine.GetHandle(), CKorEventLoop::EVENT_READABLE, [&](unsigned int) {
        for (std::string strData; oLine.Read(4096, strData, 0) == CKorSerial::SERIAL_OK;)
            oSilence.Restart();
        if (oLine.IsHungUp())
            oLoop.Stop(1);
    });
    if (const unsigned int nInterval = KorGetAliveInterval()) // 0: nobody wants to hear it
        oLoop.CallEvery(nInterval, [&oSilence] {
            oSilence.IsExpired() ? KorNotifyStatus("the device is silent") : KorNotifyAlive();
        });
    KorNotifyReady();
    return oLoop.Run();
}
