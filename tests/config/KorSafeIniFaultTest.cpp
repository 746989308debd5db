// What is left of an INI file when saving it fails or is cut short, and what the result says of it.

#include "tests/config/SafeIniFaultTest.h"
#include "tests/support/CallWatch.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Confinement.h"
#include "tests/support/Emulation.h"

#include <cerrno>
#include <chrono>
#include <memory>
#include <random>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace
{

TEST_F(KorSafeIniFault, EachCallThatFailsIsToldAndLeavesAWholeFile)
{
    WriteFile(m_strFile, Text("0"));
    ValueSettings oFile(m_strFile);
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
    ValueSettings oFile(m_strFile);
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
    EXPECT_TRUE(ValueSettings(m_strFile).WriteOption("S", "a", "last"));
    EXPECT_EQ(1U, Names().size());
    EXPECT_EQ(Text("last"), Content());
}

TEST_F(KorSafeIniFault, AFullDiskIsTold)
{
    InChild([this] {
        // Where mounting is not permitted, the calls fail as on a full disk.
        const bool bSmall = MountSmallDisk(m_oDir.Path());
        WriteFile(m_strFile, Text("0"));
        ValueSettings oFile(m_strFile);
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
        ValueSettings oFile(m_strFile);
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
        ValueSettings oFile(m_strFile);
        EXPECT_FALSE(oFile.WriteOption("S", "a", "1"));
        EXPECT_EQ(EACCES, oFile.GetLastError());
        EXPECT_TRUE(oFile.WriteOption("S", "a", "0"));
        EXPECT_EQ(Text("0"), Content());
    });
    ASSERT_EQ(0, chmod(m_oDir.Path().c_str(), 0755));
}

} // namespace
