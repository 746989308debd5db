/// @file
/// Many lines with one simulated meter each, in one process. Prints the devices, one a line, and on
/// SIGINT and SIGTERM how many requests each meter answered.
/// usage: meters.bin NUMBER

#include "app/KorDaemonApplication.h"
#include "examples/meter/Meter.h"
#include "examples/meter/MeterLine.h"

#include <cstdio>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace
{

/// A meter and its line.
class LoneMeter
{
public:
    explicit LoneMeter(CKorEventLoop& oLoop)
        : m_oMeter(1, MeterDisturbance()),
          m_oLine(oLoop, MODBUS_REQUEST_LENGTH, [this](const std::string& strRequest) {
              m_oLine.Send(m_oMeter.Answer(strRequest).strTelegram);
          })
    {
    }

    bool IsOpen() const { return m_oLine.IsOpen(); }
    const std::string& DeviceName() const { return m_oLine.DeviceName(); }
    unsigned int Answers() const { return m_oMeter.Requests(); }

private:
    Meter m_oMeter;
    MeterLine m_oLine;
};

class MetersApplication : public CKorDaemonApplication
{
public:
    MetersApplication() : CKorDaemonApplication(nullptr, "meters", nullptr)
    {
        m_oInfo.SetApplDescription("Simulates meters on lines of their own.");
    }

    void DeclareOptions(CKorOptionParser& rParser) override
    {
        rParser.AddArgument("NUMBER", m_nNumber, "how many");
    }

    bool Initialize() override
    {
        RaiseHandleLimit();
        for (unsigned int n = 0; n < m_nNumber; ++n) {
            m_vecMeters.push_back(std::make_unique<LoneMeter>(GetLoop()));
            if (!m_vecMeters.back()->IsOpen()) {
                std::fprintf(stderr, "meters: there is no pseudo-terminal for line %u\n", n + 1);
                return false;
            }
            std::puts(m_vecMeters.back()->DeviceName().c_str());
        }
        std::fflush(stdout);
        return true;
    }

    int Finalize() override
    {
        for (const auto& pMeter : m_vecMeters)
            std::printf("%s %u\n", pMeter->DeviceName().c_str(), pMeter->Answers());
        std::fflush(stdout);
        return CKorDaemonApplication::Finalize();
    }

private:
    static void RaiseHandleLimit()
    {
        rlimit oLimit = {};
        getrlimit(RLIMIT_NOFILE, &oLimit);
        oLimit.rlim_cur = oLimit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &oLimit);
    }

    unsigned int m_nNumber = 0;
    std::vector<std::unique_ptr<LoneMeter>> m_vecMeters;
};

} // namespace

int main(int argc, char** argv)
{
    return MetersApplication().Start(argc, argv);
}
