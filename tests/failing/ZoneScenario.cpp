// Time zones: one that is loaded by its name, and the process's own after a change of TZ.

#include "tests/failing/Scenarios.h"
#include "time/KorTimeZone.h"

#include <cstdlib>
#include <ctime>

namespace
{

class CZones : public CScenario
{
public:
    void Prepare() override
    {
        setenv("TZ", "UTC", 1);
        tzset(); // what the C library keeps does not depend on whether it was asked
    }
    void Run() override
    {
        LoadByName();
        FollowTheProcess();
    }

private:
    void LoadByName()
    {
        CKorTimeZone oZone;
        const bool bLoaded = Succeeds(
            "a zone is loaded", [&] { return oZone.Load("Europe/Berlin"); },
            [&] { Expect(oZone.GetOffset(m_oSummer) == 0, "a failure leaves a zone as it was"); });
        Expect(oZone.GetOffset(m_oSummer) == (bLoaded ? 7200 : 0),
               "a zone that was loaded is used");
    }
    void FollowTheProcess()
    {
        Show(0);
        {
            const CBeside oBeside;
            setenv("TZ", "America/New_York", 1);
        }
        Show(-4 * 3600);
        const CBeside oBeside;
        tzset();
    }
    void Show(int nOffset)
    {
        Succeeds("the process's zone is followed",
                 [&] { return KorGetUtcOffset(m_oSummer) == nOffset; });
    }

    CKorUTCTime m_oSummer = CKorUTCTime(1, 7, 2026, 12, 0, 0, 0, 0, 0);
};

} // namespace

CScenario* MakeZone(const std::string&)
{
    return new CZones;
}
