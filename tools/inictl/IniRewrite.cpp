#include "IniRewrite.h"

#include "config/KorIniDocumentDetail.h"
#include "config/KorIniReportDetail.h"
#include "config/KorIniTextDetail.h"

namespace
{

/// Places one line after the other as CKorIniFile does.
class CRewriteChecker
{
public:
    explicit CRewriteChecker(bool bCaseSensitive) : m_oRule(bCaseSensitive), m_oDocument(m_apLines)
    {
        m_oDocument.Clear(m_oRule);
    }

    void Check(const CKorIniText& oLine);

    std::vector<SKorIniFinding> m_vecFindings;

private:
    /// A line of the document, and where it was read.
    struct SLine
    {
        std::string m_strSection;
        std::string m_strOption;
        std::string m_strValue;
        std::string m_strComment;
        bool m_bSection = false;
        unsigned int m_nLine = 0;
    };
    using Document = CKorIniDocument<SLine>;

    void CheckHash(const CKorIniText& oLine);
    void CheckHeaderAbove(const CKorIniText& oLine, const SLine& oPlaced);
    void Report(const CKorIniText& oLine, const std::string& strText);

    const CKorIniNameRule m_oRule;
    Document::Lines m_apLines; ///< freed by the document
    Document m_oDocument;
    std::string m_strSection;     ///< what the next line stands in
    std::string m_strHeaderAbove; ///< the section of the last header that is none but a comment
};

void CRewriteChecker::Check(const CKorIniText& oLine)
{
    const Document::SPlaced oPlaced = m_oDocument.Place(oLine.Line(), m_strSection);
    if (oPlaced.m_ePlace == Document::PLACE_END || oPlaced.m_ePlace == Document::PLACE_ABOVE)
        oPlaced.m_pLine->m_nLine = oLine.Number();
    if (oLine.Is(EKorIniLine::OPTION))
        CheckHash(oLine);
    if (oPlaced.m_ePlace == Document::PLACE_ABOVE)
        Report(oLine, "moves up to line " + std::to_string(oPlaced.m_pOpened->m_nLine) +
                          " when CKorIniFile rewrites the file");
    if (oPlaced.m_ePlace == Document::PLACE_END)
        CheckHeaderAbove(oLine, *oPlaced.m_pLine);
}

void CRewriteChecker::CheckHash(const CKorIniText& oLine)
{
    const SKorIniParts& oParts = oLine.Parts();
    const bool bQuoted = oParts.m_strValue.substr(0, 1) == "\"";
    if (!oParts.m_strComment.empty() && !oParts.m_strValue.empty() && !bQuoted &&
        oParts.m_strValue.data() + oParts.m_strValue.size() == oParts.m_strComment.data())
        Report(oLine, "ends before the \"#\", which begins a comment wherever it stands");
}

/// A repeated header becomes a comment, so that what stays below it has another one above.
void CRewriteChecker::CheckHeaderAbove(const CKorIniText& oLine, const SLine& oPlaced)
{
    if (oPlaced.m_bSection)
        m_strHeaderAbove = oPlaced.m_strSection;
    else if (!oPlaced.m_strOption.empty() && !m_oRule.Equal(oPlaced.m_strSection, m_strHeaderAbove))
        Report(oLine, "moves to section \"" + KorIniLabel({{}, m_strHeaderAbove}) +
                          "\" when CKorIniFile rewrites the file");
}

void CRewriteChecker::Report(const CKorIniText& oLine, const std::string& strText)
{
    const SKorIniName oName{oLine.Section(), oLine.Parts().m_strName};
    m_vecFindings.push_back({SKorIniFinding::FINDING_SYNTAX, oLine.Number(),
                             std::string(oName.m_strSection), std::string(oName.m_strOption),
                             KorIniLabel(oName) + " " + strText});
}

} // namespace

std::vector<SKorIniFinding> CheckForRewrite(std::string_view strText, bool bCaseSensitive)
{
    CRewriteChecker oChecker(bCaseSensitive);
    CKorIniText oLine(strText);
    while (oLine.Next())
        oChecker.Check(oLine);
    return std::move(oChecker.m_vecFindings);
}
