// All zones of the system beside Python's zoneinfo. What it says is printed by ZonePeer.py, which
// also describes the lines.

#include "tests/support/Emulation.h"
#include "tests/time/InstantSupport.h"
#include "tests/time/PythonPeer.h"
#include "time/KorTimeZone.h"

#include <cinttypes>
#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>

namespace
{

struct SZone
{
    std::string strName;
    CKorTimeZone oZone;
};

std::vector<SZone> LoadAll(const std::string& strNames)
{
    std::istringstream oNames(strNames);
    std::vector<SZone> vecZones;
    for (SZone oZone; oNames >> oZone.strName; vecZones.push_back(oZone))
        EXPECT_TRUE(oZone.oZone.Load(oZone.strName.c_str())) << oZone.strName;
    return vecZones;
}

void CompareInstant(const std::vector<SZone>& vecZones, const char* pszFields)
{
    std::int64_t nSeconds = 0;
    int nOffset = 0;
    int nSummerTime = 0;
    char szAbbreviation[16] = "";
    ASSERT_EQ(4, sscanf(pszFields, "%" SCNd64 "%d%d%15s", &nSeconds, &nOffset, &nSummerTime,
                        szAbbreviation));
    const CKorUTCTime oTime = TimeOfUnix(nSeconds);
    for (const SZone& oZone : vecZones) {
        ASSERT_EQ(nOffset, oZone.oZone.GetOffset(oTime)) << oZone.strName << pszFields;
        ASSERT_EQ(nSummerTime != 0, oZone.oZone.IsSummerTime(oTime)) << oZone.strName << pszFields;
        ASSERT_EQ(szAbbreviation, oZone.oZone.GetAbbreviation(oTime)) << oZone.strName << pszFields;
    }
}

void CompareReading(const std::vector<SZone>& vecZones, const char* pszFields)
{
    int n[6] = {};
    int nKind = 0;
    std::int64_t nEarlier = 0;
    std::int64_t nLater = 0;
    ASSERT_EQ(9, sscanf(pszFields, "%d%d%d%d%d%d%d%" SCNd64 "%" SCNd64, &n[0], &n[1], &n[2], &n[3],
                        &n[4], &n[5], &nKind, &nEarlier, &nLater));
    for (const SZone& oZone : vecZones) {
        const CKorTimeZone& o = oZone.oZone;
        ASSERT_EQ(nKind, o.GetKind(n[0], n[1], n[2], n[3], n[4], n[5]))
            << oZone.strName << pszFields;
        ASSERT_EQ(TimeOfUnix(nEarlier), o.ToUtc(n[0], n[1], n[2], n[3], n[4], n[5]))
            << oZone.strName << pszFields;
        ASSERT_EQ(TimeOfUnix(nLater),
                  o.ToUtc(n[0], n[1], n[2], n[3], n[4], n[5], CKorTimeZone::CHOICE_LATER))
            << oZone.strName << pszFields;
    }
}

constexpr int PARTS = 8;

class KorTimeZonePeer : public testing::TestWithParam<int>
{
};

TEST_P(KorTimeZonePeer, AgreesOnEveryZoneAroundItsChanges)
{
    const int nParts = UnderEmulation() ? 20 * PARTS : PARTS; // a sample, which is slow enough
    const std::vector<std::string> vecLines = LinesOfPython(
        {ZONE_PEER, "/usr/share/zoneinfo", std::to_string(GetParam()), std::to_string(nParts)});
    ASSERT_FALSE(vecLines.empty());
    std::vector<SZone> vecZones;
    for (const std::string& strLine : vecLines) {
        const char* const pszFields = strLine.c_str() + 1;
        if (strLine[0] == 'Z')
            vecZones = LoadAll(pszFields);
        else if (strLine[0] == 'U')
            CompareInstant(vecZones, pszFields);
        else
            CompareReading(vecZones, pszFields);
        if (HasFatalFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(Parts, KorTimeZonePeer, testing::Range(0, PARTS));

} // namespace
