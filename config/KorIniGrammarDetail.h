#pragma once

// The grammar of one line of an INI file. Not installed.

#include "text/KorStringDetail.h"

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
    auto pLine = std::make_unique<TLine>();
    pLine->m_strSection = strSection;
    pLine->m_strValue = oParts.m_strValue;
    pLine->m_strComment = oParts.m_strComment;
    pLine->m_bSection = oParts.m_eKind == EKorIniLine::HEADER;
    if (pLine->m_bSection)
        pLine->m_strComment += ' ';
    else
        pLine->m_strOption = oParts.m_strName;
    return pLine;
}

/// Makes a record a comment of the section.
template <class TLine>
void KorIniCommentOut(TLine& oLine, std::string_view strSection)
{
    std::string strComment = KorConcat({"## COMMENTED ## ", KorIniRender(KorIniPartsOf(oLine))});
    oLine.m_strSection = strSection;
    oLine.m_strComment = std::move(strComment);
    oLine.m_strOption.clear();
    oLine.m_strValue.clear();
    oLine.m_bSection = false;
}
