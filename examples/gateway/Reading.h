#pragma once

#include "time/KorUTCTime.h"

#include <string>
#include <vector>

/// What one register of a meter said.
struct ReadingValue
{
    std::string m_strName;    ///< what the register is called in the settings
    double m_dValue;          ///< scaled
    unsigned int m_nDecimals; ///< how many digits behind the point mean something
    std::string m_strUnit;    ///< such as "kWh"; empty for none
};

/// The answer of one meter at one instant.
struct Reading
{
    std::string m_strMeter;                ///< its name in the settings
    CKorUTCTime m_oTime;                   ///< when the answer came
    std::vector<ReadingValue> m_vecValues; ///< in the order of the settings
};

/// Takes what the meters say, in the order in which it was said.
class ReadingSink
{
public:
    virtual ~ReadingSink() = default;

    /// Takes a reading. It returns soon, whatever becomes of the reading later.
    virtual void Take(const Reading& oReading) = 0;

    /// Takes how polling a meter went so far.
    /// @param strMeter  its name
    /// @param strJson   a JSON object
    virtual void TakeStatistics(const std::string& strMeter, const std::string& strJson) = 0;
};
