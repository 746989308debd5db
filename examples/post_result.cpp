// Lets a thread do what takes long, and takes the result on the loop's thread.
#include "event/KorEventLoop.h"
#include "time/KorTimeout.h"

#include <cstdio>
#include <thread>

int main()
{
    CKorEventLoop oLoop;
    CKorStopwatch oWatch;
    std::thread oThread([&oLoop] {
        unsigned long nSum = 0;
        for (unsigned long nNumber = 1; nNumber <= 1000; ++nNumber)
            nSum += nNumber;
        oLoop.Post([nSum, &oLoop] { // runs on the main thread: no mutex
            std::printf("sum %lu\n", nSum);
            oLoop.Stop();
        });
    });
    oLoop.CallEvery(1000,
                    [&oWatch] { std::printf("%lld s\n", oWatch.GetElapsed().GetTotalSeconds()); });
    const int nResult = oLoop.Run();
    oThread.join();
    return nResult;
}
