#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"
#include "text/KorMemDump.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{

/// Runs the program with the given arguments.
ChildResult Filestat(std::vector<std::string> vecArgs)
{
    vecArgs.insert(vecArgs.begin(), FILESTAT_PROGRAM);
    return RunProgram(vecArgs);
}

/// The text behind the line of the dump's header, whose address differs from run to run.
std::string LinesOf(const std::string& strOut)
{
    const size_t nHeader = strOut.find("Address: 0x0x");
    EXPECT_NE(std::string::npos, nHeader) << strOut;
    return strOut.substr(strOut.find('\n', nHeader) + 1);
}

std::string Line(const std::string& strContent, unsigned int nOffset)
{
    return KorMemDumpLine(strContent.data(), static_cast<unsigned int>(strContent.size()),
                          nOffset) +
           "\n";
}

/// A file of 10 lines of 16 bytes.
class Filestat10Lines : public testing::Test
{
protected:
    Filestat10Lines() : m_strPath(m_oDir.File("data"))
    {
        for (int i = 0; i < 160; ++i)
            m_strContent += static_cast<char>(i);
        WriteFile(m_strPath, m_strContent);
    }

    ScratchDir m_oDir;
    std::string m_strPath;
    std::string m_strContent;
};

TEST_F(Filestat10Lines, PrintsTheStatusRecord)
{
    ASSERT_EQ(0, chmod(m_strPath.c_str(), 0640));
    const timespec aoTimes[2] = {{10, 0}, {20, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, m_strPath.c_str(), aoTimes, 0));
    const ChildResult oResult = Filestat({m_strPath});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strErr);
    EXPECT_EQ(0u, oResult.strOut.find("Name:      " + m_strPath +
                                      "\n"
                                      "Size:      160 bytes\n"
                                      "Mode:      0100640\n"
                                      "Modified:  stamp 20000\n"))
        << oResult.strOut;
    EXPECT_NE(std::string::npos, oResult.strOut.find("\nAccessed:  stamp 10000\n"));
    EXPECT_NE(std::string::npos, oResult.strOut.find("  Length : 0x000000a0\n"));
}

TEST_F(Filestat10Lines, DumpsAShortFileWhole)
{
    const ChildResult oResult = Filestat({m_strPath});
    std::string strExpected;
    for (unsigned int nOffset = 0; nOffset < 160; nOffset += 16)
        strExpected += Line(m_strContent, nOffset);
    EXPECT_EQ(strExpected, LinesOf(oResult.strOut));
}

TEST_F(Filestat10Lines, DumpsTheHeadAndTheTailThatItIsAskedFor)
{
    EXPECT_EQ(Line(m_strContent, 0) + "...\n" + Line(m_strContent, 128) + Line(m_strContent, 144),
              LinesOf(Filestat({m_strPath, "1", "2"}).strOut));
    EXPECT_EQ("...\n", LinesOf(Filestat({m_strPath, "0", "0"}).strOut));
}

TEST_F(Filestat10Lines, DumpsEightLastLinesUnlessAskedForOthers)
{
    const std::string strLines = LinesOf(Filestat({m_strPath, "1"}).strOut);
    EXPECT_EQ(Line(m_strContent, 0) + "...\n" + Line(m_strContent, 32),
              strLines.substr(0, 2 * 73 + 4));
    EXPECT_EQ(10, std::count(strLines.begin(), strLines.end(), '\n'));
}

TEST_F(Filestat10Lines, PrintsTheHeaderAloneForAnEmptyFile)
{
    WriteFile(m_strPath, "");
    const ChildResult oResult = Filestat({m_strPath});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", LinesOf(oResult.strOut));
}

TEST_F(Filestat10Lines, PrintsTheStatusOfADirectoryWithoutADump)
{
    const ChildResult oResult = Filestat({m_oDir.Path()});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strOut.find("Mode:      040700\n"));
    EXPECT_EQ(std::string::npos, oResult.strOut.find("Address"));
}

TEST_F(Filestat10Lines, ReportsAMissingFile)
{
    const ChildResult oResult = Filestat({m_oDir.File("missing")});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut);
    EXPECT_EQ("filestat: " + m_oDir.File("missing") + ": No such file or directory\n",
              oResult.strErr);
}

TEST_F(Filestat10Lines, ReportsTheSizeOfABigFileButDoesNotDumpIt)
{
    std::filesystem::resize_file(m_strPath, 3221225472);
    const ChildResult oResult = Filestat({m_strPath});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strOut.find("Size:      3221225472 bytes\n"));
    EXPECT_EQ("filestat: " + m_strPath + ": too large to dump (16 MiB at most)\n", oResult.strErr);
}

TEST_F(Filestat10Lines, ReportsAnOutputThatCannotBeWritten)
{
    const ChildResult oResult = RunProgram(
        {"/bin/sh", "-c", "exec \"$0\" \"$1\" > /dev/full", FILESTAT_PROGRAM, m_strPath});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("filestat: standard output: No space left on device\n", oResult.strErr);
}

TEST_F(Filestat10Lines, RefusesWrongArguments)
{
    const std::vector<std::vector<std::string>> vecWrong = {{},
                                                            {"-x", m_strPath},
                                                            {m_strPath, "x"},
                                                            {m_strPath, "-1"},
                                                            {m_strPath, "1x"},
                                                            {m_strPath, ""},
                                                            {m_strPath, "4294967296"},
                                                            {m_strPath, "1", "x"},
                                                            {m_strPath, "1", "2", "3"}};
    for (const std::vector<std::string>& vecArgs : vecWrong) {
        const ChildResult oResult = Filestat(vecArgs);
        EXPECT_EQ(2, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strOut);
        EXPECT_EQ(0u, oResult.strErr.find("filestat: ")) << oResult.strErr;
    }
}

TEST_F(Filestat10Lines, PrintsItsHelpAndItsVersionWhenAsked)
{
    for (const char* pszOption : {"-h", "--help", "--version"}) {
        const ChildResult oResult = Filestat({pszOption});
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strErr);
        EXPECT_NE("", oResult.strOut);
    }
    EXPECT_NE(std::string::npos, Filestat({"-h"}).strOut.find("FILE [HEAD] [TAIL]"));
    EXPECT_EQ("File status and dump, Version " TARVO_VERSION
              "\nCopyright (C) Quentor GmbH (www.quentor.example)\n",
              Filestat({"--version"}).strOut);
}

TEST_F(Filestat10Lines, TakesAFileThatLooksLikeAnOptionBehindTwoDashes)
{
    const ChildResult oResult = Filestat({"--", "-h"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("filestat: -h: No such file or directory\n", oResult.strErr);
}

} // namespace
