#include "time/KorTimeDiff.h"
#include "time/KorUTCTime.h"

#include <atomic>
#include <gtest/gtest.h>
#include <ios>
#include <sstream>
#include <thread>
#include <vector>

// A program of its own: everywhere else the words of the streams are given away before.

namespace
{

constexpr int THREADS = 4;

/// Lets all threads call fnSetFlag at once, on a stream each.
/// @return how many words of the streams that took
template <typename TSetFlag>
int WordsTakenBy(TSetFlag fnSetFlag)
{
    const int nBefore = std::ios_base::xalloc();
    std::atomic<int> nReady(0);
    std::vector<std::thread> vecThreads;
    for (int i = 0; i < THREADS; ++i) {
        vecThreads.emplace_back([&nReady, fnSetFlag] {
            std::ostringstream oStream;
            ++nReady;
            while (nReady < THREADS)
                std::this_thread::yield();
            fnSetFlag(oStream);
        });
    }
    for (std::thread& oThread : vecThreads)
        oThread.join();
    return std::ios_base::xalloc() - nBefore - 1;
}

TEST(KorFormatSlot, ThreadsThatSetTheirFirstTimeFormatAtOnceShareOneWord)
{
    const auto fnSetFlag = [](std::ostream& oStream) {
        CKorUTCTime::SetTimeFlag(oStream, CKorUTCTime::eTime);
        oStream << CKorUTCTime(5, 3, 2024, 14, 7, 9, 0, 0, 0);
        EXPECT_EQ("14:07:09", static_cast<std::ostringstream&>(oStream).str());
    };
    EXPECT_EQ(1, WordsTakenBy(fnSetFlag));
    EXPECT_EQ(0, WordsTakenBy(fnSetFlag));
}

TEST(KorFormatSlot, ThreadsThatSetTheirFirstSpanFormatAtOnceShareOneWord)
{
    const auto fnSetFlag = [](std::ostream& oStream) {
        CKorTimeDiff::SetDiffTimeFlag(oStream, CKorTimeDiff::eDiffHhMmSs);
        oStream << CKorTimeDiff(0, 1, 2, 3, 500, 0, 0);
        EXPECT_EQ("1:02:03", static_cast<std::ostringstream&>(oStream).str());
    };
    EXPECT_EQ(1, WordsTakenBy(fnSetFlag));
    EXPECT_EQ(0, WordsTakenBy(fnSetFlag));
}

} // namespace
