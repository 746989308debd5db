#pragma once

// The grammar of one line of an INI file. Not installed.

#include <memory>
#include <string>
#include <string_view>
#include <utility>

/// What a line is.
enum class EKorIniLine
{
    BLANK,
    HEADER,
    OPTION,
    OTHER ///< kept as it is, comments included
};

/// The parts of a line, which lie in its text or in its record.
struct SKorIniParts
{
    EKorIniLine m_eKind = EKorIniLine::BLANK;
    std::string_view m_strName;    ///< of the section or of the option
    std::string_view m_strValue;   ///< without white space around it, with its quotes
    std::string_view m_strComment; ///< from the "#" on; the whole text of #OTHER
};

/// Takes a line apart. @p strText is without its line feed.
SKorIniParts KorIniParse(std::string_view strText);

/// The text of a line as it is written, without its line feed.
std::string KorIniRender(const SKorIniParts& oParts);

/// The parts of a record. TLine is CKorIniOptionExchange::SOptionLine or has its members.
template <class TLine>
SKorIniParts KorIniPartsOf(const TLine& oLine)
{
    if (oLine.m_bSection)
        return {EKorIniLine::HEADER, oLine.m_strSection, {}, oLine.m_strComment};
    if (!oLine.m_strOption.empty())
        return {EKorIniLine::OPTION, oLine.m_strOption, oLine.m_strValue, oLine.m_strComment};
    return {EKorIniLine::OTHER, {}, {}, oLine.m_strComment};
}

/// The record of a line that is not blank. The comment of a header gains a blank.
template <class TLine>
std::unique_ptr<TLine> KorIniMakeLine(const SKorIniParts& oParts, std::string_view strSection)
{
    const bool bHeader = oParts.m_eKind == EKorIniLine::HEADER;
    std::unique_ptr<TLine> pLine(new TLine{
        std::string(strSection), std::string(bHeader ? std::string_view() : oParts.m_strName),
        std::string(oParts.m_strValue), std::string(oParts.m_strComment), bHeader});
    if (bHeader)
        pLine->m_strComment += ' ';
    return pLine;
}

/// Makes a record a comment of the section.
template <class TLine>
void KorIniCommentOut(TLine& oLine, std::string_view strSection)
{
    TLine oComment;
    oComment.m_strComment = "## COMMENTED ## " + KorIniRender(KorIniPartsOf(oLine));
    oComment.m_strSection = strSection;
    oLine = std::move(oComment);
}
