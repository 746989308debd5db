// Notices when somebody changes an INI file, without a signal.
#include "config/KorSafeIniFile.h"
#include "event/KorEventLoop.h"

#include <cstdio>

int main(int argc, char** argv)
{
    CKorSafeIniFile oFile(argc > 1 ? argv[1] : "gateway.ini", CKorIniFile::PATH_UNCHANGED);
    const auto fnShow = [&oFile] {
        std::printf("level %s\n", oFile.ReadOption("Log", "Level", "2").c_str());
        std::fflush(stdout);
    };
    fnShow();
    CKorEventLoop oLoop;
    oLoop.CallEvery(200, [&] {
        if (oFile.HasChangedOnDisk())
            fnShow();
    });
    return oLoop.Run();
}
