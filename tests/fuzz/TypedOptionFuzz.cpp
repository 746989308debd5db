// Options with types in any file: what is stored is read again, what is refused leaves the file.

#include "config/KorSafeIniFile.h"
#include "config/KorTypedOptions.h"
#include "tests/config/IniOptions.h"
#include "tests/fuzz/Fuzz.h"

#include <cmath>

namespace
{

template <typename T>
class Setting : public CKorSafeIniFile
{
public:
    Setting(const std::string& strFile, std::string strSection, std::string strOption)
        : CKorSafeIniFile(strFile.c_str(), PATH_UNCHANGED),
          m_strSection(std::move(strSection)),
          m_strOption(std::move(strOption))
    {
    }
    using CKorSafeIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override
    {
        m_bDone = IOX_Value(pExchange, m_strSection.c_str(), m_strOption.c_str(), m_value, T{});
    }

    T m_value{};
    bool m_bDone = false;

private:
    const std::string m_strSection;
    const std::string m_strOption;
};

bool AreSame(double nLeft, double nRight)
{
    return !(nLeft < nRight) && !(nRight < nLeft) && std::signbit(nLeft) == std::signbit(nRight);
}
template <typename T>
bool AreSame(const T& left, const T& right)
{
    return left == right;
}

template <typename T>
void Check(const T& value, const std::string& strFile, Input& oInput)
{
    static const DirectoryFile FILE;
    FILE.Write(strFile);
    const std::string strSection = oInput.ConsumeRandomLengthString(20).c_str();
    const std::string strOption = oInput.ConsumeRandomLengthString(20).c_str();
    Setting<T> oSetting(FILE.Name(), strSection, strOption);
    Expect(oSetting.UpdateOptions(false), "the file can be read");
    const bool bBad = !oSetting.GetFindings().empty();
    ExpectEqual(!bBad, oSetting.m_bDone, "a value that is none of the type is a finding");

    IniOptionMap mapExpected = IniOptions(oSetting);
    oSetting.m_value = value;
    const bool bStored = oSetting.UpdateOptions(true);
    ExpectEqual(bStored, oSetting.m_bDone, "a value is stored or refused");
    Expect(AreSame(value, oSetting.m_value), "writing leaves the variable");
    if (!bStored) {
        ExpectEqual(strFile, FILE.Read(), "a refusal leaves the file");
        return;
    }
    const IniName oName = IniKey(strSection, strOption, false);
    const IniOptionMap mapAfter = IniOptions(oSetting);
    Expect(mapAfter.count(oName) == 1, "the option is there");
    mapExpected[oName] = mapAfter.at(oName);
    Expect(mapExpected == mapAfter, "no other option changes", FILE.Read());
    oSetting.m_value = T{};
    Expect(oSetting.UpdateOptions(false) && oSetting.m_bDone, "a stored value is of its type");
    Expect(AreSame(value, oSetting.m_value), "a stored value is read again", FILE.Read());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    const auto nType = oInput.ConsumeIntegralInRange(0, 5);
    const std::string strValue = oInput.ConsumeRandomLengthString(60);
    const std::string strFile = oInput.ConsumeRandomLengthString(2000);
    if (nType == 0)
        Check(strValue, strFile, oInput);
    else if (nType == 1)
        Check(std::vector<std::string>{strValue, oInput.ConsumeRandomLengthString(20)}, strFile,
              oInput);
    else if (nType == 2)
        Check(oInput.ConsumeIntegral<int>(), strFile, oInput);
    else if (nType == 3)
        Check(oInput.ConsumeFloatingPoint<double>(), strFile, oInput);
    else if (nType == 4)
        Check(oInput.ConsumeIntegral<char>(), strFile, oInput);
    else
        Check(CKorTimeDiff(oInput.ConsumeIntegral<std::int32_t>()), strFile, oInput);
    return 0;
}
