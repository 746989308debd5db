#include "app/KorLog.h"

#include "tests/app/LogCapture.h"
#include "tests/app/LogFileTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

TEST_F(KorLogFile, IsRotatedBeforeItExceedsItsSize)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE, 2));
    for (int i = 1; i <= 3; ++i)
        WriteTen(m_oLog, i);
    EXPECT_FALSE(Exists(Name(1)));
    for (int i = 4; i <= 8; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(7, 8), Messages(Name()));
    EXPECT_EQ(Numbers(4, 6), Messages(Name(1)));
    EXPECT_EQ(Numbers(1, 3), Messages(Name(2)));
    for (int i = 9; i <= 10; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(4, 10), WholeLog(2));
    EXPECT_FALSE(Exists(Name(3)));
}

TEST_F(KorLogFile, OneByteLessRotatesALineEarlier)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE - 1, 9));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(5, 5), Messages(Name()));
    EXPECT_EQ(Numbers(3, 4), Messages(Name(1)));
}

TEST_F(KorLogFile, WhatIsThereCounts)
{
    WriteFile(Name(), std::string(2 * LINE - 1, 'x') + "\n");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE, 1));
    WriteTen(m_oLog, 1);
    EXPECT_FALSE(Exists(Name(1)));
    WriteTen(m_oLog, 2);
    EXPECT_EQ(Numbers(2, 2), Messages(Name()));
    EXPECT_EQ(3 * LINE, ReadFile(Name(1)).size());
}

TEST_F(KorLogFile, WithoutALimitItIsNotRotated)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 0, 3));
    for (int i = 1; i <= 1000; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(1, 1000), Messages(Name()));
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, WithNoneToKeepItBeginsAnew)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 3 * LINE, 0));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(4, 5), Messages(Name()));
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, OnlyASingleLongerLineExceedsTheSize)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 100, 9));
    const std::string strLong(200, 'x');
    WriteTen(m_oLog, 1);
    m_oLog.Write(CKorLog::LEVEL_INFO, "%s", strLong.c_str());
    WriteTen(m_oLog, 2);
    EXPECT_EQ(Numbers(2, 2), Messages(Name()));
    EXPECT_EQ("info: " + strLong + "\n", Messages(Name(1)));
    EXPECT_EQ(Numbers(1, 1), Messages(Name(2)));
    EXPECT_FALSE(Exists(Name(3)));
}

TEST_F(KorLogFile, AnEmptyFileIsNotRotated)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 100, 9));
    m_oLog.Write(CKorLog::LEVEL_INFO, "%s", std::string(200, 'x').c_str());
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, ANewFileHasTheModeOfTheFormer)
{
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), LINE, 1));
    chmod(Name().c_str(), 0600);
    WriteTen(m_oLog, 1);
    WriteTen(m_oLog, 2);
    struct stat oFile = {};
    stat(Name().c_str(), &oFile);
    EXPECT_EQ(0600u, oFile.st_mode & 07777u);
}

TEST_F(KorLogFile, AFailingRenameGoesOnInTheSameFile)
{
    ASSERT_EQ(0, mkdir(Name(1).c_str(), 0700));
    WriteFile(Name(1) + "/file", "");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 2 * LINE, 1));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ(Numbers(1, 5), Messages(Name()));
    EXPECT_EQ(0u, m_oLog.GetLostCount());
}

TEST_F(KorLogFile, AFormerFileThatCannotBeMovedIsNotOverwritten)
{
    ASSERT_EQ(0, mkdir(Name(2).c_str(), 0700));
    WriteFile(Name(2) + "/file", "");
    WriteFile(Name(1), "former\n");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), 2 * LINE, 2));
    for (int i = 1; i <= 5; ++i)
        WriteTen(m_oLog, i);
    EXPECT_EQ("former\n", ReadFile(Name(1)));
    EXPECT_EQ(Numbers(1, 5), Messages(Name()));
}

TEST_F(KorLogFile, ANewFileThatCannotBeOpenedGoesOnInTheSame)
{
    ChildProcess oChild([this] {
        if (!m_oLog.UseFile(Name().c_str(), 2 * LINE, 3))
            return 1;
        rlimit oFormer = {};
        getrlimit(RLIMIT_NOFILE, &oFormer);
        const rlimit oLimit = {3, oFormer.rlim_max};
        setrlimit(RLIMIT_NOFILE, &oLimit);
        for (int i = 1; i <= 5; ++i)
            WriteTen(m_oLog, i);
        setrlimit(RLIMIT_NOFILE, &oFormer); // a sanitizer opens files at the end
        return 42;
    });
    EXPECT_EQ(42, oChild.Wait().nExitStatus);
    EXPECT_EQ(Numbers(1, 5), Messages(Name()));
    EXPECT_FALSE(Exists(Name(1)));
}

TEST_F(KorLogFile, AMissingFormerFileIsAFreePlace)
{
    WriteFile(Name(2), "second\n");
    WriteFile(Name(3), "third\n");
    ASSERT_TRUE(m_oLog.UseFile(Name().c_str(), LINE, 3));
    WriteTen(m_oLog, 1);
    WriteTen(m_oLog, 2);
    EXPECT_EQ("second\n", ReadFile(Name(2)));
    WriteTen(m_oLog, 3);
    EXPECT_EQ(Numbers(1, 1), Messages(Name(2)));
    EXPECT_EQ("second\n", ReadFile(Name(3)));
}

} // namespace
