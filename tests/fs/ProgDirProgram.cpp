// Prints the directory that the library takes for its own.

#include "fs/KorProcess.h"

#include <cstdio>

int main()
{
    std::fputs(CKorProcess::GetCurrentProgDir().c_str(), stdout);
    return 0;
}
