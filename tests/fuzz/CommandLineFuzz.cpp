// Command lines of older programs: each question against a walk over a plain list.

#include "config/KorCmdLine.h"
#include "config/KorCmdLineExchange.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>

namespace
{

using Texts = std::vector<std::string>;

struct Option
{
    std::string strName;
    bool bHasValue;
};

class Model
{
public:
    Model(Texts vecArgs, std::vector<Option> vecOptions)
        : m_vecArgs(std::move(vecArgs)), m_vecOptions(std::move(vecOptions))
    {
    }

    bool Named(const std::string& strName, bool bHasValue, std::string& strValue)
    {
        const auto it = std::find(m_vecArgs.begin(), m_vecArgs.end(), "-" + strName);
        strValue = it == m_vecArgs.end() ? "0" : "1";
        if (it == m_vecArgs.end() || !bHasValue)
            return it != m_vecArgs.end();
        const bool bLast = it + 1 == m_vecArgs.end();
        strValue = bLast ? "" : it[1];
        m_vecArgs.erase(it, bLast ? it + 1 : it + 2);
        return true;
    }

    bool Positional(std::string& strValue)
    {
        for (std::size_t i = 0; i < m_vecArgs.size(); ++i) {
            const int nKind = KindOf(m_vecArgs[i]);
            if (nKind == VALUED)
                ++i;
            if (nKind != NO_OPTION)
                continue;
            strValue = m_vecArgs[i];
            m_vecArgs.erase(m_vecArgs.begin() + static_cast<std::ptrdiff_t>(i));
            return true;
        }
        return false;
    }

private:
    enum
    {
        NO_OPTION,
        FLAG,
        VALUED
    };

    int KindOf(const std::string& strArg) const
    {
        int nKind = NO_OPTION;
        for (const Option& oOption : m_vecOptions) {
            if ("-" + oOption.strName == strArg)
                nKind = std::max<int>(nKind, oOption.bHasValue ? VALUED : FLAG);
        }
        return nKind;
    }

    Texts m_vecArgs;
    std::vector<Option> m_vecOptions;
};

/// Asks the same of both.
class Settings : public CKorCmdLine
{
public:
    Settings(std::vector<Option> vecOptions, Input& oInput)
        : m_vecOptions(std::move(vecOptions)), m_oInput(oInput)
    {
    }
    using CKorCmdLine::DoOptionExchange;
    void DoOptionExchange(CKorCmdLineExchange* pExchange) override
    {
        if (!pExchange->IsInitialized()) {
            for (const Option& oOption : m_vecOptions)
                pExchange->AddParamDescription(oOption.strName.c_str(), oOption.bHasValue);
            return;
        }
        Model oModel(m_vecArgs, m_vecOptions);
        for (int i = 0; i < 12; ++i)
            Ask(*pExchange, oModel);
    }

private:
    void Ask(CKorCmdLineExchange& oExchange, Model& oModel)
    {
        const auto nOption = m_oInput.ConsumeIntegral<std::uint8_t>();
        const bool bNamed = nOption < m_vecOptions.size();
        const std::string strName = bNamed ? m_vecOptions[nOption].strName : "";
        const bool bHasValue = m_oInput.ConsumeBool();
        std::string strExpected = "untouched";
        std::string strValue = "untouched";
        const bool bExpected =
            bNamed ? oModel.Named(strName, bHasValue, strExpected) : oModel.Positional(strExpected);
        ExpectEqual(bExpected, oExchange.GetParameter(strName.c_str(), bHasValue, strValue),
                    "a parameter is there");
        ExpectEqual(strExpected, strValue, "the value of a parameter");
    }

    const std::vector<Option> m_vecOptions;
    Input& m_oInput;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Input oInput(pData, nSize);
    std::vector<Option> vecOptions;
    for (auto n = oInput.ConsumeIntegralInRange(0, 5); n > 0; --n) {
        const std::string strName = oInput.ConsumeRandomLengthString(10).c_str();
        if (!strName.empty())
            vecOptions.push_back({strName, oInput.ConsumeBool()});
    }
    Texts vecArgs;
    for (auto n = oInput.ConsumeIntegralInRange(0, 20); n > 0; --n)
        vecArgs.push_back(oInput.ConsumeRandomLengthString(20).c_str());
    std::vector<char*> vecPointers;
    for (std::string& strArg : vecArgs)
        vecPointers.push_back(strArg.data());
    Settings oSettings(vecOptions, oInput);
    oSettings.Initialize(static_cast<int>(vecPointers.size()), vecPointers.data());
    Expect(oSettings.UpdateOptions(false), "a command line can always be read");
    return 0;
}
