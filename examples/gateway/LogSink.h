#pragma once

#include "examples/gateway/Reading.h"

/// The value as people read it, such as "230.1 V"; "-" for what is no number.
std::string ValueText(const ReadingValue& oValue);

/// All values: "Voltage 230.1 V, Current 5.00 A".
std::string ReadingText(const Reading& oReading);

/// Writes readings to the log: what becomes of them where nothing else is asked for.
class LogSink : public ReadingSink
{
public:
    /// A line at level information.
    void Take(const Reading& oReading) override;
    /// A line for those who look for a fault.
    void TakeStatistics(const std::string& strMeter, const std::string& strJson) override;
};
