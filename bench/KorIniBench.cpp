// INI files, beside GLib's key files: reading a file and freeing the document, looking a value up,
// and updates of all options of a program.

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <fstream>
#include <glib.h>
#include <numeric>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int OPTIONS_A_SECTION = 19;

std::string Section(int64_t nLine)
{
    return "Section " + std::to_string(nLine / (OPTIONS_A_SECTION + 1));
}

std::string Option(int64_t nLine)
{
    return "Option" + std::to_string(nLine % (OPTIONS_A_SECTION + 1));
}

bool IsHeader(int64_t nLine)
{
    return nLine % (OPTIONS_A_SECTION + 1) == 0;
}

/// A file of its own for as long as the object lives.
class IniFile
{
public:
    IniFile() { close(mkstemp(m_szName)); }
    explicit IniFile(int64_t nLines) : IniFile()
    {
        std::ofstream oFile(m_szName);
        for (int64_t i = 0; i < nLines; ++i) {
            if (IsHeader(i))
                oFile << '[' << Section(i) << "]\n";
            else
                oFile << Option(i) << "=value " << i << '\n';
        }
    }
    ~IniFile() { unlink(m_szName); }
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;
    const char* Name() const { return m_szName; }

private:
    char m_szName[32] = "/tmp/tarvo-bench-XXXXXX";
};

enum EOrder
{
    IN_ORDER, // as a program asks for its options
    SHUFFLED  // as no cache foresees
};

/// Names of the options of a file.
struct Names
{
    Names(int64_t nLines, int64_t nOrder)
    {
        std::vector<int64_t> vecLines(static_cast<size_t>(nLines));
        std::iota(vecLines.begin(), vecLines.end(), 0);
        if (nOrder == SHUFFLED)
            std::shuffle(vecLines.begin(), vecLines.end(), std::mt19937(1));
        for (const int64_t nLine : vecLines) {
            if (!IsHeader(nLine))
                m_vecNames.emplace_back(Section(nLine), Option(nLine));
        }
    }
    const std::pair<std::string, std::string>& Next()
    {
        m_nNext = m_nNext + 1 < m_vecNames.size() ? m_nNext + 1 : 0;
        return m_vecNames[m_nNext];
    }

    std::vector<std::pair<std::string, std::string>> m_vecNames;
    size_t m_nNext = 0;
};

void SetLineTime(benchmark::State& oState)
{
    oState.counters["a_line"] = benchmark::Counter(static_cast<double>(oState.range(0)),
                                                   benchmark::Counter::kIsIterationInvariantRate |
                                                       benchmark::Counter::kInvert);
}

void Load(benchmark::State& oState)
{
    const IniFile oText(oState.range(0));
    CKorIniFile oFile(oText.Name(), CKorIniFile::PATH_UNCHANGED);
    while (oState.KeepRunning())
        benchmark::DoNotOptimize(CKorIniOptionExchange(&oFile, false));
    SetLineTime(oState);
}

void LoadGKeyFile(benchmark::State& oState)
{
    const IniFile oText(oState.range(0));
    while (oState.KeepRunning()) {
        GKeyFile* const pFile = g_key_file_new();
        if (!g_key_file_load_from_file(pFile, oText.Name(), G_KEY_FILE_KEEP_COMMENTS, nullptr))
            oState.SkipWithError("cannot be read");
        g_key_file_free(pFile);
    }
    SetLineTime(oState);
}

void LookUp(benchmark::State& oState)
{
    const IniFile oText(oState.range(0));
    CKorIniFile oFile(oText.Name(), CKorIniFile::PATH_UNCHANGED);
    CKorIniOptionExchange oExchange(&oFile, false);
    Names oNames(oState.range(0), oState.range(1));
    std::string strValue;
    while (oState.KeepRunning()) {
        const auto& [strSection, strOption] = oNames.Next();
        if (!oExchange.GetOptionString(strSection.c_str(), strOption.c_str(), strValue))
            oState.SkipWithError("no such option");
    }
}

void LookUpGKeyFile(benchmark::State& oState)
{
    const IniFile oText(oState.range(0));
    GKeyFile* const pFile = g_key_file_new();
    g_key_file_load_from_file(pFile, oText.Name(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
    Names oNames(oState.range(0), oState.range(1));
    while (oState.KeepRunning()) {
        const auto& [strSection, strOption] = oNames.Next();
        char* const pszValue =
            g_key_file_get_value(pFile, strSection.c_str(), strOption.c_str(), nullptr);
        if (pszValue == nullptr)
            oState.SkipWithError("no such option");
        g_free(pszValue);
    }
    g_key_file_free(pFile);
}

/// A program with as many options as lines are asked for.
class Program : public CKorIniFile
{
public:
    Program(const char* pszName, int64_t nLines)
        : CKorIniFile(pszName, PATH_UNCHANGED), m_nLines(nLines)
    {
    }
    using CKorIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        for (int64_t i = 0; i < m_nLines; ++i) {
            if (!IsHeader(i))
                IOX_Std<std::string>(pExchange, Section(i).c_str(), Option(i).c_str(), m_strValue,
                                     "");
        }
    }

private:
    const int64_t m_nLines;
    std::string m_strValue = "value";
};

void UpdateReading(benchmark::State& oState)
{
    const IniFile oText(oState.range(0));
    Program oProgram(oText.Name(), oState.range(0));
    while (oState.KeepRunning())
        oProgram.UpdateOptions(false);
    SetLineTime(oState);
}

/// Each time into a new file.
void UpdateWriting(benchmark::State& oState)
{
    while (oState.KeepRunning()) {
        const IniFile oText;
        Program(oText.Name(), oState.range(0)).UpdateOptions(true);
    }
    SetLineTime(oState);
}

BENCHMARK(Load)->Arg(200)->Arg(10000)->Arg(1000000);
BENCHMARK(LoadGKeyFile)->Arg(200)->Arg(10000)->Arg(1000000);
BENCHMARK(LookUp)->ArgsProduct({{200, 10000}, {IN_ORDER, SHUFFLED}});
BENCHMARK(LookUpGKeyFile)->ArgsProduct({{200, 10000}, {IN_ORDER, SHUFFLED}});
BENCHMARK(UpdateReading)->Arg(200)->Arg(10000)->Arg(100000);
BENCHMARK(UpdateWriting)->Arg(200)->Arg(10000)->Arg(100000);

} // namespace
