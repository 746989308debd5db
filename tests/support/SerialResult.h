#pragma once

#include "serial/KorSerial.h"

#include <ostream>

/// A result code of a serial port, which a failing test prints by its name.
struct SerialResult
{
    explicit constexpr SerialResult(int nResult) : nCode(nResult) {}

    constexpr const char* Name() const
    {
        switch (nCode) {
        case CKorSerial::SERIAL_OK:
            return "SERIAL_OK";
        case CKorSerial::SERIAL_WOULDBLOCK:
            return "SERIAL_WOULDBLOCK";
        case CKorSerial::SERIAL_OPEN_ERROR:
            return "SERIAL_OPEN_ERROR";
        case CKorSerial::SERIAL_IO_ERROR:
            return "SERIAL_IO_ERROR";
        case CKorSerial::SERIAL_NOT_SUPPORTED:
            return "SERIAL_NOT_SUPPORTED";
        case CKorSerial::SERIAL_THREAD_RUNNING:
            return "SERIAL_THREAD_RUNNING";
        default:
            return "no result code";
        }
    }

    int nCode;
};

constexpr bool operator==(SerialResult oLeft, SerialResult oRight)
{
    return oLeft.nCode == oRight.nCode;
}
constexpr bool operator!=(SerialResult oLeft, SerialResult oRight)
{
    return !(oLeft == oRight);
}
inline void PrintTo(SerialResult oResult, std::ostream* pStream)
{
    *pStream << oResult.Name() << " (" << oResult.nCode << ')';
}

// What tests compare results with.
constexpr SerialResult OK(CKorSerial::SERIAL_OK);
constexpr SerialResult WOULDBLOCK(CKorSerial::SERIAL_WOULDBLOCK);
constexpr SerialResult OPEN_ERROR(CKorSerial::SERIAL_OPEN_ERROR);
constexpr SerialResult IO_ERROR(CKorSerial::SERIAL_IO_ERROR);
constexpr SerialResult NOT_SUPPORTED(CKorSerial::SERIAL_NOT_SUPPORTED);
constexpr SerialResult THREAD_RUNNING(CKorSerial::SERIAL_THREAD_RUNNING);
