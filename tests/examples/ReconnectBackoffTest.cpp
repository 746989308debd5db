#include "examples/gateway/ReconnectBackoff.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace
{

TEST(ReconnectBackoff, WaitsLongerTheMoreAttemptsFailedUpToTheLongest)
{
    unsigned int nLimit = ReconnectBackoff::FIRST_LIMIT_MS;
    std::vector<ReconnectBackoff> vecBackoffs;
    for (std::uint32_t nSeed = 1; nSeed <= 500; ++nSeed)
        vecBackoffs.emplace_back(60000, nSeed);
    for (int nAttempt = 0; nAttempt < 10; ++nAttempt) {
        unsigned int nLongest = 0;
        for (ReconnectBackoff& rBackoff : vecBackoffs)
            nLongest = std::max(nLongest, rBackoff.Next());
        EXPECT_LE(nLongest, nLimit);
        EXPECT_GT(nLongest, nLimit / 10 * 9);
        nLimit = std::min(nLimit * 2, 60000U);
    }
    vecBackoffs[0].Reset();
    EXPECT_LE(vecBackoffs[0].Next(), ReconnectBackoff::FIRST_LIMIT_MS);
}

TEST(ReconnectBackoff, SpreadsGatewaysEvenly)
{
    std::vector<int> vecCounts(10);
    for (std::uint32_t nSeed = 1; nSeed <= 10000; ++nSeed) {
        const unsigned int nWait = ReconnectBackoff(60000, nSeed * 7919).Next();
        EXPECT_GE(nWait, ReconnectBackoff::LEAST_MS);
        ++vecCounts[(nWait - ReconnectBackoff::LEAST_MS) * 10 /
                    (ReconnectBackoff::FIRST_LIMIT_MS - ReconnectBackoff::LEAST_MS + 1)];
    }
    EXPECT_GT(*std::min_element(vecCounts.begin(), vecCounts.end()), 800);
}

TEST(ReconnectBackoff, NeverGrowsBeyondItsRange)
{
    for (const unsigned int nLongest : {0U, 1U, 3000000000U, 4294967295U}) {
        ReconnectBackoff oBackoff(nLongest, 1);
        for (int nAttempt = 0; nAttempt < 100; ++nAttempt)
            EXPECT_LE(oBackoff.Next(), std::max(nLongest, ReconnectBackoff::FIRST_LIMIT_MS));
    }
}

} // namespace
