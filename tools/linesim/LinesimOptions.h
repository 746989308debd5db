#pragma once

/// @file
/// What the command line of linesim says.

#include "app/KorOptionParser.h"
#include "serial/KorSerialLine.h"

#include <string>
#include <vector>

/// The options, with their defaults.
struct LinesimOptions
{
    std::vector<std::string> m_vecLinks;
    std::string m_strDevice;
    unsigned int m_nSpeed = 9600;
    std::vector<std::string> m_vecSteps;
    std::string m_strScriptFile;
    std::string m_strTrace;
    unsigned int m_nTimeout = 10000;
    unsigned int m_nSeed = 1;
    bool m_bJoin = false;
    unsigned int m_nDropOne = 0;
    unsigned int m_nSpoilOne = 0;

    void Declare(CKorOptionParser& rParser);
    /// What does not go together, as a sentence; empty when all is well.
    std::string Contradiction() const;
    /// The script's text. False when the file cannot be read.
    bool ReadScript(std::string& strScript) const;

    bool HasLinePair() const { return m_bJoin && m_strDevice.empty(); }
    /// The link of the first or second line, or no name.
    std::string Link(std::size_t nLine) const;
    SKorLineOptions DeviceOptions() const;
};
