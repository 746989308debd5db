// Cutting a path into its parts: the library's four, and the two of GLib.

#include "fs/KorPathFunc.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <string>

namespace
{

constexpr const char* PATHS[] = {
    "/opt/gw/gateway.bin",
    "/usr/local/bin/gateway.bin",
    "/usr/local/lib/tarvo/bin/gateway.bin",
};

const char* PathOf(const benchmark::State& oState)
{
    const char* pszPath = PATHS[oState.range(0)];
    benchmark::DoNotOptimize(pszPath);
    return pszPath;
}

void PathBySplitPath(benchmark::State& oState)
{
    std::string strDrive;
    std::string strDir;
    std::string strTitle;
    std::string strExt;
    for ([[maybe_unused]] auto oStep : oState) {
        SplitPath(PathOf(oState), &strDrive, &strDir, &strTitle, &strExt);
        benchmark::DoNotOptimize(strTitle.data());
    }
}
BENCHMARK(PathBySplitPath)->DenseRange(0, 2);

/// The same into texts that are new each time.
void PathBySplitPathAnew(benchmark::State& oState)
{
    for ([[maybe_unused]] auto oStep : oState) {
        std::string strDrive;
        std::string strDir;
        std::string strTitle;
        std::string strExt;
        SplitPath(PathOf(oState), &strDrive, &strDir, &strTitle, &strExt);
        benchmark::DoNotOptimize(strTitle.data());
    }
}
BENCHMARK(PathBySplitPathAnew)->DenseRange(0, 2);

void PathByGLib(benchmark::State& oState)
{
    for ([[maybe_unused]] auto oStep : oState) {
        char* const pszDir = g_path_get_dirname(PathOf(oState));
        char* const pszName = g_path_get_basename(PathOf(oState));
        benchmark::DoNotOptimize(pszDir);
        benchmark::DoNotOptimize(pszName);
        g_free(pszDir);
        g_free(pszName);
    }
}
BENCHMARK(PathByGLib)->DenseRange(0, 2);

} // namespace
