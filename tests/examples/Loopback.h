#pragma once

#include <cstdint>
#include <netinet/in.h>

/// A port of the loopback address; 0 for any that is free.
inline sockaddr_in Loopback(unsigned int nPort)
{
    sockaddr_in oAddress = {};
    oAddress.sin_family = AF_INET;
    oAddress.sin_port = htons(static_cast<std::uint16_t>(nPort));
    oAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return oAddress;
}
