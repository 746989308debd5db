// Reads times and spans, each form strictly: what is anything else is refused.
#include "time/KorIsoTime.h"
#include "time/KorMailDate.h"
#include "time/KorUnixTime.h"

#include <cstdio>

int main(int argc, char** argv)
{
    CKorUTCTime oTime;
    CKorTimeDiff oSpan;
    const std::string strText = argc > 1 ? argv[1] : "2024-03-05T14:07:09.25+01:00";
    if (KorFromIsoString(strText, oTime) || KorFromMailDate(strText, oTime))
        std::printf("%lld s since 1970\n", static_cast<long long>(KorToUnixTime(oTime)));
    else if (KorFromIsoDuration(strText, oSpan))
        std::printf("%g s\n", std::chrono::duration<double>(KorToDuration(oSpan)).count());
    else
        return 1;
}
