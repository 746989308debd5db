// INI documents, read, edited, written and read again, against the list of lines that the random
// tests use too; and what a rewrite promises about all other lines.

#include "tests/config/IniModel.h"
#include "tests/config/IniOptions.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>

namespace
{

/// The model takes quadratic time.
constexpr std::size_t MAX_LINES = 120;
constexpr int MAX_EDITS = 4;

struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;
    using CKorIniOptionExchange::m_apOptionLines;
};

class IniRun
{
public:
    IniRun(bool bCaseSensitive, const MemoryFile& oFile)
        : m_oFile(oFile),
          m_bCaseSensitive(bCaseSensitive),
          m_oModel(m_bCaseSensitive),
          m_oIni(oFile.Name().c_str(), CKorIniFile::PATH_UNCHANGED)
    {
        m_oIni.SetCasesensitiv(m_bCaseSensitive);
    }

    /// Reads a file and edits it.
    void Run(const std::string& strFile, Input& oEdits);

private:
    static std::string Name(Input& oEdits, const Exchange& oExchange,
                            std::string CKorIniOptionExchange::SOptionLine::*pPart);
    void Edit(Input& oEdits, Exchange& oExchange);
    void Compare(Exchange& oExchange);
    void CheckComments(const Exchange& oExchange, const std::string& strBefore) const;
    void CheckSecondRewrite(const std::string& strOnce);

    const MemoryFile& m_oFile;
    const bool m_bCaseSensitive;
    Model m_oModel;
    CKorIniFile m_oIni;
};

/// A name that the document has, or any other text.
std::string IniRun::Name(Input& oEdits, const Exchange& oExchange,
                         std::string CKorIniOptionExchange::SOptionLine::*pPart)
{
    const auto nLine = oEdits.ConsumeIntegral<std::uint8_t>();
    if (nLine < oExchange.m_apOptionLines.size())
        return (oExchange.m_apOptionLines[nLine]->*pPart).c_str();
    return oEdits.ConsumeRandomLengthString(30).c_str();
}

/// The same edit of both.
void IniRun::Edit(Input& oEdits, Exchange& oExchange)
{
    using Line = CKorIniOptionExchange::SOptionLine;
    const std::string strSection = Name(oEdits, oExchange, &Line::m_strSection);
    const std::string strName = Name(oEdits, oExchange, &Line::m_strOption);
    const auto nKind = oEdits.ConsumeIntegralInRange(0, 3);
    if (nKind == 0) {
        oExchange.RemoveOption(strSection.c_str(), strName.c_str());
        m_oModel.Remove(strSection, strName);
    } else if (nKind == 1) {
        const std::string strLine = oEdits.ConsumeRandomLengthString(60);
        std::string strEngineSection = strSection;
        std::string strModelSection = strSection;
        oExchange.AddOptionLine(strLine, strEngineSection);
        m_oModel.Add(strLine, strModelSection);
        ExpectEqual(strModelSection, strEngineSection, "the section after a line was added");
    } else {
        const std::string strValue = oEdits.ConsumeRandomLengthString(40).c_str();
        oExchange.SetOptionString(strSection.c_str(), strName.c_str(), strValue.c_str());
        m_oModel.Set(strSection, strName, strValue);
        std::string strRead;
        if (strName.empty()) // the value of whatever line comes first
            return;
        Expect(oExchange.GetOptionString(strSection.c_str(), strName.c_str(), strRead),
               "an option that was set is there", strName);
        ExpectEqual(strValue, strRead, "an option has the value that was set");
    }
}

void IniRun::Compare(Exchange& oExchange)
{
    Texts vecNames;
    oExchange.GetSections(vecNames);
    ExpectEqual(m_oModel.Sections(), vecNames, "the sections");
    for (const std::string& strSection : m_oModel.Sections()) {
        oExchange.GetOptions(strSection.c_str(), vecNames);
        ExpectEqual(m_oModel.Options(strSection.c_str()), vecNames, "the options of a section");
    }
    oExchange.WriteIniOptions();
    ExpectEqual(m_oModel.Written(), m_oFile.Read(), "the file that is written");
}

/// Every comment of the file stands in the document.
void IniRun::CheckComments(const Exchange& oExchange, const std::string& strBefore) const
{
    std::string strAll;
    for (const auto* pLine : oExchange.m_apOptionLines)
        strAll += pLine->m_strComment + "\n";
    for (std::string strLine : LinesOf(strBefore)) {
        if (!strLine.empty() && strLine.back() == '\n')
            strLine.pop_back();
        const std::size_t nComment = strLine.find('#');
        Expect(nComment == std::string::npos ||
                   strAll.find(strLine.substr(nComment)) != std::string::npos,
               "every comment is kept", strLine);
    }
}

/// Of a file in which no section is opened again.
void IniRun::CheckSecondRewrite(const std::string& strOnce)
{
    if (strOnce.find("## COMMENTED ## [") != std::string::npos ||
        strOnce.find("\n[]") != std::string::npos)
        return;
    const IniOptionMap mapOnce = IniOptions(m_oIni);
    Exchange(&m_oIni, false).WriteIniOptions();
    const auto vecOnce = LinesOf(strOnce);
    const auto vecTwice = LinesOf(m_oFile.Read());
    ExpectEqual(vecOnce.size(), vecTwice.size(), "a second rewrite adds and loses no line");
    for (std::size_t i = 0; i < vecOnce.size(); ++i) {
        std::string strGrown = vecOnce[i];
        if (strGrown[0] == '[' && strGrown.find('#') != std::string::npos)
            strGrown.insert(strGrown.size() - 1, " ");
        ExpectEqual(strGrown, vecTwice[i], "a second rewrite leaves all but comments of headers");
    }
    Expect(mapOnce == IniOptions(m_oIni), "a second rewrite leaves the options", strOnce);
}

void IniRun::Run(const std::string& strFile, Input& oEdits)
{
    m_oFile.Write(strFile);
    Exchange oExchange(&m_oIni, false);
    CheckComments(oExchange, strFile);
    if (oExchange.m_apOptionLines.size() > MAX_LINES)
        return;
    m_oModel.Read(strFile);
    Compare(oExchange);
    const std::string strOnce = m_oFile.Read();
    CheckSecondRewrite(strOnce);
    m_oFile.Write(strOnce);
    oExchange.ReadIniOptions();
    m_oModel.Read(strOnce);
    for (int i = 0; i < MAX_EDITS && oEdits.remaining_bytes() > 0; ++i) {
        Edit(oEdits, oExchange);
        Compare(oExchange);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    static const MemoryFile FILE;
    Input oInput(pData, nSize);
    const bool bCaseSensitive = oInput.ConsumeBool();
    const auto vecEdits = oInput.ConsumeBytes<std::uint8_t>(oInput.ConsumeIntegral<std::uint8_t>());
    Input oEdits(vecEdits.data(), vecEdits.size());
    IniRun(bCaseSensitive, FILE).Run(oInput.ConsumeRemainingBytesAsString(), oEdits);
    return 0;
}
