// Drives the INI engine and a naive model with the same random documents and edits. The model is a
// plain list of lines, each rule of the format one or two lines of code over it.

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/config/IniDice.h"
#include "tests/config/IniModel.h"
#include "tests/config/TestScale.h"
#include "tests/support/ScratchDir.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;

    std::string Value(const std::string& strSection, const std::string& strName)
    {
        std::string strValue = "none";
        GetOptionString(strSection.c_str(), strName.c_str(), strValue);
        return strValue;
    }
    Texts Sections()
    {
        Texts vecNames;
        GetSections(vecNames);
        return vecNames;
    }
    Texts Options(const std::string& strSection)
    {
        Texts vecNames;
        GetOptions(strSection.c_str(), vecNames);
        return vecNames;
    }
};

/// The parameter is the case rule.
class KorIniModel : public testing::TestWithParam<bool>
{
protected:
    static constexpr int DOCUMENTS = 3000 / TEST_SCALE;
    static constexpr int EDITS = 6;

    KorIniModel()
        : m_nSeed(TestSeed()),
          m_oDice(m_nSeed),
          m_oModel(GetParam()),
          m_oFile(m_oDir.File("test.ini").c_str(), CKorIniFile::PATH_UNCHANGED)
    {
        m_oFile.SetCasesensitiv(GetParam());
    }

    /// The same random edit of both.
    void Edit(Exchange& oExchange)
    {
        const std::string strSection = m_oDice.Name();
        const std::string strName = m_oDice.Name();
        std::string strCurrentSection = strSection;
        std::string strModelSection = strSection;
        const std::string strText = m_oDice.Value();
        const std::string strLine = m_oDice.Line();
        switch (m_oDice.Below(4)) {
        case 0:
            oExchange.RemoveOption(strSection.c_str(), strName.c_str());
            m_oModel.Remove(strSection, strName);
            break;
        case 1:
            oExchange.AddOptionLine(strLine, strCurrentSection);
            m_oModel.Add(strLine, strModelSection);
            EXPECT_EQ(strModelSection, strCurrentSection);
            break;
        default:
            oExchange.SetOptionString(strSection.c_str(), strName.c_str(), strText.c_str());
            m_oModel.Set(strSection, strName, strText);
        }
    }

    void Compare(Exchange& oExchange)
    {
        const std::string strSection = m_oDice.Name();
        const std::string strName = m_oDice.Name();
        EXPECT_EQ(m_oModel.Value(strSection, strName), oExchange.Value(strSection, strName));
        EXPECT_EQ(m_oModel.Sections(), oExchange.Sections());
        EXPECT_EQ(m_oModel.Options(strSection), oExchange.Options(strSection));
        RemoveFile();
        oExchange.WriteIniOptions();
        ASSERT_EQ(m_oModel.Written(), ReadFile(m_oFile.GetIniFileName()));
    }

    void Store(const std::string& strContent) const
    {
        RemoveFile();
        WriteFile(m_oFile.GetIniFileName(), strContent);
    }

    /// Many file systems wait for the device when a file is truncated and closed; a new file
    /// spares thousands of such waits.
    void RemoveFile() const { std::remove(m_oFile.GetIniFileName().c_str()); }

    const unsigned m_nSeed;
    IniDice m_oDice;
    Model m_oModel;
    ScratchDir m_oDir;
    CKorIniFile m_oFile;
};

TEST_P(KorIniModel, AgreesWithTheEngineOnEveryEdit)
{
    for (int nDocument = 0; nDocument < DOCUMENTS; ++nDocument) {
        const std::string strContent = m_oDice.File();
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed) + ", read:\n" + strContent);
        Store(strContent);
        m_oModel.Read(strContent);
        Exchange oExchange(&m_oFile, false);
        Compare(oExchange);
        for (int nEdit = 0; nEdit < EDITS; ++nEdit) {
            Edit(oExchange);
            Compare(oExchange);
        }
        m_oModel.Read(m_oModel.Written());
        oExchange.ReadIniOptions();
        Compare(oExchange);
        if (HasFailure())
            return;
    }
}

TEST_P(KorIniModel, AgreesWithTheEngineOnLinesAddedOneByOne)
{
    for (int nDocument = 0; nDocument < DOCUMENTS; ++nDocument) {
        SCOPED_TRACE("TARVO_TEST_SEED=" + std::to_string(m_nSeed));
        m_oModel.Read("");
        Store("");
        Exchange oExchange(&m_oFile, false);
        std::string strEngineSection;
        std::string strModelSection;
        for (size_t n = m_oDice.Below(20); n > 0; --n) {
            const std::string strLine = m_oDice.Line();
            oExchange.AddOptionLine(strLine, strEngineSection);
            m_oModel.Add(strLine, strModelSection);
        }
        Compare(oExchange);
        if (HasFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(CaseRule, KorIniModel, testing::Bool(), [](const auto& oInfo) {
    return oInfo.param ? "CaseMatters" : "CaseDoesNotMatter";
});

} // namespace
