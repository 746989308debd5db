#pragma once

/// @file
/// The script of a simulated device: one step a line.

#include "tools/linesim/LinePattern.h"

#include <cstdint>
#include <string>
#include <vector>

/// One step.
struct ScriptStep
{
    enum EKind
    {
        STEP_EXPECT,    ///< the bytes of the pattern come next
        STEP_ECHO,      ///< as above, and they are sent back
        STEP_SILENCE,   ///< nothing comes for a time
        STEP_SEND,      ///< sends the bytes of the pattern
        STEP_NOISE,     ///< sends bytes at random
        STEP_DROP,      ///< takes some bytes, or what has come, without a look at it
        STEP_DELAY,     ///< waits
        STEP_HANG_UP,   ///< takes the line away
        STEP_COME_BACK, ///< makes a new line under the same name
        STEP_REPEAT,    ///< begins a block
        STEP_END        ///< ends it
    };

    EKind m_eKind;
    unsigned int m_nLine;    ///< where it stands in the script
    LinePattern m_oPattern;  ///< of expect, echo and send
    std::uint32_t m_nNumber; ///< times, bytes or milliseconds; 0 where none is given

    static constexpr std::uint32_t NO_LIMIT = 0xFFFFFFFF; ///< `within` 0
};

/// A script that was read.
class LineScript
{
public:
    /// Reads a script.
    /// @param strText        the lines
    /// @param[out] strError  "line 3: ..." when it cannot be read
    /// @return whether it was read
    bool Parse(const std::string& strText, std::string& strError);

    const std::vector<ScriptStep>& Steps() const { return m_vecSteps; }

private:
    bool ParseLine(const std::string& strLine, std::string& strError);
    bool CloseBlock(std::string& strError);

    std::vector<ScriptStep> m_vecSteps;
    std::vector<std::size_t> m_vecOpen; // the REPEATs without END so far
};
