// A serial line: opened, asked, read, received in a thread, set anew and closed.

#include "serial/KorSerialLine.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"

#include <atomic>
#include <cstring>

namespace
{

constexpr char ANSWER[] = "meter 7: 21.5 degrees\r";

class CLine : public CScenario
{
public:
    void Prepare() override { m_oPeer.Apply(m_oBefore); }
    void Run() override
    {
        CKorSerialLine oLine;
        const bool bOpened = Succeeds(
            "a line is opened", [&] { return IsOpened(oLine); },
            [&] {
                Expect(!oLine.IsOpen(), "a line that was not opened is closed");
                Expect(HasFormerSettings(), "a line that was not opened is as it was");
            });
        if (!bOpened)
            return;
        Ask(oLine);
        Succeeds("an answer is received", [&] { return ReceivesAnswer(oLine); });
        Succeeds("an answer is read", [&] { return ReadsAnswer(oLine); });
        SetSpeed(oLine);
        oLine.Close();
        Expect(HasFormerSettings(), "a line that was closed is as it was");
    }

private:
    bool IsOpened(CKorSerialLine& rLine) const
    {
        return rLine.Open(m_oPeer.Name()) == CKorSerial::SERIAL_OK;
    }
    /// A line that failed stays lost until it is opened again.
    bool IsUsable(CKorSerialLine& rLine) const { return !rLine.IsHungUp() || IsOpened(rLine); }
    void Send(const char* pszText) const
    {
        const CBeside oBeside;
        m_oPeer.Send(pszText);
    }
    /// A pseudo-terminal of the kernel has the settings of its last user.
    bool HasFormerSettings() const
    {
        const CBeside oBeside;
        const termios oNow = m_oPeer.Settings();
        return m_strFailing == "tcsetattr" ||
               (oNow.c_lflag == m_oBefore.c_lflag && oNow.c_iflag == m_oBefore.c_iflag &&
                oNow.c_cflag == m_oBefore.c_cflag);
    }

    void Ask(CKorSerialLine& rLine)
    {
        const auto fnAsk = [&] {
            const bool bAsked =
                IsUsable(rLine) && rLine.WriteText("ID?\r", PATIENCE_MS) == CKorSerial::SERIAL_OK;
            const CBeside oBeside;
            const std::string strSent = m_oPeer.Receive(rLine.GetWrittenCount());
            Expect(!bAsked || strSent == "ID?\r", "a request that was written is at the far end");
            return bAsked;
        };
        Succeeds("a request is written", fnAsk);
    }

    bool ReadsAnswer(CKorSerialLine& rLine) const
    {
        if (!IsUsable(rLine))
            return false;
        if (rLine.GetHeldCount() == 0)
            Send(ANSWER);
        std::string strAnswer;
        return rLine.ReadUntil("\r", strAnswer, PATIENCE_MS) == CKorSerial::SERIAL_OK &&
               strAnswer == ANSWER;
    }

    bool ReceivesAnswer(CKorSerialLine& rLine)
    {
        m_nReceived = 0;
        m_bHungUp = false;
        const bool bStarted =
            IsUsable(rLine) &&
            rLine.StartReception(
                [this](const char* pData, unsigned int nLength) { Take(pData, nLength); },
                [this](int) { m_bHungUp = true; }) == CKorSerial::SERIAL_OK;
        if (!bStarted)
            return false;
        Send(ANSWER);
        {
            const CBeside oBeside;
            Expect(WaitUntil([this] { return m_nReceived >= std::strlen(ANSWER) || m_bHungUp; }),
                   "a reception gives what comes, or tells of a failure");
        }
        rLine.StopReception();
        return !m_bHungUp && std::memcmp(m_acReceived, ANSWER, std::strlen(ANSWER)) == 0;
    }
    void Take(const char* pData, unsigned int nLength)
    {
        for (unsigned int n = 0; n < nLength && m_nReceived < sizeof m_acReceived; ++n)
            m_acReceived[m_nReceived++] = pData[n];
    }

    void SetSpeed(CKorSerialLine& rLine)
    {
        SKorLineOptions oOptions;
        oOptions.m_nSpeed = 19200;
        const bool bSet = Succeeds(
            "a line is set anew",
            [&] { return IsUsable(rLine) && rLine.SetOptions(oOptions) == CKorSerial::SERIAL_OK; },
            [&] { Expect(SpeedOf() == B9600, "a line that was not set anew is as before"); });
        Expect(SpeedOf() == (bSet ? B19200 : B9600), "a line that was set anew has the settings");
    }
    speed_t SpeedOf() const
    {
        const CBeside oBeside;
        const termios oNow = m_oPeer.Settings();
        return cfgetospeed(&oNow);
    }

    const PseudoTerminal m_oPeer;
    const termios m_oBefore = m_oPeer.Settings();
    char m_acReceived[64] = {};
    std::atomic<unsigned int> m_nReceived{0};
    std::atomic<bool> m_bHungUp{false};
};

} // namespace

CScenario* MakeLine(const std::string&)
{
    return new CLine;
}
