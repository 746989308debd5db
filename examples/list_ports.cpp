// Lists the serial ports of this machine.
#include "serial/KorSerialPorts.h"

#include <cstdio>

int main()
{
    std::vector<SKorSerialPort> vecPorts;
    KorListSerialPorts(vecPorts);
    for (const SKorSerialPort& oPort : vecPorts)
        std::printf("%s %s %s\n", oPort.m_strDevice.c_str(), oPort.m_strProduct.c_str(),
                    oPort.m_strStableName.c_str());
    std::printf("%zu ports\n", vecPorts.size());
}
