// The gateway's readings, from their coming until the next start of the program.

#include "app/KorLog.h"
#include "examples/gateway/ReadingStore.h"
#include "tests/failing/Beside.h"
#include "tests/failing/Scenarios.h"
#include "tests/support/EntriesOf.h"
#include "tests/support/Patience.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace
{

class CStore : public CScenario
{
public:
    explicit CStore(const std::string& strDirectory) : m_strDirectory(strDirectory)
    {
        m_oSettings.m_strFile = strDirectory + "/disk/readings";
        m_oSettings.m_strMemoryDir = strDirectory + "/memory";
        KorGetLog().UseFile("/dev/null", 0, 0);
    }
    void Prepare() override
    {
        m_nThreads = EntriesOf("/proc/self/task");
        Empty(m_strDirectory);
        std::filesystem::create_directory(m_strDirectory + "/disk");
        // What stays for the life of a process: the zone of the log, the stacks of threads.
        KorGetLog().Write(CKorLog::LEVEL_ERROR, "%s", std::strerror(EIO));
        HaveStacks(4);
        std::filesystem::create_directory(m_oSettings.m_strMemoryDir);
    }
    void Run() override
    {
        m_nTaken = 0;
        m_nTold = 0;
        m_bClosed = false;
        {
            ReadingStore oStore(m_oSettings);
            Work(oStore);
            m_nTold = oStore.Dropped() + oStore.Damaged();
        }
        const CBeside oBeside;
        StartAgain();
        // What syncs aside ends by itself; an emulator has threads of its own.
        WaitUntil([this] { return EntriesOf("/proc/self/task") <= m_nThreads; });
    }

private:
    static constexpr int READINGS = 6;

    /// Has so many threads at the same time.
    static void HaveStacks(int nThreads)
    {
        if (nThreads > 0)
            std::thread([nThreads] { HaveStacks(nThreads - 1); }).join();
    }

    void Work(ReadingStore& rStore)
    {
        Succeeds("a store is opened", [&] { return rStore.Open(); });
        for (int n = 0; n < READINGS; ++n) {
            Take(rStore, n);
            if (n == READINGS / 2)
                Succeeds("readings are written", [&] { return rStore.Flush(true); });
        }
        m_bClosed = Succeeds("a store is closed", [&] {
            rStore.Close();
            return true;
        });
    }
    /// One that memory ran out for may be there or not.
    void Take(ReadingStore& rStore, int nNumber)
    {
        const bool bTaken = Succeeds("a reading is taken", [&] {
            rStore.Append(std::to_string(nNumber));
            return true;
        });
        m_nTaken |= bTaken ? 1U << nNumber : 0U;
    }

    void StartAgain()
    {
        ReadingStore oStore(m_oSettings);
        Expect(oStore.Open(), "a store is opened at the next start");
        unsigned int nFound = 0;
        JournalRecord oRecord;
        for (std::uint64_t nLast = 0; oStore.FindAfter(nLast, oRecord);) {
            Expect(oRecord.m_nSequence > nLast, "numbers rise");
            nLast = oRecord.m_nSequence;
            nFound |= 1U << std::atoi(oRecord.m_strContent.c_str());
        }
        const unsigned int nLost = m_nTaken & ~nFound;
        Expect(nLost == 0 || m_nTold > 0 || !m_bClosed,
               "a reading that was taken is there or told as lost");
        Expect(nLost == 0 || m_bForGood || m_strFailing == "read",
               "a reading is lost only when it cannot be read");
        // The number of a reading that memory ran out for is missing.
        Expect(oStore.Damaged() == 0 || m_strFailing == "read" || m_strFailing == "memory",
               "no reading is damaged");
    }

    const std::string m_strDirectory;
    StoreSettings m_oSettings;
    unsigned int m_nTaken = 0;
    std::uint64_t m_nTold = 0;
    bool m_bClosed = false;
    std::ptrdiff_t m_nThreads = 0;
};

} // namespace

CScenario* MakeStore(const std::string& strDirectory)
{
    return new CStore(strDirectory);
}
