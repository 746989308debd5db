// Prints the text lines that a device sends, a GPS receiver for example.
#include "serial/KorSerialLine.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    CKorSerialLine oLine;
    int nResult = oLine.Open(argc > 1 ? argv[1] : "/dev/ttyUSB0");
    while (nResult == CKorSerial::SERIAL_OK) {
        std::string strLine;
        nResult = oLine.ReadUntil("\n", strLine, 10000, 1024); // ms, bytes
        std::printf("%s", strLine.c_str());
        std::fflush(stdout);
    }
    std::printf("end: %s\n", std::strerror(oLine.GetLastError()));
    return oLine.IsHungUp() ? 0 : 1;
}
