#pragma once

// The lines of an INI file where they stand in its text. Not installed.

#include "config/KorIniGrammarDetail.h"

#include <string_view>

/// A byte order mark, which is a part of the first line like any other bytes.
constexpr std::string_view KOR_BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// The lines as they are, from the first to the last.
class CKorIniTextLines
{
public:
    explicit CKorIniTextLines(std::string_view strText) : m_strText(strText) {}

    /// Gives the next line without its line feed. @return false behind the last one
    bool Next(std::string_view& rstrLine);

    /// Where the next line begins.
    size_t Behind() const { return m_nNext; }

private:
    const std::string_view m_strText;
    size_t m_nNext = 0;
};

/// The lines with their meaning. An option belongs to the section of the header above it; of
/// several lines of one name the first is the one in force.
class CKorIniText
{
public:
    explicit CKorIniText(std::string_view strText) : m_strText(strText), m_oLines(strText) {}

    /// Steps to the next line. @return false behind the last one
    bool Next();

    bool Is(EKorIniLine eKind) const { return m_oParts.m_eKind == eKind; }
    const SKorIniParts& Parts() const { return m_oParts; }
    std::string_view Section() const { return m_strSection; }
    unsigned int Number() const { return m_nNumber; }
    std::string_view Line() const { return m_strLine; } ///< without its line feed
    size_t Begin() const { return PlaceOf(m_strLine); }
    size_t End() const { return Begin() + m_strLine.size(); }
    size_t Behind() const { return m_oLines.Behind(); } ///< behind its line feed

    /// Where a part of the line lies in the text.
    size_t PlaceOf(std::string_view strPart) const
    {
        return static_cast<size_t>(strPart.data() - m_strText.data());
    }

private:
    const std::string_view m_strText;
    CKorIniTextLines m_oLines;
    std::string_view m_strLine;
    std::string_view m_strSection;
    SKorIniParts m_oParts;
    unsigned int m_nNumber = 0;
};
