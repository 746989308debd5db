#pragma once

/// @file
/// A simulated electricity meter that answers Modbus RTU requests.

#include "examples/modbus/ModbusRtu.h"

#include <cstdint>
#include <string>
#include <vector>

/// What goes wrong, and how often.
struct MeterDisturbance
{
    unsigned int nLateMs = 0; ///< answer that many milliseconds late
    bool bBadCrc = false;     ///< answer with a wrong CRC
    bool bSilent = false;     ///< do not answer
    bool bHangUp = false;     ///< hang up instead of answering
    unsigned int nEvery = 1;  ///< 1: all requests, 3: the third, the sixth, ...; not 0
};

/// The answer to a request.
struct MeterAnswer
{
    std::string strTelegram; ///< empty: none
    unsigned int nDelayMs = 0;
    bool bHangUp = false;
};

/// The meter without its line: what it measures and how it answers.
///
/// Holding and input registers are the same; they change with every request:
///
/// | Register | Value                                        |
/// |----------|----------------------------------------------|
/// | 0, 1     | energy in Wh, high word first; always rising |
/// | 2        | voltage in 0.1 V                             |
/// | 3        | current in 0.01 A                            |
/// | 4        | power in W: voltage times current            |
/// | 5        | frequency in 0.01 Hz                         |
class Meter
{
public:
    /// Number of registers.
    static constexpr std::uint16_t REGISTERS = 6;

    Meter(std::uint8_t nStation, const MeterDisturbance& oDisturbance);

    /// Takes a telegram. One with a wrong CRC or for another station is passed over.
    MeterAnswer Answer(const std::string& strRequest);

    /// Requests for this station so far.
    unsigned int Requests() const { return m_nRequests; }
    /// How many of them were disturbed.
    unsigned int Disturbed() const { return m_nDisturbed; }

private:
    std::vector<std::uint16_t> Registers() const;
    std::string Response(const ModbusRequest& oRequest) const;
    bool IsDisturbed() const;
    void Disturb(MeterAnswer& oAnswer) const;

    std::uint8_t m_nStation;
    MeterDisturbance m_oDisturbance;
    unsigned int m_nRequests;
    unsigned int m_nDisturbed;
};
