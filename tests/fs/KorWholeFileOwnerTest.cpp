#include "fs/KorWholeFile.h"

#include "tests/fs/WholeFileTest.h"
#include "tests/support/CallWatch.h"
#include "tests/support/Confinement.h"
#include "tests/support/ScratchDir.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

TEST_F(KorWholeFile, KeepsTheModeWithEveryBit)
{
    const Umask oUmask(077);
    for (const mode_t nMode : {0600U, 0666U, 0640U, 0755U, 06755U, 0200U}) {
        WriteFile(m_strFile, "old");
        ASSERT_EQ(0, chmod(m_strFile.c_str(), nMode));
        EXPECT_EQ(0, Replace(m_strFile, "new"));
        EXPECT_EQ(nMode, ModeOf(m_strFile));
    }
}

TEST_F(KorWholeFile, KeepsTheOwner)
{
    WriteFile(m_strFile, "old");
    // Where this process is no real root, its own files are all that it can have.
    const bool bOther = chown(m_strFile.c_str(), 1234, 2345) == 0;
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    struct stat oStat
    {
    };
    ASSERT_EQ(0, stat(m_strFile.c_str(), &oStat));
    EXPECT_EQ(bOther ? 1234U : getuid(), oStat.st_uid);
    EXPECT_EQ(bOther ? 2345U : getgid(), oStat.st_gid);
}

TEST_F(KorWholeFile, RefusesAFileWhoseOwnerCannotBeKept)
{
    WriteFile(m_strFile, "old");
    ASSERT_EQ(0, chmod(m_strFile.c_str(), 0666));
    // Where this process is no real root, the call fails as it would for a file of someone else.
    const bool bOther = chown(m_strFile.c_str(), 1234, 2345) == 0;
    InChild([this, bOther] {
        DropPrivileges();
        const CallWatch oWatch([bOther](const std::string& strCall) {
            return strCall == "fchown" && !bOther ? EPERM : 0;
        });
        EXPECT_EQ(EPERM, Refusal(m_strFile));
    });
    EXPECT_EQ("old", ReadFile(m_strFile));
}

TEST_F(KorWholeFile, KeepsExtendedAttributes)
{
    WriteFile(m_strFile, "old");
    ASSERT_EQ(0, setxattr(m_strFile.c_str(), "user.one", "1\0", 2, 0));
    ASSERT_EQ(0, setxattr(m_strFile.c_str(), "user.empty", "", 0, 0));
    InChild([this] {
        DropPrivileges();
        EXPECT_EQ(0, Replace(m_strFile, "new"));
    });
    char acValue[8] = {};
    EXPECT_EQ(2, getxattr(m_strFile.c_str(), "user.one", acValue, sizeof acValue));
    EXPECT_STREQ("1", acValue);
    EXPECT_EQ(0, getxattr(m_strFile.c_str(), "user.empty", acValue, sizeof acValue));
}

/// An access control list as the kernel stores it: the owner may write, one user may read.
std::string AccessList()
{
    std::string strList = "\2\0\0\0"s;
    for (const auto& [nTag, nRights, nId] : {std::array<uint32_t, 3>{1, 6, ~0U},
                                             {2, 4, getuid()},
                                             {4, 0, ~0U},
                                             {16, 4, ~0U},
                                             {32, 0, ~0U}}) {
        for (const uint32_t nByte : {nTag, 0U, nRights, 0U, nId, nId >> 8, nId >> 16, nId >> 24})
            strList += static_cast<char>(nByte);
    }
    return strList;
}

TEST_F(KorWholeFile, KeepsTheAccessListOfTheFileAndNotThatOfItsDirectory)
{
    const std::string strList = AccessList();
    WriteFile(m_strFile, "old");
    WriteFile(m_oDir.File("listed"), "old");
    ASSERT_EQ(0, chmod(m_strFile.c_str(), 0640));
    ASSERT_EQ(0, setxattr(m_oDir.Path().c_str(), "system.posix_acl_default", strList.data(),
                          strList.size(), 0));
    ASSERT_EQ(0, setxattr(m_oDir.File("listed").c_str(), "system.posix_acl_access", strList.data(),
                          strList.size(), 0));
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    EXPECT_EQ(0, Replace(m_oDir.File("listed"), "new"));
    EXPECT_EQ(-1, getxattr(m_strFile.c_str(), "system.posix_acl_access", nullptr, 0));
    EXPECT_EQ(ENODATA, errno);
    std::string strKept(strList.size(), '\0');
    EXPECT_EQ(static_cast<ssize_t>(strList.size()),
              getxattr(m_oDir.File("listed").c_str(), "system.posix_acl_access", strKept.data(),
                       strKept.size()));
    EXPECT_EQ(strList, strKept);
}

} // namespace
