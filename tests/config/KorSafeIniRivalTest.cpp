// What becomes of an INI file that others write at the same time: other writers, or an editor.

#include "tests/config/SafeIniFaultTest.h"
#include "tests/support/CallWatch.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"

#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <signal.h>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace
{

using KorSafeIniRival = KorSafeIniFault;

/// Adds to a counter of its own again and again. A turn that does not come in the time that a
/// writer waits is asked for once more.
void Count(const std::string& strFile, const std::string& strOption, int nTimes)
{
    ValueSettings oFile(strFile);
    for (int i = 1; i <= nTimes; ++i) {
        while (!oFile.WriteOption("S", strOption.c_str(), std::to_string(i).c_str()))
            ASSERT_EQ(EBUSY, oFile.GetLastError());
    }
}

TEST_F(KorSafeIniRival, AFileChangedByHandBetweenReadingAndReplacingIsNotOverwritten)
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
        ValueSettings oFile(m_strFile);
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

TEST_F(KorSafeIniRival, AFileReplacedByHandDuringTheLastLookAtItIsNotOverwritten)
{
    WriteFile(m_strFile, Text("0"));
    WriteFile(m_oDir.File("hand"), Text("9"));
    ValueSettings oFile(m_strFile);
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

TEST_F(KorSafeIniRival, AFileChangedWithoutATraceInItsTimesIsNotOverwritten)
{
    WriteFile(m_strFile, Text("0"));
    const int hFile = open(m_strFile.c_str(), O_RDWR);
    void* const pMapping = mmap(nullptr, 8, PROT_READ | PROT_WRITE, MAP_SHARED, hFile, 0);
    ASSERT_NE(MAP_FAILED, pMapping);
    // A page that has been written to takes further bytes without a new time stamp.
    char* const pValue = static_cast<char*>(pMapping) + 6;
    *pValue = '0';
    ValueSettings oFile(m_strFile);
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

TEST_F(KorSafeIniRival, AFileMadeByHandWhileItIsMadeIsNotOverwritten)
{
    ValueSettings oFile(m_strFile);
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

TEST_F(KorSafeIniRival, AWriterThatWaitsTwoSecondsFails)
{
    WriteFile(m_strFile, Text("0"));
    ChildProcess oHolder([this] {
        ValueSettings oFile(m_strFile);
        const CallWatch oWatch([](const std::string& strCall) {
            if (strCall == "fsync")
                pause(); // in the middle of its turn
            return 0;
        });
        return oFile.WriteOption("S", "a", "1") ? 0 : 1;
    });
    while (Names().size() < 2)
        std::this_thread::yield();
    ValueSettings oFile(m_strFile);
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

TEST_F(KorSafeIniRival, WritersInProcessesKeepEachOthersOptions)
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
        ValueSettings oFile(m_strFile);
        for (int i = 0; i < nWriters; ++i)
            EXPECT_EQ("25", oFile.ReadOption("S", ("c" + std::to_string(i)).c_str(), "none"));
    }
    EXPECT_EQ(1U, Names().size());
}

TEST_F(KorSafeIniRival, WritersInThreadsKeepEachOthersOptions)
{
    for (const int nWriters : {2, 4}) {
        WriteFile(m_strFile, "[S]\n");
        std::vector<std::thread> vecWriters;
        for (int i = 0; i < nWriters; ++i)
            vecWriters.emplace_back([this, i] { Count(m_strFile, "c" + std::to_string(i), 25); });
        for (std::thread& oWriter : vecWriters)
            oWriter.join();
        ValueSettings oFile(m_strFile);
        for (int i = 0; i < nWriters; ++i)
            EXPECT_EQ("25", oFile.ReadOption("S", ("c" + std::to_string(i)).c_str(), "none"));
    }
    EXPECT_EQ(1U, Names().size());
}

TEST_F(KorSafeIniRival, ReadersBesideWritersSeeWholeFiles)
{
    WriteFile(m_strFile, Text("0"));
    std::vector<std::unique_ptr<ChildProcess>> vecWriters;
    for (int i = 0; i < 2; ++i)
        vecWriters.push_back(std::make_unique<ChildProcess>([this] { return WriteForEver(); }));
    ASSERT_TRUE(WaitUntil([this] { return Content() != Text("0"); }));
    CKorIniFile oPlain(m_strFile.c_str(), CKorIniFile::PATH_UNCHANGED);
    ValueSettings oSafe(m_strFile);
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ("end", oPlain.ReadOption("S", "z", "none"));
        ASSERT_EQ("end", oSafe.ReadOption("S", "z", "none"));
    }
}

} // namespace
