// Changing one option of an INI file: load, change, save, beside GLib's key files. Both sync the
// file to the disk; fsync() does nothing here, since the disk is not what is compared.

#include "config/KorOptionExchange.h"
#include "config/KorSafeIniFile.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <glib.h>
#include <string>
#include <unistd.h>

extern "C" int fsync(int)
{
    return 0;
}

namespace
{

constexpr int64_t OPTIONS_A_SECTION = 19;

/// A directory with a file of many lines for as long as the object lives.
class IniFile
{
public:
    explicit IniFile(int64_t nLines)
    {
        if (mkdtemp(m_szDirectory) == nullptr)
            std::abort();
        m_strName = std::string(m_szDirectory) + "/test.ini";
        std::ofstream oFile(m_strName);
        for (int64_t i = 0; i < nLines; ++i) {
            if (i % (OPTIONS_A_SECTION + 1) == 0)
                oFile << "[Section " << i / (OPTIONS_A_SECTION + 1) << "]\n";
            else
                oFile << "Option" << i % (OPTIONS_A_SECTION + 1) << "=value " << i << '\n';
        }
        m_strSection = "Section " + std::to_string(nLines / 2 / (OPTIONS_A_SECTION + 1));
    }
    ~IniFile()
    {
        unlink(m_strName.c_str());
        rmdir(m_szDirectory);
    }
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;

    const char* Name() const { return m_strName.c_str(); }
    /// A section in the middle.
    const char* Section() const { return m_strSection.c_str(); }

private:
    char m_szDirectory[32] = "/tmp/tarvo-bench-XXXXXX";
    std::string m_strName;
    std::string m_strSection;
};

/// One option of a program.
class Settings : public CKorSafeIniFile
{
public:
    explicit Settings(const IniFile& oFile)
        : CKorSafeIniFile(oFile.Name(), PATH_UNCHANGED), m_strSection(oFile.Section())
    {
    }
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        IOX_Std<std::string>(pExchange, m_strSection.c_str(), "Option5", m_strValue, "");
    }
    std::string m_strValue;

private:
    const std::string m_strSection;
};

void ChangeOne_WriteOption(benchmark::State& roState)
{
    const IniFile oFile(roState.range(0));
    Settings oSettings(oFile);
    int nValue = 0;
    for (auto _ : roState) {
        if (!oSettings.WriteOption(oFile.Section(), "Option5", std::to_string(++nValue).c_str()))
            roState.SkipWithError("not written");
    }
}
BENCHMARK(ChangeOne_WriteOption)->Arg(100)->Arg(1000000)->Unit(benchmark::kMillisecond);

void ChangeOne_UpdateOptions(benchmark::State& roState)
{
    const IniFile oFile(roState.range(0));
    Settings oSettings(oFile);
    int nValue = 0;
    for (auto _ : roState) {
        oSettings.m_strValue = std::to_string(++nValue);
        if (!oSettings.UpdateOptions(true))
            roState.SkipWithError("not written");
    }
}
BENCHMARK(ChangeOne_UpdateOptions)->Arg(100)->Arg(1000000)->Unit(benchmark::kMillisecond);

void ChangeOne_GKeyFile(benchmark::State& roState)
{
    const IniFile oFile(roState.range(0));
    int nValue = 0;
    for (auto _ : roState) {
        GKeyFile* const pKeyFile = g_key_file_new();
        g_key_file_load_from_file(pKeyFile, oFile.Name(), G_KEY_FILE_NONE, nullptr);
        g_key_file_set_string(pKeyFile, oFile.Section(), "Option5",
                              std::to_string(++nValue).c_str());
        if (g_key_file_save_to_file(pKeyFile, oFile.Name(), nullptr) == 0)
            roState.SkipWithError("not written");
        g_key_file_free(pKeyFile);
    }
}
BENCHMARK(ChangeOne_GKeyFile)->Arg(100)->Arg(1000000)->Unit(benchmark::kMillisecond);

} // namespace
