// Says which lines of an INI file may not do what they seem to.
#include "config/KorIniFinding.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    std::vector<SKorIniFinding> vecFindings;
    if (!KorCheckIniFile(argc > 1 ? argv[1] : "gateway.ini", false, vecFindings)) {
        std::printf("%s\n", std::strerror(errno));
        return 2;
    }
    for (const SKorIniFinding& oFinding : vecFindings)
        std::printf("line %u: %s\n", oFinding.m_nLine, oFinding.m_strText.c_str());
    return vecFindings.empty() ? 0 : 1;
}
