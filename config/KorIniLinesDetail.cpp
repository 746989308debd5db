#include "config/KorIniLinesDetail.h"

#include <algorithm>
#include <cstdint>

char CKorIniNameRule::Fold(char c) const
{
    return !m_bCaseSensitiv && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool CKorIniNameRule::Equal(std::string_view strLeft, std::string_view strRight) const
{
    return std::equal(strLeft.begin(), strLeft.end(), strRight.begin(), strRight.end(),
                      [this](char cLeft, char cRight) { return Fold(cLeft) == Fold(cRight); });
}

bool CKorIniNameRule::operator()(const SKorIniName& oLeft, const SKorIniName& oRight) const
{
    return Equal(oLeft.m_strSection, oRight.m_strSection) &&
           Equal(oLeft.m_strOption, oRight.m_strOption);
}

// FNV-1a over the folded names, with the length of the first between them.
size_t CKorIniNameRule::operator()(const SKorIniName& oName) const
{
    constexpr uint32_t PRIME = 16777619U;
    uint32_t nHash = 2166136261U;
    for (const char c : oName.m_strSection)
        nHash = (nHash ^ static_cast<unsigned char>(Fold(c))) * PRIME;
    nHash = (nHash ^ static_cast<uint32_t>(oName.m_strSection.size())) * PRIME;
    for (const char c : oName.m_strOption)
        nHash = (nHash ^ static_cast<unsigned char>(Fold(c))) * PRIME;
    return nHash;
}

std::vector<CKorIniOptionExchange::SOptionLine*>::iterator
KorIniFindLine(std::vector<CKorIniOptionExchange::SOptionLine*>& apLines, CKorIniNameRule oRule,
               const SKorIniName& oName)
{
    return std::find_if(apLines.begin(), apLines.end(), [&](const auto* pLine) {
        return oRule.Equal(pLine->m_strSection, oName.m_strSection) &&
               (oName.m_strOption.empty() || oRule.Equal(pLine->m_strOption, oName.m_strOption));
    });
}

void CKorIniLines::Place(const std::string& strText, std::string& strCurrentSection)
{
    std::unique_ptr<SOptionLine> pLine(m_oExchange.CreateOptionLine(strText, strCurrentSection));
    if (pLine == nullptr)
        return;

    const std::string strPreviousSection = LastSection();
    pLine->m_strSection = strCurrentSection;
    const bool bOption = !pLine->m_bSection && !pLine->m_strOption.empty();
    if (pLine->m_bSection || bOption) {
        if (Contains({strCurrentSection, pLine->m_strOption})) {
            CommentOut(*pLine, strPreviousSection);
        } else if (bOption && strPreviousSection != strCurrentSection &&
                   Contains({strCurrentSection, {}})) {
            // The section was opened again, and its second header is a comment now.
            InsertBehindFirst(std::make_unique<SOptionLine>(*pLine));
            CommentOut(*pLine, strPreviousSection);
        }
    }
    Append(std::move(pLine));
}

void CKorIniLines::CommentOut(SOptionLine& oLine, const std::string& strSection) const
{
    m_oExchange.CommentOptionLine(oLine);
    oLine.m_strSection = strSection;
}

bool CKorIniDocumentLines::Contains(const SKorIniName& oName)
{
    return KorIniFindLine(m_apLines, m_oRule, oName) != m_apLines.end();
}

std::string CKorIniDocumentLines::LastSection()
{
    const auto itLine = std::find_if(m_apLines.rbegin(), m_apLines.rend(), [](const auto* pLine) {
        return !pLine->m_strSection.empty();
    });
    return itLine != m_apLines.rend() ? (*itLine)->m_strSection : std::string();
}

void CKorIniDocumentLines::Append(std::unique_ptr<SOptionLine> pLine)
{
    m_apLines.push_back(nullptr);
    m_apLines.back() = pLine.release();
}

void CKorIniDocumentLines::InsertBehindFirst(std::unique_ptr<SOptionLine> pLine)
{
    const auto itFirst = KorIniFindLine(m_apLines, m_oRule, {pLine->m_strSection, {}});
    const auto itLine = m_apLines.insert(itFirst + 1, nullptr);
    *itLine = pLine.release();
}

void CKorIniIndexedLines::MoveTo(std::vector<SOptionLine*>& apLines)
{
    apLines.reserve(apLines.size() + m_lstLines.size());
    for (std::unique_ptr<SOptionLine>& pLine : m_lstLines)
        apLines.push_back(pLine.release());
}

bool CKorIniIndexedLines::Contains(const SKorIniName& oName)
{
    return m_mapFirst.count(oName) != 0;
}

std::string CKorIniIndexedLines::LastSection()
{
    return std::string(m_strLastSection);
}

void CKorIniIndexedLines::Append(std::unique_ptr<SOptionLine> pLine)
{
    const SOptionLine& oLine = *pLine;
    const auto itLine = m_lstLines.insert(m_lstLines.end(), std::move(pLine));
    m_mapFirst.try_emplace({oLine.m_strSection, {}}, itLine);
    m_mapFirst.try_emplace({oLine.m_strSection, oLine.m_strOption}, itLine);
    if (!oLine.m_strSection.empty())
        m_strLastSection = oLine.m_strSection;
}

void CKorIniIndexedLines::InsertBehindFirst(std::unique_ptr<SOptionLine> pLine)
{
    const SOptionLine& oLine = *pLine;
    const auto itFirst = m_mapFirst.find({oLine.m_strSection, {}})->second;
    const auto itLine = m_lstLines.insert(std::next(itFirst), std::move(pLine));
    m_mapFirst.try_emplace({oLine.m_strSection, oLine.m_strOption}, itLine);
}
