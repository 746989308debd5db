// Sends a telegram that is given in hexadecimal, and shows what passes and what came.
#include "serial/KorSerialLine.h"
#include "text/KorHexText.h"

#include <cstdio>

int main(int argc, char** argv)
{
    std::string strTelegram;
    if (argc < 3 || !KorFromHexText(argv[2], strTelegram)) // "01 03 00 00", "01:03:00:00", ...
        return 2;
    CKorSerialLine oLine;
    oLine.SetTrace([](bool bSent, const char* pData, unsigned int nLength) {
        std::printf("%c %s\n", bSent ? '>' : '<', KorToHexText(pData, nLength).c_str());
    });
    std::string strAnswer; // it has ended when the line was silent for 20 ms
    if (oLine.Open(argv[1]) != CKorSerial::SERIAL_OK ||
        oLine.WriteText(strTelegram, 500) != CKorSerial::SERIAL_OK ||
        oLine.ReadFrame(20000, strAnswer, 5000) != CKorSerial::SERIAL_OK)
        return 1;
    const unsigned int nLength = static_cast<unsigned int>(strAnswer.size());
    std::printf("%s", KorToHexDump(strAnswer.data(), nLength).c_str());
    return 0;
}
