#include "fs/KorDescriptorDetail.h"

bool KorWriteAll(int hFile, const std::string& strContent)
{
    for (size_t nDone = 0; nDone < strContent.size();) {
        const ssize_t nWritten = write(hFile, &strContent[nDone], strContent.size() - nDone);
        if (nWritten == -1 && errno != EINTR)
            return false;
        if (nWritten != -1)
            nDone += static_cast<size_t>(nWritten);
    }
    return true;
}
