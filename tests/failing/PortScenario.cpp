// A serial port with its receive thread: opened, asked, read and closed.

#include "serial/KorSerial.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/PseudoTerminal.h"

namespace
{

constexpr char ANSWER[] = "meter 7: 21.5 degrees\n";

class CQuickPort : public CKorSerial
{
public:
    CQuickPort() { m_oRcvThread.SetTimeout(5); }
};

class CPort : public CScenario
{
public:
    void Run() override
    {
        CQuickPort oPort;
        Succeeds("a request is answered", [&] { return IsAnswered(oPort); });
        Expect(oPort.close() == CKorSerial::SERIAL_OK, "a port is closed");
    }

    bool MayTellInterruption() const override { return m_strFailing == "write"; }

    /// What the receive thread throws ends the process.
    bool MayAbort() const override { return m_strFailing == "memory"; }

private:
    bool IsAnswered(CQuickPort& rPort) const
    {
        constexpr int TIMEOUT_MS = 500;
        if (rPort.close() != CKorSerial::SERIAL_OK ||
            rPort.open(m_oPeer.Name(), CKorSerial::BAUD_9600, CKorSerial::PARITY_NONE,
                       CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8,
                       nullptr) != CKorSerial::SERIAL_OK)
            return false;
        rPort.ClearBuffer();
        if (rPort.DataReq("ID?", 3, 0) != CKorSerial::SERIAL_OK)
            return false;
        {
            const CBeside oBeside;
            if (m_oPeer.Receive(3) != "ID?")
                return false;
            m_oPeer.Send(ANSWER);
        }
        std::string strAnswer;
        return rPort.WaitForData("\n", strAnswer, TIMEOUT_MS) == CKorSerial::SERIAL_OK &&
               strAnswer == ANSWER;
    }

    const PseudoTerminal m_oPeer;
};

} // namespace

CScenario* MakePort(const std::string&)
{
    return new CPort;
}
