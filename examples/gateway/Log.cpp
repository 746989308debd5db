#include "Log.h"

#include "time/KorLocalTime.h"

#include <cstdio>

void LogLine(const std::string& strText)
{
    const std::string strTime =
        CKorLocalTime::CurrentLocalTime().Time2Str(CKorUTCTime::eIsoDateTimeMs);
    std::printf("%s %s\n", strTime.c_str(), strText.c_str());
    std::fflush(stdout);
}
