#pragma once

/// The system's time zone at the current instant, in the terms of ftime().
struct SKorSystemZone
{
    int nMinutesWest; ///< standard time: minutes west of Greenwich, negative in the east
    bool bDaylight;   ///< whether daylight-saving time adds an hour to it
};

SKorSystemZone KorSystemZone();
