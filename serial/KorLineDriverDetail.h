#pragma once

// What the drivers of serial lines can do beyond their settings. Not installed.
//
// The functions give 0 or an error number, which is EOPNOTSUPP for what driver or kernel does not
// have.

#include "serial/KorSerialLine.h"

#include <linux/serial.h>

int KorGetModemLines(int hLine, SKorModemLines& rLines);
int KorSetModemLines(int hLine, bool bRts, bool bDtr);
int KorGetLineCounts(int hLine, SKorLineCounts& rCounts);

int KorGetLineRS485(int hLine, serial_rs485& rRS485);
int KorSetLineRS485(int hLine, const serial_rs485& oRS485);
/// The driver's record with our part of it replaced.
serial_rs485 KorMakeLineRS485(serial_rs485 oBefore, const SKorRS485& oRS485);

int KorGetLowLatency(int hLine, bool& rbLowLatency);
int KorSetLowLatency(int hLine, bool bLowLatency);

int KorSetLineBreak(int hLine, bool bBreak);

/// How many bytes wait to be sent; 1 when only the hardware has some left.
int KorCountUnsentBytes(int hLine, unsigned int& rnBytes);
