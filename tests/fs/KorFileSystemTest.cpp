#include "fs/KorProcess.h"
#include "tests/fs/FileTest.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

namespace
{

TEST_F(KorFile, KnowsWhetherAFileExists)
{
    EXPECT_TRUE(CKorFile::FileExist(m_strPath.c_str()));
    EXPECT_TRUE(CKorFile::FileExist(m_oDir.Path().c_str()));
    EXPECT_FALSE(CKorFile::FileExist(m_oDir.File("missing").c_str()));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(CKorFile::FileExist((m_strPath + "/below").c_str()));
    EXPECT_EQ(ENOTDIR, errno);
}

TEST_F(KorFile, ALinkThatLeadsNowhereDoesNotExistButCanBeRenamedAndRemoved)
{
    const std::string strLink = m_oDir.File("link");
    const std::string strOther = m_oDir.File("other");
    ASSERT_EQ(0, symlink("missing", strLink.c_str()));
    EXPECT_FALSE(CKorFile::FileExist(strLink.c_str()));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_TRUE(CKorFile::Rename(strLink.c_str(), strOther.c_str()));
    struct stat oStatus;
    EXPECT_EQ(0, lstat(strOther.c_str(), &oStatus));
    EXPECT_FALSE(CKorFile::Remove(strOther.c_str()));
    EXPECT_EQ(-1, lstat(strOther.c_str(), &oStatus));
}

TEST_F(KorFile, RemovesAFileAndReturnsFalse)
{
    EXPECT_FALSE(CKorFile::Remove(m_strPath.c_str()));
    EXPECT_FALSE(CKorFile::FileExist(m_strPath.c_str()));
}

TEST_F(KorFile, ReturnsTrueForAFileThatItCannotRemove)
{
    EXPECT_TRUE(CKorFile::Remove(m_oDir.File("missing").c_str()));
    EXPECT_TRUE(CKorFile::Remove(m_oDir.Path().c_str()));
    EXPECT_TRUE(CKorFile::FileExist(m_oDir.Path().c_str()));
}

TEST_F(KorFile, RenamesAFile)
{
    const std::string strNew = m_oDir.File("new");
    WriteFile(strNew, "replaced");
    EXPECT_TRUE(CKorFile::Rename(m_strPath.c_str(), strNew.c_str()));
    EXPECT_FALSE(CKorFile::FileExist(m_strPath.c_str()));
    EXPECT_EQ(100u, std::filesystem::file_size(strNew));
    EXPECT_FALSE(CKorFile::Rename(m_strPath.c_str(), strNew.c_str()));
    EXPECT_EQ(100u, std::filesystem::file_size(strNew));
}

TEST_F(KorFile, ReadsANullPathAsTheEmptyPath)
{
    Probe oFile;
    EXPECT_FALSE(oFile.Open(nullptr, CKorFile::OPEN_READ));
    EXPECT_EQ(ENOENT, oFile.m_nLastError);
    EXPECT_FALSE(CKorFile::FileExist(nullptr));
    EXPECT_TRUE(CKorFile::Remove(nullptr));
    EXPECT_FALSE(CKorFile::Rename(nullptr, m_strPath.c_str()));
    EXPECT_FALSE(CKorFile::Rename(m_strPath.c_str(), nullptr));
    EXPECT_TRUE(CKorFile::FileExist(m_strPath.c_str()));
}

TEST_F(KorFile, GivesTheWorkingDirectoryForEveryKindButTwo)
{
    const std::string strWorkDir = std::filesystem::current_path().native() + "/";
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(0));
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(CKorFile::WORKDIR_CURRENT));
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(3));
    EXPECT_EQ(strWorkDir, CKorFile::GetCurrentWorkDir(-1));
}

TEST_F(KorFile, GivesTheProgramDirectoryForKindTwo)
{
    const std::string strProgDir = CKorFile::GetCurrentWorkDir(CKorFile::WORKDIR_PROGRAM);
    EXPECT_EQ(CKorProcess::GetCurrentProgDir(), strProgDir);
    EXPECT_EQ('/', strProgDir.back());
}

} // namespace
