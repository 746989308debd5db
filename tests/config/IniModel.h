#pragma once

#include "config/KorIniFile.h"
#include "config/KorOptionExchange.h"
#include "tests/config/IniDice.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using Texts = std::vector<std::string>;

/// A document as a list of lines.
class Model
{
public:
    explicit Model(bool bCaseSensitive) : m_bCaseSensitive(bCaseSensitive) {}

    void Read(const std::string& strFile)
    {
        m_vecLines.clear();
        std::string strSection;
        std::string strLine;
        for (const char c : strFile + "\n") {
            if (c != '\n')
                strLine += c;
            else
                Add(std::exchange(strLine, ""), strSection);
        }
    }

    std::string Written() const
    {
        std::string strFile;
        for (const Line& oLine : m_vecLines)
            strFile += (oLine.nKind == HEADER ? "\n" : "") + Text(oLine) + "\n";
        return strFile;
    }

    void Add(const std::string& strText, std::string& strSection)
    {
        Line oLine = Parse(strText);
        if (oLine.nKind == BLANK)
            return;
        if (oLine.nKind == HEADER)
            strSection = oLine.strSection;

        std::string strSectionAbove;
        for (const Line& oAbove : m_vecLines)
            strSectionAbove = oAbove.strSection.empty() ? strSectionAbove : oAbove.strSection;
        if (strSectionAbove.empty())
            strSectionAbove = strSection;

        oLine.strSection = strSection;
        const Line oComment{OTHER, strSectionAbove, "", "", "## COMMENTED ## " + Text(oLine)};
        const bool bSectionExists = Find(strSection) != m_vecLines.size();
        const bool bRepeated = oLine.nKind == HEADER
                                   ? bSectionExists
                                   : Find(strSection, oLine.strName) != m_vecLines.size();
        const bool bMoved =
            oLine.nKind == OPTION && !bRepeated && bSectionExists && strSectionAbove != strSection;
        if (bMoved)
            Insert(Find(strSection) + 1, oLine);
        const bool bCommented = oLine.nKind != OTHER && (bRepeated || bMoved);
        m_vecLines.push_back(bCommented ? oComment : oLine);
    }

    void Set(const std::string& strSection, const std::string& strName, const std::string& strValue)
    {
        const size_t nLine = strName.empty() ? Find(strSection) : Find(strSection, strName);
        if (nLine < m_vecLines.size()) {
            m_vecLines[nLine].strValue = strValue;
            return;
        }
        if (Find(strSection) == m_vecLines.size())
            m_vecLines.push_back({HEADER, strSection, "", "", ""});
        Insert(Find(strSection) + 1,
               {strName.empty() ? OTHER : OPTION, strSection, strName, strValue, ""});
    }

    void Remove(const std::string& strSection, const std::string& strName)
    {
        const size_t nLine = strName.empty() ? Find(strSection) : Find(strSection, strName);
        if (nLine < m_vecLines.size())
            m_vecLines.erase(m_vecLines.begin() + static_cast<std::ptrdiff_t>(nLine));
    }

    std::string Value(const std::string& strSection, const std::string& strName) const
    {
        const size_t nLine = strName.empty() ? Find(strSection) : Find(strSection, strName);
        return nLine < m_vecLines.size() ? m_vecLines[nLine].strValue : "none";
    }

    Texts Sections() const
    {
        Texts vecNames;
        for (const Line& oLine : m_vecLines) {
            if (!oLine.strSection.empty())
                AddName(vecNames, oLine.strSection);
        }
        std::sort(vecNames.begin(), vecNames.end());
        return vecNames;
    }

    Texts Options(const std::string& strSection) const
    {
        Texts vecNames;
        for (const Line& oLine : m_vecLines) {
            if (oLine.nKind == OPTION && Same(oLine.strSection, strSection))
                AddName(vecNames, oLine.strName);
        }
        std::sort(vecNames.begin(), vecNames.end());
        return vecNames;
    }

private:
    enum EKind
    {
        BLANK,
        HEADER,
        OPTION,
        OTHER
    };

    struct Line
    {
        EKind nKind;
        std::string strSection;
        std::string strName;
        std::string strValue;
        std::string strRest;
    };

    static bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    static std::string Trimmed(std::string strText)
    {
        while (!strText.empty() && IsBlank(strText.front()))
            strText.erase(0, 1);
        while (!strText.empty() && IsBlank(strText.back()))
            strText.pop_back();
        return strText;
    }

    static Line Parse(const std::string& strText)
    {
        if (Trimmed(strText).empty())
            return {BLANK, "", "", "", ""};
        const std::string strKept = strText.substr(strText.find(Trimmed(strText)));
        const size_t nHash = std::min(strKept.find('#'), strKept.size());
        const std::string strHead = strKept.substr(0, nHash);
        const std::string strTail = strKept.substr(nHash);
        const size_t nSign = strHead.find('=');
        if (!strHead.empty() && strHead[0] == '[')
            return {HEADER, strHead.substr(1, strHead.find(']') - 1), "", "", strTail + " "};
        if (nSign != std::string::npos && nSign != 0)
            return {OPTION, "", Trimmed(strHead.substr(0, nSign)),
                    Trimmed(strHead.substr(nSign + 1)), strTail};
        return {OTHER, "", "", "", strKept};
    }

    static std::string Text(const Line& oLine)
    {
        switch (oLine.nKind) {
        case HEADER:
            return "[" + oLine.strSection + "] " + oLine.strRest;
        case OPTION:
            return oLine.strName + "=" + oLine.strValue + " " + oLine.strRest;
        default:
            return oLine.strRest;
        }
    }

    bool Same(std::string strLeft, std::string strRight) const
    {
        const auto Lower = [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        };
        if (!m_bCaseSensitive) {
            std::transform(strLeft.begin(), strLeft.end(), strLeft.begin(), Lower);
            std::transform(strRight.begin(), strRight.end(), strRight.begin(), Lower);
        }
        return strLeft == strRight;
    }

    void AddName(Texts& vecNames, const std::string& strName) const
    {
        for (const std::string& strKnown : vecNames) {
            if (Same(strKnown, strName))
                return;
        }
        vecNames.push_back(strName);
    }

    size_t Find(const std::string& strSection) const
    {
        size_t n = 0;
        while (n < m_vecLines.size() && !Same(m_vecLines[n].strSection, strSection))
            ++n;
        return n;
    }

    size_t Find(const std::string& strSection, const std::string& strName) const
    {
        size_t n = 0;
        while (n < m_vecLines.size() && !(Same(m_vecLines[n].strSection, strSection) &&
                                          Same(m_vecLines[n].strName, strName)))
            ++n;
        return n;
    }

    void Insert(size_t nLine, const Line& oLine)
    {
        m_vecLines.insert(m_vecLines.begin() + static_cast<std::ptrdiff_t>(nLine), oLine);
    }

    const bool m_bCaseSensitive;
    std::vector<Line> m_vecLines;
};
