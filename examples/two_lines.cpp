// Serves two serial lines on one thread, and opens one again that was unplugged.
#include "event/KorEventLoop.h"
#include "serial/KorSerialLine.h"

#include <cstdio>

void Serve(CKorEventLoop& oLoop, CKorSerialLine& oLine, const char* pszDevice)
{
    if (oLine.Open(pszDevice) != CKorSerial::SERIAL_OK) {
        oLoop.CallAfter(1000, [&, pszDevice] { Serve(oLoop, oLine, pszDevice); });
        return;
    }
    oLoop.WatchHandle(oLine.GetHandle(), CKorEventLoop::EVENT_READABLE, [&, pszDevice](unsigned) {
        for (std::string strData; oLine.Read(4096, strData, 0) == CKorSerial::SERIAL_OK;)
            std::fprintf(stderr, "%s: %s\n", pszDevice, strData.c_str());
        if (oLine.IsHungUp())
            Serve(oLoop, oLine, pszDevice); // the loop drops a handle that was closed
    });
}

int main(int argc, char** argv)
{
    CKorEventLoop oLoop;
    CKorSerialLine aoLines[2];
    for (int nLine = 0; nLine < 2 && nLine + 1 < argc; ++nLine)
        Serve(oLoop, aoLines[nLine], argv[nLine + 1]);
    return oLoop.Run();
}
