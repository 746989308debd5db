#pragma once

// How the kernel shows its serial ports. Not installed.

#include "serial/KorSerialPorts.h"

#include <string_view>

/// As KorListSerialPorts(), for a system whose files are below @p strRoot.
void KorListSerialPortsBelow(const std::string& strRoot, std::vector<SKorSerialPort>& rvecPorts);

/// Whether a name comes before another, runs of digits compared as numbers.
bool KorIsNameBefore(std::string_view strLeft, std::string_view strRight);
