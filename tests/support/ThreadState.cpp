#include "tests/support/ThreadState.h"

#include <filesystem>
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

unsigned long Waits(int nThread)
{
    const std::string strName = "voluntary_ctxt_switches:";
    std::ifstream oFile("/proc/self/task/" + std::to_string(nThread) + "/status");
    std::string strLine;
    while (std::getline(oFile, strLine)) {
        if (strLine.compare(0, strName.size(), strName) == 0)
            return std::stoul(strLine.substr(strName.size()));
    }
    return 0;
}

std::set<int> Threads()
{
    std::set<int> setThreads;
    for (const auto& oEntry : std::filesystem::directory_iterator("/proc/self/task"))
        setThreads.insert(std::stoi(oEntry.path().filename()));
    return setThreads;
}
