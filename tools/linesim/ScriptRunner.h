#pragma once

/// @file
/// A simulated device that does what a script says.

#include "time/KorTimeout.h"
#include "tools/linesim/LineEnd.h"
#include "tools/linesim/LineScript.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

/// Runs a script on a line.
class ScriptRunner
{
public:
    enum EResult
    {
        FULFILLED,
        NOT_FULFILLED, ///< something else came, nothing came, or the end was asked for
        FAILED         ///< the system refused; errno tells why
    };

    struct Settings
    {
        unsigned int m_nTimeout; ///< ms that a step without `within` waits
        unsigned int m_nSeed;    ///< of the noise
        bool m_bPrintsNewName;   ///< a line that came back has another name, to be printed
    };

    /// @param oScript  what to do; outlives the runner
    /// @param oLine    the open line
    /// @param oLoop    serves the line
    /// @param fnEnded  whether the end was asked for
    ScriptRunner(const LineScript& oScript, const Settings& oSettings, LineEnd& oLine,
                 CKorEventLoop& oLoop, std::function<bool()> fnEnded);

    /// Runs it to its end.
    EResult Run();
    /// Why it was not fulfilled: "line 3: ...".
    const std::string& Reason() const { return m_strReason; }

private:
    struct Block
    {
        std::size_t m_nBegin;
        std::uint32_t m_nLeft; // turns, the running one included; 0 of an endless block
    };

    EResult Execute(const ScriptStep& oStep);
    EResult Expect(const ScriptStep& oStep);
    EResult ExpectSilence(const ScriptStep& oStep);
    EResult SendAll(const ScriptStep& oStep, const std::string& strBytes);
    EResult Drop(const ScriptStep& oStep);
    EResult Delay(const ScriptStep& oStep);
    EResult ComeBack(const ScriptStep& oStep);
    void LeaveOrRepeat();
    void WaitUntilRead();

    std::string Noise(std::uint32_t nCount);
    bool IsIdle(const ScriptStep& oStep) const;
    void WaitWhileIdle(const ScriptStep& oStep);
    bool WaitForMore(const CKorTimeout& oLimit);
    EResult Fail(const ScriptStep& oStep, const std::string& strWhat);
    EResult Mismatch(const ScriptStep& oStep, std::size_t nFitting);

    const LineScript& m_oScript;
    const Settings m_oSettings;
    LineEnd& m_oLine;
    CKorEventLoop& m_oLoop;
    std::function<bool()> m_fnEnded;
    std::mt19937 m_oRandom;
    std::string m_strReceived;
    std::string m_strReason;
    std::vector<Block> m_vecBlocks;
    std::size_t m_nStep = 0;
};
