#include "fs/KorWholeFile.h"

#include "tests/fs/WholeFileTest.h"
#include "tests/support/Confinement.h"
#include "tests/support/EntriesOf.h"
#include "tests/support/ScratchDir.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

TEST_F(KorWholeFile, ReadsEveryByte)
{
    const std::string strContent = "a\0b\r\n\xFF"s + std::string(100000, 'x');
    WriteFile(m_strFile, strContent);
    std::string strRead = "before";
    EXPECT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ(strContent, strRead);
    WriteFile(m_strFile, "");
    EXPECT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ("", strRead);
}

TEST_F(KorWholeFile, ReadsAFileWhoseSizeIsNotTold)
{
    std::string strRead;
    EXPECT_TRUE(KorReadFile("/proc/self/status", strRead));
    EXPECT_NE(std::string::npos, strRead.find("Umask:"));
}

TEST_F(KorWholeFile, LeavesTheTextWhenReadingFails)
{
    std::string strRead = "before";
    EXPECT_FALSE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(KorReadFile(nullptr, strRead));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(KorReadFile(m_oDir.Path().c_str(), strRead));
    EXPECT_EQ(EISDIR, errno);
    EXPECT_EQ("before", strRead);
}

TEST_F(KorWholeFile, ReadsNoFifoAndDoesNotWaitForOne)
{
    ASSERT_EQ(0, mkfifo(m_strFile.c_str(), 0600));
    std::string strRead = "before";
    EXPECT_FALSE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ(EINVAL, errno);
    EXPECT_EQ("before", strRead);
}

TEST_F(KorWholeFile, ReplacesEveryByteAndLeavesNothingElse)
{
    WriteFile(m_strFile, "old");
    const std::string strContent = "a\0b\r\n\xFF"s + std::string(300000, 'x');
    EXPECT_EQ(0, Replace(m_strFile, strContent));
    EXPECT_EQ(strContent, ReadFile(m_strFile));
    EXPECT_EQ(0, Replace(m_strFile, ""));
    EXPECT_EQ("", ReadFile(m_strFile));
    EXPECT_EQ(std::vector<std::string>{"file"}, Names());
}

TEST_F(KorWholeFile, ReplacesByAnotherFileSoThatAnOpenOneKeepsItsContent)
{
    WriteFile(m_strFile, "old");
    const int hOld = open(m_strFile.c_str(), O_RDONLY);
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    char acOld[4] = {};
    EXPECT_EQ(3, read(hOld, acOld, sizeof acOld));
    EXPECT_STREQ("old", acOld);
    close(hOld);
}

TEST_F(KorWholeFile, MakesANewFileWithTheUmask)
{
    const Umask oUmask(027);
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    EXPECT_EQ(0640U, ModeOf(m_strFile));
    EXPECT_EQ("new", ReadFile(m_strFile));
    EXPECT_EQ(std::vector<std::string>{"file"}, Names());
}

TEST_F(KorWholeFile, TakesAnyNameThatAFileMayHave)
{
    const std::filesystem::path oBefore = std::filesystem::current_path();
    std::filesystem::current_path(m_oDir.Path());
    EXPECT_EQ(0, Replace("bare", "1"));
    EXPECT_EQ(0, Replace("./dotted", "2"));
    std::filesystem::current_path(oBefore);
    EXPECT_EQ("1", ReadFile(m_oDir.File("bare")));
    EXPECT_EQ("2", ReadFile(m_oDir.File("dotted")));
    const std::string strLong = m_oDir.File(std::string(255, 'n'));
    EXPECT_EQ(0, Replace(strLong, "3"));
    EXPECT_EQ("3", ReadFile(strLong));
    EXPECT_EQ(3U, Names().size());
}

TEST_F(KorWholeFile, RefusesNamesThatNoFileCanHave)
{
    EXPECT_EQ(ENOENT, Refusal(""));
    EXPECT_FALSE(KorReplaceFile(nullptr, "new"));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(ENOENT, Refusal(m_oDir.File("missing/file")));
    EXPECT_EQ(ENAMETOOLONG, Refusal(m_oDir.File(std::string(256, 'n'))));
    WriteFile(m_strFile, "old");
    EXPECT_EQ(ENOTDIR, Refusal(m_oDir.File("file/file")));
}

TEST_F(KorWholeFile, ReplacesTheTargetOfALink)
{
    ASSERT_EQ(0, mkdir(m_oDir.File("there").c_str(), 0700));
    WriteFile(m_oDir.File("there/target"), "old");
    ASSERT_EQ(0, symlink("there/link", m_strFile.c_str()));
    ASSERT_EQ(
        0, symlink(m_oDir.File("there/../there/last").c_str(), m_oDir.File("there/link").c_str()));
    ASSERT_EQ(0, symlink("target", m_oDir.File("there/last").c_str()));
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    EXPECT_EQ("new", ReadFile(m_oDir.File("there/target")));
    EXPECT_TRUE(std::filesystem::is_symlink(m_strFile));
    EXPECT_TRUE(std::filesystem::is_symlink(m_oDir.File("there/last")));
    EXPECT_FALSE(std::filesystem::is_symlink(m_oDir.File("there/target")));
}

TEST_F(KorWholeFile, MakesTheTargetOfALinkThatLeadsNowhere)
{
    ASSERT_EQ(0, symlink("target", m_strFile.c_str()));
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    EXPECT_EQ("new", ReadFile(m_oDir.File("target")));
    EXPECT_TRUE(std::filesystem::is_symlink(m_strFile));
}

TEST_F(KorWholeFile, FollowsAsManyLinksAsTheSystem)
{
    constexpr int LINKS = 40;
    const auto fnName = [this](int n) { return m_oDir.File("link" + std::to_string(n)); };
    WriteFile(fnName(LINKS), "old");
    for (int n = 0; n < LINKS; ++n)
        ASSERT_EQ(0, symlink(fnName(n + 1).c_str(), fnName(n).c_str()));
    EXPECT_EQ(0, Replace(fnName(0), "new"));
    EXPECT_EQ("new", ReadFile(fnName(LINKS)));
    EXPECT_FALSE(std::filesystem::is_symlink(fnName(LINKS)));
}

TEST_F(KorWholeFile, RefusesLinksThatLeadToThemselves)
{
    ASSERT_EQ(0, symlink("other", m_strFile.c_str()));
    ASSERT_EQ(0, symlink("file", m_oDir.File("other").c_str()));
    EXPECT_EQ(ELOOP, Refusal(m_strFile));
}

TEST_F(KorWholeFile, RefusesAFileOfSeveralNames)
{
    WriteFile(m_strFile, "old");
    ASSERT_EQ(0, link(m_strFile.c_str(), m_oDir.File("other").c_str()));
    EXPECT_EQ(EMLINK, Refusal(m_strFile));
    EXPECT_EQ("old", ReadFile(m_strFile));
}

TEST_F(KorWholeFile, RefusesWhatIsNoRegularFile)
{
    ASSERT_EQ(0, mkfifo(m_strFile.c_str(), 0600));
    EXPECT_EQ(EINVAL, Refusal(m_strFile));
    EXPECT_EQ(EINVAL, Refusal(m_oDir.Path()));
    EXPECT_EQ(EINVAL, Refusal(m_oDir.Path() + "/"));
    EXPECT_EQ(EINVAL, Refusal("/dev/null"));
    ASSERT_EQ(0, symlink("/dev/null", m_oDir.File("link").c_str()));
    EXPECT_EQ(EINVAL, Refusal(m_oDir.File("link")));
}

TEST_F(KorWholeFile, RefusesAFileThatThisProcessMayNotWrite)
{
    WriteFile(m_strFile, "old");
    ASSERT_EQ(0, chmod(m_strFile.c_str(), 0444));
    InChild([this] {
        DropPrivileges();
        EXPECT_EQ(EACCES, Refusal(m_strFile));
    });
    EXPECT_EQ("old", ReadFile(m_strFile));
    EXPECT_EQ(0444U, ModeOf(m_strFile));
}

TEST_F(KorWholeFile, RefusesADirectoryThatThisProcessMayNotWrite)
{
    WriteFile(m_strFile, "old");
    ASSERT_EQ(0, chmod(m_oDir.Path().c_str(), 0555));
    InChild([this] {
        DropPrivileges();
        EXPECT_EQ(EACCES, Refusal(m_strFile));
        EXPECT_EQ(EACCES, Refusal(m_oDir.File("new")));
    });
    ASSERT_EQ(0, chmod(m_oDir.Path().c_str(), 0755));
    EXPECT_EQ("old", ReadFile(m_strFile));
}

TEST_F(KorWholeFile, RemovesWhatAKilledCallLeftAndNothingElse)
{
    WriteFile(m_strFile, "old");
    WriteFile(m_oDir.File(".file.kor-new"), "half");
    for (const char* pszOther : {".other.kor-new", "file.kor-new", "file~", ".file.kor-new2"})
        WriteFile(m_oDir.File(pszOther), "other");
    EXPECT_EQ(0, Replace(m_strFile, "new"));
    EXPECT_EQ((std::vector<std::string>{".file.kor-new2", ".other.kor-new", "file", "file.kor-new",
                                        "file~"}),
              Names());
    EXPECT_EQ("new", ReadFile(m_strFile));
}

TEST_F(KorWholeFile, GivesUpAfterTwoSecondsInWhichAnotherHoldsTheDirectory)
{
    WriteFile(m_strFile, "old");
    const int hDirectory = open(m_oDir.Path().c_str(), O_RDONLY);
    ASSERT_EQ(0, flock(hDirectory, LOCK_EX));
    EXPECT_EQ(EBUSY, Refusal(m_strFile));
    EXPECT_EQ("old", ReadFile(m_strFile));
    std::string strRead;
    EXPECT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
    close(hDirectory);
    EXPECT_EQ(0, Replace(m_strFile, "new"));
}

TEST_F(KorWholeFile, LeavesNoDescriptorBehind)
{
    std::string strRead;
    const auto nBefore = EntriesOf("/proc/self/fd");
    EXPECT_EQ(0, Replace(m_strFile, "1"));
    EXPECT_EQ(0, Replace(m_strFile, "2"));
    EXPECT_EQ(EINVAL, Replace(m_oDir.Path(), "3"));
    EXPECT_TRUE(KorReadFile(m_strFile.c_str(), strRead));
    EXPECT_EQ(nBefore, EntriesOf("/proc/self/fd"));
}

} // namespace
