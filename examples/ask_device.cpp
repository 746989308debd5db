// Asks a device on a serial line who it is, and waits for the answer.
#include "serial/KorSerialLine.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 19200;
    CKorSerialLine oLine;
    if (oLine.Open(argc > 1 ? argv[1] : "/dev/ttyUSB0", oOptions) != CKorSerial::SERIAL_OK) {
        std::printf("cannot open the line: %s\n", std::strerror(oLine.GetLastError()));
        return 1;
    }
    std::string strAnswer;
    for (int nAttempt = 1; nAttempt <= 3; ++nAttempt) {
        oLine.DiscardInput(); // an answer that came too late is none to this question
        int nResult = oLine.WriteText("*IDN?\r\n", 1000);
        if (nResult == CKorSerial::SERIAL_OK)
            nResult = oLine.ReadUntil("\r\n", strAnswer, 1000);
        std::printf("%s", nResult == CKorSerial::SERIAL_OK ? strAnswer.c_str() : "no answer\n");
        if (nResult == CKorSerial::SERIAL_OK)
            return 0;
    }
    return 1;
}
