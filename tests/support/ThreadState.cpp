#include "tests/support/ThreadState.h"

#include <fstream>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

int ThreadId()
{
    return static_cast<int>(syscall(SYS_gettid));
}

bool IsAsleep(int nThread)
{
    std::ifstream oFile("/proc/self/task/" + std::to_string(nThread) + "/stat");
    std::string strStat;
    std::getline(oFile, strStat);
    const std::size_t nNameEnd = strStat.rfind(')'); // "number (name) state ..."
    return nNameEnd != std::string::npos && strStat.compare(nNameEnd + 1, 3, " S ") == 0;
}
