#pragma once

/// @file
/// A record of what came and went on a line, with times.

#include "time/KorTimeout.h"

#include <cstdio>
#include <string>

/// Writes `0.012345 line > 01 03 00 00` for each piece: seconds since the start, the name of the
/// line, ">" for what is sent to the program and "<" for what comes from it.
class LineTrace
{
public:
    LineTrace() = default;
    ~LineTrace();
    LineTrace(const LineTrace&) = delete;
    LineTrace& operator=(const LineTrace&) = delete;

    /// Writes into a file from now on, or to standard error for "-". False with errno.
    bool Open(const std::string& strFile);

    /// Records bytes.
    void Bytes(const std::string& strLine, char cDirection, const std::string& strBytes);
    /// Records what happened to a line.
    void Event(const std::string& strLine, const char* pszEvent);

private:
    void Begin(const std::string& strLine);

    std::FILE* m_pFile = nullptr;
    CKorStopwatch m_oSinceStart;
};
