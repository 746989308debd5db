// Writes a time as files, logs, mails and older programs want it.
#include "time/KorIsoTime.h"
#include "time/KorMailDate.h"
#include "time/KorZoneTime.h"

#include <cstdio>

int main(int argc, char** argv)
{
    CKorZoneTime oTime = CKorZoneTime::CurrentTime(); // in the zone of this process
    if (argc > 1 && !oTime.FromString(argv[1]))
        return 2;
    const CKorUTCTime oInstant = oTime.GetUtc();
    std::printf("file   %s\n", KorToIsoString(oInstant).c_str());
    std::printf("log    %s\n", oTime.ToString(0).c_str());
    std::printf("mail   %s\n", KorToMailDate(oInstant, oTime.GetOffsetMinutes()).c_str());
    std::printf("people %d.%d.%d %02d:%02d\n", oTime.GetDay(), oTime.GetMonth(), oTime.GetYear(),
                oTime.GetHour(), oTime.GetMinute());
    std::printf("former %s\n", oInstant.Time2Str(CKorUTCTime::eDateTimeMs).c_str());
}
