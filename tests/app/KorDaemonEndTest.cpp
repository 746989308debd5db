#include "app/KorDaemonApplication.h"

#include "app/KorLog.h"
#include "config/KorIniFile.h"
#include "tests/app/LogCapture.h"
#include "tests/app/PrintingDaemon.h"
#include "tests/config/TestScale.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <signal.h>
#include <thread>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int OPTIONS = 50;

std::string OptionName(int nOption)
{
    return "option" + std::to_string(nOption);
}

/// A daemon that is always at work: logs into a file that is rotated, saves settings, and answers
/// on a line.
class Busy : public CKorDaemonApplication
{
public:
    Busy(const std::string& strDir, int nLine)
        : CKorDaemonApplication(nullptr, "busy", nullptr),
          m_oSettings((strDir + "/settings").c_str(), CKorIniFile::PATH_UNCHANGED),
          m_nLine(nLine)
    {
        KorGetLog().UseFile((strDir + "/log").c_str(), 3000, 2);
    }

    bool Initialize() override
    {
        GetLoop().WatchHandle(m_nLine, CKorEventLoop::EVENT_READABLE,
                              [this](unsigned int) { Answer(); });
        Work();
        return true;
    }
    int Finalize() override
    {
        Save(OPTIONS, "end");
        KorGetLog().Write(CKorLog::LEVEL_NOTICE, "ends after %u turns", m_nTurns);
        return CKorDaemonApplication::Finalize();
    }

private:
    void Work()
    {
        KorGetLog().Write(CKorLog::LEVEL_INFO, "turn %u", ++m_nTurns);
        Save(static_cast<int>(m_nTurns % OPTIONS), std::to_string(m_nTurns));
        if (m_nTurns == 3)
            Print("running ");
        GetLoop().Post([this] { Work(); });
    }
    void Save(int nOption, const std::string& strValue)
    {
        m_oSettings.WriteOption("section", OptionName(nOption).c_str(), strValue.c_str());
    }
    void Answer() const
    {
        char acRequest[64];
        const ssize_t nLength = read(m_nLine, acRequest, sizeof acRequest);
        if (nLength > 0)
            static_cast<void>(write(m_nLine, acRequest, static_cast<size_t>(nLength)) == nLength);
    }

    CKorIniFile m_oSettings;
    int m_nLine;
    unsigned int m_nTurns = 0;
};

/// Whether settings and log are as the program left them at its end.
void ExpectWholeFiles(const ScratchDir& oDir)
{
    CKorIniFile oSettings(oDir.File("settings").c_str(), CKorIniFile::PATH_UNCHANGED);
    EXPECT_EQ("end", oSettings.ReadOption("section", OptionName(OPTIONS).c_str(), ""));
    for (int nOption = 1; nOption <= 3; ++nOption)
        EXPECT_NE("", oSettings.ReadOption("section", OptionName(nOption).c_str(), ""));
    std::string strLast;
    for (const char* pszLog : {"log.2", "log.1", "log"}) {
        if (access(oDir.File(pszLog).c_str(), F_OK) != 0)
            continue;
        for (const std::string& strLine : Lines(ReadFile(oDir.File(pszLog))))
            strLast = WithoutTime(strLine);
    }
    EXPECT_EQ("notice: ends after ", strLast.substr(0, 19));
}

TEST(KorDaemonEnd, AtAnyMomentIsOrderlyAndPrompt)
{
    std::mt19937 oRandom(11);
    Clock::duration oLongest(0);
    for (int i = 0; i < 300 / TEST_SCALE; ++i) {
        const ScratchDir oDir;
        const PseudoTerminal oTerminal;
        oTerminal.MakeRaw();
        ChildProcess oChild([&] {
            const int nLine = open(oTerminal.Name(), O_RDWR | O_NOCTTY | O_NONBLOCK);
            return Busy(oDir.Path(), nLine).Start(0, nullptr);
        });
        ASSERT_TRUE(oChild.WaitForOutput("running "));
        oTerminal.Send("request");
        std::this_thread::sleep_for(std::chrono::microseconds(oRandom() % 5000));
        const Clock::time_point oSent = Clock::now();
        oChild.Signal(oRandom() % 2 == 0 ? SIGTERM : SIGINT);
        EXPECT_EQ(0, oChild.Wait().nExitStatus);
        oLongest = std::max(oLongest, Clock::now() - oSent);
        EXPECT_EQ("", oChild.Wait().strErr);
        ExpectWholeFiles(oDir);
    }
    EXPECT_LT(oLongest, std::chrono::seconds(20));
    RecordProperty(
        "longest_ms",
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(oLongest).count()));
}

} // namespace
