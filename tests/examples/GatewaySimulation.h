#pragma once

#include "event/KorEventLoop.h"
#include "examples/gateway/Poller.h"
#include "examples/meter/Meter.h"
#include "examples/meter/MeterLine.h"
#include "tests/examples/LoopUntil.h"
#include "tests/support/ScratchDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Simulated meters on a pseudo-terminal, served by the loop of the test.
class SimulatedLine
{
public:
    SimulatedLine(CKorEventLoop& oLoop, const std::vector<std::uint8_t>& vecUnits)
        : m_oLine(oLoop, MODBUS_REQUEST_LENGTH,
                  [this](const std::string& strRequest) { Answer(strRequest); })
    {
        for (const std::uint8_t nUnit : vecUnits)
            m_vecMeters.emplace_back(nUnit, MeterDisturbance());
    }

    const std::string& Device() const { return m_oLine.DeviceName(); }

private:
    void Answer(const std::string& strRequest)
    {
        for (Meter& oMeter : m_vecMeters) {
            const MeterAnswer oAnswer = oMeter.Answer(strRequest);
            if (!oAnswer.strTelegram.empty()) {
                EXPECT_TRUE(m_oLine.Send(oAnswer.strTelegram));
            }
        }
    }

    MeterLine m_oLine;
    std::vector<Meter> m_vecMeters;
};

/// Keeps what meters said.
class Collector : public ReadingSink
{
public:
    void Take(const Reading& oReading) override
    {
        m_mapReadings[oReading.m_strMeter].push_back(oReading);
    }
    void TakeStatistics(const std::string&, const std::string&) override {}

    std::size_t Count(const std::string& strMeter) { return m_mapReadings[strMeter].size(); }

    std::map<std::string, std::vector<Reading>> m_mapReadings;
};

/// A poller, its settings file and the lines that its meters are on, all on one loop.
class GatewaySimulation : public testing::Test
{
protected:
    /// Plugs meters in under a name that stays.
    void Plug(const std::string& strLine, const std::vector<std::uint8_t>& vecUnits)
    {
        m_mapLines[strLine] = std::make_unique<SimulatedLine>(m_oLoop, vecUnits);
        std::filesystem::create_symlink(m_mapLines[strLine]->Device(), m_oDir.File("new"));
        std::filesystem::rename(m_oDir.File("new"), m_oDir.File(strLine));
    }

    void Unplug(const std::string& strLine)
    {
        std::filesystem::remove(m_oDir.File(strLine));
        m_mapLines.erase(strLine);
    }

    /// The section of a line.
    std::string Line(const std::string& strLine, const std::string& strMore = "") const
    {
        return "[Line " + strLine + "]\nDevice=" + m_oDir.File(strLine) + "\nSpeed=115200\n" +
               strMore;
    }

    static std::string MeterOn(const std::string& strLine, const std::string& strMeter,
                               unsigned int nUnit, const std::string& strMore = "")
    {
        return "[Meter " + strMeter + "]\nLine=" + strLine + "\nUnit=" + std::to_string(nUnit) +
               "\nMap=simulated\nPollInterval=10\nTimeout=10000\n" + strMore;
    }

    void Apply(const std::string& strSettings)
    {
        WriteFile(m_oDir.File("gw.ini"), strSettings);
        GatewaySettings oSettings(m_oDir.File("gw.ini").c_str(), CKorIniFile::PATH_UNCHANGED);
        ASSERT_TRUE(oSettings.Load()) << oSettings.GetFindings()[0].m_strText;
        m_oPoller.Apply(oSettings);
    }

    template <typename TTest>
    bool RunUntil(TTest fnHolds)
    {
        return LoopUntil(m_oLoop, fnHolds);
    }

    bool RunUntilRead(const std::string& strMeter, std::size_t nTimes)
    {
        return RunUntil([&] { return m_oSink.Count(strMeter) >= nTimes; });
    }

    /// The poller's meter of a name.
    const PolledMeter& Polled(const std::string& strMeter) const
    {
        for (const auto& pMeter : m_oPoller.Meters()) {
            if (pMeter->Settings().m_strName == strMeter)
                return *pMeter;
        }
        ADD_FAILURE() << strMeter;
        return *m_oPoller.Meters()[0];
    }

    const ScratchDir m_oDir;
    CKorEventLoop m_oLoop;
    Collector m_oSink;
    std::map<std::string, std::unique_ptr<SimulatedLine>> m_mapLines;
    Poller m_oPoller{m_oLoop, m_oSink};
};
