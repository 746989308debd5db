// What is found in an INI file, against a list of rules over its lines.

#include "config/KorIniFinding.h"
#include "tests/config/IniOptions.h"
#include "tests/fuzz/Fuzz.h"

#include <set>

namespace
{

using Finding = std::pair<unsigned int, SKorIniFinding::EKind>;

std::string Trimmed(const std::string& strText)
{
    constexpr char BLANKS[] = " \t\n\v\f\r";
    const std::size_t nFirst = strText.find_first_not_of(BLANKS);
    if (nFirst == std::string::npos)
        return "";
    return strText.substr(nFirst, strText.find_last_not_of(BLANKS) + 1 - nFirst);
}

/// The rules. A name is known by the lines before.
class Model
{
public:
    explicit Model(bool bCaseSensitive) : m_bCaseSensitive(bCaseSensitive) {}

    void Check(const std::string& strLine, unsigned int nLine)
    {
        const std::string strKept = strLine.substr(
            std::min(strLine.find_first_not_of(std::string(" \t\n\v\f\r")), strLine.size()));
        if (strKept.empty())
            return;
        m_nLine = nLine;
        const bool bMark = nLine == 1 && strLine.compare(0, 3, "\xEF\xBB\xBF") == 0;
        if (bMark)
            Report(SKorIniFinding::FINDING_BYTE_ORDER_MARK);
        const std::size_t nHash = std::min(strKept.find('#'), strKept.size());
        const std::string strHead = strKept.substr(0, nHash);
        const std::size_t nSign = strHead.find('=');
        if (strHead[0] == '[')
            CheckHeader(strHead);
        else if (nSign != std::string::npos && nSign != 0)
            CheckOption(Trimmed(strHead.substr(0, nSign)), Trimmed(strHead.substr(nSign + 1)),
                        strKept.substr(nHash));
        else if (!bMark && nHash != 0)
            Report(SKorIniFinding::FINDING_SYNTAX);
        m_setNames.insert(IniKey(m_strSection, "", m_bCaseSensitive));
    }

    std::vector<Finding> m_vecFindings;

private:
    void Report(SKorIniFinding::EKind eKind) { m_vecFindings.emplace_back(m_nLine, eKind); }

    void CheckHeader(const std::string& strHead)
    {
        const std::size_t nClose = strHead.find(']');
        m_strSection = strHead.substr(1, nClose - 1);
        if (nClose == std::string::npos || !Trimmed(strHead.substr(nClose + 1)).empty())
            Report(SKorIniFinding::FINDING_SYNTAX);
        if (m_setNames.count(IniKey(m_strSection, "", m_bCaseSensitive)) != 0)
            Report(SKorIniFinding::FINDING_REPEATED_SECTION);
    }

    void CheckOption(const std::string& strName, const std::string& strValue,
                     const std::string& strComment)
    {
        if (strName[0] == ';')
            Report(SKorIniFinding::FINDING_SYNTAX);
        const bool bOpen = strValue[0] == '"' && (strValue.size() == 1 || strValue.back() != '"');
        if (bOpen && strComment.find('"') != std::string::npos)
            Report(SKorIniFinding::FINDING_HASH_IN_QUOTES);
        if (!m_setNames.insert(IniKey(m_strSection, strName, m_bCaseSensitive)).second)
            Report(SKorIniFinding::FINDING_DUPLICATE);
    }

    const bool m_bCaseSensitive;
    unsigned int m_nLine = 0;
    std::string m_strSection;
    std::set<IniName> m_setNames;
};

void CheckSentence(const SKorIniFinding& oFinding)
{
    Expect(!oFinding.m_strText.empty(), "a finding has a sentence");
    for (const char c : oFinding.m_strText)
        Expect(static_cast<unsigned char>(c) >= ' ' && c != 0x7F, "a sentence can be printed",
               oFinding.m_strText);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    static const MemoryFile FILE;
    Input oInput(pData, nSize);
    const bool bCaseSensitive = oInput.ConsumeBool();
    const std::string strFile = oInput.ConsumeRemainingBytesAsString();
    FILE.Write(strFile);

    Model oModel(bCaseSensitive);
    unsigned int nLine = 0;
    for (std::string strLine : LinesOf(strFile)) {
        if (!strLine.empty() && strLine.back() == '\n')
            strLine.pop_back();
        oModel.Check(strLine, ++nLine);
    }
    std::vector<SKorIniFinding> vecFindings;
    Expect(KorCheckIniFile(FILE.Name().c_str(), bCaseSensitive, vecFindings), "it can be read");
    std::vector<Finding> vecFound;
    for (const SKorIniFinding& oFinding : vecFindings) {
        CheckSentence(oFinding);
        vecFound.emplace_back(oFinding.m_nLine, oFinding.m_eKind);
    }
    Expect(oModel.m_vecFindings == vecFound, "the findings, in the order of their lines");
    return 0;
}
