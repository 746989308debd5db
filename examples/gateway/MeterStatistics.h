#pragma once

#include "examples/modbus/ModbusRtu.h"
#include "time/KorUTCTime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// How polling a meter went since the process began.
class MeterStatistics
{
public:
    /// How long the last hundred answers took, in microseconds; 0 before the first.
    struct ResponseTimes
    {
        std::uint32_t m_nMinimum = 0;
        std::uint32_t m_nMedian = 0;
        std::uint32_t m_nMaximum = 0;
    };

    /// Takes what a client counted in one request and its repetitions.
    void CountRequest(const ModbusCounters& oBefore, const ModbusCounters& oAfter);
    /// Takes how long an answer took.
    void CountAnswer(std::uint32_t nMicroSeconds);
    /// Takes that a poll gave a reading.
    void CountReading();
    /// Takes that a poll gave none.
    void CountFailure(const std::string& strError);

    unsigned int Polls() const { return m_nPolls; }
    unsigned int Readings() const { return m_nReadings; }
    const ModbusCounters& Requests() const { return m_oRequests; }
    ResponseTimes Times() const;
    /// The reason of the last poll without a reading; empty when there was none.
    const std::string& LastError() const { return m_strLastError; }
    /// When that was.
    const CKorUTCTime& LastErrorTime() const { return m_oLastErrorTime; }

private:
    unsigned int m_nPolls = 0;
    unsigned int m_nReadings = 0;
    ModbusCounters m_oRequests;
    std::array<std::uint32_t, 100> m_anTimes = {}; // a ring
    std::size_t m_nTimes = 0;                      // how many came, also those that left the ring
    std::string m_strLastError;
    CKorUTCTime m_oLastErrorTime;
};
