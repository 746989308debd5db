// Counts what a line sends, on a thread of the library's, until the line hangs up.
#include "serial/KorSerialLine.h"

#include <cstdio>
#include <future>

int main(int argc, char** argv)
{
    CKorSerialLine oLine;
    if (oLine.Open(argc > 1 ? argv[1] : "/dev/ttyUSB0") != CKorSerial::SERIAL_OK)
        return 1;
    unsigned long nBytes = 0; // of that thread
    std::promise<int> oHangup;
    oLine.StartReception(
        [&nBytes](const char*, unsigned int nLength) {
            std::printf("%lu bytes\n", nBytes += nLength);
            std::fflush(stdout);
        },
        [&oHangup](int nErrno) { oHangup.set_value(nErrno); });
    std::printf("receives\n");
    std::fflush(stdout);
    std::printf("error %d ended it\n", oHangup.get_future().get());
}
