/// @file
/// A simulated Modbus RTU meter on a pseudo-terminal of its own.

#include "app/KorConApplication.h"
#include "examples/meter/Meter.h"
#include "examples/meter/MeterLine.h"

#include <cstdlib>
#include <iostream>
#include <limits>
#include <optional>
#include <poll.h>
#include <signal.h>
#include <string>
#include <utility>

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

constexpr unsigned int ANY_NUMBER = std::numeric_limits<unsigned int>::max();
constexpr int EXIT_WRONG_USAGE = 2;

/// What the other side has not read when the line closes is lost.
constexpr unsigned int TIME_FOR_LAST_ANSWER_MS = 100;

// SIGINT and SIGTERM finalize the program from their handler, which prints. They come in only while
// the program waits, never in the middle of printing or of an answer.
void BlockEndSignals()
{
    sigset_t oSignals;
    sigemptyset(&oSignals);
    sigaddset(&oSignals, SIGINT);
    sigaddset(&oSignals, SIGTERM);
    sigprocmask(SIG_BLOCK, &oSignals, nullptr);
}

void Wait(unsigned int nMilliseconds)
{
    const timespec oTime = {static_cast<time_t>(nMilliseconds / 1000),
                            static_cast<long>(nMilliseconds % 1000) * 1000000L};
    sigset_t oNoSignals;
    sigemptyset(&oNoSignals);
    ppoll(nullptr, 0, &oTime, &oNoSignals);
}

class MeterApplication : public CKorConApplication
{
public:
    MeterApplication() : CKorConApplication(nullptr, nullptr, nullptr) {}

    void DoCmdLineExchange(CKorCmdLineApplExchange* pExchange) override
    {
        Flag(*pExchange, "help", m_bHelp);
        Flag(*pExchange, "badcrc", m_oDisturbance.bBadCrc);
        Flag(*pExchange, "silent", m_oDisturbance.bSilent);
        Flag(*pExchange, "hangup", m_oDisturbance.bHangUp);
        Number(*pExchange, "station", 1, 247, m_nStation);
        Number(*pExchange, "late", 0, ANY_NUMBER, m_oDisturbance.nLateMs);
        Number(*pExchange, "every", 1, ANY_NUMBER, m_oDisturbance.nEvery);
        Number(*pExchange, "count", 0, ANY_NUMBER, m_nCount);
        CheckLeftOver(*pExchange);
    }

    bool Initialize() override
    {
        if (m_bHelp) {
            std::cout << HELP;
        } else if (!m_strWrongUsage.empty()) {
            std::cerr << "meter: " << m_strWrongUsage << "; see meter.bin -help\n";
            m_nExitStatus = EXIT_WRONG_USAGE;
        }
        return !m_bHelp && m_strWrongUsage.empty();
    }

    void Run() override
    {
        MeterLine oLine;
        if (!oLine.IsOpen()) {
            std::cerr << "cannot open a pseudo-terminal\n";
            m_nExitStatus = EXIT_FAILURE;
            return;
        }
        m_oMeter.emplace(static_cast<std::uint8_t>(m_nStation), m_oDisturbance);
        std::cout << oLine.DeviceName() << std::endl;
        Serve(oLine);
        Wait(TIME_FOR_LAST_ANSWER_MS);
    }

    // Also called from the signal handler, while the program waits.
    int Finalize() override
    {
        if (const auto oMeter = std::exchange(m_oMeter, std::nullopt))
            std::cout << "Served " << oMeter->Requests() << " requests, " << oMeter->Disturbed()
                      << " of them disturbed." << std::endl;
        return m_nExitStatus;
    }

private:
    void Serve(MeterLine& oLine)
    {
        std::string strRequest;
        while (oLine.IsOpen() && (m_nCount == 0 || m_oMeter->Requests() < m_nCount) &&
               oLine.Receive(MODBUS_REQUEST_LENGTH, strRequest)) {
            const MeterAnswer oAnswer = m_oMeter->Answer(strRequest);
            Wait(oAnswer.nDelayMs);
            if (oAnswer.bHangUp)
                oLine.HangUp();
            else
                oLine.Send(oAnswer.strTelegram);
        }
    }

    static void Flag(CKorCmdLineExchange& oExchange, const char* pszName, bool& bFlag)
    {
        std::string strValue;
        oExchange.AddParamDescription(pszName, false);
        if (oExchange.IsInitialized())
            bFlag = oExchange.GetParameter(pszName, false, strValue);
    }

    void Number(CKorCmdLineExchange& oExchange, const char* pszName, unsigned int nMin,
                unsigned int nMax, unsigned int& nNumber)
    {
        std::string strValue;
        oExchange.AddParamDescription(pszName, true);
        if (!oExchange.IsInitialized() || !oExchange.GetParameter(pszName, true, strValue))
            return;
        // 64 bits on every machine; what does not fit into them reads as the greatest number.
        const unsigned long long nRead = std::strtoull(strValue.c_str(), nullptr, 10);
        const bool bDigits =
            !strValue.empty() && strValue.find_first_not_of("0123456789") == std::string::npos;
        if (bDigits && nRead >= nMin && nRead <= nMax)
            nNumber = static_cast<unsigned int>(nRead);
        else
            m_strWrongUsage = "-" + std::string(pszName) + " \"" + strValue +
                              "\": not a number from " + std::to_string(nMin) + " to " +
                              std::to_string(nMax);
    }

    void CheckLeftOver(CKorCmdLineExchange& oExchange)
    {
        std::string strProgram;
        std::string strLeftOver;
        if (oExchange.IsInitialized() && oExchange.GetParameter("", false, strProgram) &&
            oExchange.GetParameter("", false, strLeftOver))
            m_strWrongUsage = "unknown argument " + strLeftOver;
    }

    bool m_bHelp = false;
    std::string m_strWrongUsage; // what is wrong with the arguments; empty: nothing
    unsigned int m_nStation = 1;
    unsigned int m_nCount = 0;
    MeterDisturbance m_oDisturbance;
    std::optional<Meter> m_oMeter;
    int m_nExitStatus = EXIT_SUCCESS;
};

} // namespace

int main(int argc, char** argv)
{
    BlockEndSignals();
    MeterApplication oApplication;
    return oApplication.Start(argc, argv);
}
