/// @file
/// A simulated Modbus RTU meter, or several on one line, on a pseudo-terminal of its own, the device
/// name of which is the first line printed. Ends on SIGINT and SIGTERM and says then what it served.

#include "app/KorDaemonApplication.h"
#include "config/KorTextValue.h"
#include "examples/meter/Meter.h"
#include "examples/meter/MeterLine.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace
{

/// What the other side has not read when the line closes is lost.
constexpr unsigned int TIME_FOR_LAST_ANSWER_MS = 100;
constexpr int EXIT_WRONG_USAGE = 2;

class MeterApplication : public CKorDaemonApplication
{
public:
    MeterApplication() : CKorDaemonApplication(nullptr, "meter", nullptr)
    {
        m_oInfo = CKorApplicationInfo("meter", TARVO_VERSION, "Quentor GmbH",
                                      "Modbus RTU meter simulator", "www.quentor.example", nullptr);
    }

    void DeclareOptions(CKorOptionParser& rParser) override
    {
        rParser.AddOption("station", "N", m_nStation, "station address, 1 to 247 (1)");
        rParser.AddOption("units", "FIRST-LAST", m_strUnits,
                          "one meter on each of these addresses of the line");
        rParser.AddOption("late", "MS", m_oDisturbance.nLateMs, "answer late");
        rParser.AddFlag("badcrc", m_oDisturbance.bBadCrc, "answer with a wrong CRC");
        rParser.AddFlag("silent", m_oDisturbance.bSilent, "do not answer");
        rParser.AddFlag("hangup", m_oDisturbance.bHangUp, "hang up instead of answering, and end");
        rParser.AddOption("every", "N", m_oDisturbance.nEvery,
                          "disturb only every N-th request (1: all)");
        rParser.AddOption("count", "N", m_nCount, "end after N requests (0: go on)");
    }

    bool Initialize() override
    {
        if (m_nStation < 1 || m_nStation > 247)
            return Refuse(EXIT_WRONG_USAGE, "--station is not in 1 to 247");
        if (m_oDisturbance.nEvery == 0)
            return Refuse(EXIT_WRONG_USAGE, "--every is 0");
        m_nLast = m_nStation;
        if (!m_strUnits.empty() && !TakeUnits())
            return Refuse(EXIT_WRONG_USAGE, "--units is no range in 1 to 247, such as 1-10");
        for (unsigned int nUnit = m_nStation; nUnit <= m_nLast; ++nUnit)
            m_vecMeters.emplace_back(static_cast<std::uint8_t>(nUnit), m_oDisturbance);
        m_oLine.emplace(GetLoop(), MODBUS_REQUEST_LENGTH,
                        [this](const std::string& strRequest) { Answer(strRequest); });
        if (!m_oLine->IsOpen())
            return Refuse(EXIT_FAILURE, "cannot open a pseudo-terminal");
        std::puts(m_oLine->DeviceName().c_str());
        std::fflush(stdout);
        return true;
    }

    int Finalize() override
    {
        if (!m_vecMeters.empty())
            std::printf("Served %u requests, %u of them disturbed.\n", Sum(&Meter::Requests),
                        Sum(&Meter::Disturbed));
        std::fflush(stdout); // while signals still only ask for the end
        return CKorDaemonApplication::Finalize();
    }

private:
    bool Refuse(int nStatus, const char* pszReason)
    {
        std::fprintf(stderr, "meter: %s\n", pszReason);
        RequestEnd(nStatus);
        return false;
    }

    bool TakeUnits()
    {
        const std::size_t nDash = std::min(m_strUnits.find('-'), m_strUnits.size());
        const std::string_view strUnits = m_strUnits;
        return KorReadText(strUnits.substr(0, nDash), m_nStation) && nDash < strUnits.size() &&
               KorReadText(strUnits.substr(nDash + 1), m_nLast) && m_nStation >= 1 &&
               m_nStation <= m_nLast && m_nLast <= 247;
    }

    unsigned int Sum(unsigned int (Meter::*pfnCount)() const) const
    {
        unsigned int nSum = 0;
        for (const Meter& oMeter : m_vecMeters)
            nSum += (oMeter.*pfnCount)();
        return nSum;
    }

    void Answer(const std::string& strRequest)
    {
        if (IsDone())
            return;
        const unsigned int nUnit = static_cast<unsigned char>(strRequest[0]);
        const bool bOurs = nUnit >= m_nStation && nUnit <= m_nLast;
        const MeterAnswer oAnswer =
            bOurs ? m_vecMeters[nUnit - m_nStation].Answer(strRequest) : MeterAnswer();
        GetLoop().CallAfter(oAnswer.nDelayMs, [this, oAnswer] {
            if (oAnswer.bHangUp)
                m_oLine->HangUp();
            else
                m_oLine->Send(oAnswer.strTelegram);
            if (oAnswer.bHangUp || IsDone())
                GetLoop().CallAfter(TIME_FOR_LAST_ANSWER_MS, [this] { RequestEnd(); });
        });
    }

    bool IsDone() const { return m_nCount != 0 && Sum(&Meter::Requests) >= m_nCount; }

    unsigned int m_nStation = 1; // of the first meter
    unsigned int m_nLast = 1;    // of the last one
    std::string m_strUnits;
    unsigned int m_nCount = 0;
    MeterDisturbance m_oDisturbance;
    std::vector<Meter> m_vecMeters;
    std::optional<MeterLine> m_oLine;
};

} // namespace

int main(int argc, char** argv)
{
    return MeterApplication().Start(argc, argv);
}
