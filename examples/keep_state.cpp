// Counts its starts in a file that no power cut can empty.
#include "config/KorTextValue.h"
#include "fs/KorWholeFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    const char* pszFile = argc > 1 ? argv[1] : "starts";
    std::string strContent = "0";
    unsigned int nStarts = 0;
    if ((!KorReadFile(pszFile, strContent) && errno != ENOENT) ||
        !KorReadText(strContent, nStarts) || !KorReplaceFile(pszFile, KorWriteText(nStarts + 1))) {
        std::printf("%s: %s\n", pszFile, std::strerror(errno));
        return 1;
    }
    std::printf("start %u\n", nStarts + 1);
}
