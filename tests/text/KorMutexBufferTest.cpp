#include "text/KorMutexBuffer.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

/// While set, this thread gets no memory.
thread_local bool bMemoryIsShort = false;

} // namespace

// Not inlined, or the compiler sees new end in malloc and delete in free and warns.
[[gnu::noinline]] void* operator new(std::size_t nSize)
{
    void* const pMemory = bMemoryIsShort ? nullptr : std::malloc(nSize);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    return pMemory;
}

[[gnu::noinline]] void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

[[gnu::noinline]] void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

namespace
{

std::string AllByteValues()
{
    std::string strBytes;
    for (int nByte = 0; nByte < 256; ++nByte)
        strBytes += static_cast<char>(nByte);
    return strBytes;
}

constexpr int PRODUCERS = 4;

/// Shows what only derived classes see.
class OpenBuffer : public CKorMutexBuffer
{
public:
    using CKorMutexBuffer::m_oMutex;
    using CKorMutexBuffer::m_sBuffer;
};

TEST(KorMutexBuffer, IsEmptyAfterConstruction)
{
    CKorMutexBuffer oBuffer;
    EXPECT_EQ(0U, oBuffer.GetLength());
    EXPECT_EQ("", oBuffer.GetBuffer());
}

TEST(KorMutexBuffer, HoldsTheTextBeforeTheMutexAndNothingElse)
{
    struct Layout
    {
        void* pVirtualTable;
        std::string sBuffer;
        CKorMutex oMutex;
    };
    OpenBuffer oBuffer;
    const char* const pBuffer = reinterpret_cast<const char*>(&oBuffer);
    const std::ptrdiff_t nText = reinterpret_cast<const char*>(&oBuffer.m_sBuffer) - pBuffer;
    const std::ptrdiff_t nMutex = reinterpret_cast<const char*>(&oBuffer.m_oMutex) - pBuffer;
    EXPECT_EQ(sizeof(void*), static_cast<std::size_t>(nText));
    EXPECT_EQ(sizeof(Layout) - sizeof(CKorMutex), static_cast<std::size_t>(nMutex));
    EXPECT_EQ(sizeof(Layout), sizeof(CKorMutexBuffer));
}

TEST(KorMutexBuffer, CanBeDeletedThroughItsBase)
{
    EXPECT_TRUE(std::has_virtual_destructor<CKorMutexBuffer>::value);
    const std::unique_ptr<CKorMutexBuffer> pBuffer = std::make_unique<OpenBuffer>();
    pBuffer->AddString("x");
    EXPECT_EQ("x", pBuffer->GetBuffer());
}

TEST(KorMutexBuffer, AppendsInOrder)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddChar('a');
    oBuffer.AddString("bc");
    oBuffer.AddString("");
    oBuffer.AddChar('d');
    EXPECT_EQ("abcd", oBuffer.GetBuffer());
    EXPECT_EQ(4U, oBuffer.GetLength());
}

TEST(KorMutexBuffer, LookingNeverDrains)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("ABC");
    EXPECT_EQ("ABC", oBuffer.GetBuffer());
    EXPECT_EQ("ABC", oBuffer.GetBuffer());
    EXPECT_EQ(3U, oBuffer.GetLength());
}

TEST(KorMutexBuffer, ContainsTheEmptyTextAlways)
{
    CKorMutexBuffer oBuffer;
    EXPECT_TRUE(oBuffer.ContainsString(""));
    oBuffer.AddString("ABC");
    EXPECT_TRUE(oBuffer.ContainsString(""));
}

TEST(KorMutexBuffer, ContainsATextAnywhere)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("ABCDE");
    EXPECT_TRUE(oBuffer.ContainsString("AB"));
    EXPECT_TRUE(oBuffer.ContainsString("CD"));
    EXPECT_TRUE(oBuffer.ContainsString("E"));
    EXPECT_FALSE(oBuffer.ContainsString("AC"));
    EXPECT_FALSE(oBuffer.ContainsString("ABCDEF"));
}

TEST(KorMutexBuffer, ClearBufferDiscardsEverything)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("ABC");
    oBuffer.ClearBuffer();
    EXPECT_EQ(0U, oBuffer.GetLength());
    oBuffer.AddChar('x');
    EXPECT_EQ("x", oBuffer.GetBuffer());
}

TEST(KorMutexBuffer, RemovesTheFirstCharacters)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("ABCDEF");
    EXPECT_EQ("ABC", oBuffer.RemoveString(3));
    EXPECT_EQ("DEF", oBuffer.GetBuffer());
    EXPECT_EQ("", oBuffer.RemoveString(0));
    EXPECT_EQ("DEF", oBuffer.GetBuffer());
}

TEST(KorMutexBuffer, RemovesEverythingWhenAskedForMoreThanItHolds)
{
    CKorMutexBuffer oBuffer;
    for (const unsigned int nCount : {4U, 10U, 0xFFFFFFFFU}) {
        oBuffer.AddString("ABCD");
        EXPECT_EQ("ABCD", oBuffer.RemoveString(nCount)) << nCount;
        EXPECT_EQ(0U, oBuffer.GetLength());
        EXPECT_EQ("", oBuffer.RemoveString(nCount));
    }
}

TEST(KorMutexBuffer, RemovesUpToAndIncludingTheFirstDelimiter)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("AB\r\nCD\r\nEF");
    EXPECT_EQ("AB\r\n", oBuffer.RemoveString("\r\n"));
    EXPECT_EQ("CD\r\nEF", oBuffer.GetBuffer());
    EXPECT_EQ("CD\r\n", oBuffer.RemoveString("\r\n"));
    EXPECT_EQ("EF", oBuffer.GetBuffer());
}

TEST(KorMutexBuffer, RemovesNothingWithoutTheDelimiter)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("ABCD");
    EXPECT_EQ("", oBuffer.RemoveString("\r\n"));
    EXPECT_EQ("ABCD", oBuffer.GetBuffer());
}

TEST(KorMutexBuffer, AnEmptyDelimiterRemovesNothing)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddString("ABCD");
    EXPECT_EQ("", oBuffer.RemoveString(""));
    EXPECT_EQ("ABCD", oBuffer.GetBuffer());
}

TEST(KorMutexBuffer, KeepsEveryByteValue)
{
    CKorMutexBuffer oBuffer;
    oBuffer.AddChar('\0');
    oBuffer.AddChar('\0');
    EXPECT_EQ(2U, oBuffer.GetLength());
    EXPECT_EQ(std::string(2, '\0'), oBuffer.RemoveString(2));

    const std::string strAll = AllByteValues();
    oBuffer.AddString(strAll);
    for (const char c : strAll)
        oBuffer.AddChar(c);
    EXPECT_EQ(strAll + strAll, oBuffer.GetBuffer());
    EXPECT_TRUE(oBuffer.ContainsString(std::string("\xFF\x00", 2)));
    EXPECT_EQ(std::string(1, '\0'), oBuffer.RemoveString(std::string(1, '\0')));
    EXPECT_EQ(strAll.substr(1) + strAll, oBuffer.RemoveString(1000));
}

TEST(KorMutexBuffer, ReleasesTheLockWhenAnAppendFails)
{
    OpenBuffer oBuffer;
    oBuffer.AddString("AB");
    const std::string strLong(1000, 'x');

    bMemoryIsShort = true;
    EXPECT_THROW(oBuffer.AddString(strLong), std::bad_alloc);
    bMemoryIsShort = false;
    EXPECT_TRUE(oBuffer.m_oMutex.Lock(0));
    oBuffer.m_oMutex.Unlock();

    EXPECT_EQ("AB", oBuffer.GetBuffer());
    oBuffer.AddString(strLong);
    EXPECT_EQ(1002U, oBuffer.GetLength());
}

TEST(KorMutexBuffer, ReleasesTheLockWhenAppendingACharacterFails)
{
    OpenBuffer oBuffer;
    bMemoryIsShort = true;
    EXPECT_THROW(
        {
            for (;;)
                oBuffer.AddChar('x');
        },
        std::bad_alloc);
    bMemoryIsShort = false;
    EXPECT_TRUE(oBuffer.m_oMutex.Lock(0));
    oBuffer.m_oMutex.Unlock();
    oBuffer.AddChar('y');
    EXPECT_EQ('y', oBuffer.GetBuffer().back());
}

TEST(KorMutexBuffer, FourProducersAndOneConsumerLoseAndDoubleNothing)
{
    constexpr int LINES = 5000;
    CKorMutexBuffer oBuffer;
    std::vector<std::thread> vecProducers;
    vecProducers.reserve(PRODUCERS);
    for (int nProducer = 0; nProducer < PRODUCERS; ++nProducer) {
        vecProducers.emplace_back([&oBuffer, nProducer]() {
            for (int nLine = 0; nLine < LINES; ++nLine)
                oBuffer.AddString(std::to_string(nProducer) + ":" + std::to_string(nLine) + "\n");
        });
    }

    std::vector<int> vecNext(PRODUCERS, 0);
    for (int nTaken = 0; nTaken < PRODUCERS * LINES;) {
        const std::string strLine = oBuffer.RemoveString("\n");
        if (strLine.empty()) {
            std::this_thread::yield();
            continue;
        }
        const std::size_t nProducer = static_cast<std::size_t>(strLine[0] - '0');
        EXPECT_EQ(std::to_string(vecNext.at(nProducer)) + "\n", strLine.substr(2));
        ++vecNext.at(nProducer);
        ++nTaken;
    }
    for (std::thread& oProducer : vecProducers)
        oProducer.join();
    EXPECT_EQ(std::vector<int>(PRODUCERS, LINES), vecNext);
    EXPECT_EQ(0U, oBuffer.GetLength());
}

TEST(KorMutexBuffer, SingleCharactersOfFourProducersAllArrive)
{
    constexpr std::size_t CHARACTERS = 5000;
    CKorMutexBuffer oBuffer;
    std::vector<std::thread> vecProducers;
    vecProducers.reserve(PRODUCERS);
    for (const char cProducer : {'a', 'b', 'c', 'd'}) {
        vecProducers.emplace_back([&oBuffer, cProducer]() {
            for (std::size_t nCount = 0; nCount < CHARACTERS; ++nCount)
                oBuffer.AddChar(cProducer);
        });
    }
    std::string strTaken;
    while (strTaken.length() < 4 * CHARACTERS)
        strTaken += oBuffer.RemoveString(7);
    for (std::thread& oProducer : vecProducers)
        oProducer.join();
    for (const char cProducer : {'a', 'b', 'c', 'd'})
        EXPECT_EQ(5000, std::count(strTaken.begin(), strTaken.end(), cProducer));
}

} // namespace
