// One option set or removed in any file: it alone changes, and every other byte stays.

#include "config/KorSafeIniFile.h"
#include "tests/config/IniOptions.h"
#include "tests/fuzz/Fuzz.h"

namespace
{

constexpr char BLANKS[] = " \t\n\v\f\r";

bool HasOuterBlank(const std::string& strText)
{
    const std::string strBlanks = BLANKS;
    return !strText.empty() && (strBlanks.find(strText.front()) != std::string::npos ||
                                strBlanks.find(strText.back()) != std::string::npos);
}

/// Whether the format holds it, as the header says.
bool IsStorable(const std::string& strSection, const std::string& strOption,
                const std::string& strValue)
{
    return strSection.find_first_of("]#\n") == std::string::npos && !strOption.empty() &&
           strOption[0] != '[' && strOption.find_first_of("=#\n") == std::string::npos &&
           !HasOuterBlank(strOption) && strValue.find_first_of("#\n") == std::string::npos &&
           !HasOuterBlank(strValue);
}

/// How many bytes both begin or end with, none of them counted twice.
std::size_t CommonEnds(const std::string& strLeft, const std::string& strRight)
{
    const std::size_t nShorter = std::min(strLeft.size(), strRight.size());
    std::size_t nHead = 0;
    while (nHead < nShorter && strLeft[nHead] == strRight[nHead])
        ++nHead;
    std::size_t nTail = 0;
    while (nHead + nTail < nShorter &&
           strLeft[strLeft.size() - 1 - nTail] == strRight[strRight.size() - 1 - nTail])
        ++nTail;
    return nHead + nTail;
}

/// Whether every line has a line end with a carriage return.
bool EndsInReturns(const std::string& strText)
{
    bool bAll = !strText.empty() && strText.back() == '\n';
    for (std::size_t i = 0; i < strText.size(); ++i)
        bAll = bAll && (strText[i] != '\n' || (i > 0 && strText[i - 1] == '\r'));
    return bAll;
}

/// One file and what is done to it.
struct Edit
{
    CKorSafeIniFile& oIni;
    const DirectoryFile& oFile;
    std::string strBefore;
    IniOptionMap mapBefore;
    std::string strSection;
    std::string strOption;
    std::string strValue;

    IniName Key() const { return IniKey(strSection, strOption, oIni.IsCaseSensitiv()); }
    void CheckState(const IniOptionMap& mapExpected) const;
    void Set() const;
    void Remove() const;
    void RemoveSection() const;
};

void Edit::CheckState(const IniOptionMap& mapExpected) const
{
    Expect(mapExpected == IniOptions(oIni), "no other option changes", oFile.Read());
    ExpectEqual(strBefore != oFile.Read(), oIni.WasWritten(), "a file is written when it changes");
}

void Edit::Set() const
{
    const bool bDone = oIni.WriteOption(strSection.c_str(), strOption.c_str(), strValue.c_str());
    ExpectEqual(IsStorable(strSection, strOption, strValue), bDone, "what can be stored, is");
    if (!bDone) {
        ExpectEqual(strBefore, oFile.Read(), "a refusal leaves the file");
        ExpectEqual(std::size_t{1}, oIni.GetFindings().size(), "a refusal has a finding");
        return;
    }
    IniOptionMap mapExpected = mapBefore;
    mapExpected[Key()] = strValue;
    CheckState(mapExpected);
    const std::string strAfter = oFile.Read();
    const std::string strMark = "\xEF\xBB\xBF";
    Expect(strBefore.compare(0, 3, strMark) != 0 || strAfter.compare(0, 3, strMark) == 0,
           "a byte order mark stays in front", strAfter);
    Expect(!EndsInReturns(strBefore) || EndsInReturns(strAfter), "line ends stay", strAfter);
    if (mapBefore.count(Key()) != 0)
        Expect(LinesApart(strBefore, strAfter) <= 1, "one line changes", strAfter);
    else
        ExpectEqual(strBefore.size(), CommonEnds(strBefore, strAfter), "lines are only added");
    ExpectEqual(strValue, oIni.ReadOption(strSection.c_str(), strOption.c_str(), "none"), "value");
    oIni.WriteOption(strSection.c_str(), strOption.c_str(), strValue.c_str());
    Expect(!oIni.WasWritten(), "the same again writes nothing");
}

void Edit::Remove() const
{
    Expect(oIni.RemoveOption(strSection.c_str(), strOption.c_str()), "an option can be removed");
    IniOptionMap mapExpected = mapBefore;
    mapExpected.erase(Key());
    CheckState(mapExpected);
    Expect(!oIni.HasOption(strSection.c_str(), strOption.c_str()), "it is gone");
}

void Edit::RemoveSection() const
{
    Expect(oIni.RemoveSection(strSection.c_str()), "a section can be removed");
    IniOptionMap mapExpected;
    for (const auto& oOption : mapBefore) {
        if (oOption.first.first != Key().first)
            mapExpected.insert(oOption);
    }
    CheckState(mapExpected);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    static const DirectoryFile FILE;
    Input oInput(pData, nSize);
    CKorSafeIniFile oIni(FILE.Name().c_str(), CKorIniFile::PATH_UNCHANGED);
    oIni.SetCasesensitiv(oInput.ConsumeBool());
    const auto nKind = oInput.ConsumeIntegralInRange(0, 3);
    const auto nKnown = oInput.ConsumeIntegral<std::uint8_t>();
    std::string strSection = oInput.ConsumeRandomLengthString(40).c_str();
    std::string strOption = oInput.ConsumeRandomLengthString(40).c_str();
    const std::string strValue = oInput.ConsumeRandomLengthString(60).c_str();
    const std::string strFile = oInput.ConsumeRemainingBytesAsString();
    FILE.Write(strFile);
    const IniOptionMap mapBefore = IniOptions(oIni);
    if (nKnown < mapBefore.size()) { // an option that is there
        const IniName oName = std::next(mapBefore.begin(), nKnown)->first;
        strSection = oName.first.c_str();
        strOption = oName.second.c_str();
    }
    const Edit oEdit{oIni, FILE, strFile, mapBefore, strSection, strOption, strValue};
    if (nKind == 0)
        oEdit.Remove();
    else if (nKind == 1)
        oEdit.RemoveSection();
    else
        oEdit.Set();
    return 0;
}
