#include "tests/time/TimeZoneScope.h"

#include <cstdlib>
#include <ctime>

TimeZoneScope::TimeZoneScope(const std::string& strZone) : m_bWasSet(getenv("TZ") != nullptr)
{
    if (m_bWasSet)
        m_strOld = getenv("TZ");
    setenv("TZ", strZone.c_str(), 1);
    tzset();
}

TimeZoneScope::~TimeZoneScope()
{
    if (m_bWasSet)
        setenv("TZ", m_strOld.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

std::string ZoneWithDaylight(const std::string& strNames, bool bInForce)
{
    const time_t nNow = time(nullptr);
    tm oNow;
    gmtime_r(&nNow, &oNow);
    const int nMiddle = oNow.tm_yday + (bInForce ? 365 : 365 + 182);
    const std::string strStart = std::to_string((nMiddle - 60) % 365 + 1);
    const std::string strEnd = std::to_string((nMiddle + 60) % 365 + 1);
    return strNames + ",J" + strStart + ",J" + strEnd;
}
