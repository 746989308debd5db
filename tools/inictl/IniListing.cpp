#include "IniListing.h"

#include "JsonText.h"
#include "config/KorIniReportDetail.h"
#include "config/KorIniTextDetail.h"
#include "text/KorStringFunc.h"

CIniListing::CIniListing(std::string_view strText, CKorIniNameRule oRule) : m_oNames(oRule)
{
    CKorIniText oLine(strText);
    while (oLine.Next()) {
        if (!oLine.Is(EKorIniLine::HEADER) && !oLine.Is(EKorIniLine::OPTION))
            continue;
        const SKorIniName oSection{oLine.Section(), {}};
        if (Add(oSection))
            m_vecSections.push_back(m_oNames.Find(oSection));
        if (oLine.Is(EKorIniLine::HEADER) || !Add({oLine.Section(), oLine.Parts().m_strName}))
            continue;
        m_vecValues.back() = oLine.Parts().m_strValue;
        KorDeQuoteString(m_vecValues.back());
        m_vecOptions[m_oNames.Find(oSection)].push_back(m_vecValues.size() - 1);
    }
}

/// @return whether the name is new
bool CIniListing::Add(const SKorIniName& oName)
{
    m_oNames.Add(oName);
    const bool bNew = m_oNames.Size() > m_vecValues.size();
    m_vecValues.resize(m_oNames.Size());
    m_vecOptions.resize(m_oNames.Size());
    return bNew;
}

/// All options, and the sections without any, which readers list all the same if they have a name.
CIniListing::Numbers CIniListing::Items() const
{
    Numbers vecItems;
    for (const size_t nSection : m_vecSections) {
        const Numbers& vecOptions = m_vecOptions[nSection];
        vecItems.insert(vecItems.end(), vecOptions.begin(), vecOptions.end());
        if (vecOptions.empty() && !m_oNames.Section(nSection).empty())
            vecItems.push_back(nSection);
    }
    return vecItems;
}

std::string CIniListing::LineOf(size_t nItem) const
{
    const std::string strLabel = KorIniLabel({m_oNames.Section(nItem), m_oNames.Option(nItem)});
    const bool bOption = !m_oNames.Option(nItem).empty();
    return strLabel + (bOption ? "=" + m_vecValues[nItem] : "") + "\n";
}

std::string CIniListing::Lines() const
{
    std::string strLines;
    for (const size_t nItem : Items())
        strLines += LineOf(nItem);
    return strLines;
}

std::string CIniListing::JsonOf(size_t nSection) const
{
    std::string strJson;
    for (const size_t nOption : m_vecOptions[nSection])
        strJson += (strJson.empty() ? "\n    " : ",\n    ") + JsonText(m_oNames.Option(nOption)) +
                   ": " + JsonText(m_vecValues[nOption]);
    return JsonText(m_oNames.Section(nSection)) + ": {" + strJson +
           (strJson.empty() ? "}" : "\n  }");
}

std::string CIniListing::Json() const
{
    std::string strJson;
    for (const size_t nSection : m_vecSections) {
        if (!m_oNames.Section(nSection).empty() || !m_vecOptions[nSection].empty())
            strJson += (strJson.empty() ? "\n  " : ",\n  ") + JsonOf(nSection);
    }
    return "{" + strJson + (strJson.empty() ? "}\n" : "\n}\n");
}

/// The other listing's number of an item of this one.
size_t CIniListing::Find(size_t nItem, const CIniListing& oOther) const
{
    return oOther.m_oNames.Find({m_oNames.Section(nItem), m_oNames.Option(nItem)});
}

std::string CIniListing::Difference(const CIniListing& oOther) const
{
    std::string strLines;
    for (const size_t nItem : Items()) {
        const size_t nOther = Find(nItem, oOther);
        const bool bMissing = nOther == CKorIniNameList::NONE;
        if (bMissing || m_vecValues[nItem] != oOther.m_vecValues[nOther])
            strLines += "-" + LineOf(nItem) + (bMissing ? "" : "+" + oOther.LineOf(nOther));
    }
    for (const size_t nItem : oOther.Items()) {
        if (oOther.Find(nItem, *this) == CKorIniNameList::NONE)
            strLines += "+" + oOther.LineOf(nItem);
    }
    return strLines;
}
