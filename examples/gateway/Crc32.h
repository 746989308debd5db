#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// The table of the CRC-32 of Ethernet and zip files, a byte at a time.
constexpr std::array<std::uint32_t, 256> MakeCrc32Table()
{
    std::array<std::uint32_t, 256> aTable{};
    for (std::uint32_t nByte = 0; nByte < 256; ++nByte) {
        std::uint32_t nCrc = nByte;
        for (int nBit = 0; nBit < 8; ++nBit)
            nCrc = (nCrc & 1) != 0 ? nCrc >> 1 ^ 0xEDB88320U : nCrc >> 1;
        aTable[nByte] = nCrc;
    }
    return aTable;
}

/// The CRC-32 of some bytes.
inline std::uint32_t Crc32(std::string_view strBytes)
{
    static constexpr std::array<std::uint32_t, 256> TABLE = MakeCrc32Table();
    std::uint32_t nCrc = 0xFFFFFFFF;
    for (const char cByte : strBytes)
        nCrc = nCrc >> 8 ^ TABLE[(nCrc ^ static_cast<unsigned char>(cByte)) & 0xFF];
    return ~nCrc;
}
