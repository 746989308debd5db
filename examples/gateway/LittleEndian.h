#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Appends a number, its lowest byte first.
template <class T>
void PutNumber(std::string& rstrBytes, T nNumber)
{
    for (std::size_t i = 0; i < sizeof(T); ++i)
        rstrBytes += static_cast<char>(nNumber >> (8 * i) & 0xFF);
}

/// Takes a number from the front of @p rstrBytes, which holds at least that many bytes.
template <class T>
T TakeNumber(std::string_view& rstrBytes)
{
    T nNumber = 0;
    for (std::size_t i = sizeof(T); i-- > 0;)
        nNumber = static_cast<T>(nNumber << 8 | static_cast<unsigned char>(rstrBytes[i]));
    rstrBytes.remove_prefix(sizeof(T));
    return nNumber;
}
