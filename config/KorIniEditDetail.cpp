#include "config/KorIniEditDetail.h"

#include "config/KorIniNameListDetail.h"
#include "config/KorIniTextDetail.h"
#include "text/KorStringDetail.h"

#include <list>

namespace
{

/// A part of the text and what takes its place.
struct SSplice
{
    size_t m_nBegin;
    size_t m_nSize;
    std::string m_strNew;
};

/// A section with options to change.
struct SSection
{
    bool m_bOpened = false; ///< it has a first block
    bool m_bRemove = false;
    size_t m_nNewOptions = 0; ///< where they go in the first block
    std::string m_strNew;     ///< the block of a section that the text does not have
};

/// Makes the changes in one walk through the text.
class CEditor
{
public:
    CEditor(std::string_view strText, CKorIniNameRule oRule,
            const std::vector<SKorIniChange>& vecChanges);

    bool Edit(std::string& rstrEdited);

private:
    void Visit(const CKorIniText& oLine);
    void OpenBlock(const CKorIniText& oLine);
    size_t StartOfText() const;
    void VisitOption(const CKorIniText& oLine);
    void SetValue(const CKorIniText& oLine, const std::string& strValue);
    size_t PlaceOfValue(const CKorIniText& oLine) const;
    void ExtendCut(const CKorIniText& oLine);
    void Cut(size_t nBegin, size_t nEnd);
    void AddMissing();
    void AddOption(const SKorIniChange& oChange);
    void Insert(size_t nPlace, const std::string& strLines);
    void Splice(size_t nBegin, size_t nSize, std::string_view strNew);
    std::string_view EndOfLastLine() const;
    void Join(std::string& rstrEdited);

    const std::string_view m_strText;
    const std::vector<SKorIniChange>& m_vecChanges;
    const std::string_view m_strLineEnd;
    CKorIniNameList m_oNames; ///< of the changes, numbered as they are; 1 for one that has its line
    CKorIniNameList m_oSections;         ///< theirs
    std::vector<SSection> m_vecSections; ///< no more than there are changes

    SSection* m_pSection = nullptr; ///< of the block that the walk is in; null for any other
    bool m_bFirstBlock = true;
    size_t m_nCutBegin = 0;
    size_t m_nCutEnd = 0; ///< the same when nothing is to be cut
    bool m_bBlankEnd = true;
    bool m_bInsertedAtEnd = false;
    std::list<SSplice> m_lstSplices;
};

std::string_view LineEndOf(std::string_view strText)
{
    const size_t nEnd = strText.find('\n');
    const bool bReturn = nEnd != std::string_view::npos && nEnd > 0 && strText[nEnd - 1] == '\r';
    return bReturn ? "\r\n" : "\n";
}

bool HasByteOrderMark(std::string_view strText)
{
    return strText.substr(0, KOR_BYTE_ORDER_MARK.size()) == KOR_BYTE_ORDER_MARK;
}

CEditor::CEditor(std::string_view strText, CKorIniNameRule oRule,
                 const std::vector<SKorIniChange>& vecChanges)
    : m_strText(strText),
      m_vecChanges(vecChanges),
      m_strLineEnd(LineEndOf(strText)),
      m_oNames(oRule),
      m_oSections(oRule),
      m_vecSections(vecChanges.size())
{
    for (const SKorIniChange& oChange : vecChanges) {
        m_oNames.Add({oChange.m_strSection, oChange.m_strOption});
        const size_t nSection = m_oSections.Add({oChange.m_strSection, {}});
        m_vecSections[nSection].m_bRemove |=
            oChange.m_eKind == SKorIniChange::CHANGE_REMOVE_SECTION;
    }
}

bool CEditor::Edit(std::string& rstrEdited)
{
    CKorIniText oLine(m_strText);
    OpenBlock(oLine);
    while (oLine.Next())
        Visit(oLine);
    Cut(m_nCutBegin, m_nCutEnd);
    AddMissing();
    if (!m_lstSplices.empty())
        Join(rstrEdited);
    return !m_lstSplices.empty();
}

void CEditor::Visit(const CKorIniText& oLine)
{
    m_bBlankEnd = oLine.Is(EKorIniLine::BLANK);
    if (oLine.Is(EKorIniLine::HEADER))
        OpenBlock(oLine);
    else if (m_pSection == nullptr)
        return;
    else if (oLine.Is(EKorIniLine::OPTION))
        VisitOption(oLine);
    else if (m_bBlankEnd && m_nCutEnd == oLine.Begin() && m_nCutEnd != m_nCutBegin)
        ExtendCut(oLine);
}

/// Before the first line there is the block of the section without a name.
void CEditor::OpenBlock(const CKorIniText& oLine)
{
    Cut(m_nCutBegin, m_nCutEnd);
    m_nCutBegin = m_nCutEnd = 0;
    const size_t nSection = m_oSections.Find({oLine.Section(), {}});
    m_pSection = nSection != CKorIniNameList::NONE ? &m_vecSections[nSection] : nullptr;
    if (m_pSection == nullptr)
        return;
    m_bFirstBlock = !m_pSection->m_bOpened;
    if (m_bFirstBlock)
        m_pSection->m_nNewOptions = oLine.Number() == 0 ? StartOfText() : oLine.Behind();
    m_pSection->m_bOpened = true;
    if (m_pSection->m_bRemove && oLine.Number() != 0)
        ExtendCut(oLine);
}

/// Where a first option may stand: behind a line with a byte order mark, which is no header.
size_t CEditor::StartOfText() const
{
    const size_t nLine = m_strText.find('\n');
    if (!HasByteOrderMark(m_strText))
        return 0;
    return nLine != std::string_view::npos ? nLine + 1 : m_strText.size();
}

void CEditor::VisitOption(const CKorIniText& oLine)
{
    if (m_bFirstBlock)
        m_pSection->m_nNewOptions = oLine.Behind();
    if (m_pSection->m_bRemove)
        ExtendCut(oLine);
    const size_t nName = m_oNames.Find({oLine.Section(), oLine.Parts().m_strName});
    if (nName == CKorIniNameList::NONE)
        return;
    const SKorIniChange& oChange = m_vecChanges[nName];
    if (oChange.m_eKind == SKorIniChange::CHANGE_REMOVE)
        Cut(oLine.Begin(), oLine.Behind());
    else if (m_oNames.Note(nName) == 0)
        SetValue(oLine, oChange.m_strValue);
    m_oNames.Note(nName) = 1;
}

void CEditor::SetValue(const CKorIniText& oLine, const std::string& strValue)
{
    const std::string_view strOld = oLine.Parts().m_strValue;
    if (strOld != strValue)
        Splice(PlaceOfValue(oLine), strOld.size(), strValue);
}

/// An empty value stands behind the "=" and a blank, unless a comment needs that.
size_t CEditor::PlaceOfValue(const CKorIniText& oLine) const
{
    const SKorIniParts& oParts = oLine.Parts();
    if (!oParts.m_strValue.empty())
        return oLine.PlaceOf(oParts.m_strValue);
    const size_t nName = oLine.PlaceOf(oParts.m_strName) + oParts.m_strName.size();
    const size_t nBehind = m_strText.find('=', nName) + 1;
    const std::string_view strRest = m_strText.substr(nBehind, oLine.End() - nBehind);
    const bool bBlank = !strRest.empty() && strRest[0] == ' ' && strRest.substr(1, 1) != "#";
    return bBlank ? nBehind + 1 : nBehind;
}

void CEditor::ExtendCut(const CKorIniText& oLine)
{
    if (m_nCutBegin == m_nCutEnd)
        m_nCutBegin = oLine.Begin();
    m_nCutEnd = oLine.Behind();
}

/// Removes whole lines. A byte order mark keeps a line of its own: it would change the next one.
void CEditor::Cut(size_t nBegin, size_t nEnd)
{
    if (nBegin == nEnd)
        return;
    if (nBegin == 0 && HasByteOrderMark(m_strText)) {
        nBegin = KOR_BYTE_ORDER_MARK.size();
        Splice(nBegin, nEnd - nBegin, m_strLineEnd);
    } else {
        Splice(nBegin, nEnd - nBegin, {});
    }
}

/// Options of sections that the text has come first: what goes to its end opens a section there.
void CEditor::AddMissing()
{
    for (size_t i = 0; i < m_vecChanges.size(); ++i) {
        if (m_oNames.Note(i) == 0 && m_vecChanges[i].m_eKind == SKorIniChange::CHANGE_SET)
            AddOption(m_vecChanges[i]);
    }
    for (const SSection& oSection : m_vecSections) {
        if (!oSection.m_strNew.empty())
            Insert(m_strText.size(),
                   KorConcat({m_bBlankEnd ? "" : m_strLineEnd, oSection.m_strNew}));
    }
}

void CEditor::AddOption(const SKorIniChange& oChange)
{
    const std::string strLine =
        KorConcat({oChange.m_strOption, "=", oChange.m_strValue, m_strLineEnd});
    SSection& oSection = m_vecSections[m_oSections.Find({oChange.m_strSection, {}})];
    if (oSection.m_bOpened) {
        Insert(oSection.m_nNewOptions, strLine);
        return;
    }
    if (oSection.m_strNew.empty())
        oSection.m_strNew = KorConcat({"[", oChange.m_strSection, "]", m_strLineEnd});
    oSection.m_strNew.append(strLine);
}

void CEditor::Insert(size_t nPlace, const std::string& strLines)
{
    const bool bAtEnd = nPlace == m_strText.size();
    const bool bOpenLine = bAtEnd && nPlace != 0 && m_strText.back() != '\n' && !m_bInsertedAtEnd;
    Splice(nPlace, 0, KorConcat({bOpenLine ? EndOfLastLine() : "", strLines}));
    m_bInsertedAtEnd |= bAtEnd;
    m_bBlankEnd &= !bAtEnd;
}

void CEditor::Splice(size_t nBegin, size_t nSize, std::string_view strNew)
{
    m_lstSplices.push_back({nBegin, nSize, std::string(strNew)});
}

/// A carriage return would become a part of the name of a header without "]".
std::string_view CEditor::EndOfLastLine() const
{
    const std::string strLine(m_strText.substr(m_strText.rfind('\n') + 1));
    const bool bSame =
        KorIniParse(KorConcat({strLine, "\r"})).m_strName == KorIniParse(strLine).m_strName;
    return bSame ? m_strLineEnd : "\n";
}

/// Options that a section did not have were added last, wherever their place is.
void CEditor::Join(std::string& rstrEdited)
{
    m_lstSplices.sort(
        [](const SSplice& oA, const SSplice& oB) { return oA.m_nBegin < oB.m_nBegin; });
    rstrEdited.clear();
    rstrEdited.reserve(m_strText.size() + m_lstSplices.front().m_strNew.size());
    size_t nDone = 0;
    for (const SSplice& oSplice : m_lstSplices) {
        rstrEdited.append(m_strText.substr(nDone, oSplice.m_nBegin - nDone));
        rstrEdited.append(oSplice.m_strNew);
        nDone = oSplice.m_nBegin + oSplice.m_nSize;
    }
    rstrEdited.append(m_strText.substr(nDone));
}

} // namespace

bool KorIniEdit(std::string_view strText, CKorIniNameRule oRule,
                const std::vector<SKorIniChange>& vecChanges, std::string& rstrEdited)
{
    return CEditor(strText, oRule, vecChanges).Edit(rstrEdited);
}
