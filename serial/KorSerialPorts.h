#pragma once

/// @file
/// The serial ports of this machine.

#include "KorExport.h"

#include <string>
#include <vector>

/// @addtogroup serialline
/// @{

/// A serial port with hardware behind it. What is not known is empty.
struct SKorSerialPort
{
    std::string m_strDevice;       ///< Name to open: "/dev/ttyUSB0".
    std::string m_strDriver;       ///< Kernel driver: "ftdi_sio".
    std::string m_strVendor;       ///< Maker of a USB adapter, as it names itself.
    std::string m_strProduct;      ///< Product name of a USB adapter, as it names itself.
    std::string m_strSerialNumber; ///< Serial number of a USB adapter.
    /// A name that stays when adapters are plugged in another order: below "/dev/serial/by-id",
    /// else below "/dev/serial/by-path".
    std::string m_strStableName;
};

/// Lists the ports that have hardware behind them: no pseudo-terminals, no consoles, no empty
/// slots of a driver. They come sorted by name and number: ttyUSB2 before ttyUSB10.
///
///     std::vector<SKorSerialPort> vecPorts;
///     KorListSerialPorts(vecPorts);
///     for (const SKorSerialPort& oPort : vecPorts)
///         show(oPort.m_strDevice, oPort.m_strProduct);
///
/// May run on any number of threads. An adapter that comes or goes meanwhile may be missing.
/// @param[out] rvecPorts  replaced by the ports; empty where the machine tells of none
TARVO_EXT_API void KorListSerialPorts(std::vector<SKorSerialPort>& rvecPorts);

/// @}
