#include "tests/serial/LineTestPeer.h"
#include "tests/support/SerialResult.h"

#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace
{

std::atomic<unsigned int> s_nAllocations{0};

} // namespace

void* operator new(std::size_t nSize)
{
    ++s_nAllocations;
    if (void* const pMemory = std::malloc(nSize))
        return pMemory;
    throw std::bad_alloc();
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

TEST(KorSerialLineMemory, RequestsAndAnswersIntoStringsWithRoomAllocateNothing)
{
    TestLine oTest;
    const std::string strRequest(64, 'q');
    const std::string strDelimiter = "the end of an answer";
    const std::string strAnswer = std::string(2000, 'a') + strDelimiter;
    std::string strData;
    strData.reserve(8000);
    const auto fnExchange = [&]() {
        ASSERT_EQ(OK, SerialResult(oTest.m_oLine.WriteText(strRequest, LONG)));
        ASSERT_EQ(OK, SerialResult(oTest.m_oLine.ReadUntil(strDelimiter, strData, LONG)));
    };
    ASSERT_EQ(0, fcntl(oTest.m_oPeer.FarEnd(), F_SETFL, O_NONBLOCK));
    const auto fnRound = [&]() {
        ASSERT_EQ(static_cast<ssize_t>(strAnswer.size()),
                  write(oTest.m_oPeer.FarEnd(), strAnswer.data(), strAnswer.size()));
        fnExchange();
        char acRequest[64];
        while (read(oTest.m_oPeer.FarEnd(), acRequest, sizeof acRequest) > 0) {
        }
    };
    fnRound();
    const unsigned int nBefore = s_nAllocations;
    for (int i = 0; i < 100; ++i)
        fnRound();
    EXPECT_EQ(nBefore, s_nAllocations);
    EXPECT_EQ(strAnswer, strData);
}
