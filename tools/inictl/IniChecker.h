#pragma once

#include "config/KorIniDocumentDetail.h"

#include <string>
#include <vector>

/// Reads an INI file line by line and tells what becomes of each line that is not plainly a header,
/// an option, a comment or blank, and of options that move.
class CIniChecker
{
public:
    using Remarks = std::vector<std::string>;

    /// @param bCaseSensitive  names that differ in case are different names
    explicit CIniChecker(bool bCaseSensitive);

    /// Reads the next line.
    /// @return one remark for each oddity of the line
    Remarks CheckLine(const std::string& strLine);

private:
    /// A line of the document, and where it was read.
    struct SLine
    {
        std::string m_strSection;
        std::string m_strOption;
        std::string m_strValue;
        std::string m_strComment;
        bool m_bSection = false;
        size_t m_nLine = 0;
    };
    using Document = CKorIniDocument<SLine>;

    void CheckPlace(const SKorIniParts& oParts, const Document::SPlaced& oPlaced,
                    Remarks& vecRemarks) const;
    void CheckHeaderAbove(const Document::SPlaced& oPlaced, Remarks& vecRemarks);

    const CKorIniNameRule m_oRule;
    Document::Lines m_apLines; ///< freed by the document
    Document m_oDocument;
    std::string m_strSection;     ///< what the next line stands in
    std::string m_strHeaderAbove; ///< the section of the last header that is none but a comment
    size_t m_nLine = 0;
};
