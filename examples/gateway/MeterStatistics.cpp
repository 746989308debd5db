#include "examples/gateway/MeterStatistics.h"

#include <algorithm>

void MeterStatistics::CountRequest(const ModbusCounters& oBefore, const ModbusCounters& oAfter)
{
    for (unsigned int ModbusCounters::*const pCount :
         {&ModbusCounters::nRequests, &ModbusCounters::nRetries, &ModbusCounters::nTimeouts,
          &ModbusCounters::nCrcErrors, &ModbusCounters::nExceptions, &ModbusCounters::nOtherErrors})
        m_oRequests.*pCount += oAfter.*pCount - oBefore.*pCount;
}

void MeterStatistics::CountAnswer(std::uint32_t nMicroSeconds)
{
    m_anTimes[m_nTimes % m_anTimes.size()] = nMicroSeconds;
    ++m_nTimes;
}

void MeterStatistics::CountReading()
{
    ++m_nPolls;
    ++m_nReadings;
}

void MeterStatistics::CountFailure(const std::string& strError)
{
    ++m_nPolls;
    m_strLastError = strError;
    m_oLastErrorTime = CKorUTCTime::CurrentTime();
}

MeterStatistics::ResponseTimes MeterStatistics::Times() const
{
    const std::size_t nTimes = std::min(m_nTimes, m_anTimes.size());
    if (nTimes == 0)
        return {};
    std::array<std::uint32_t, 100> anSorted = m_anTimes;
    const auto itEnd = anSorted.begin() + static_cast<std::ptrdiff_t>(nTimes);
    std::sort(anSorted.begin(), itEnd);
    return {anSorted[0], anSorted[(nTimes - 1) / 2], anSorted[nTimes - 1]};
}
