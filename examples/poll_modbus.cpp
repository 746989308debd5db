// Reads two registers of a Modbus RTU meter every second.
#include "examples/modbus/ModbusRtuClient.h"

#include <cstdio>

int main(int argc, char** argv)
{
    CKorEventLoop oLoop;
    CKorSerialLine oLine;
    ModbusRtuClient oMeter(oLoop, oLine, 300, 2); // waits 300 ms, asks three times
    if (argc < 2 || oLine.Open(argv[1]) != CKorSerial::SERIAL_OK || !oMeter.Attach())
        return 1;
    const ModbusRequest oRequest = {1, MODBUS_READ_HOLDING_REGISTERS, 0, 2};
    oLoop.CallEvery(1000, [&oMeter, &oRequest] {
        oMeter.Start(oRequest, [](EModbusResult eResult, const auto& vecValues) {
            std::printf("%s", ModbusResultText(eResult));
            for (const std::uint16_t nValue : vecValues)
                std::printf(" %u", static_cast<unsigned int>(nValue));
            std::printf("\n");
            std::fflush(stdout);
        });
    });
    return oLoop.Run();
}
