#include "config/KorIniFile.h"

#include "config/KorOptionExchange.h"
#include "tests/support/ScratchDir.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace
{

using Texts = std::vector<std::string>;

constexpr auto MODE = CKorIniFile::PATH_UNCHANGED;

/// The options of a program: one text.
struct Options : CKorIniFile
{
    using CKorIniFile::CKorIniFile;
    using CKorIniFile::DoOptionExchange;

    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        m_vecWrites.push_back(pExchange->IsWriteBack());
        IOX_Std<std::string>(pExchange, "S", "name", m_strName, "nobody");
    }

    std::string m_strName = "me";
    std::vector<bool> m_vecWrites;
};

class KorIniFile : public testing::Test
{
protected:
    KorIniFile()
        : m_strFile(m_oDir.File("test.ini")),
          m_oFile(m_strFile.c_str(), MODE),
          m_oOptions(m_strFile.c_str(), MODE)
    {
    }

    ScratchDir m_oDir;
    const std::string m_strFile;
    CKorIniFile m_oFile;
    Options m_oOptions;
};

TEST_F(KorIniFile, HasADefaultName)
{
    EXPECT_EQ("Konfig.ini", CKorIniFile(nullptr, MODE).GetIniFileName());
    EXPECT_EQ("Konfig.ini", CKorIniFile("", MODE).GetIniFileName());
    EXPECT_EQ("", CKorIniFile().GetIniFileName());
}

TEST_F(KorIniFile, LeavesANameUnchangedUnlessToldOtherwise)
{
    EXPECT_EQ("a.ini", CKorIniFile("a.ini", MODE).GetIniFileName());
    EXPECT_EQ("a.ini",
              CKorIniFile("a.ini", static_cast<CKorIniFile::EPathMode>(7)).GetIniFileName());
    EXPECT_EQ("a.ini",
              CKorIniFile("a.ini", static_cast<CKorIniFile::EPathMode>(-1)).GetIniFileName());
}

TEST_F(KorIniFile, AnUnchangedNameIsRelativeToTheWorkingDirectoryAtEachUse)
{
    const std::filesystem::path oBefore = std::filesystem::current_path();
    CKorIniFile oFile(nullptr, MODE);
    std::filesystem::current_path(m_oDir.Path());
    oFile.WriteOption("S", "a", "1");
    std::filesystem::current_path(oBefore);
    EXPECT_EQ("\n[S] \na=1 \n", ReadFile(m_oDir.File("Konfig.ini")));
}

TEST_F(KorIniFile, CanLieInTheDirectoryOfTheProgram)
{
    const std::string strProgramDir =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    EXPECT_EQ(strProgramDir + "/Konfig.ini",
              CKorIniFile(nullptr, CKorIniFile::PATH_PROGRAM_DIR).GetIniFileName());
    EXPECT_EQ(strProgramDir + "/etc/x.ini",
              CKorIniFile("/etc/x.ini", CKorIniFile::PATH_PROGRAM_DIR).GetIniFileName());
}

TEST_F(KorIniFile, CanLieInTheWorkingDirectory)
{
    const std::filesystem::path oBefore = std::filesystem::current_path();
    std::filesystem::create_directory(m_oDir.File("app"));
    std::filesystem::current_path(m_oDir.File("app"));
    const std::string strWorkDir = std::filesystem::current_path().string();
    const CKorIniFile oUnnamed(nullptr, CKorIniFile::PATH_WORK_DIR);
    CKorIniFile oBelow("/etc/x.ini", CKorIniFile::PATH_WORK_DIR);
    const CKorIniFile oAbove("../x.ini", CKorIniFile::PATH_WORK_DIR);
    std::filesystem::current_path(oBefore);

    // The names stay when the working directory changes.
    EXPECT_EQ(strWorkDir + "/Konfig.ini", oUnnamed.GetIniFileName());
    EXPECT_EQ(strWorkDir + "/etc/x.ini", oBelow.GetIniFileName());
    EXPECT_EQ(std::filesystem::path(strWorkDir).parent_path().string() + "/x.ini",
              oAbove.GetIniFileName());

    std::filesystem::create_directory(m_oDir.File("app/etc"));
    oBelow.WriteOption("S", "a", "1");
    EXPECT_EQ("\n[S] \na=1 \n", ReadFile(m_oDir.File("app/etc/x.ini")));
}

TEST_F(KorIniFile, ComparesNamesWithoutRegardToCaseUnlessToldOtherwise)
{
    EXPECT_FALSE(CKorIniFile().IsCaseSensitiv());
    EXPECT_FALSE(m_oFile.IsCaseSensitiv());
    WriteFile(m_strFile, "[S]\na=1\n");
    EXPECT_EQ("1", m_oFile.ReadOption("s", "A", "none"));
    m_oFile.SetCasesensitiv(true);
    EXPECT_TRUE(m_oFile.IsCaseSensitiv());
    EXPECT_EQ("none", m_oFile.ReadOption("s", "A", "none"));
    EXPECT_EQ("1", m_oFile.ReadOption("S", "a", "none"));
}

TEST_F(KorIniFile, AMissingOptionReadsAsItsDefault)
{
    EXPECT_EQ("none", m_oFile.ReadOption("S", "a", "none"));
    WriteFile(m_strFile, "[S]\nb=1\n");
    EXPECT_EQ("\"none\"", m_oFile.ReadOption("S", "a", "\"none\""));
    EXPECT_EQ("", m_oFile.ReadOption("S", "a", nullptr));
}

TEST_F(KorIniFile, TextsThatTheProgramsExchangeChangesCountAsTheyWere)
{
    WriteFile(m_strFile, "[me]\nme=1\n[S]\nname = " + std::string(100, 'x') + "\n");
    const char* pszName = m_oOptions.m_strName.c_str();
    EXPECT_EQ("1", m_oOptions.ReadOption(pszName, pszName, ""));
    m_oOptions.m_strName = "default";
    EXPECT_EQ("default", m_oOptions.ReadOption("S", "none", m_oOptions.m_strName.c_str()));
    m_oOptions.m_strName = "me";
    Texts vecNames;
    m_oOptions.ReadAllSectionEntries(m_oOptions.m_strName.c_str(), vecNames);
    EXPECT_EQ(Texts{"me"}, vecNames);
}

TEST_F(KorIniFile, AnOptionIsReadWithItsQuotes)
{
    WriteFile(m_strFile, "[S]\na = \"two words\"\nb=\n");
    EXPECT_EQ("\"two words\"", m_oFile.ReadOption("S", "a", "none"));
    EXPECT_EQ("", m_oFile.ReadOption("S", "b", "none"));
}

TEST_F(KorIniFile, EveryWriteReadsAndWritesTheFile)
{
    m_oFile.WriteOption("S", "a", "1");
    EXPECT_EQ("\n[S] \na=1 \n", ReadFile(m_strFile));
    WriteFile(m_strFile, "[S]\nother=5\n");
    m_oFile.WriteOption("S", "b", "2");
    EXPECT_EQ("\n[S]  \nb=2 \nother=5 \n", ReadFile(m_strFile));
    m_oFile.WriteOption("S", "b", "2");
    EXPECT_EQ("\n[S]  \nb=2 \nother=5 \n", ReadFile(m_strFile));
}

TEST_F(KorIniFile, TheExampleOfTheFormatPageHolds)
{
    WriteFile(m_strFile, "# Gateway\n"
                         "[Port]\n"
                         "Device = /dev/ttyAM0    # upper socket\n"
                         "Baud=9600\n"
                         "Baud=19200\n"
                         "\n"
                         "[Log]\n"
                         "Level=2\n"
                         "remember to lower this\n"
                         "[port]\n"
                         "Name = first meter\n");
    m_oFile.WriteOption("Port", "Parity", "even");
    EXPECT_EQ("# Gateway\n"
              "\n"
              "[Port]  \n"
              "Parity=even \n"
              "Name=first meter \n"
              "Device=/dev/ttyAM0 # upper socket\n"
              "Baud=9600 \n"
              "## COMMENTED ## Baud=19200 \n"
              "\n"
              "[Log]  \n"
              "Level=2 \n"
              "remember to lower this\n"
              "## COMMENTED ## [port]  \n"
              "## COMMENTED ## Name=first meter \n",
              ReadFile(m_strFile));
}

TEST_F(KorIniFile, ReadingAllOptionsNeverWrites)
{
    WriteFile(m_strFile, "[S]\nname = you\n");
    EXPECT_TRUE(m_oOptions.UpdateOptions(false));
    EXPECT_EQ("you", m_oOptions.m_strName);
    EXPECT_EQ("[S]\nname = you\n", ReadFile(m_strFile));
}

TEST_F(KorIniFile, WritingAllOptionsWritesTheSameValuesToo)
{
    WriteFile(m_strFile, "[S]\nname = me\n");
    EXPECT_TRUE(m_oOptions.UpdateOptions(true));
    EXPECT_EQ("\n[S]  \nname=me \n", ReadFile(m_strFile));
}

TEST_F(KorIniFile, WritingWithoutOptionsLeavesTheFileAlone)
{
    WriteFile(m_strFile, "[S]\nname = me\n");
    EXPECT_TRUE(m_oFile.UpdateOptions(true));
    EXPECT_EQ("[S]\nname = me\n", ReadFile(m_strFile));
}

TEST_F(KorIniFile, ReadingOneOptionRefreshesAllVariables)
{
    WriteFile(m_strFile, "[S]\nname=you\nother=1\n");
    EXPECT_EQ("1", m_oOptions.ReadOption("S", "other", "none"));
    EXPECT_EQ("you", m_oOptions.m_strName);
    EXPECT_EQ((std::vector<bool>{false}), m_oOptions.m_vecWrites);
}

TEST_F(KorIniFile, WritingOneOptionStoresAllVariables)
{
    m_oOptions.WriteOption("S", "other", "1");
    EXPECT_EQ("\n[S] \nname=me \nother=1 \n", ReadFile(m_strFile));
    EXPECT_EQ((std::vector<bool>{true}), m_oOptions.m_vecWrites);
}

TEST_F(KorIniFile, AVariableOfTheProgramPrevailsOverASingleWrite)
{
    m_oOptions.WriteOption("S", "name", "you");
    EXPECT_EQ("\n[S] \nname=me \n", ReadFile(m_strFile));
}

TEST_F(KorIniFile, ListsSectionsAndEntriesAndRefreshesAllVariables)
{
    WriteFile(m_strFile, "[T]\n[S]\nname=you\nb=2\n");
    Texts vecNames;
    m_oOptions.ReadAllSections(vecNames);
    EXPECT_EQ((Texts{"S", "T"}), vecNames);
    EXPECT_EQ("you", m_oOptions.m_strName);

    WriteFile(m_strFile, "[T]\n[S]\nname=her\nb=2\n");
    m_oOptions.ReadAllSectionEntries("S", vecNames);
    EXPECT_EQ((Texts{"b", "name"}), vecNames);
    EXPECT_EQ("her", m_oOptions.m_strName);
    EXPECT_EQ((std::vector<bool>{false, false}), m_oOptions.m_vecWrites);
}

TEST_F(KorIniFile, AFileThatCannotBeWrittenIsNoError)
{
    CKorIniFile oNowhere(m_oDir.File("none/test.ini").c_str(), MODE);
    oNowhere.WriteOption("S", "a", "1");
    EXPECT_EQ("none", oNowhere.ReadOption("S", "a", "none"));
    EXPECT_TRUE(oNowhere.UpdateOptions(true));
    EXPECT_FALSE(std::filesystem::exists(m_oDir.File("none")));
}

TEST_F(KorIniFile, WithoutANameThereIsNothingToRead)
{
    CKorIniFile oFile;
    EXPECT_EQ("none", oFile.ReadOption("S", "a", "none"));
    oFile.WriteOption("S", "a", "1");
    EXPECT_EQ("none", oFile.ReadOption("S", "a", "none"));
}

TEST_F(KorIniFile, NullTextsReadAsEmpty)
{
    WriteFile(m_strFile, "a=1\n");
    EXPECT_EQ("1", m_oFile.ReadOption(nullptr, "a", nullptr));
    m_oFile.WriteOption(nullptr, "a", nullptr);
    EXPECT_EQ("a= \n", ReadFile(m_strFile));
    Texts vecNames;
    m_oFile.ReadAllSectionEntries(nullptr, vecNames);
    EXPECT_EQ(Texts{"a"}, vecNames);
}

TEST_F(KorIniFile, ForwardsAGenericExchangeToTheTypedHandler)
{
    WriteFile(m_strFile, "[S]\nname=you\n");
    CKorIniOptionExchange oExchange(&m_oOptions, false);
    CKorConfigBase& oSource = m_oOptions;
    oSource.DoOptionExchange(&oExchange);
    EXPECT_EQ("you", m_oOptions.m_strName);
}

} // namespace
