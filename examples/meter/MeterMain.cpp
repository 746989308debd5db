/// @file
/// A simulated Modbus RTU meter on a pseudo-terminal of its own, the device name of which is the
/// first line printed. Ends on SIGINT and SIGTERM and says then what it served.

#include "app/KorDaemonApplication.h"
#include "examples/meter/Meter.h"
#include "examples/meter/MeterLine.h"

#include <cstdio>
#include <optional>
#include <string>

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
        m_oMeter.emplace(static_cast<std::uint8_t>(m_nStation), m_oDisturbance);
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
        if (m_oMeter)
            std::printf("Served %u requests, %u of them disturbed.\n", m_oMeter->Requests(),
                        m_oMeter->Disturbed());
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

    void Answer(const std::string& strRequest)
    {
        if (IsDone())
            return;
        const MeterAnswer oAnswer = m_oMeter->Answer(strRequest);
        GetLoop().CallAfter(oAnswer.nDelayMs, [this, oAnswer] {
            if (oAnswer.bHangUp)
                m_oLine->HangUp();
            else
                m_oLine->Send(oAnswer.strTelegram);
            if (oAnswer.bHangUp || IsDone())
                GetLoop().CallAfter(TIME_FOR_LAST_ANSWER_MS, [this] { RequestEnd(); });
        });
    }

    bool IsDone() const { return m_nCount != 0 && m_oMeter->Requests() >= m_nCount; }

    unsigned int m_nStation = 1;
    unsigned int m_nCount = 0;
    MeterDisturbance m_oDisturbance;
    std::optional<Meter> m_oMeter;
    std::optional<MeterLine> m_oLine;
};

} // namespace

int main(int argc, char** argv)
{
    return MeterApplication().Start(argc, argv);
}
