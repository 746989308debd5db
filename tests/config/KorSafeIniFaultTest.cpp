// What is left of an INI file when saving it fails, is cut short or meets another writer, and what
// the result says of it.

#include "config/KorOptionExchange.h"
#include "config/KorSafeIniFile.h"
#include "tests/support/CallWatch.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Confinement.h"
#include "tests/support/Emulation.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

/// Sets the option "a" to the value that it is given and all others to "1".
class Settings : public CKorSafeIniFile
{
public:
    explicit Settings(const std::string& strFile) : CKorSafeIniFile(strFile.c_str(), PATH_UNCHANGED)
    {
    }
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        pExchange->SetOptionString("S", "a", m_strValue.c_str());
    }
    std::string m_strValue;
};

class KorSafeIniFault : public testing::Test
{
protected:
    static constexpr size_t FILLING = 20000;

    static std::string Text(const std::string& strValue)
    {
        return "[S]\na=" + strValue + "\n# " + std::string(FILLING, '-') + "\nz=end\n";
    }
    std::string Content() const { return ReadFile(m_strFile); }
    std::vector<std::string> Names() const
    {
        std::vector<std::string> vecNames;
        for (const auto& oEntry : std::filesystem::directory_iterator(m_oDir.Path()))
            vecNames.push_back(oEntry.path().filename());
        return vecNames;
    }
    /// Whether the file is the text with some number as value.
    bool IsWhole() const
    {
        Settings oFile(m_strFile);
        return Content() == Text(oFile.ReadOption("S", "a", "none"));
    }
    /// Adds to a counter of its own again and again.
    static void Count(const std::string& strFile, const std::string& strOption, int nTimes)
    {
        Settings oFile(strFile);
        for (int i = 1; i <= nTimes; ++i)
            EXPECT_TRUE(oFile.WriteOption("S", strOption.c_str(), std::to_string(i).c_str()))
                << oFile.GetLastError();
    }
    int WriteForEver() const
    {
        Settings oFile(m_strFile);
        for (unsigned int i = 0;; ++i) {
            if (!oFile.WriteOption("S", "a", std::to_string(i).c_str()))
                return oFile.GetLastError();
        }
    }

    ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("test.ini");
};

TEST_F(KorSafeIniFault, EachCallThatFailsIsToldAndLeavesAWholeFile)
{
    WriteFile(m_strFile, Text("0"));
    Settings oFile(m_strFile);
    bool bResult = false;
    std::string strFound;
    const auto fnLook = [&](const std::string& strFailed) {
        strFound += Content() == Text("1") ? "1" : Content() == Text("0") ? "0" : "?";
        EXPECT_EQ(strFailed.empty(), bResult) << strFailed;
        EXPECT_EQ(strFailed.empty() ? 0 : EIO, oFile.GetLastError()) << strFailed;
        EXPECT_EQ(strFailed.empty(), oFile.GetFindings().empty());
        EXPECT_EQ(strFound.back() == '1', oFile.WasWritten()) << strFailed;
        EXPECT_EQ(1U, Names().size());
        WriteFile(m_strFile, Text("0"));
    };
    // Read, lock, read in turn, replace with a last look at the old file, sync the directory.
    EXPECT_EQ("open read read open open read read open open write fchown fsync open read read "
              "rename fsync ",
              FailEachCall(
                  EIO, [&] { bResult = oFile.WriteOption("S", "a", "1"); }, fnLook));
    EXPECT_EQ("000000000000000011", strFound);
}

TEST_F(KorSafeIniFault, AnExchangeThatCannotBeSavedIsTold)
{
    WriteFile(m_strFile, Text("0"));
    Settings oFile(m_strFile);
    oFile.m_strValue = "1";
    const CallWatch oWatch(
        [](const std::string& strCall) { return strCall == "rename" ? EIO : 0; });
    EXPECT_FALSE(oFile.UpdateOptions(true));
    EXPECT_EQ(EIO, oFile.GetLastError());
    EXPECT_FALSE(oFile.WasWritten());
    EXPECT_EQ(Text("0"), Content());
}

TEST_F(KorSafeIniFault, AKilledWriterLeavesAWholeFileAndNothingThatStays)
{
    const int nRounds = UnderEmulation() ? 15 : 300;
    std::mt19937 oRandom(1);
    WriteFile(m_strFile, Text("0"));
    for (int i = 0; i < nRounds; ++i) {
        ChildProcess oChild([this] { return WriteForEver(); });
        std::this_thread::sleep_for(std::chrono::microseconds(oRandom() % 20000));
        oChild.Signal(SIGKILL);
        ASSERT_EQ(SIGKILL, oChild.Wait().nSignal);
        ASSERT_TRUE(IsWhole());
        ASSERT_GE(2U, Names().size());
    }
    EXPECT_TRUE(Settings(m_strFile).WriteOption("S", "a", "last"));
    EXPECT_EQ(1U, Names().size());
    EXPECT_EQ(Text("last"), Content());
}

TEST_F(KorSafeIniFault, AFullDiskIsTold)
{
    InChild([this] {
        // Where mounting is not permitted, the calls fail as on a full disk.
        const bool bSmall = MountSmallDisk(m_oDir.Path());
        WriteFile(m_strFile, Text("0"));
        Settings oFile(m_strFile);
        std::unique_ptr<CallWatch> pWatch;
        if (!bSmall) {
            pWatch = std::make_unique<CallWatch>(
                [](const std::string& strCall) { return strCall == "write" ? ENOSPC : 0; });
        }
        EXPECT_FALSE(oFile.WriteOption("S", "a", std::string(60000, '1').c_str()));
        EXPECT_EQ(ENOSPC, oFile.GetLastError());
        EXPECT_FALSE(oFile.WasWritten());
        pWatch.reset();
        EXPECT_EQ(Text("0"), Content());
        EXPECT_TRUE(oFile.WriteOption("S", "a", "1"));
        EXPECT_EQ(Text("1"), Content());
    });
}

TEST_F(KorSafeIniFault, ASizeLimitIsTold)
{
    WriteFile(m_strFile, Text("0"));
    InChild([this] {
        const struct rlimit oLimit = {Text("0").size(), Text("0").size()};
        ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &oLimit));
        Settings oFile(m_strFile);
        EXPECT_FALSE(oFile.WriteOption("S", "a", "10"));
        EXPECT_EQ(EFBIG, oFile.GetLastError());
        EXPECT_EQ(Text("0"), Content());
        EXPECT_TRUE(oFile.WriteOption("S", "a", "1"));
    });
    EXPECT_EQ(Text("1"), Content());
}

TEST_F(KorSafeIniFault, AReadOnlyDirectoryIsTold)
{
    WriteFile(m_strFile, Text("0"));
    ASSERT_EQ(0, chmod(m_oDir.Path().c_str(), 0555));
    InChild([this] {
        DropPrivileges();
        Settings oFile(m_strFile);
        EXPECT_FALSE(oFile.WriteOption("S", "a", "1"));
        EXPECT_EQ(EACCES, oFile.GetLastError());
        EXPECT_TRUE(oFile.WriteOption("S", "a", "0"));
        EXPECT_EQ(Text("0"), Content());
    });
    ASSERT_EQ(0, chmod(m_oDir.Path().c_str(), 0755));
}

TEST_F(KorSafeIniFault, AFileChangedByHandBetweenReadingAndReplacingIsNotOverwritten)
{
    // As long as the old one, and in place: neither the size nor the inode tells.
    const auto fnRewrite = [this] { WriteFile(m_strFile, Text("9")); };
    const auto fnReplace = [this] {
        WriteFile(m_oDir.File("hand"), Text("0"));
        std::filesystem::rename(m_oDir.File("hand"), m_strFile);
    };
    const auto fnRemove = [this] { std::filesystem::remove(m_strFile); };
    for (const std::function<void()>& fnByHand :
         {std::function<void()>(fnRewrite), std::function<void()>(fnReplace),
          std::function<void()>(fnRemove)}) {
        WriteFile(m_strFile, Text("0"));
        Settings oFile(m_strFile);
        int nSyncs = 0;
        const CallWatch oWatch([&](const std::string& strCall) {
            if (strCall == "fsync" && nSyncs++ == 0)
                fnByHand();
            return 0;
        });
        EXPECT_FALSE(oFile.WriteOption("S", "a", "1"));
        EXPECT_EQ(ESTALE, oFile.GetLastError());
        EXPECT_FALSE(oFile.WasWritten());
        EXPECT_TRUE(!std::filesystem::exists(m_strFile) || Content() != Text("1"));
        EXPECT_GE(1U, Names().size());
        EXPECT_TRUE(oFile.WriteOption("S", "a", "1"));
    }
}

TEST_F(KorSafeIniFault, AFileReplacedByHandDuringTheLastLookAtItIsNotOverwritten)
{
    WriteFile(m_strFile, Text("0"));
    WriteFile(m_oDir.File("hand"), Text("9"));
    Settings oFile(m_strFile);
    bool bFilled = false;
    const CallWatch oWatch([&](const std::string& strCall) {
        bFilled = bFilled || strCall == "fsync";
        if (bFilled && strCall == "read" && std::filesystem::exists(m_oDir.File("hand")))
            std::filesystem::rename(m_oDir.File("hand"), m_strFile);
        return 0;
    });
    EXPECT_FALSE(oFile.WriteOption("S", "a", "1"));
    EXPECT_EQ(ESTALE, oFile.GetLastError());
    EXPECT_FALSE(oFile.WasWritten());
    EXPECT_EQ(Text("9"), Content());
}

TEST_F(KorSafeIniFault, AFileChangedWithoutATraceInItsTimesIsNotOverwritten)
{
    WriteFile(m_strFile, Text("0"));
    const int hFile = open(m_strFile.c_str(), O_RDWR);
    void* const pMapping = mmap(nullptr, 8, PROT_READ | PROT_WRITE, MAP_SHARED, hFile, 0);
    ASSERT_NE(MAP_FAILED, pMapping);
    // A page that has been written to takes further bytes without a new time stamp.
    char* const pValue = static_cast<char*>(pMapping) + 6;
    *pValue = '0';
    Settings oFile(m_strFile);
    {
        const CallWatch oWatch([&](const std::string& strCall) {
            *pValue = strCall == "fsync" ? '9' : *pValue;
            return 0;
        });
        EXPECT_FALSE(oFile.WriteOption("S", "a", "1"));
    }
    EXPECT_EQ(ESTALE, oFile.GetLastError());
    EXPECT_EQ(Text("9"), Content());
    munmap(pMapping, 8);
    close(hFile);
}

TEST_F(KorSafeIniFault, AFileMadeByHandWhileItIsMadeIsNotOverwritten)
{
    Settings oFile(m_strFile);
    int nSyncs = 0;
    const CallWatch oWatch([&](const std::string& strCall) {
        if (strCall == "fsync" && nSyncs++ == 0)
            WriteFile(m_strFile, "");
        return 0;
    });
    EXPECT_FALSE(oFile.WriteOption("S", "a", "1"));
    EXPECT_EQ(ESTALE, oFile.GetLastError());
    EXPECT_EQ("", Content());
}

TEST_F(KorSafeIniFault, AWriterThatWaitsTwoSecondsFails)
{
    WriteFile(m_strFile, Text("0"));
    ChildProcess oHolder([this] {
        Settings oFile(m_strFile);
        const CallWatch oWatch([](const std::string& strCall) {
            if (strCall == "fsync")
                pause(); // in the middle of its turn
            return 0;
        });
        return oFile.WriteOption("S", "a", "1") ? 0 : 1;
    });
    while (Names().size() < 2)
        std::this_thread::yield();
    Settings oFile(m_strFile);
    oFile.m_strValue = "2";
    EXPECT_FALSE(oFile.UpdateOptions(true));
    EXPECT_EQ(EBUSY, oFile.GetLastError());
    EXPECT_FALSE(oFile.WasWritten());
    EXPECT_EQ("0", oFile.ReadOption("S", "a", "none")); // a reader does not wait
    EXPECT_TRUE(oFile.WriteOption("S", "a", "0"));      // nor who has nothing to write
    oHolder.Signal(SIGKILL);
    oHolder.Wait();
    EXPECT_TRUE(oFile.UpdateOptions(true));
    EXPECT_EQ(Text("2"), Content());
    EXPECT_EQ(1U, Names().size());
}

TEST_F(KorSafeIniFault, WritersInProcessesKeepEachOthersOptions)
{
    for (const int nWriters : {2, 4}) {
        WriteFile(m_strFile, "[S]\n");
        std::vector<std::unique_ptr<ChildProcess>> vecWriters;
        for (int i = 0; i < nWriters; ++i) {
            vecWriters.push_back(std::make_unique<ChildProcess>([this, i] {
                Count(m_strFile, "c" + std::to_string(i), 25);
                return HasFailure() ? 1 : 0;
            }));
        }
        for (const auto& pWriter : vecWriters)
            EXPECT_EQ(0, pWriter->Wait().nExitStatus) << pWriter->OutputSoFar();
        Settings oFile(m_strFile);
        for (int i = 0; i < nWriters; ++i)
            EXPECT_EQ("25", oFile.ReadOption("S", ("c" + std::to_string(i)).c_str(), "none"));
    }
    EXPECT_EQ(1U, Names().size());
}

TEST_F(KorSafeIniFault, WritersInThreadsKeepEachOthersOptions)
{
    for (const int nWriters : {2, 4}) {
        WriteFile(m_strFile, "[S]\n");
        std::vector<std::thread> vecWriters;
        for (int i = 0; i < nWriters; ++i)
            vecWriters.emplace_back([this, i] { Count(m_strFile, "c" + std::to_string(i), 25); });
        for (std::thread& oWriter : vecWriters)
            oWriter.join();
        Settings oFile(m_strFile);
        for (int i = 0; i < nWriters; ++i)
            EXPECT_EQ("25", oFile.ReadOption("S", ("c" + std::to_string(i)).c_str(), "none"));
    }
    EXPECT_EQ(1U, Names().size());
}

TEST_F(KorSafeIniFault, ReadersBesideWritersSeeWholeFiles)
{
    WriteFile(m_strFile, Text("0"));
    std::vector<std::unique_ptr<ChildProcess>> vecWriters;
    for (int i = 0; i < 2; ++i)
        vecWriters.push_back(std::make_unique<ChildProcess>([this] { return WriteForEver(); }));
    CKorIniFile oPlain(m_strFile.c_str(), CKorIniFile::PATH_UNCHANGED);
    Settings oSafe(m_strFile);
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ("end", oPlain.ReadOption("S", "z", "none"));
        ASSERT_EQ("end", oSafe.ReadOption("S", "z", "none"));
    }
}

} // namespace
