// Dumps of one mebibyte: the library's, one written with stream operators byte by byte, and the
// programs xxd and hexdump on a file of the same bytes. All output goes to /dev/null.

#include "text/KorMemDump.h"

#include <benchmark/benchmark.h>
#include <cctype>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iomanip>
#include <random>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr unsigned int SIZE = 1024 * 1024;

const std::string& Block()
{
    static const std::string strBlock = [] {
        std::mt19937 oRandom(1);
        std::string strBytes(SIZE, '\0');
        for (char& c : strBytes)
            c = static_cast<char>(oRandom());
        return strBytes;
    }();
    return strBlock;
}

/// A file of the same bytes for as long as the program runs.
class BlockFile
{
public:
    BlockFile()
    {
        close(mkstemp(m_szName));
        std::ofstream(m_szName, std::ios::binary) << Block();
    }
    ~BlockFile() { unlink(m_szName); }
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;
    const char* Name() const { return m_szName; }

private:
    char m_szName[32] = "/tmp/tarvo-bench-XXXXXX";
};

void WriteToNull(const std::string& strText)
{
    static const int nNull = open("/dev/null", O_WRONLY);
    benchmark::DoNotOptimize(write(nNull, strText.data(), strText.size()));
}

void SetRate(benchmark::State& oState)
{
    oState.SetBytesProcessed(static_cast<int64_t>(oState.iterations()) * SIZE);
}

void AppendLineByStream(std::ostringstream& oStream, unsigned int nOffset)
{
    oStream << "0x" << std::setw(4) << nOffset << ' ';
    for (unsigned int i = 0; i < 16; ++i)
        oStream << std::setw(2) << (Block()[nOffset + i] & 0xFF) << (i == 7 ? "  " : " ");
    for (unsigned int i = 0; i < 16; ++i)
        oStream << (std::isprint(Block()[nOffset + i] & 0xFF) ? Block()[nOffset + i] : '.');
    oStream << '\n';
}

void StreamOperators(benchmark::State& oState)
{
    while (oState.KeepRunning()) {
        std::ostringstream oStream;
        oStream << std::hex << std::setfill('0');
        for (unsigned int nOffset = 0; nOffset < SIZE; nOffset += 16)
            AppendLineByStream(oStream, nOffset);
        WriteToNull(oStream.str());
    }
    SetRate(oState);
}

void MemDump(benchmark::State& oState)
{
    while (oState.KeepRunning())
        WriteToNull(KorMemDump(Block().data(), SIZE, 0xFFFFFFFF, 0xFFFFFFFF));
    SetRate(oState);
}

/// Runs a program with its standard output in /dev/null.
bool Run(std::vector<std::string>& vecArgs)
{
    std::vector<char*> vecPointers;
    vecPointers.reserve(vecArgs.size() + 1);
    for (std::string& strArg : vecArgs)
        vecPointers.push_back(strArg.data());
    vecPointers.push_back(nullptr);

    posix_spawn_file_actions_t oActions;
    posix_spawn_file_actions_init(&oActions);
    posix_spawn_file_actions_addopen(&oActions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t nChild = -1;
    int nStatus = -1;
    if (posix_spawnp(&nChild, vecPointers[0], &oActions, nullptr, vecPointers.data(), environ) == 0)
        waitpid(nChild, &nStatus, 0);
    posix_spawn_file_actions_destroy(&oActions);
    return nStatus == 0;
}

void RunOnFile(benchmark::State& oState, std::vector<std::string> vecArgs)
{
    BlockFile oFile;
    vecArgs.emplace_back(oFile.Name());
    while (oState.KeepRunning()) {
        if (!Run(vecArgs)) {
            oState.SkipWithError("the program cannot be run");
            break;
        }
    }
    SetRate(oState);
}

void ProgramXxd(benchmark::State& oState)
{
    RunOnFile(oState, {"xxd"});
}

void ProgramHexdump(benchmark::State& oState)
{
    RunOnFile(oState, {"hexdump", "-C"});
}

/// What starting any program costs, to be taken off the figures of the two programs.
void StartOfAProgram(benchmark::State& oState)
{
    std::vector<std::string> vecArgs = {"true"};
    while (oState.KeepRunning())
        benchmark::DoNotOptimize(Run(vecArgs));
}

/// Dumps of other sizes: what a byte costs does not depend on how many there are.
void MemDumpOfSize(benchmark::State& oState)
{
    const unsigned int nSize = static_cast<unsigned int>(oState.range(0));
    while (oState.KeepRunning())
        benchmark::DoNotOptimize(KorMemDump(Block().data(), nSize, 0xFFFFFFFF, 0xFFFFFFFF).data());
    oState.counters["s_per_byte"] =
        benchmark::Counter(static_cast<double>(oState.iterations()) * nSize,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(MemDumpOfSize)->Arg(4096)->Arg(SIZE);
BENCHMARK(MemDump)->Unit(benchmark::kMillisecond);
BENCHMARK(StreamOperators)->Unit(benchmark::kMillisecond);
BENCHMARK(ProgramXxd)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ProgramHexdump)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(StartOfAProgram)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
