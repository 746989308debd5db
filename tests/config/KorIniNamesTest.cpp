// How the hash of names fills the table of an index: numbered names, which most large files have,
// must not crowd together in it.

#include "config/KorIniNamesDetail.h"
#include "tests/config/IniPlaces.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace
{

class KorIniNames : public testing::TestWithParam<const char*>
{
};

TEST_P(KorIniNames, NumberedOnesDoNotCrowdTogether)
{
    for (const size_t nNames : {10000U, 190000U}) {
        Places oPlaces(nNames);
        size_t nSteps = 0;
        for (size_t n = 0; n < nNames; ++n) {
            char szName[64];
            std::snprintf(szName, sizeof szName, GetParam(), static_cast<unsigned int>(n));
            nSteps += oPlaces.Take(CKorIniNameRule(false).Hash(szName, 0));
        }
        EXPECT_LT(nSteps, 4 * nNames) << nNames << " names";
    }
}

INSTANTIATE_TEST_SUITE_P(Patterns, KorIniNames,
                         testing::Values("%u", "%X", "S%u", "Abcd%u", "Section %u", "Meter_%06u",
                                         "line %u settings", "sensor.%u.temperature"));

} // namespace
