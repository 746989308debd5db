// Runs a program, gives it something to read, and takes what it writes.
#include "fs/KorChild.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    const std::vector<std::string> vecCommand(argv + 1, argv + argc); // found along PATH
    std::string strOutput;
    int nStatus = 0;
    if (!KorRunProgram(vecCommand, "some input\n", strOutput, nStatus, 5000)) {
        std::printf("does not run, or not to its end in 5 s: %s\n", std::strerror(errno));
        return 1;
    }
    std::printf("status %d, %zu bytes: %s\n", nStatus, strOutput.size(), strOutput.c_str());
    return 0;
}
