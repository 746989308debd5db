/// @file
/// What a line costs that holds much, many lines that are waited for at once, and one that nobody
/// uses.

#include "bench/FarEnd.h"
#include "event/KorEventLoop.h"
#include "serial/KorSerialLine.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <time.h>
#include <vector>

namespace
{

/// Takes a held line while so many bytes are held.
void TakeFromHeld(benchmark::State& oState)
{
    const std::size_t nHeld = static_cast<std::size_t>(oState.range(0));
    std::string strData;
    for ([[maybe_unused]] auto oStep : oState) {
        FarEnd oFarEnd;
        CKorSerialLine oLine;
        oLine.Open(oFarEnd.Name().c_str());
        for (std::size_t n = LENGTH; n <= nHeld; n += LENGTH) {
            oFarEnd.Send();
            if (n % 2048 == 0) // the terminal's room is small
                oLine.ReadBytes(static_cast<unsigned int>(n) + 1, strData, 1);
        }
        while (oLine.GetHeldCount() < nHeld)
            oLine.ReadBytes(static_cast<unsigned int>(nHeld) + 1, strData, 1);
        const double nStart = CpuSeconds();
        while (oLine.ReadUntil("\n", strData, 0) == CKorSerial::SERIAL_OK) {
        }
        oState.SetIterationTime(CpuSeconds() - nStart);
    }
    oState.SetBytesProcessed(oState.iterations() * oState.range(0));
}
BENCHMARK(TakeFromHeld)
    ->ArgName("held")
    ->RangeMultiplier(8)
    ->Range(16384, 1048576)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMicrosecond);

/// Searches all of the held bytes in vain as they come in, many times.
void SearchHeld(benchmark::State& oState)
{
    const std::size_t nHeld = static_cast<std::size_t>(oState.range(0));
    std::string strData;
    for ([[maybe_unused]] auto oStep : oState) {
        FarEnd oFarEnd;
        CKorSerialLine oLine;
        oLine.Open(oFarEnd.Name().c_str());
        const double nStart = CpuSeconds();
        for (std::size_t n = 0; n < nHeld; n += LENGTH) {
            oFarEnd.Send();
            oLine.ReadUntil("??", strData, 0, 0xFFFFFFFF);
        }
        oState.SetIterationTime(CpuSeconds() - nStart);
    }
    oState.SetBytesProcessed(oState.iterations() * oState.range(0));
}
BENCHMARK(SearchHeld)
    ->ArgName("held")
    ->RangeMultiplier(8)
    ->Range(16384, 1048576)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

/// So many lines in one event loop: the processor time for one line of text.
void EventLoop(benchmark::State& oState)
{
    struct SPort
    {
        FarEnd m_oFarEnd;
        CKorSerialLine m_oLine;
    };
    CKorEventLoop oLoop;
    std::vector<std::unique_ptr<SPort>> vecPorts;
    std::string strData;
    std::size_t nReceived = 0;
    for (int i = 0; i < oState.range(0); ++i) {
        vecPorts.push_back(std::make_unique<SPort>());
        CKorSerialLine& rLine = vecPorts.back()->m_oLine;
        rLine.Open(vecPorts.back()->m_oFarEnd.Name().c_str());
        oLoop.WatchHandle(rLine.GetHandle(), CKorEventLoop::EVENT_READABLE, [&](unsigned int) {
            while (rLine.Read(4096, strData, 0) == CKorSerial::SERIAL_OK)
                nReceived += strData.size();
        });
    }
    std::size_t nSent = 0;
    for ([[maybe_unused]] auto oStep : oState) {
        double nTime = 0;
        for (int nRound = 0; nRound < 6400 / oState.range(0); ++nRound) {
            for (const auto& pPort : vecPorts)
                nSent += pPort->m_oFarEnd.Send() ? LENGTH : 0;
            const double nStart = CpuSeconds();
            while (nReceived < nSent)
                oLoop.RunOnce(TIMEOUT);
            nTime += CpuSeconds() - nStart;
        }
        oState.SetIterationTime(nTime / 6400);
    }
}
BENCHMARK(EventLoop)
    ->ArgName("lines")
    ->Arg(1)
    ->Arg(8)
    ->Arg(64)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMicrosecond);

/// How often an open line that nobody uses makes the process run.
void IdleLine(benchmark::State& oState)
{
    FarEnd oFarEnd;
    CKorSerialLine oLine;
    oLine.Open(oFarEnd.Name().c_str());
    if (oState.range(0) != 0)
        oLine.StartReception([](const char*, unsigned int) {}, nullptr);
    for ([[maybe_unused]] auto oStep : oState) {
        rusage oBefore;
        rusage oAfter;
        const timespec oTime = {2, 0};
        getrusage(RUSAGE_SELF, &oBefore);
        nanosleep(&oTime, nullptr);
        getrusage(RUSAGE_SELF, &oAfter);
        // One is this thread's own, for its sleep.
        oState.counters["wake_ups"] = static_cast<double>(oAfter.ru_nvcsw - oBefore.ru_nvcsw - 1);
    }
}
BENCHMARK(IdleLine)->ArgName("reception")->Arg(0)->Arg(1)->Iterations(1)->UseRealTime();

} // namespace
