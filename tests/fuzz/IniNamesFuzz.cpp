// Files of very many names made after a pattern. The index of names must not crowd together, or
// reading them would take quadratic time.

#include "config/KorIniFinding.h"
#include "config/KorIniNamesDetail.h"
#include "config/KorOptionExchange.h"
#include "config/KorSafeIniFile.h"
#include "tests/config/IniPlaces.h"
#include "tests/fuzz/Fuzz.h"

#include <set>

namespace
{

constexpr std::size_t NAMES_IN_INDEX = 4000;
constexpr std::uint32_t NAMES_IN_FILE = 100;

/// Numbers in any notation between two texts.
class Pattern
{
public:
    explicit Pattern(Input& oInput)
        : m_nNumber(oInput.ConsumeIntegral<std::uint64_t>()),
          m_nStep(oInput.ConsumeIntegral<std::uint64_t>() | 1), // all numbers differ
          m_nDigits(oInput.ConsumeIntegralInRange<unsigned int>(2, 64)),
          m_cFirst(oInput.ConsumeIntegralInRange<char>('0', '?')),
          m_strPrefix(oInput.ConsumeRandomLengthString(24)),
          m_strSuffix(oInput.ConsumeRandomLengthString(24))
    {
    }

    std::string Next()
    {
        std::string strName = m_strPrefix;
        for (std::uint64_t n = m_nNumber; n > 0; n /= m_nDigits)
            strName += static_cast<char>(m_cFirst + static_cast<char>(n % m_nDigits));
        m_nNumber += m_nStep;
        return strName + m_strSuffix;
    }

private:
    std::uint64_t m_nNumber;
    const std::uint64_t m_nStep;
    const unsigned int m_nDigits;
    const char m_cFirst;
    const std::string m_strPrefix;
    const std::string m_strSuffix;
};

std::string ManyNames(Input& oInput)
{
    const auto nPerSection = oInput.ConsumeIntegralInRange<std::uint32_t>(1, NAMES_IN_FILE);
    Pattern oSections(oInput);
    Pattern oOptions(oInput);
    std::string strFile;
    for (std::uint32_t i = 0; i < NAMES_IN_FILE; ++i) {
        if (i % nPerSection == 0)
            strFile += "[" + oSections.Next() + "]\n";
        strFile += oOptions.Next() + "=1\n";
    }
    return strFile;
}

std::string Folded(std::string strName, bool bCaseSensitive)
{
    for (char& c : strName) {
        if (!bCaseSensitive && c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return strName;
}

/// A name is a few steps away from its place in the index, no more.
void CheckIndex(Pattern oNames, bool bCaseSensitive)
{
    const CKorIniNameRule oRule(bCaseSensitive);
    Places oPlaces(NAMES_IN_INDEX);
    std::set<std::string> setNames;
    std::size_t nSteps = 0;
    for (std::size_t i = 0; i < NAMES_IN_INDEX; ++i) {
        const std::string strName = oNames.Next();
        if (setNames.insert(Folded(strName, bCaseSensitive)).second)
            nSteps += oPlaces.Take(oRule.Hash(strName, 0));
    }
    Expect(nSteps < 4 * NAMES_IN_INDEX, "names do not crowd together", oNames.Next());
}

/// A file of many names is read, looked up, checked and edited.
void CheckFile(const DirectoryFile& oFile, CKorSafeIniFile& oIni)
{
    std::vector<SKorIniFinding> vecFindings;
    Expect(KorCheckIniFile(oFile.Name().c_str(), oIni.IsCaseSensitiv(), vecFindings), "it reads");
    CKorIniOptionExchange oExchange(&oIni, false);
    std::vector<std::string> vecSections;
    oExchange.GetSections(vecSections);
    for (const std::string& strSection : vecSections) {
        std::string strValue;
        oExchange.SetOptionString(strSection.c_str(), "b", "2");
        Expect(oExchange.GetOptionString(strSection.c_str(), "b", strValue), "it is there");
    }
    Expect(oIni.WriteOption("Last", "option", "3"), "one more option finds its place");
    ExpectEqual(std::string("3"), oIni.ReadOption("Last", "option", ""), "and is read");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    static const DirectoryFile FILE;
    Input oInput(pData, nSize);
    CKorSafeIniFile oIni(FILE.Name().c_str(), CKorIniFile::PATH_UNCHANGED);
    oIni.SetCasesensitiv(oInput.ConsumeBool());
    CheckIndex(Pattern(oInput), oIni.IsCaseSensitiv());
    FILE.Write(ManyNames(oInput));
    CheckFile(FILE, oIni);
    return 0;
}
