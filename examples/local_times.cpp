// Shows one instant on several clocks, and finds the instant that a clock means.
#include "time/KorIsoTime.h"
#include "time/KorTimeZone.h"
#include "time/KorZoneTime.h"

#include <cstdio>

int main()
{
    const CKorUTCTime oTime(5, 3, 2024, 13, 7, 9, 0, 0, 0);
    CKorTimeZone oZone;
    for (const char* pszName : {"Europe/Berlin", "Asia/Kolkata", "<-03>3"})
        if (oZone.Load(pszName)) // from the zone files, or by a rule as TZ has it
            std::printf("%-13s %s\n", pszName, CKorZoneTime(oTime, oZone).ToString(0).c_str());

    oZone.Load("CET-1CEST,M3.5.0,M10.5.0/3");
    CKorUTCTime oRead;
    if (KorFromIsoString("2024-07-01T12:00", oRead, oZone)) // a clock there, in summer
        std::printf("%s, %s\n", KorToIsoString(oRead).c_str(),
                    oZone.GetAbbreviation(oRead).c_str());
    if (oZone.GetKind(2024, 10, 27, 2, 30, 0) == CKorTimeZone::KIND_TWICE) { // put back at three
        const CKorUTCTime oFirst = oZone.ToUtc(2024, 10, 27, 2, 30, 0);
        const CKorUTCTime oAgain = oZone.ToUtc(2024, 10, 27, 2, 30, 0, CKorTimeZone::CHOICE_LATER);
        std::printf("half past two comes twice, after %lld s again\n",
                    (oAgain - oFirst).GetTotalSeconds());
    }
}
