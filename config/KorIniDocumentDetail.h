#pragma once

// The lines of an INI document: where a line is placed and how it is found. Not installed.

#include "config/KorIniGrammarDetail.h"
#include "config/KorIniIndexDetail.h"
#include "config/KorIniNamesDetail.h"
#include "text/KorStringDetail.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Places, finds and removes the lines of a list.
///
/// As long as nobody else changes the lines, an index knows the first line of each name, and lines
/// that belong behind the first one of their section wait, until somebody asks for the list, to be
/// put there all at once: reading a file, setting and finding an option take constant time a line.
/// Lines that others may change are searched one by one, and each line is put where it belongs at
/// once.
///
/// @tparam TLine  CKorIniOptionExchange::SOptionLine or a record with its members
template <class TLine>
class CKorIniDocument
{
public:
    using Lines = std::vector<TLine*>;

    enum EPlace
    {
        PLACE_NONE,   ///< a blank line, which is not kept
        PLACE_END,    ///< appended as it is
        PLACE_ABOVE,  ///< moved up behind the first line of its section; a comment is appended
        PLACE_COMMENT ///< repeats a name and is appended as a comment
    };

    /// What became of a line that was placed.
    struct SPlaced
    {
        EPlace m_ePlace = PLACE_NONE;
        TLine* m_pLine = nullptr;   ///< the line in force: this one, or the one that it repeats
        TLine* m_pOpened = nullptr; ///< the first line of the section that a line moved to
    };

    /// @param apLines  the lines, which this object frees; must outlive it
    explicit CKorIniDocument(Lines& apLines) : m_apLines(apLines) {}
    ~CKorIniDocument() { Clear(m_oRule); }
    CKorIniDocument(const CKorIniDocument&) = delete;
    CKorIniDocument& operator=(const CKorIniDocument&) = delete;

    /// Says what holds for the operations that follow.
    /// @param bShared  others may have changed the lines
    void Use(CKorIniNameRule oRule, bool bShared);

    /// Frees all lines, so that nobody else holds one, and goes on with this rule.
    void Clear(CKorIniNameRule oRule);

    /// The lines in order.
    const Lines& Settled();

    /// As CKorIniOptionExchange::FindOption(), for somebody who may keep lines and change them
    /// until they are freed.
    typename Lines::iterator HandOut(const SKorIniName& oName);

    /// As CKorIniOptionExchange::AddOptionLine().
    SPlaced Place(std::string_view strText, std::string& strCurrentSection);

    /// The first line with the name, or null.
    TLine* Find(const SKorIniName& oName);
    /// As CKorIniOptionExchange::SetOptionString().
    void Set(const SKorIniName& oName, std::string_view strValue);
    /// As CKorIniOptionExchange::RemoveOption().
    void Remove(const SKorIniName& oName);
    /// As CKorIniOptionExchange::GetSections().
    std::vector<std::string> Sections();
    /// As CKorIniOptionExchange::GetOptions().
    std::vector<std::string> Options(std::string_view strSection);

private:
    struct SWaiting
    {
        TLine* m_pLine;  ///< freed by this object until it is put among the lines
        size_t m_nOlder; ///< 1 + the next one in m_vecWaiting; 0 for none
    };

    SPlaced PlaceName(TLine& oLine);
    const TLine* LastOfASection() const;
    void Append(std::unique_ptr<TLine> pLine);
    void InsertBehindFirst(std::unique_ptr<TLine> pLine);
    typename Lines::iterator Search(const SKorIniName& oName);

    void BuildIndex();
    void DropIndex();

    Lines& m_apLines;
    CKorIniNameRule m_oRule = CKorIniNameRule(false);
    bool m_bShared = false;
    bool m_bHandedOut = false;
    unsigned int m_nSearches = 0; ///< without an index, since one was built
    CKorIniIndex<TLine> m_oIndex;
    std::vector<SWaiting> m_vecWaiting;
    const TLine* m_pLastOfASection = nullptr; ///< when there is an index
};

template <class TLine>
void CKorIniDocument<TLine>::Use(CKorIniNameRule oRule, bool bShared)
{
    m_bShared = bShared || m_bHandedOut;
    if (m_bShared || !m_oIndex.IsComplete() || !(oRule == m_oRule))
        DropIndex();
    m_oRule = oRule;
}

template <class TLine>
typename CKorIniDocument<TLine>::Lines::iterator
CKorIniDocument<TLine>::HandOut(const SKorIniName& oName)
{
    m_bHandedOut = true;
    DropIndex();
    return Search(oName);
}

template <class TLine>
typename CKorIniDocument<TLine>::Lines::iterator
CKorIniDocument<TLine>::Search(const SKorIniName& oName)
{
    const auto IsNamed = [&](const TLine* pLine) {
        return (oName.m_strOption.empty() ||
                m_oRule.Equal(pLine->m_strOption, oName.m_strOption)) &&
               m_oRule.Equal(pLine->m_strSection, oName.m_strSection);
    };
    auto itLine = m_apLines.begin();
    while (itLine != m_apLines.end() && !IsNamed(*itLine))
        ++itLine;
    return itLine;
}

template <class TLine>
void CKorIniDocument<TLine>::Clear(CKorIniNameRule oRule)
{
    for (const SWaiting& oWaiting : m_vecWaiting)
        delete oWaiting.m_pLine;
    m_vecWaiting.clear();
    DropIndex();
    while (!m_apLines.empty()) {
        delete m_apLines.back();
        m_apLines.pop_back();
    }
    m_oRule = oRule;
    m_bShared = false;
    m_bHandedOut = false;
    m_oIndex.Start(oRule);
    m_pLastOfASection = nullptr;
}

template <class TLine>
typename CKorIniDocument<TLine>::SPlaced
CKorIniDocument<TLine>::Place(std::string_view strText, std::string& strCurrentSection)
{
    const SKorIniParts oParts = KorIniParse(strText);
    if (oParts.m_eKind == EKorIniLine::BLANK)
        return {};
    const bool bHeader = oParts.m_eKind == EKorIniLine::HEADER;
    std::unique_ptr<TLine> pLine =
        KorIniMakeLine<TLine>(oParts, bHeader ? oParts.m_strName : strCurrentSection);
    if (bHeader)
        strCurrentSection = pLine->m_strSection;
    SPlaced oPlaced{PLACE_END, pLine.get(), nullptr};
    if (oParts.m_eKind != EKorIniLine::OTHER)
        oPlaced = PlaceName(*pLine);
    Append(std::move(pLine));
    return oPlaced;
}

/// Finds the place of a header or an option, which becomes a comment when that is another one.
template <class TLine>
typename CKorIniDocument<TLine>::SPlaced CKorIniDocument<TLine>::PlaceName(TLine& oLine)
{
    const TLine* const pAbove = LastOfASection();
    const std::string_view strAbove = pAbove != nullptr ? pAbove->m_strSection : std::string_view();
    SPlaced oPlaced{PLACE_END, &oLine, nullptr};
    if (TLine* pFirst = Find({oLine.m_strSection, oLine.m_strOption})) {
        oPlaced = {PLACE_COMMENT, pFirst, nullptr};
    } else if (!oLine.m_bSection && strAbove != oLine.m_strSection) {
        // The section was opened again, and its second header is a comment now.
        if (TLine* pOpened = Find({oLine.m_strSection, {}})) {
            auto pMoved = std::make_unique<TLine>(oLine);
            oPlaced = {PLACE_ABOVE, pMoved.get(), pOpened};
            InsertBehindFirst(std::move(pMoved));
        }
    }
    if (oPlaced.m_ePlace != PLACE_END)
        KorIniCommentOut(oLine, strAbove);
    return oPlaced;
}

template <class TLine>
TLine* CKorIniDocument<TLine>::Find(const SKorIniName& oName)
{
    constexpr unsigned int SEARCHES = 10; // cost what an index costs
    if (!m_oIndex.IsComplete() && !m_bShared && ++m_nSearches > SEARCHES)
        BuildIndex();
    if (m_oIndex.IsComplete())
        return m_oIndex.Find(oName);
    const auto itLine = Search(oName);
    return itLine != m_apLines.end() ? *itLine : nullptr;
}

template <class TLine>
void CKorIniDocument<TLine>::Set(const SKorIniName& oName, std::string_view strValue)
{
    if (TLine* pLine = Find(oName)) {
        pLine->m_strValue = strValue;
        return;
    }
    auto pLine = KorIniMakeLine<TLine>({EKorIniLine::OPTION, oName.m_strOption, strValue, {}},
                                       oName.m_strSection);
    if (Find({oName.m_strSection, {}}) == nullptr) {
        auto pHeader = std::make_unique<TLine>();
        pHeader->m_strSection = oName.m_strSection;
        pHeader->m_bSection = true;
        Append(std::move(pHeader));
    }
    InsertBehindFirst(std::move(pLine));
}

template <class TLine>
void CKorIniDocument<TLine>::Remove(const SKorIniName& oName)
{
    Settled();
    const auto itLine = Search(oName);
    if (itLine == m_apLines.end())
        return;
    DropIndex();
    delete *itLine;
    m_apLines.erase(itLine);
}

template <class TLine>
std::vector<std::string> CKorIniDocument<TLine>::Sections()
{
    std::vector<std::string_view> vecNames;
    for (const TLine* pLine : Settled()) {
        if (!pLine->m_strSection.empty())
            KorAdd(vecNames, pLine->m_strSection);
    }
    return KorIniSortedOnce(vecNames, m_oRule);
}

template <class TLine>
std::vector<std::string> CKorIniDocument<TLine>::Options(std::string_view strSection)
{
    std::vector<std::string_view> vecNames;
    for (const TLine* pLine : Settled()) {
        if (!pLine->m_strOption.empty() && m_oRule.Equal(pLine->m_strSection, strSection))
            KorAdd(vecNames, pLine->m_strOption);
    }
    return KorIniSortedOnce(vecNames, m_oRule);
}

template <class TLine>
const typename CKorIniDocument<TLine>::Lines& CKorIniDocument<TLine>::Settled()
{
    if (m_vecWaiting.empty())
        return m_apLines;
    Lines apSettled(m_apLines.size() + m_vecWaiting.size());
    auto itTo = apSettled.begin();
    auto itFrom = m_apLines.cbegin();
    for (auto& oSection : m_oIndex.Sections()) {
        const auto itBehind =
            m_apLines.cbegin() + static_cast<std::ptrdiff_t>(oSection.m_nFirst) + 1;
        itTo = std::copy(itFrom, itBehind, itTo);
        itFrom = itBehind;
        oSection.m_nFirst = static_cast<size_t>(itTo - apSettled.begin()) - 1;
        for (size_t n = oSection.m_nNewest; n != 0; n = m_vecWaiting[n - 1].m_nOlder)
            *itTo++ = m_vecWaiting[n - 1].m_pLine;
        oSection.m_nNewest = 0;
    }
    std::copy(itFrom, m_apLines.cend(), itTo);
    m_apLines.swap(apSettled);
    m_vecWaiting.clear();
    return m_apLines;
}

/// The last line that has a section with a name.
template <class TLine>
const TLine* CKorIniDocument<TLine>::LastOfASection() const
{
    if (m_oIndex.IsComplete())
        return m_pLastOfASection;
    auto itLine = m_apLines.rbegin();
    while (itLine != m_apLines.rend() && (*itLine)->m_strSection.empty())
        ++itLine;
    return itLine != m_apLines.rend() ? *itLine : nullptr;
}

template <class TLine>
void CKorIniDocument<TLine>::Append(std::unique_ptr<TLine> pLine)
{
    m_apLines.push_back(pLine.get());
    static_cast<void>(pLine.release());
    if (!m_oIndex.IsComplete())
        return;
    if (!m_apLines.back()->m_strSection.empty())
        m_pLastOfASection = m_apLines.back();
    m_oIndex.Append(m_apLines.back(), m_apLines.size() - 1);
}

/// Inserts behind the first line of the line's section, which exists.
template <class TLine>
void CKorIniDocument<TLine>::InsertBehindFirst(std::unique_ptr<TLine> pLine)
{
    if (!m_oIndex.IsComplete()) {
        const auto nPlace = Search({pLine->m_strSection, {}}) - m_apLines.begin() + 1;
        m_apLines.push_back(nullptr);
        const auto itPlace = m_apLines.begin() + nPlace;
        std::copy_backward(itPlace, m_apLines.end() - 1, m_apLines.end());
        *itPlace = pLine.release();
        return;
    }
    auto& oSection = *m_oIndex.Section(pLine->m_strSection);
    // So no line that waits is the last one.
    if (oSection.m_nFirst + 1 == m_apLines.size()) {
        Append(std::move(pLine));
        return;
    }
    m_vecWaiting.push_back({pLine.get(), oSection.m_nNewest});
    oSection.m_nNewest = m_vecWaiting.size();
    m_oIndex.AddOption(pLine.release());
}

template <class TLine>
void CKorIniDocument<TLine>::BuildIndex()
{
    m_nSearches = 0;
    m_pLastOfASection = LastOfASection();
    m_oIndex.Start(m_oRule);
    for (size_t i = 0; i < m_apLines.size(); ++i)
        m_oIndex.Append(m_apLines[i], i);
}

template <class TLine>
void CKorIniDocument<TLine>::DropIndex()
{
    Settled();
    m_oIndex.Drop();
}
