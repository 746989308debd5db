// Tries something again and again, for a time that no setting of the clock changes.
#include "serial/KorSerialLine.h"
#include "time/KorTimeout.h"

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv)
{
    CKorStopwatch oWatch;
    CKorTimeout oLimit(10000); // ms
    CKorSerialLine oLine;
    while (oLine.Open(argc > 1 ? argv[1] : "/dev/ttyUSB0") != CKorSerial::SERIAL_OK) {
        if (oLimit.IsExpired())
            return 1;
        usleep(100000);
    }
    std::printf("open after %lld ms, %u ms before the limit\n",
                oWatch.GetElapsed().GetTotalMilliSeconds(), oLimit.GetRemaining());
}
