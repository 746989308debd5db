/// @file
/// Takes numbered readings into a publisher, one each millisecond, until it is killed or the last
/// one was acknowledged. The number of the last one taken is in a file.
/// usage: feeder PORT STORE MEMORY-DIRECTORY NUMBER-FILE LAST

#include "examples/gateway/Publisher.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace
{

Reading Numbered(std::uint32_t nNumber)
{
    Reading oReading;
    oReading.m_strMeter = "m1";
    oReading.m_oTime = CKorUTCTime::CurrentTime();
    oReading.m_vecValues.push_back({"number", static_cast<double>(nNumber), 0, ""});
    return oReading;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 6)
        return 2;
    MqttSettings oMqtt;
    oMqtt.m_strHost = "127.0.0.1";
    oMqtt.m_nPort = static_cast<unsigned int>(std::atoi(argv[1]));
    oMqtt.m_strPrefix = "fed";
    StoreSettings oStore;
    oStore.m_strFile = argv[2];
    oStore.m_strMemoryDir = argv[3];
    oStore.m_nWriteInterval = 1;
    const int hNumber = open(argv[4], O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const auto nLast = static_cast<std::uint32_t>(std::atoi(argv[5]));
    std::uint32_t nNumber = 0;
    if (hNumber == -1 || pread(hNumber, &nNumber, sizeof nNumber, 0) < 0)
        return 3;

    CKorEventLoop oLoop;
    Publisher oPublisher(oLoop, oMqtt, oStore);
    if (!oPublisher.Start())
        return 4;
    oLoop.CallEvery(1, [&] {
        if (nNumber < nLast) {
            oPublisher.Take(Numbered(++nNumber));
            if (pwrite(hNumber, &nNumber, sizeof nNumber, 0) != sizeof nNumber)
                oLoop.Stop(5);
        } else if (oPublisher.State().m_nQueued == 0) {
            oLoop.Stop();
        }
    });
    const int nResult = oLoop.Run();
    oPublisher.Stop(5000);
    return nResult;
}
