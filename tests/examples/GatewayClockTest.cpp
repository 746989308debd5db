// Somebody sets the clock while meters are polled.

#include "tests/examples/GatewaySimulation.h"
#include "time/KorTimeout.h"

#include <cstdint>

extern int64_t g_nClockStep;

namespace
{

class GatewayClock : public GatewaySimulation
{
protected:
    void TearDown() override { g_nClockStep = 0; }

    /// Expects that meters are polled as often as before after the clock was set.
    void ExpectSameTurnsAfter(int64_t nSeconds)
    {
        const CKorUTCTime oBefore = m_oSink.m_mapReadings["m"].back().m_oTime;
        const std::size_t nRead = m_oSink.Count("m");
        g_nClockStep = nSeconds;
        const CKorStopwatch oWatch;
        ASSERT_TRUE(RunUntilRead("m", nRead + 6));
        EXPECT_GE(oWatch.GetElapsed().GetTotalMilliSeconds(), 500) << "five intervals";
        const CKorUTCTime oAfter = m_oSink.m_mapReadings["m"].back().m_oTime;
        EXPECT_EQ(nSeconds > 0, oAfter > oBefore) << "readings carry the time that the clock shows";
    }
};

TEST_F(GatewayClock, LeavesTheTurnsOfMetersAlone)
{
    Plug("bus", {1});
    Apply(Line("bus") + "[Meter m]\nLine=bus\nMap=simulated\nPollInterval=100\nTimeout=10000\n");
    ASSERT_TRUE(RunUntilRead("m", 3));
    ExpectSameTurnsAfter(365 * 86400);
    ExpectSameTurnsAfter(-365 * 86400);
}

} // namespace
