#include "fs/KorFileStatus.h"

#include "fs/KorFile.h"
#include "tests/support/ScratchDir.h"

#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace
{

constexpr long long EPOCH = 6216721920000000000;

/// The ticks since 1970-01-01 of a stamp.
long long StampOf(const CKorUTCTime& oTime)
{
    return oTime.GetHighResolutionLocaltime() - EPOCH;
}

/// The stamp of a time of the file system: a thousandfold, in 32 bits.
long long StampOf(time_t nSeconds)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nSeconds) * 1000U);
}

CKorFileStatus StatusOf(const std::string& strPath)
{
    CKorFileStatus oStatus;
    EXPECT_TRUE(CKorFile::GetStatus(strPath.c_str(), oStatus));
    return oStatus;
}

void SetTimes(const std::string& strPath, time_t nAccess, time_t nModification)
{
    const timespec aoTimes[2] = {{nAccess, 0}, {nModification, 999999999}};
    EXPECT_EQ(0, utimensat(AT_FDCWD, strPath.c_str(), aoTimes, 0));
}

TEST(KorFileStatus, IsEmptyWhenConstructed)
{
    const CKorFileStatus oStatus;
    for (const CKorUTCTime* pTime : {&oStatus.m_oCTime, &oStatus.m_oMTime, &oStatus.m_oATime}) {
        EXPECT_FALSE(pTime->IsTimeValid());
        EXPECT_EQ(0, pTime->GetHighResolutionLocaltime());
    }
    EXPECT_EQ("", oStatus.m_strFullName);
    EXPECT_EQ(0, oStatus.m_nSize);
    EXPECT_EQ(0u, oStatus.m_nAttribute);
    EXPECT_TRUE(std::has_virtual_destructor_v<CKorFileStatus>);
}

TEST(KorFileStatus, HoldsItsMembersInOrder)
{
    const CKorFileStatus oStatus;
    EXPECT_LT(&oStatus.m_oCTime, &oStatus.m_oMTime);
    EXPECT_LT(&oStatus.m_oMTime, &oStatus.m_oATime);
    const void* const pATime = &oStatus.m_oATime;
    const void* const pName = &oStatus.m_strFullName;
    const void* const pSize = &oStatus.m_nSize;
    const void* const pAttribute = &oStatus.m_nAttribute;
    EXPECT_LT(pATime, pName);
    EXPECT_LT(pName, pSize);
    EXPECT_LT(pSize, pAttribute);
}

TEST(KorFileStatus, ReportsSizeAndAttributes)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "12345");
    ASSERT_EQ(0, chmod(oDir.File("data").c_str(), 0640));
    const CKorFileStatus oStatus = StatusOf(oDir.File("data"));
    EXPECT_EQ(5, oStatus.m_nSize);
    EXPECT_EQ(0100640u, oStatus.m_nAttribute);
    EXPECT_EQ(0040700u, StatusOf(oDir.Path()).m_nAttribute);
}

TEST(KorFileStatus, ReportsSizesBeyond4GiB)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "");
    for (const long long nSize : {2147483648LL, 3221225472LL, 5368709127LL}) {
        ASSERT_EQ(0, truncate(oDir.File("data").c_str(), nSize));
        EXPECT_EQ(nSize, StatusOf(oDir.File("data")).m_nSize);
    }
}

TEST(KorFileStatus, CountsTenMicrosecondsForASecond)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "");
    SetTimes(oDir.File("data"), 10, 0);
    const CKorFileStatus oStatus = StatusOf(oDir.File("data"));
    EXPECT_EQ(10000, StampOf(oStatus.m_oATime));
    EXPECT_EQ(0, StampOf(oStatus.m_oMTime)) << "whole seconds only";
    EXPECT_EQ(100, oStatus.m_oATime.GetMicroSecond());
    EXPECT_EQ(1970, oStatus.m_oATime.GetYear());
}

TEST(KorFileStatus, WrapsItsStampsTo32Bits)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "");
    SetTimes(oDir.File("data"), 1700000000, 2147484);
    EXPECT_EQ(-807049216, StampOf(StatusOf(oDir.File("data")).m_oATime));
    EXPECT_EQ(-2147483296, StampOf(StatusOf(oDir.File("data")).m_oMTime));
    SetTimes(oDir.File("data"), -1, 2147483);
    EXPECT_EQ(-1000, StampOf(StatusOf(oDir.File("data")).m_oATime));
    EXPECT_EQ(2147483000, StampOf(StatusOf(oDir.File("data")).m_oMTime));
}

TEST(KorFileStatus, ReportsTheTimesThatTheFileSystemHas)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "");
    SetTimes(oDir.File("data"), 1000, 2000);
    struct stat oExpected = {};
    ASSERT_EQ(0, stat(oDir.File("data").c_str(), &oExpected));
    const CKorFileStatus oStatus = StatusOf(oDir.File("data"));
    EXPECT_EQ(StampOf(oExpected.st_ctime), StampOf(oStatus.m_oCTime));
    EXPECT_EQ(1000000, StampOf(oStatus.m_oATime));
    EXPECT_EQ(2000000, StampOf(oStatus.m_oMTime));
    EXPECT_TRUE(oStatus.m_oCTime.IsTimeValid());
    EXPECT_TRUE(oStatus.m_oMTime.IsTimeValid());
    EXPECT_TRUE(oStatus.m_oATime.IsTimeValid());
}

TEST(KorFileStatus, FollowsALink)
{
    const ScratchDir oDir;
    WriteFile(oDir.File("data"), "12345");
    ASSERT_EQ(0, symlink("data", oDir.File("link").c_str()));
    EXPECT_EQ(5, StatusOf(oDir.File("link")).m_nSize);
    EXPECT_TRUE(S_ISREG(StatusOf(oDir.File("link")).m_nAttribute));
}

TEST(KorFileStatus, KeepsTheNameThatTheProgramGaveIt)
{
    CKorFileStatus oStatus;
    oStatus.m_strFullName = "mine";
    CKorFile::GetStatus("/", oStatus);
    EXPECT_EQ("mine", oStatus.m_strFullName);
}

void ExpectZeros(const char* pszPath)
{
    CKorFileStatus oStatus = StatusOf("/");
    EXPECT_TRUE(CKorFile::GetStatus(pszPath, oStatus)) << "true all the same";
    EXPECT_EQ(0, oStatus.m_nSize);
    EXPECT_EQ(0u, oStatus.m_nAttribute);
    EXPECT_EQ(0, StampOf(oStatus.m_oCTime));
    EXPECT_EQ(0, StampOf(oStatus.m_oMTime));
    EXPECT_EQ(0, StampOf(oStatus.m_oATime));
}

TEST(KorFileStatus, IsThatOfZerosForAMissingFile)
{
    const ScratchDir oDir;
    ExpectZeros(oDir.File("missing").c_str());
    ExpectZeros("");
    ExpectZeros(nullptr);
}

} // namespace
