#pragma once

#include <cstdio>
#include <cstdlib>
#include <random>

/// The seed of a test with random choices; it is printed and can be given again in
/// TARVO_TEST_SEED.
inline unsigned TestSeed()
{
    const char* pszSeed = std::getenv("TARVO_TEST_SEED");
    const unsigned nSeed = pszSeed != nullptr
                               ? static_cast<unsigned>(std::strtoul(pszSeed, nullptr, 10))
                               : std::random_device()();
    std::printf("TARVO_TEST_SEED=%u\n", nSeed);
    return nSeed;
}
