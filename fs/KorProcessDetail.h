#pragma once

#include "fs/KorPathFunc.h"

#include <string>

/// The directory of a program file, with a trailing separator. A name without "/" counts as the
/// directory itself.
inline std::string DirectoryOfProgram(std::string strDir)
{
    const size_t nSlash = strDir.find_last_of('/');
    if (nSlash != std::string::npos)
        strDir.erase(nSlash);
    if (strDir.empty() || !IsSeparator(strDir.back()))
        strDir += '/';
    return strDir;
}
