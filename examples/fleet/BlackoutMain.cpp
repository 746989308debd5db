/// @file
/// Simulates how a fleet of gateways returns to a broker that was away, with different ways to wait
/// between two attempts. The broker takes so many connections a second and refuses what comes
/// beyond; all gateways lost it in the same instant.
/// usage: blackout.bin GATEWAYS CONNECTIONS-A-SECOND SECONDS-AWAY [CSV-FILE]

#include "examples/gateway/ReconnectBackoff.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <queue>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr std::size_t LONGEST_S = 3600;

/// Gives the wait before each attempt of one gateway, in milliseconds.
using Waits = std::function<unsigned int()>;

/// A way to wait, by gateway.
struct Strategy
{
    const char* m_pszName;
    std::function<Waits(std::uint32_t nGateway)> m_fnMake;
};

Waits Doubling()
{
    return [nWait = 1000U]() mutable { return std::exchange(nWait, std::min(nWait * 2, 64000U)); };
}

Waits Random(unsigned int nLongestMs, std::uint32_t nGateway)
{
    return
        [oBackoff = ReconnectBackoff(nLongestMs, nGateway)]() mutable { return oBackoff.Next(); };
}

const std::vector<Strategy> STRATEGIES = {
    {"every 5 s", [](std::uint32_t) { return Waits([] { return 5000U; }); }},
    {"doubling 1 to 64 s", [](std::uint32_t) { return Doubling(); }},
    {"random up to 60 s", [](std::uint32_t n) { return Random(60000, n); }},
    {"random up to 300 s", [](std::uint32_t n) { return Random(300000, n); }},
};

/// What a second of the simulation saw.
struct Second
{
    unsigned int m_nAttempts = 0;
    unsigned int m_nTaken = 0;
};

struct Scene
{
    unsigned int m_nGateways;
    unsigned int m_nRate;
    unsigned int m_nAway;
};

/// Every second until all gateways are back, or for an hour.
std::vector<Second> Play(const Scene& oScene, const Strategy& oStrategy)
{
    using Attempt = std::pair<std::uint64_t, std::uint32_t>; // when, in ms, and who
    std::priority_queue<Attempt, std::vector<Attempt>, std::greater<>> queAttempts;
    std::vector<Waits> vecWaits;
    for (std::uint32_t n = 0; n < oScene.m_nGateways; ++n) {
        vecWaits.push_back(oStrategy.m_fnMake(n + 1));
        queAttempts.emplace(vecWaits.back()(), n);
    }
    std::vector<Second> vecSeconds;
    while (!queAttempts.empty() && vecSeconds.size() < LONGEST_S) {
        const auto [nTime, nGateway] = queAttempts.top();
        queAttempts.pop();
        const auto nSecond = static_cast<std::size_t>(nTime / 1000);
        vecSeconds.resize(std::max(vecSeconds.size(), nSecond + 1));
        Second& rNow = vecSeconds[nSecond];
        ++rNow.m_nAttempts;
        if (nSecond >= oScene.m_nAway && rNow.m_nTaken < oScene.m_nRate)
            ++rNow.m_nTaken;
        else
            queAttempts.emplace(nTime + vecWaits[nGateway](), nGateway);
    }
    return vecSeconds;
}

/// The seconds after the broker's return until so many gateways were back; -1 for never.
long SecondsUntil(const std::vector<Second>& vecSeconds, const Scene& oScene, double dPart)
{
    double dBack = 0;
    for (std::size_t n = 0; n < vecSeconds.size(); ++n) {
        dBack += vecSeconds[n].m_nTaken;
        if (dBack >= dPart * oScene.m_nGateways)
            return static_cast<long>(n) + 1 - static_cast<long>(oScene.m_nAway);
    }
    return -1;
}

void PrintRow(const Scene& oScene, const Strategy& oStrategy, const std::vector<Second>& vecSeconds)
{
    unsigned int nPeak = 0;
    double dAttempts = 0;
    for (std::size_t n = oScene.m_nAway; n < vecSeconds.size(); ++n) {
        nPeak = std::max(nPeak, vecSeconds[n].m_nAttempts);
        dAttempts += vecSeconds[n].m_nAttempts;
    }
    std::printf("| %s | %ld | %ld | %ld | %u | %.1f |\n", oStrategy.m_pszName,
                SecondsUntil(vecSeconds, oScene, 0.5), SecondsUntil(vecSeconds, oScene, 0.99),
                SecondsUntil(vecSeconds, oScene, 1), nPeak, dAttempts / oScene.m_nGateways);
}

/// Attempts a second of each strategy, a column each.
void WriteCsv(const char* pszFile, const std::vector<std::vector<Second>>& vecPlays)
{
    std::FILE* const pFile = std::fopen(pszFile, "w");
    if (pFile == nullptr)
        return std::perror(pszFile);
    std::fputs("second", pFile);
    for (const Strategy& oStrategy : STRATEGIES)
        std::fprintf(pFile, ",%s", oStrategy.m_pszName);
    std::size_t nLongest = 0;
    for (const auto& vecSeconds : vecPlays)
        nLongest = std::max(nLongest, vecSeconds.size());
    for (std::size_t n = 0; n < nLongest; ++n) {
        std::fprintf(pFile, "\n%zu", n);
        for (const auto& vecSeconds : vecPlays)
            std::fprintf(pFile, ",%u", n < vecSeconds.size() ? vecSeconds[n].m_nAttempts : 0);
    }
    std::fputs("\n", pFile);
    std::fclose(pFile);
}

unsigned int Number(const char* pszText)
{
    return static_cast<unsigned int>(std::strtoul(pszText, nullptr, 10));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4 || Number(argv[1]) == 0 || Number(argv[2]) == 0) {
        std::fputs("usage: blackout.bin GATEWAYS CONNECTIONS-A-SECOND SECONDS-AWAY [CSV-FILE]\n",
                   stderr);
        return 2;
    }
    const Scene oScene = {Number(argv[1]), Number(argv[2]), Number(argv[3])};
    std::vector<std::vector<Second>> vecPlays;
    std::puts("| Wait between attempts | half back, s | 99 % | all | most attempts in a second "
              "| attempts a gateway |\n|---|---:|---:|---:|---:|---:|");
    for (const Strategy& oStrategy : STRATEGIES) {
        vecPlays.push_back(Play(oScene, oStrategy));
        PrintRow(oScene, oStrategy, vecPlays.back());
    }
    if (argc > 4)
        WriteCsv(argv[4], vecPlays);
    return 0;
}
