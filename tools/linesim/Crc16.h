#pragma once

#include <string>

/// The CRC of Modbus RTU, low byte first.
inline std::string Crc16Text(const std::string& strBytes)
{
    unsigned int nCrc = 0xFFFF;
    for (const char c : strBytes) {
        nCrc ^= static_cast<unsigned char>(c);
        for (int nBit = 0; nBit < 8; ++nBit)
            nCrc = (nCrc & 1) != 0 ? nCrc >> 1 ^ 0xA001 : nCrc >> 1;
    }
    return {static_cast<char>(nCrc & 0xFF), static_cast<char>(nCrc >> 8)};
}
