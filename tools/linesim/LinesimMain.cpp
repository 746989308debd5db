// The other end of a serial line, for tests: a device that follows a script, or a cable between two
// lines.

#include "app/KorDaemonApplication.h"
#include "tools/linesim/LineEnd.h"
#include "tools/linesim/LineJoiner.h"
#include "tools/linesim/LineScript.h"
#include "tools/linesim/LineTrace.h"
#include "tools/linesim/LinesimOptions.h"
#include "tools/linesim/ScriptRunner.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{

enum EExitStatus
{
    STATUS_NOT_FULFILLED = 1,
    STATUS_WRONG_USAGE = 2,
    STATUS_SYSTEM_ERROR = 3
};

class Linesim : public CKorDaemonApplication
{
public:
    Linesim() : CKorDaemonApplication(nullptr, "linesim", nullptr)
    {
        m_oInfo = CKorApplicationInfo("linesim", TARVO_VERSION, "Quentor GmbH",
                                      "Serial line simulator", "www.quentor.example", nullptr);
    }

    void DeclareOptions(CKorOptionParser& rParser) override { m_oOptions.Declare(rParser); }

    bool Initialize() override
    {
        std::string strError = m_oOptions.Contradiction();
        std::string strScript;
        if (strError.empty() && !m_oOptions.ReadScript(strScript))
            strError = m_oOptions.m_strScriptFile + ": " + std::strerror(errno);
        if (!strError.empty() || !m_oScript.Parse(strScript, strError))
            return Refuse(STATUS_WRONG_USAGE, strError);
        return OpenTrace() && OpenLines();
    }

    void Run() override
    {
        if (m_oOptions.m_bJoin)
            Join();
        else
            RunScript();
    }

private:
    bool Refuse(EExitStatus eStatus, const std::string& strError)
    {
        std::fprintf(stderr, "linesim: %s\n", strError.c_str());
        RequestEnd(eStatus);
        return false;
    }

    bool OpenTrace()
    {
        if (m_oOptions.m_strTrace.empty() || m_oTrace.Open(m_oOptions.m_strTrace))
            return true;
        return Refuse(STATUS_SYSTEM_ERROR, m_oOptions.m_strTrace + ": " + std::strerror(errno));
    }

    bool OpenLines()
    {
        if (m_oOptions.m_bJoin || m_oOptions.m_strDevice.empty())
            return OpenTerminal(m_oLineA, 0) &&
                   (!m_oOptions.m_bJoin ||
                    (m_oOptions.HasLinePair() ? OpenTerminal(m_oLineB, 1) : OpenDevice(m_oLineB)));
        return OpenDevice(m_oLineA);
    }

    bool OpenTerminal(LineEnd& oLine, std::size_t nLine)
    {
        const std::string strLink = m_oOptions.Link(nLine);
        return Announce(oLine, oLine.OpenTerminal(strLink), strLink);
    }

    bool OpenDevice(LineEnd& oLine)
    {
        const bool bOpen = oLine.OpenDevice(m_oOptions.m_strDevice, m_oOptions.DeviceOptions());
        return Announce(oLine, bOpen, m_oOptions.m_strDevice);
    }

    bool Announce(const LineEnd& oLine, bool bOpen, const std::string& strName)
    {
        if (!bOpen)
            return Refuse(STATUS_SYSTEM_ERROR, strName + ": " + std::strerror(errno));
        std::puts(oLine.Name().c_str());
        std::fflush(stdout);
        return true;
    }

    void Join()
    {
        const LineJoiner oJoiner(
            m_oLineA, m_oLineB,
            {m_oOptions.m_nDropOne, m_oOptions.m_nSpoilOne, m_oOptions.m_nSeed});
        while (!IsEndRequested() && m_oLineA.IsOpen() && m_oLineB.IsOpen())
            GetLoop().RunOnce(0xFFFFFFFF);
        if (!IsEndRequested())
            Refuse(STATUS_NOT_FULFILLED, "a line hung up");
    }

    void RunScript()
    {
        ScriptRunner oRunner(
            m_oScript, {m_oOptions.m_nTimeout, m_oOptions.m_nSeed, m_oOptions.m_vecLinks.empty()},
            m_oLineA, GetLoop(), [this] { return IsEndRequested(); });
        const ScriptRunner::EResult eResult = oRunner.Run();
        if (eResult != ScriptRunner::FULFILLED)
            Refuse(eResult == ScriptRunner::FAILED ? STATUS_SYSTEM_ERROR : STATUS_NOT_FULFILLED,
                   oRunner.Reason());
    }

    LinesimOptions m_oOptions;
    LineScript m_oScript;
    LineTrace m_oTrace;
    LineEnd m_oLineA{GetLoop(), m_oTrace};
    LineEnd m_oLineB{GetLoop(), m_oTrace};
};

} // namespace

int main(int argc, char** argv)
{
    return Linesim().Start(argc, argv);
}
