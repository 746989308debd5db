// Edits INI files as Debian packages ship them and compares before and after line by line.

#include "tests/config/TestScale.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace
{

using Lines = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr char FETCH[] = "run scripts/sample-ini-files.sh " SAMPLE_INI_DIR;

ChildResult Inictl(Lines vecWords)
{
    vecWords.insert(vecWords.begin(), INICTL_PROGRAM);
    return RunProgram(vecWords);
}

Lines LinesOf(const std::string& strContent)
{
    Lines vecLines;
    std::istringstream oContent(strContent);
    for (std::string strLine; std::getline(oContent, strLine);)
        vecLines.push_back(strLine);
    return vecLines;
}

/// What is between the lines that both begin with and those that both end with: "-" and "+" lines.
Lines Diff(const Lines& vecBefore, const Lines& vecAfter)
{
    const auto [itBefore, itAfter] =
        std::mismatch(vecBefore.begin(), vecBefore.end(), vecAfter.begin(), vecAfter.end());
    const auto [itBeforeEnd, itAfterEnd] =
        std::mismatch(vecBefore.rbegin(), std::make_reverse_iterator(itBefore), vecAfter.rbegin(),
                      std::make_reverse_iterator(itAfter));
    Lines vecDiff;
    std::for_each(itBefore, itBeforeEnd.base(),
                  [&](const auto& str) { vecDiff.push_back("-" + str); });
    std::for_each(itAfter, itAfterEnd.base(),
                  [&](const auto& str) { vecDiff.push_back("+" + str); });
    return vecDiff;
}

/// All files of the folder whose path ends as asked, in order.
std::vector<fs::path> Samples(const std::string& strFolder, const std::string& strEnd)
{
    std::vector<fs::path> vecFiles;
    const fs::path oFolder = fs::path(SAMPLE_INI_DIR) / strFolder;
    if (!fs::is_directory(oFolder))
        return vecFiles;
    for (const fs::directory_entry& oEntry : fs::recursive_directory_iterator(oFolder)) {
        const std::string strName = oEntry.path();
        if (oEntry.is_regular_file() && !oEntry.is_symlink() && strName.size() >= strEnd.size() &&
            strName.compare(strName.size() - strEnd.size(), strEnd.size(), strEnd) == 0)
            vecFiles.push_back(oEntry.path());
    }
    std::sort(vecFiles.begin(), vecFiles.end());
    return vecFiles;
}

class InictlSample : public testing::Test
{
protected:
    /// A copy that may be edited.
    std::string Copy(const fs::path& oSample) const
    {
        std::string strCopy = m_oDir.File(oSample.filename());
        WriteFile(strCopy, ReadFile(oSample));
        return strCopy;
    }

    /// Sets the option and expects that nothing but its line changes.
    void ExpectOneLineEdited(const fs::path& oSample, const std::string& strSection,
                             const std::string& strOption) const
    {
        SCOPED_TRACE(oSample);
        const std::string strCopy = Copy(oSample);
        const std::string strBefore = ReadFile(strCopy);
        ASSERT_EQ(0, Inictl({"get", strCopy, strSection, strOption}).nExitStatus);
        ASSERT_EQ(0, Inictl({"set", strCopy, strSection, strOption, "new value"}).nExitStatus);
        const std::string strAfter = ReadFile(strCopy);

        const Lines vecDiff = Diff(LinesOf(strBefore), LinesOf(strAfter));
        ASSERT_EQ(2U, vecDiff.size()) << testing::PrintToString(vecDiff);
        EXPECT_NE(std::string::npos, vecDiff[0].find(strOption)) << vecDiff[0];
        const size_t nValue = vecDiff[0].find_first_not_of(" \t", vecDiff[0].find('=') + 1);
        EXPECT_EQ("+" + vecDiff[0].substr(1, nValue - 1) + "\"new value\"", vecDiff[1]);
        EXPECT_EQ("new value\n", Inictl({"get", strCopy, strSection, strOption}).strOut);

        // The same once more changes nothing.
        ASSERT_EQ(0, Inictl({"set", strCopy, strSection, strOption, "new value"}).nExitStatus);
        EXPECT_EQ(strAfter, ReadFile(strCopy));
    }

    void ExpectOneLineEdited(const std::string& strFolder, const std::string& strName,
                             const std::string& strSection, const std::string& strOption) const
    {
        const std::vector<fs::path> vecSamples = Samples(strFolder, strName);
        ASSERT_FALSE(vecSamples.empty()) << "no " << strName << ": " << FETCH;
        ExpectOneLineEdited(vecSamples[0], strSection, strOption);
    }

    ScratchDir m_oDir;
};

TEST_F(InictlSample, OneLineOfEveryUnitChanges)
{
    std::vector<fs::path> vecUnits = Samples("systemd", ".service");
    vecUnits.erase(std::remove_if(vecUnits.begin(), vecUnits.end(),
                                  [](const fs::path& oPath) {
                                      return oPath.parent_path().filename() != "system";
                                  }),
                   vecUnits.end());
    ASSERT_GE(vecUnits.size(), 20U) << FETCH;
    for (size_t i = 0; i < vecUnits.size(); i += TEST_SCALE)
        ExpectOneLineEdited(vecUnits[i], "Unit", "Description");
}

TEST_F(InictlSample, OneLineOfThePhpSettingsChanges)
{
    ExpectOneLineEdited("php", "php.ini-production", "PHP", "memory_limit");
}

TEST_F(InictlSample, OneLineOfTheSambaSettingsChanges)
{
    ExpectOneLineEdited("samba-common", "/smb.conf", "global", "workgroup");
}

TEST_F(InictlSample, OneLineOfTheDatabaseSettingsChanges)
{
    ExpectOneLineEdited("mysql-common", "mysqldump.cnf", "mysqldump", "max_allowed_packet");
}

TEST_F(InictlSample, ASectionIsAppendedToAFileOfComments)
{
    const std::vector<fs::path> vecSamples = Samples("systemd", "journald.conf");
    ASSERT_FALSE(vecSamples.empty()) << FETCH;
    const std::string strCopy = Copy(vecSamples[0]);
    ASSERT_EQ(0, Inictl({"set", strCopy, "Other", "Key", "1"}).nExitStatus);
    EXPECT_EQ((Lines{"+", "+[Other]", "+Key=1"}),
              Diff(LinesOf(ReadFile(vecSamples[0])), LinesOf(ReadFile(strCopy))));
}

TEST_F(InictlSample, AnOptionIsRemovedFromTheDatabaseSettings)
{
    const std::vector<fs::path> vecSamples = Samples("mariadb-common", "mariadb.cnf");
    ASSERT_FALSE(vecSamples.empty()) << FETCH;
    const std::string strCopy = Copy(vecSamples[0]);
    ASSERT_EQ(0, Inictl({"remove", strCopy, "client-server", "socket"}).nExitStatus);
    EXPECT_EQ((Lines{"-socket = /run/mysqld/mysqld.sock"}),
              Diff(LinesOf(ReadFile(vecSamples[0])), LinesOf(ReadFile(strCopy))));
}

TEST_F(InictlSample, EveryOddLineOfThePhpSettingsIsTold)
{
    const std::vector<fs::path> vecSamples = Samples("php", "php.ini-production");
    ASSERT_FALSE(vecSamples.empty()) << FETCH;
    const ChildResult oResult = Inictl({"check", vecSamples[0]});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strOut.find(vecSamples[0].string() + ":"));
    EXPECT_NE(std::string::npos,
              oResult.strOut.find(": the line is neither a header nor an option"));
    EXPECT_NE(std::string::npos, oResult.strOut.find(": \";\" begins no comment"));
    EXPECT_EQ("", oResult.strErr);
}

/// Git reads what the program writes, and the other way round.
TEST_F(InictlSample, AGitConfigurationStaysOneForGit)
{
    const std::string strFile = m_oDir.File("config");
    const auto Git = [&](Lines vecWords) {
        vecWords.insert(vecWords.begin(), {GIT_PROGRAM, "config", "--file", strFile});
        return RunProgram(vecWords);
    };
    ASSERT_EQ(0, Git({"user.name", "A Name"}).nExitStatus);
    ASSERT_EQ(0, Git({"core.bare", "false"}).nExitStatus);
    ASSERT_EQ(0, Git({"remote.origin.url", "https://example.org/x.git"}).nExitStatus);
    ASSERT_EQ(
        0,
        Git({"--add", "remote.origin.fetch", "+refs/heads/*:refs/remotes/origin/*"}).nExitStatus);
    const std::string strBefore = ReadFile(strFile);

    EXPECT_EQ("https://example.org/x.git\n",
              Inictl({"get", strFile, "remote \"origin\"", "url"}).strOut);
    ASSERT_EQ(0, Inictl({"set", strFile, "user", "name", "Another Name"}).nExitStatus);
    EXPECT_EQ((Lines{"-\tname = A Name", "+\tname = \"Another Name\""}),
              Diff(LinesOf(strBefore), LinesOf(ReadFile(strFile))));
    EXPECT_EQ("Another Name\n", Git({"--get", "user.name"}).strOut);
    EXPECT_EQ("+refs/heads/*:refs/remotes/origin/*\n",
              Git({"--get", "remote.origin.fetch"}).strOut);
}

} // namespace
