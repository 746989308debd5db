#include "tools/linesim/LinesimOptions.h"

#include "fs/KorWholeFile.h"

#include <iostream>
#include <iterator>

void LinesimOptions::Declare(CKorOptionParser& rParser)
{
    rParser.AddOption("l,link", "PATH", m_vecLinks,
                      "symbolic link to the line's device; with --join up to twice");
    rParser.AddOption("d,device", "DEVICE", m_strDevice,
                      "a serial device in place of a pseudo-terminal");
    rParser.AddOption("s,speed", "N", m_nSpeed, "bit/s of that device (9600)");
    rParser.AddOption("e,execute", "STEP", m_vecSteps, "a line of the script");
    rParser.AddOption("t,trace", "FILE", m_strTrace,
                      "write what came and went, - to standard error");
    rParser.AddOption("timeout", "MS", m_nTimeout,
                      "how long a step waits that has no time of its own (10000)");
    rParser.AddOption("seed", "N", m_nSeed, "of the noise (1)");
    rParser.AddFlag("j,join", m_bJoin, "join two lines until a signal ends it");
    rParser.AddOption("drop", "N", m_nDropOne, "with --join: lose one byte of N");
    rParser.AddOption("spoil", "N", m_nSpoilOne, "with --join: change one byte of N");
    rParser.AddArgument("SCRIPT", m_strScriptFile, "what the device does, - for standard input",
                        false);
}

std::string LinesimOptions::Contradiction() const
{
    const bool bScript = !m_strScriptFile.empty() || !m_vecSteps.empty();
    const std::size_t nTerminals = (m_bJoin ? 2U : 1U) - (m_strDevice.empty() ? 0U : 1U);
    if (m_bJoin && bScript)
        return "--join takes no script";
    if (!m_bJoin && !bScript)
        return "a script is missing (try --help)";
    if (!m_strScriptFile.empty() && !m_vecSteps.empty())
        return "a script is given twice";
    if (!m_bJoin && (m_nDropOne != 0 || m_nSpoilOne != 0))
        return "--drop and --spoil go with --join";
    if (m_vecLinks.size() > nTerminals)
        return "there are more links than pseudo-terminals";
    return "";
}

bool LinesimOptions::ReadScript(std::string& strScript) const
{
    for (const std::string& strStep : m_vecSteps)
        strScript += strStep + "\n";
    if (m_strScriptFile == "-")
        strScript.assign(std::istreambuf_iterator<char>(std::cin), {});
    else if (!m_strScriptFile.empty())
        return KorReadFile(m_strScriptFile.c_str(), strScript);
    return true;
}

std::string LinesimOptions::Link(std::size_t nLine) const
{
    return nLine < m_vecLinks.size() ? m_vecLinks[nLine] : "";
}

SKorLineOptions LinesimOptions::DeviceOptions() const
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = m_nSpeed;
    return oOptions;
}
