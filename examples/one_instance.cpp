// Runs once at a time, also after a crash.
#include "app/KorPidFile.h"
#include "event/KorEventLoop.h"

#include <csignal>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    CKorPidFile oPidFile;
    if (!oPidFile.Acquire(argc > 1 ? argv[1] : "/run/one_instance.pid")) {
        std::printf("%s, process %d\n", std::strerror(oPidFile.GetLastError()),
                    oPidFile.GetOwner());
        return 1;
    }
    std::printf("runs\n");
    std::fflush(stdout);
    CKorEventLoop oLoop;
    oLoop.CallOnSignal(SIGTERM, [&oLoop] { oLoop.Stop(); });
    return oLoop.Run();
}
