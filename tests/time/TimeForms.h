#pragma once

/// The parts of the text formats of times, by the number of the format.
struct DateForm
{
    const char* pszOrder; ///< null for a form without a date
    char cSeparator;
    int nSubSeconds; ///< -1 for a form without a clock time
};

constexpr DateForm FORMS[] = {
    {"DMY", '.', 1},  {"DMY", '.', 0}, {"DMY", '.', -1}, {"DMY", '.', 2},
    {"DMY", '.', 3},  {nullptr, 0, 0}, {"MDY", '/', 0},  {"MDY", '/', -1},
    {"YMD", '-', -1}, {nullptr, 0, 1}, {"YMD", '-', 1},
};
