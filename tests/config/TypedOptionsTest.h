#pragma once

#include "config/KorTypedOptions.h"

#include "config/KorSafeIniFile.h"
#include "serial/KorSerial.h"
#include "tests/support/ScratchDir.h"

#include <functional>
#include <gtest/gtest.h>

/// Options whose exchange is a function of the test.
template <typename TIniFile>
class Options : public TIniFile
{
public:
    Options(const std::string& strFile, std::function<void(CKorIniOptionExchange*)> fnExchange)
        : TIniFile(strFile.c_str(), TIniFile::PATH_UNCHANGED), m_fnExchange(std::move(fnExchange))
    {
    }
    using TIniFile::DoOptionExchange;
    void DoOptionExchange(CKorIniOptionExchange* pExchange) override { m_fnExchange(pExchange); }

private:
    std::function<void(CKorIniOptionExchange*)> m_fnExchange;
};

class KorTypedOptions : public testing::Test
{
protected:
    /// Reads one option [A] x through fnExchange, which returns its result.
    template <typename TExchange>
    bool ReadFrom(const std::string& strContent, TExchange fnExchange)
    {
        WriteFile(m_strFile, strContent);
        return Exchange(false, fnExchange);
    }
    /// Writes it into a file with this content.
    template <typename TExchange>
    bool WriteInto(const std::string& strContent, TExchange fnExchange)
    {
        WriteFile(m_strFile, strContent);
        return Exchange(true, fnExchange);
    }
    template <typename TExchange>
    bool Exchange(bool bWriteBack, TExchange fnExchange)
    {
        bool bResult = false;
        Options<CKorSafeIniFile> oOptions(
            m_strFile, [&](CKorIniOptionExchange* pExchange) { bResult = fnExchange(pExchange); });
        m_bUpdated = oOptions.UpdateOptions(bWriteBack);
        m_vecFindings = oOptions.GetFindings();
        return bResult;
    }
    std::string Finding() const
    {
        return m_vecFindings.size() == 1 ? m_vecFindings[0].m_strText
                                         : std::to_string(m_vecFindings.size()) + " findings";
    }
    std::string Content() const { return ReadFile(m_strFile); }

    const ScratchDir m_oDir;
    const std::string m_strFile = m_oDir.File("options.ini");
    bool m_bUpdated = false;
    std::vector<SKorIniFinding> m_vecFindings;
};

/// An exchange of [Poll] Interval.
template <typename T>
auto Value(T& rValue, const T& defaultValue)
{
    return [&rValue, defaultValue](CKorIniOptionExchange* pExchange) {
        return IOX_Value(pExchange, "Poll", "Interval", rValue, defaultValue);
    };
}

inline auto Range(int& rnValue)
{
    return [&rnValue](CKorIniOptionExchange* pExchange) {
        return IOX_Range(pExchange, "Poll", "Interval", rnValue, 500, 10, 1000);
    };
}
