#pragma once

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// Section and option.
using IniName = std::pair<std::string, std::string>;
using IniOptionMap = std::map<IniName, std::string>;

/// The name as it compares.
inline IniName IniKey(const std::string& strSection, const std::string& strOption,
                      bool bCaseSensitive)
{
    IniName oKey(strSection, strOption);
    for (std::string* pText : {&oKey.first, &oKey.second}) {
        for (char& c : *pText)
            c = !bCaseSensitive && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return oKey;
}

/// All that the plain class reads.
inline IniOptionMap IniOptions(CKorIniFile& oFile)
{
    struct Probe : CKorIniOptionExchange
    {
        using CKorIniOptionExchange::CKorIniOptionExchange;
        using CKorIniOptionExchange::m_apOptionLines;
    };
    IniOptionMap mapOptions;
    const Probe oProbe(&oFile, false);
    for (const auto* pLine : oProbe.m_apOptionLines) {
        if (!pLine->m_strOption.empty())
            mapOptions.emplace(
                IniKey(pLine->m_strSection, pLine->m_strOption, oFile.IsCaseSensitiv()),
                pLine->m_strValue);
    }
    return mapOptions;
}

/// The lines of a text, each with its line feed, and what stands behind the last one.
inline std::vector<std::string> LinesOf(const std::string& strText)
{
    std::vector<std::string> vecLines(1);
    for (const char c : strText) {
        vecLines.back() += c;
        if (c == '\n')
            vecLines.emplace_back();
    }
    return vecLines;
}

/// The number of lines that differ, for texts of as many lines.
inline size_t LinesApart(const std::string& strLeft, const std::string& strRight)
{
    const auto vecLeft = LinesOf(strLeft);
    const auto vecRight = LinesOf(strRight);
    size_t nApart = vecLeft.size() == vecRight.size() ? 0 : vecLeft.size() + vecRight.size();
    for (size_t i = 0; i < std::min(vecLeft.size(), vecRight.size()); ++i)
        nApart += vecLeft[i] == vecRight[i] ? 0 : 1;
    return nApart;
}
