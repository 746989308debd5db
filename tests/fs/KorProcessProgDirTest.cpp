#include "fs/KorProcess.h"

#include "fs/KorProcessDetail.h"
#include "tests/fs/WorkDir.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Emulation.h"
#include "tests/support/ScratchDir.h"

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace
{

/// The directory of the running test program, by a way of its own.
std::string OwnDirectory()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().native() + "/";
}

/// Where the kernel sees the program that runs: the emulator's directory under an emulator.
std::string DirectorySeenByKernel()
{
    return std::filesystem::read_symlink("/proc/./self/exe").parent_path().native() + "/";
}

TEST(KorProcessProgDir, IsWhereTheProgramFileLies)
{
    const std::string strDir = CKorProcess::GetCurrentProgDir();
    if (UnderEmulation() && strDir != OwnDirectory()) {
        std::printf("[ emulated ] the emulator stands for the program file\n");
        EXPECT_EQ(DirectorySeenByKernel(), strDir);
    } else {
        EXPECT_EQ(OwnDirectory(), strDir);
    }
}

TEST(KorProcessProgDir, StaysWhenTheWorkingDirectoryChanges)
{
    const std::string strDir = CKorProcess::GetCurrentProgDir();
    const WorkDir oWorkDir("/");
    EXPECT_EQ(strDir, CKorProcess::GetCurrentProgDir());
}

/// Runs a copy of a program that prints its directory, in a directory of nLength bytes, and
/// expects the directory that the name of the copy, cut at 2047 bytes, is in.
void ExpectProgramDirAtDepth(size_t nLength)
{
    const ScratchDir oDir;
    const WorkDir oWorkDir(oDir.Path());
    DescendTo(nLength);
    const std::string strProgram = std::filesystem::current_path() / "p.bin";
    std::filesystem::copy_file(PROGDIR_PROGRAM, strProgram);
    const std::string strDir = RunProgram({"./p.bin"}).strOut;
    if (UnderEmulation() && strDir == DirectorySeenByKernel()) {
        std::printf("[ emulated ] the emulator stands for the program file\n");
        return;
    }
    EXPECT_EQ(nLength, strProgram.size() - 6);
    EXPECT_EQ(strProgram.substr(0, strProgram.substr(0, 2047).rfind('/') + 1), strDir);
}

TEST(KorProcessProgDir, IsKnownInADeepDirectory)
{
    ExpectProgramDirAtDepth(1500);
}

TEST(KorProcessProgDir, IsCutAt2047Bytes)
{
    ExpectProgramDirAtDepth(2041); // a name of exactly 2047 bytes
    ExpectProgramDirAtDepth(2042); // cut inside the program's name
    ExpectProgramDirAtDepth(2046); // cut behind the separator
    ExpectProgramDirAtDepth(2047); // cut in front of the separator
    ExpectProgramDirAtDepth(2100); // cut inside the last directory's name
}

TEST(KorProcessProgDir, IsTheSameOnEveryThread)
{
    const std::string strDir = CKorProcess::GetCurrentProgDir();
    const auto fnAsk = [&strDir] {
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(strDir, CKorProcess::GetCurrentProgDir());
    };
    std::thread oOther(fnAsk);
    fnAsk();
    oOther.join();
}

TEST(KorProcessProgDir, CutsTheProgramNameOff)
{
    EXPECT_EQ("/usr/bin/", DirectoryOfProgram("/usr/bin/daemon"));
    EXPECT_EQ("/", DirectoryOfProgram("/daemon"));
    EXPECT_EQ("/odd\\", DirectoryOfProgram("/odd\\/daemon"));
}

TEST(KorProcessProgDir, TakesANameWithoutSlashForTheDirectory)
{
    EXPECT_EQ("daemon/", DirectoryOfProgram("daemon"));
    EXPECT_EQ("odd\\", DirectoryOfProgram("odd\\"));
}

} // namespace
