#include "tools/linesim/ScriptRunner.h"

#include "text/KorHexText.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace
{

constexpr std::size_t MAX_RECEIVED = 1 << 20;
constexpr unsigned int READ_INTERVAL_MS = 2;

std::string Shown(const std::string& strBytes)
{
    constexpr std::size_t ENOUGH = 32;
    const std::size_t nShown = std::min(strBytes.size(), ENOUGH);
    return KorToHexText(strBytes.data(), static_cast<unsigned int>(nShown)) +
           (nShown < strBytes.size() ? " ..." : "");
}

} // namespace

ScriptRunner::ScriptRunner(const LineScript& oScript, const Settings& oSettings, LineEnd& oLine,
                           CKorEventLoop& oLoop, std::function<bool()> fnEnded)
    : m_oScript(oScript),
      m_oSettings(oSettings),
      m_oLine(oLine),
      m_oLoop(oLoop),
      m_fnEnded(std::move(fnEnded)),
      m_oRandom(oSettings.m_nSeed)
{
    m_oLine.SetReceiver([this](const std::string& strBytes) { m_strReceived += strBytes; });
}

ScriptRunner::EResult ScriptRunner::Run()
{
    EResult eResult = FULFILLED;
    while (eResult == FULFILLED && m_nStep < m_oScript.Steps().size()) {
        const ScriptStep& oStep = m_oScript.Steps()[m_nStep];
        WaitWhileIdle(oStep);
        if (m_fnEnded())
            return IsIdle(oStep) ? FULFILLED : Fail(oStep, "ended before the script was");
        ++m_nStep;
        eResult = Execute(oStep);
    }
    if (eResult == FULFILLED)
        WaitUntilRead();
    return eResult;
}

ScriptRunner::EResult ScriptRunner::Execute(const ScriptStep& oStep)
{
    switch (oStep.m_eKind) {
    case ScriptStep::STEP_EXPECT:
    case ScriptStep::STEP_ECHO:
        return Expect(oStep);
    case ScriptStep::STEP_SILENCE:
        return ExpectSilence(oStep);
    case ScriptStep::STEP_SEND:
        return SendAll(oStep, oStep.m_oPattern.Bytes());
    case ScriptStep::STEP_NOISE:
        return SendAll(oStep, Noise(oStep.m_nNumber));
    case ScriptStep::STEP_DROP:
        return Drop(oStep);
    case ScriptStep::STEP_DELAY:
        return Delay(oStep);
    case ScriptStep::STEP_HANG_UP:
        WaitUntilRead();
        m_oLine.HangUp();
        m_strReceived.clear();
        return FULFILLED;
    case ScriptStep::STEP_COME_BACK:
        return ComeBack(oStep);
    case ScriptStep::STEP_REPEAT:
        m_vecBlocks.push_back({m_nStep, oStep.m_nNumber});
        return FULFILLED;
    case ScriptStep::STEP_END:
        LeaveOrRepeat();
        return FULFILLED;
    }
    return FAILED;
}

// Whether the step waits for the first bytes of an endless turn, and none came: a good moment to
// end.
bool ScriptRunner::IsIdle(const ScriptStep& oStep) const
{
    const bool bWaits = oStep.m_eKind == ScriptStep::STEP_EXPECT ||
                        oStep.m_eKind == ScriptStep::STEP_ECHO ||
                        (oStep.m_eKind == ScriptStep::STEP_DROP && oStep.m_nNumber != 0);
    return bWaits && m_strReceived.empty() && !m_vecBlocks.empty() &&
           m_vecBlocks.back().m_nLeft == 0 &&
           &oStep == &m_oScript.Steps()[m_vecBlocks.back().m_nBegin];
}

void ScriptRunner::WaitWhileIdle(const ScriptStep& oStep)
{
    while (IsIdle(oStep) && m_oLine.IsOpen() && !m_fnEnded())
        m_oLoop.RunOnce(ScriptStep::NO_LIMIT);
}

bool ScriptRunner::WaitForMore(const CKorTimeout& oLimit)
{
    const std::size_t nBefore = m_strReceived.size();
    while (m_strReceived.size() == nBefore && m_oLine.IsOpen() && !m_fnEnded() &&
           !oLimit.IsExpired())
        m_oLoop.RunOnce(oLimit.GetRemaining());
    return m_strReceived.size() > nBefore;
}

ScriptRunner::EResult ScriptRunner::Expect(const ScriptStep& oStep)
{
    const CKorTimeout oLimit(oStep.m_nNumber != 0 ? oStep.m_nNumber : m_oSettings.m_nTimeout);
    std::size_t nLength = 0;
    EMatch eMatch;
    while ((eMatch = oStep.m_oPattern.Match(m_strReceived, nLength)) == EMatch::PARTIAL) {
        if (m_strReceived.size() > MAX_RECEIVED || !WaitForMore(oLimit))
            return Mismatch(oStep, m_strReceived.size());
    }
    if (eMatch == EMatch::NO)
        return Mismatch(oStep, nLength);
    const std::string strMatched = m_strReceived.substr(0, nLength);
    m_strReceived.erase(0, nLength);
    return oStep.m_eKind == ScriptStep::STEP_ECHO ? SendAll(oStep, strMatched) : FULFILLED;
}

ScriptRunner::EResult ScriptRunner::Mismatch(const ScriptStep& oStep, std::size_t nFitting)
{
    if (m_strReceived.empty())
        return Fail(oStep, "nothing came");
    const std::string strCame = Shown(m_strReceived) + " came";
    if (nFitting == m_strReceived.size())
        return Fail(oStep, strCame + ", and no more");
    return Fail(oStep, strCame + ", byte " + std::to_string(nFitting + 1) + " is wrong");
}

ScriptRunner::EResult ScriptRunner::ExpectSilence(const ScriptStep& oStep)
{
    const EResult eResult = Delay(oStep);
    if (eResult != FULFILLED || m_strReceived.empty())
        return eResult;
    return Fail(oStep, Shown(m_strReceived) + " came");
}

ScriptRunner::EResult ScriptRunner::SendAll(const ScriptStep& oStep, const std::string& strBytes)
{
    if (!m_oLine.IsOpen())
        return Fail(oStep, "there is no line");
    m_oLine.Send(strBytes);
    const CKorTimeout oLimit(m_oSettings.m_nTimeout);
    while (m_oLine.PendingCount() != 0 && !m_fnEnded()) {
        if (oLimit.IsExpired())
            return Fail(oStep, "the program does not take the bytes");
        m_oLoop.RunOnce(oLimit.GetRemaining());
    }
    return FULFILLED;
}

std::string ScriptRunner::Noise(std::uint32_t nCount)
{
    std::string strBytes;
    while (nCount-- != 0)
        strBytes += static_cast<char>(m_oRandom() & 0xFF);
    return strBytes;
}

ScriptRunner::EResult ScriptRunner::Drop(const ScriptStep& oStep)
{
    if (oStep.m_nNumber == 0)
        m_oLoop.RunOnce(0);
    const CKorTimeout oLimit(m_oSettings.m_nTimeout);
    while (m_strReceived.size() < oStep.m_nNumber) {
        if (!WaitForMore(oLimit))
            return Fail(oStep, "only " + std::to_string(m_strReceived.size()) + " bytes came");
    }
    m_strReceived.erase(0, oStep.m_nNumber == 0 ? m_strReceived.size() : oStep.m_nNumber);
    return FULFILLED;
}

ScriptRunner::EResult ScriptRunner::Delay(const ScriptStep& oStep)
{
    const CKorTimeout oLimit(oStep.m_nNumber);
    while (!oLimit.IsExpired() && !m_fnEnded())
        m_oLoop.RunOnce(oLimit.GetRemaining());
    return m_fnEnded() ? Fail(oStep, "ended before the script was") : FULFILLED;
}

ScriptRunner::EResult ScriptRunner::ComeBack(const ScriptStep& oStep)
{
    if (!m_oLine.ComeBack()) {
        Fail(oStep, "there is no new line");
        return FAILED;
    }
    m_strReceived.clear();
    if (m_oSettings.m_bPrintsNewName) {
        std::puts(m_oLine.Name().c_str());
        std::fflush(stdout);
    }
    return FULFILLED;
}

void ScriptRunner::LeaveOrRepeat()
{
    Block& oBlock = m_vecBlocks.back();
    if (oBlock.m_nLeft == 1) {
        m_vecBlocks.pop_back();
        return;
    }
    m_nStep = oBlock.m_nBegin;
    if (oBlock.m_nLeft != 0)
        --oBlock.m_nLeft;
}

// What the program has not read would be lost with the line, sometimes.
void ScriptRunner::WaitUntilRead()
{
    const CKorTimeout oLimit(m_oSettings.m_nTimeout);
    while (m_oLine.UnreadCount() != 0 && !oLimit.IsExpired() && !m_fnEnded())
        m_oLoop.RunOnce(std::min(READ_INTERVAL_MS, oLimit.GetRemaining()));
}

ScriptRunner::EResult ScriptRunner::Fail(const ScriptStep& oStep, const std::string& strWhat)
{
    m_strReason = "line " + std::to_string(oStep.m_nLine) + ": " + strWhat;
    return NOT_FULFILLED;
}
