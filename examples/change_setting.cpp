// Changes one setting in an INI file; every other byte stays, through a power cut too.
#include "config/KorSafeIniFile.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    if (argc < 5)
        return 2;
    CKorSafeIniFile oFile(argv[1], CKorIniFile::PATH_UNCHANGED);
    if (oFile.WriteOption(argv[2], argv[3], argv[4]))
        return 0;
    for (const SKorIniFinding& oFinding : oFile.GetFindings())
        std::printf("%s\n", oFinding.m_strText.c_str());
    std::printf("%s\n", std::strerror(oFile.GetLastError()));
    return 1;
}
