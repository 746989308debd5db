#include "config/KorIniFinding.h"

#include "config/KorIniReportDetail.h"
#include "config/KorIniTextDetail.h"
#include "config/KorIniWatchDetail.h"
#include "config/KorTextValue.h"
#include "fs/KorFileImageDetail.h"
#include "text/KorStringDetail.h"

#include <cerrno>

namespace
{

/// Looks at one line after the other and knows where each name was first.
class CChecker
{
public:
    CChecker(CKorIniNameRule oRule, std::vector<SKorIniFinding>& rvecFindings)
        : m_oNames(oRule), m_rvecFindings(rvecFindings)
    {
    }

    void Check(const CKorIniText& oLine);

private:
    void CheckHeader(const CKorIniText& oLine);
    void CheckOption(const CKorIniText& oLine);
    unsigned int FirstLine(const CKorIniText& oLine, const SKorIniName& oName);
    void Report(SKorIniFinding::EKind eKind, const CKorIniText& oLine,
                std::initializer_list<std::string_view> lstText);

    CKorIniNameList m_oNames; ///< each with the line where it was first
    std::vector<SKorIniFinding>& m_rvecFindings;
};

bool BeginsWithMark(std::string_view strLine)
{
    return strLine.substr(0, KOR_BYTE_ORDER_MARK.size()) == KOR_BYTE_ORDER_MARK;
}

void CChecker::Check(const CKorIniText& oLine)
{
    if (oLine.Is(EKorIniLine::BLANK))
        return;
    const bool bMark = oLine.Number() == 1 && BeginsWithMark(oLine.Line());
    if (bMark)
        Report(SKorIniFinding::FINDING_BYTE_ORDER_MARK, oLine,
               {"the file begins with a byte order mark, which is read as a part of this line"});
    if (oLine.Is(EKorIniLine::HEADER))
        CheckHeader(oLine);
    else if (oLine.Is(EKorIniLine::OPTION))
        CheckOption(oLine);
    else if (!bMark && oLine.Parts().m_strComment.front() != '#')
        Report(SKorIniFinding::FINDING_SYNTAX, oLine,
               {"the line is neither a header nor an option nor a comment and has no effect"});
    FirstLine(oLine, {oLine.Section(), {}});
}

void CChecker::CheckHeader(const CKorIniText& oLine)
{
    const std::string strLabel = KorIniLabel({oLine.Section(), {}});
    const std::string_view strHead = oLine.Line().substr(0, oLine.Line().find('#'));
    const size_t nClose = strHead.find(']');
    if (nClose == std::string_view::npos)
        Report(SKorIniFinding::FINDING_SYNTAX, oLine,
               {"the header has no \"]\"; it is read as ", strLabel});
    else if (!KorTrim(strHead.substr(nClose + 1)).empty())
        Report(SKorIniFinding::FINDING_SYNTAX, oLine,
               {"the text behind the \"]\" of ", strLabel, " has no effect"});
    const unsigned int nFirst = FirstLine(oLine, {oLine.Section(), {}});
    if (nFirst != oLine.Number())
        Report(SKorIniFinding::FINDING_REPEATED_SECTION, oLine,
               {strLabel, " was opened in line ", KorWriteUnsigned(nFirst), " and goes on here"});
}

void CChecker::CheckOption(const CKorIniText& oLine)
{
    const SKorIniParts& oParts = oLine.Parts();
    const SKorIniName oName{oLine.Section(), oParts.m_strName};
    const std::string strLabel = KorIniLabel(oName);
    if (oParts.m_strName.front() == ';')
        Report(SKorIniFinding::FINDING_SYNTAX, oLine,
               {"\";\" begins no comment; the line sets ", strLabel});
    const bool bOpenQuote = oParts.m_strValue.substr(0, 1) == "\"" &&
                            (oParts.m_strValue.size() == 1 || oParts.m_strValue.back() != '"');
    if (bOpenQuote && oParts.m_strComment.find('"') != std::string_view::npos)
        Report(
            SKorIniFinding::FINDING_HASH_IN_QUOTES, oLine,
            {"\"#\" begins a comment in quotes too; the value of ", strLabel, " ends before it"});
    const unsigned int nFirst = FirstLine(oLine, oName);
    if (nFirst != oLine.Number())
        Report(
            SKorIniFinding::FINDING_DUPLICATE, oLine,
            {strLabel, " was set in line ", KorWriteUnsigned(nFirst), "; this line has no effect"});
}

/// The first line of a name, this one for a new name.
unsigned int CChecker::FirstLine(const CKorIniText& oLine, const SKorIniName& oName)
{
    unsigned int& rnFirst = m_oNames.Note(m_oNames.Add(oName));
    if (rnFirst == 0)
        rnFirst = oLine.Number();
    return rnFirst;
}

void CChecker::Report(SKorIniFinding::EKind eKind, const CKorIniText& oLine,
                      std::initializer_list<std::string_view> lstText)
{
    const bool bOption = oLine.Is(EKorIniLine::OPTION);
    const std::string_view strOption = bOption ? oLine.Parts().m_strName : std::string_view();
    KorIniAdd(m_rvecFindings,
              KorIniFindingOf(eKind, oLine.Number(), {oLine.Section(), strOption}, lstText));
}

} // namespace

bool KorCheckIniFile(const char* pszName, bool bCaseSensitiv,
                     std::vector<SKorIniFinding>& rvecFindings)
{
    rvecFindings.clear();
    SKorFileImage oImage;
    if (!oImage.Read(pszName != nullptr ? pszName : "")) {
        const int nError = errno;
        KorIniAdd(rvecFindings, KorIniFailure("read", nError));
        errno = nError;
        return false;
    }
    CChecker oChecker(CKorIniNameRule(bCaseSensitiv), rvecFindings);
    CKorIniText oLine(oImage.m_strContent);
    while (oLine.Next())
        oChecker.Check(oLine);
    return true;
}

bool KorReportIniFinding(CKorIniOptionExchange* pExchange, const SKorIniFinding& oFinding)
{
    CKorIniWatch* const pWatch = pExchange != nullptr ? CKorIniWatch::Of(*pExchange) : nullptr;
    if (pWatch != nullptr)
        pWatch->Note(oFinding);
    return pWatch != nullptr;
}
