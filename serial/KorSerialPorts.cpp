#include "serial/KorSerialPorts.h"

#include "serial/KorSerialPortsDetail.h"

void KorListSerialPorts(std::vector<SKorSerialPort>& rvecPorts)
{
    KorListSerialPortsBelow("", rvecPorts);
}
