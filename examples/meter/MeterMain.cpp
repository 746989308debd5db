/// @file
/// A simulated Modbus RTU meter on a pseudo-terminal of its own.

#include "base/KorThread.h"
#include "config/KorCmdLine.h"
#include "config/KorCmdLineExchange.h"
#include "examples/meter/Meter.h"
#include "examples/meter/MeterLine.h"

#include <cstdlib>
#include <iostream>
#include <signal.h>

namespace
{

constexpr char HELP[] =
    R"(Simulates a Modbus RTU meter on a pseudo-terminal of its own, the device name of which is
the first line printed. Ends on SIGINT and SIGTERM and says then what it served.

usage: meter.bin [OPTION...]
  -station N  station address, 1 to 247 (1)
  -late MS    answer late
  -badcrc     answer with a wrong CRC
  -silent     do not answer
  -hangup     hang up instead of answering, and end
  -every N    disturb only every N-th request (1: all)
  -count N    end after N requests (0: go on)
  -help       print this text
)";

/// What the other side has not read when the line closes is lost.
constexpr unsigned int TIME_FOR_LAST_ANSWER_MS = 100;

/// What the command line says.
class MeterOptions : public CKorCmdLine
{
public:
    using CKorCmdLine::DoOptionExchange;

    void DoOptionExchange(CKorCmdLineExchange* pExchange) override
    {
        Flag(*pExchange, "help", m_bHelp);
        Flag(*pExchange, "badcrc", m_oDisturbance.bBadCrc);
        Flag(*pExchange, "silent", m_oDisturbance.bSilent);
        Flag(*pExchange, "hangup", m_oDisturbance.bHangUp);
        Number(*pExchange, "station", m_nStation);
        Number(*pExchange, "late", m_oDisturbance.nLateMs);
        Number(*pExchange, "every", m_oDisturbance.nEvery);
        Number(*pExchange, "count", m_nCount);
        CheckLeftOver(*pExchange);
    }

    bool AreUsable() const
    {
        return m_bUsable && m_nStation >= 1 && m_nStation <= 247 && m_oDisturbance.nEvery >= 1;
    }

    bool m_bHelp = false;
    unsigned int m_nStation = 1;
    unsigned int m_nCount = 0;
    MeterDisturbance m_oDisturbance;

private:
    void Flag(CKorCmdLineExchange& oExchange, const char* pszName, bool& bFlag)
    {
        std::string strValue;
        oExchange.AddParamDescription(pszName, false);
        if (oExchange.IsInitialized())
            bFlag = oExchange.GetParameter(pszName, false, strValue);
    }

    void Number(CKorCmdLineExchange& oExchange, const char* pszName, unsigned int& nNumber)
    {
        std::string strValue;
        oExchange.AddParamDescription(pszName, true);
        if (!oExchange.IsInitialized() || !oExchange.GetParameter(pszName, true, strValue))
            return;
        nNumber = static_cast<unsigned int>(std::strtoul(strValue.c_str(), nullptr, 10));
        if (strValue.empty() || strValue.find_first_not_of("0123456789") != std::string::npos)
            m_bUsable = false;
    }

    void CheckLeftOver(CKorCmdLineExchange& oExchange)
    {
        std::string strProgram;
        std::string strLeftOver;
        if (oExchange.IsInitialized() && oExchange.GetParameter("", false, strProgram) &&
            oExchange.GetParameter("", false, strLeftOver))
            m_bUsable = false;
    }

    bool m_bUsable = true;
};

volatile sig_atomic_t nEndRequested = 0;

void RequestEnd(int)
{
    nEndRequested = 1;
}

/// Lets the signals that end the program come in only while it waits for a request.
void CatchEndSignals()
{
    sigset_t oSignals;
    sigemptyset(&oSignals);
    struct sigaction oAction = {};
    oAction.sa_handler = RequestEnd;
    for (const int nSignal : {SIGINT, SIGTERM}) {
        sigaddset(&oSignals, nSignal);
        sigaction(nSignal, &oAction, nullptr);
    }
    sigprocmask(SIG_BLOCK, &oSignals, nullptr);
}

void Serve(MeterLine& oLine, Meter& oMeter, unsigned int nCount)
{
    std::string strRequest;
    while (nEndRequested == 0 && (nCount == 0 || oMeter.Requests() < nCount) &&
           oLine.Receive(MODBUS_REQUEST_LENGTH, strRequest)) {
        const MeterAnswer oAnswer = oMeter.Answer(strRequest);
        CKorThread::Sleep(0, oAnswer.nDelayMs);
        if (oAnswer.bHangUp) {
            oLine.HangUp();
            return;
        }
        oLine.Send(oAnswer.strTelegram);
    }
}

} // namespace

int main(int argc, char** argv)
{
    MeterOptions oOptions;
    oOptions.Initialize(argc, argv);
    oOptions.UpdateOptions(false);
    if (oOptions.m_bHelp || !oOptions.AreUsable()) {
        (oOptions.m_bHelp ? std::cout : std::cerr) << HELP;
        return oOptions.m_bHelp ? EXIT_SUCCESS : EXIT_FAILURE;
    }

    CatchEndSignals();
    MeterLine oLine;
    if (!oLine.IsOpen()) {
        std::cerr << "cannot open a pseudo-terminal\n";
        return EXIT_FAILURE;
    }
    std::cout << oLine.DeviceName() << std::endl;
    Meter oMeter(static_cast<std::uint8_t>(oOptions.m_nStation), oOptions.m_oDisturbance);
    Serve(oLine, oMeter, oOptions.m_nCount);
    CKorThread::Sleep(0, TIME_FOR_LAST_ANSWER_MS);
    std::cout << "Served " << oMeter.Requests() << " requests, " << oMeter.Disturbed()
              << " of them disturbed." << std::endl;
    return EXIT_SUCCESS;
}
