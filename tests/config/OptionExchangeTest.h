#pragma once

#include "config/KorOptionExchange.h"

#include "config/KorIniFile.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>

using Texts = std::vector<std::string>;
using namespace std::string_literals;

struct Exchange : CKorIniOptionExchange
{
    using CKorIniOptionExchange::CKorIniOptionExchange;
    using CKorIniOptionExchange::m_apOptionLines;
    using CKorIniOptionExchange::m_bModified;

    /// The value, or "none".
    std::string Value(const char* pszSection, const char* pszOption)
    {
        std::string strValue = "none";
        GetOptionString(pszSection, pszOption, strValue);
        return strValue;
    }
    Texts Sections()
    {
        Texts vecSections{"old"};
        GetSections(vecSections);
        return vecSections;
    }
    Texts Options(const char* pszSection)
    {
        Texts vecOptions{"old"};
        GetOptions(pszSection, vecOptions);
        return vecOptions;
    }
    /// The text of every line, in order.
    Texts Lines() const
    {
        Texts vecLines;
        for (const SOptionLine* pLine : m_apOptionLines)
            vecLines.push_back(CreateIniLine(*pLine));
        return vecLines;
    }
    /// The section of every line, in order.
    Texts LineSections() const
    {
        Texts vecSections;
        for (const SOptionLine* pLine : m_apOptionLines)
            vecSections.push_back(pLine->m_strSection);
        return vecSections;
    }
};

class KorOptionExchange : public testing::Test
{
protected:
    KorOptionExchange() : m_strFile(m_oDir.File("test.ini")), m_oFile(m_strFile.c_str(), MODE) {}

    /// What a rewrite makes of a file.
    std::string Rewritten(const std::string& strContent)
    {
        WriteFile(m_strFile, strContent);
        Exchange(&m_oFile, false).WriteIniOptions();
        return ReadFile(m_strFile);
    }

    /// What a file becomes when an option is set in it.
    std::string AfterSetting(const std::string& strContent, const char* pszSection,
                             const char* pszOption, const char* pszValue)
    {
        WriteFile(m_strFile, strContent);
        Exchange(&m_oFile, true).SetOptionString(pszSection, pszOption, pszValue);
        return ReadFile(m_strFile);
    }

    static constexpr CKorIniFile::EPathMode MODE = CKorIniFile::PATH_UNCHANGED;
    ScratchDir m_oDir;
    const std::string m_strFile;
    CKorIniFile m_oFile;
};
