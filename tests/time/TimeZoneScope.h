#pragma once

#include <string>

/// The process's time zone for the length of a scope: sets TZ, and restores it at the end.
class TimeZoneScope
{
public:
    explicit TimeZoneScope(const std::string& strZone);
    ~TimeZoneScope();
    TimeZoneScope(const TimeZoneScope&) = delete;
    TimeZoneScope& operator=(const TimeZoneScope&) = delete;

private:
    bool m_bWasSet;
    std::string m_strOld;
};

/// A zone whose daylight-saving time is in force for 60 days before and after today, or half a
/// year off. @p strNames holds names and offsets of both, such as "CET-1CEST".
std::string ZoneWithDaylight(const std::string& strNames, bool bInForce);
