// Edits random files and compares what the plain class reads of them before and after.

#include "config/KorSafeIniFile.h"
#include "tests/config/IniDice.h"
#include "tests/config/IniOptions.h"
#include "tests/config/TestScale.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace
{

using Name = IniName;
using Options = IniOptionMap;

/// The options of a program that sets some of them.
class Settings : public CKorSafeIniFile
{
public:
    using CKorSafeIniFile::CKorSafeIniFile;
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        for (const auto& [oName, strValue] : m_vecToSet)
            pExchange->SetOptionString(oName.first.c_str(), oName.second.c_str(), strValue.c_str());
    }
    std::vector<std::pair<Name, std::string>> m_vecToSet;
};

/// Tests write thousands of files; where there is a file system in memory, they are there.
std::string QuickDirectory()
{
    return std::filesystem::exists("/dev/shm") ? "/dev/shm"
                                               : std::filesystem::temp_directory_path().string();
}

/// The parameter is the case rule.
class KorSafeIniModel : public testing::TestWithParam<bool>
{
protected:
    static constexpr int FILES = 3000 / TEST_SCALE;

    KorSafeIniModel()
        : m_nSeed(TestSeed()),
          m_oDice(m_nSeed),
          m_oDir(QuickDirectory()),
          m_oFile(m_oDir.File("test.ini").c_str(), CKorIniFile::PATH_UNCHANGED)
    {
        m_oFile.SetCasesensitiv(GetParam());
    }

    Name Key(const std::string& strSection, const std::string& strOption) const
    {
        return IniKey(strSection, strOption, GetParam());
    }
    Options Read() { return IniOptions(m_oFile); }
    std::string Content() const { return ReadFile(m_oFile.GetIniFileName()); }

    /// A file of random lines, now and then with a byte order mark or other line ends.
    std::string RandomFile()
    {
        std::string strFile = m_oDice.Below(8) == 0 ? "\xEF\xBB\xBF" : "";
        for (const char c : m_oDice.File()) {
            const bool bReturn = c == '\n' && m_oDice.Below(4) == 0;
            strFile += bReturn ? "\r\n" : std::string(1, c);
        }
        return strFile;
    }

    const unsigned m_nSeed;
    IniDice m_oDice;
    ScratchDir m_oDir;
    Settings m_oFile;
};

TEST_P(KorSafeIniModel, SettingAnOptionChangesThatOneAlone)
{
    for (int i = 0; i < FILES; ++i) {
        const std::string strBefore = RandomFile();
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", file:\n" + strBefore);
        WriteFile(m_oFile.GetIniFileName(), strBefore);
        const Options mapBefore = Read();
        const std::string strSection = m_oDice.Name();
        const std::string strOption = m_oDice.Name();
        const std::string strValue = m_oDice.Value();
        SCOPED_TRACE("[" + strSection + "] " + strOption + "=" + strValue);

        const bool bResult =
            m_oFile.WriteOption(strSection.c_str(), strOption.c_str(), strValue.c_str());
        const std::string strAfter = Content();
        if (!bResult) {
            ASSERT_EQ(strBefore, strAfter);
            ASSERT_EQ(1U, m_oFile.GetFindings().size());
            ASSERT_TRUE(strOption.empty() || strValue == "#" || strValue == " 5 ");
            continue;
        }
        ASSERT_EQ(strBefore != strAfter, m_oFile.WasWritten());
        Options mapExpected = mapBefore;
        mapExpected[Key(strSection, strOption)] = strValue;
        ASSERT_EQ(mapExpected, Read()) << strAfter;
        const bool bOld = mapBefore.count(Key(strSection, strOption)) != 0;
        ASSERT_TRUE(!bOld || LinesApart(strBefore, strAfter) <= 1) << strAfter;
        ASSERT_EQ(strValue, m_oFile.ReadOption(strSection.c_str(), strOption.c_str(), "none"));
        ASSERT_TRUE(m_oFile.WriteOption(strSection.c_str(), strOption.c_str(), strValue.c_str()));
        ASSERT_FALSE(m_oFile.WasWritten());
    }
}

TEST_P(KorSafeIniModel, RemovingChangesNothingElse)
{
    for (int i = 0; i < FILES; ++i) {
        const std::string strBefore = RandomFile();
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", file:\n" + strBefore);
        WriteFile(m_oFile.GetIniFileName(), strBefore);
        Options mapExpected = Read();
        const std::string strSection = m_oDice.Name();
        const std::string strOption = m_oDice.Name();
        SCOPED_TRACE("[" + strSection + "] " + strOption);

        const bool bSection = m_oDice.Below(2) == 0;
        for (auto it = mapExpected.begin(); it != mapExpected.end();) {
            const Name oName = Key(strSection, bSection ? it->first.second : strOption);
            it = it->first == oName ? mapExpected.erase(it) : std::next(it);
        }
        ASSERT_TRUE(bSection ? m_oFile.RemoveSection(strSection.c_str())
                             : m_oFile.RemoveOption(strSection.c_str(), strOption.c_str()));
        ASSERT_EQ(strBefore != Content(), m_oFile.WasWritten());
        ASSERT_EQ(mapExpected, Read()) << Content();
        ASSERT_FALSE(!bSection && m_oFile.HasOption(strSection.c_str(), strOption.c_str()));
    }
}

TEST_P(KorSafeIniModel, AnExchangeSetsItsOptionsAlone)
{
    for (int i = 0; i < FILES; ++i) {
        const std::string strBefore = RandomFile();
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", file:\n" + strBefore);
        WriteFile(m_oFile.GetIniFileName(), strBefore);
        Options mapExpected = Read();
        m_oFile.m_vecToSet.clear();
        for (size_t n = m_oDice.Below(5); n > 0; --n) {
            const std::string strOption = m_oDice.OneOf({"a", "A", "b", "new", "key word"});
            const std::string strSection = m_oDice.Name();
            const std::string strValue = m_oDice.OneOf({"", "1", "two words", "\"q\"", "x=y"});
            m_oFile.m_vecToSet.push_back({{strSection, strOption}, strValue});
            mapExpected[Key(strSection, strOption)] = strValue;
        }
        ASSERT_TRUE(m_oFile.UpdateOptions(true));
        ASSERT_EQ(strBefore != Content(), m_oFile.WasWritten());
        ASSERT_EQ(mapExpected, Read()) << Content();
        ASSERT_TRUE(m_oFile.UpdateOptions(true));
        ASSERT_FALSE(m_oFile.WasWritten());
    }
}

TEST_P(KorSafeIniModel, ReadsAsThePlainClassDoes)
{
    for (int i = 0; i < FILES; ++i) {
        WriteFile(m_oFile.GetIniFileName(), RandomFile());
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", file:\n" + Content());
        CKorIniFile& oPlain = m_oFile;
        std::vector<std::string> vecSafe;
        std::vector<std::string> vecPlain;
        m_oFile.m_vecToSet.clear();
        m_oFile.ReadAllSections(vecSafe);
        oPlain.ReadAllSections(vecPlain);
        ASSERT_EQ(vecPlain, vecSafe);
        const std::string strSection = m_oDice.Name();
        m_oFile.ReadAllSectionEntries(strSection.c_str(), vecSafe);
        oPlain.ReadAllSectionEntries(strSection.c_str(), vecPlain);
        ASSERT_EQ(vecPlain, vecSafe);
        const std::string strOption = m_oDice.Name() + "a";
        ASSERT_EQ(oPlain.ReadOption(strSection.c_str(), strOption.c_str(), "none"),
                  m_oFile.ReadOption(strSection.c_str(), strOption.c_str(), "none"));
    }
}

INSTANTIATE_TEST_SUITE_P(CaseRule, KorSafeIniModel, testing::Bool());

} // namespace
