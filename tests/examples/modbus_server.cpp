/// @file
/// A Modbus RTU station made with libmodbus, the peer of our client in the tests.
/// usage: modbus-server.bin DEVICE STATION REGISTERS
///
/// Holding register n holds n * 257 + 11 and input register n holds 65535 - n * 3, each as 16
/// bits. Prints "ready" once it listens and ends on a signal.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <modbus.h>

int main(int argc, char** argv)
{
    if (argc != 4)
        return EXIT_FAILURE;
    const int nRegisters = std::atoi(argv[3]);

    modbus_t* const pServer = modbus_new_rtu(argv[1], 19200, 'N', 8, 1);
    modbus_mapping_t* const pMapping = modbus_mapping_new(0, 0, nRegisters, nRegisters);
    if (pServer == nullptr || pMapping == nullptr ||
        modbus_set_slave(pServer, std::atoi(argv[2])) != 0 || modbus_connect(pServer) != 0) {
        std::perror(argv[1]);
        return EXIT_FAILURE;
    }
    for (int nRegister = 0; nRegister < nRegisters; ++nRegister) {
        pMapping->tab_registers[nRegister] = static_cast<std::uint16_t>(nRegister * 257 + 11);
        pMapping->tab_input_registers[nRegister] =
            static_cast<std::uint16_t>(65535 - nRegister * 3);
    }
    std::puts("ready");
    std::fflush(stdout);

    for (;;) {
        std::uint8_t acRequest[MODBUS_RTU_MAX_ADU_LENGTH];
        const int nLength = modbus_receive(pServer, acRequest);
        if (nLength > 0)
            modbus_reply(pServer, acRequest, nLength, pMapping);
    }
}
