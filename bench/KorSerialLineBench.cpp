/// @file
/// What a line costs beside a loop written by hand, libserialport, Asio and Qt: receiving a
/// mebibyte in lines, asking and being answered.

#include "bench/SerialLinePeers.h"

#include <benchmark/benchmark.h>

namespace
{

/// The receiver's processor time for all lines.
template <typename TLine>
void Receive(benchmark::State& oState)
{
    for ([[maybe_unused]] auto oStep : oState) {
        FarEnd oFarEnd;
        TLine oLine(oFarEnd.Name());
        std::string strLine;
        oFarEnd.StartSending();
        const double nStart = CpuSeconds();
        for (std::size_t i = 0; i < LINES; ++i) {
            if (!oLine.ReadLine(strLine) || strLine != LINE)
                return oState.SkipWithError("not all was received");
        }
        oState.SetIterationTime(CpuSeconds() - nStart);
    }
}

/// One request and its answer.
template <typename TLine>
void Ask(benchmark::State& oState)
{
    FarEnd oFarEnd;
    TLine oLine(oFarEnd.Name());
    std::string strLine;
    oFarEnd.StartAnswering();
    for ([[maybe_unused]] auto oStep : oState) {
        if (!oLine.WriteLine() || !oLine.ReadLine(strLine) || strLine != LINE)
            return oState.SkipWithError("no answer");
    }
}

#define PEERS(Operation, settings)                                                                 \
    BENCHMARK_TEMPLATE(Operation, HandWritten) settings;                                           \
    BENCHMARK_TEMPLATE(Operation, ByKorSerialLine) settings;                                       \
    BENCHMARK_TEMPLATE(Operation, ByLibserialport) settings;                                       \
    BENCHMARK_TEMPLATE(Operation, ByAsio) settings;                                                \
    BENCHMARK_TEMPLATE(Operation, ByQt) settings

PEERS(Receive, ->UseManualTime()->Iterations(1)->Repetitions(15)->ReportAggregatesOnly()->Unit(
                   benchmark::kMillisecond));
PEERS(Ask, ->UseRealTime()->Iterations(1000)->Repetitions(15)->ReportAggregatesOnly()->Unit(
               benchmark::kMicrosecond));

} // namespace
