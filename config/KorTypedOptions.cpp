#include "config/KorTypedOptions.h"

#include "config/KorIniEditDetail.h"
#include "config/KorIniFinding.h"
#include "config/KorIniNamesDetail.h"
#include "config/KorIniReportDetail.h"
#include "text/KorStringDetail.h"
#include "text/KorStringFunc.h"

namespace
{

/// The text as it is stored: in a pair of quotes where it would not come back without.
std::string Enclosed(const std::string& strText)
{
    const bool bHasQuotes = strText.size() > 1 && strText.front() == '"' && strText.back() == '"';
    return bHasQuotes || KorHasWhiteSpace(strText) ? KorConcat({"\"", strText, "\""}) : strText;
}

/// Reports a refusal, without what does not print. @return false
bool Report(CKorIniOptionExchange* pExchange, SKorIniFinding::EKind eKind, const SKorIniName& oName,
            std::string strText)
{
    KorIniMakePrintable(strText);
    KorReportIniFinding(pExchange, KorIniFindingOf(eKind, 0, oName, {strText}));
    return false;
}

/// The name with this text, or else the only one that differs in case alone.
/// @return its index, or the number of names
size_t IndexOfName(const std::vector<SKorValueName>& vecNames, const std::string& strText)
{
    size_t nAlike = 0;
    size_t nLast = vecNames.size();
    for (size_t i = 0; i < vecNames.size(); ++i) {
        if (vecNames[i].m_strName == strText)
            return i;
        if (CKorIniNameRule(false).Equal(vecNames[i].m_strName, strText)) {
            nLast = i;
            ++nAlike;
        }
    }
    return nAlike == 1 ? nLast : vecNames.size();
}

std::string NoneOf(const std::vector<SKorValueName>& vecNames)
{
    std::string strText = "is none of";
    for (const SKorValueName& oName : vecNames)
        strText.append(&oName == vecNames.data() ? " " : ", ").append(oName.m_strName);
    return strText;
}

} // namespace

CKorTypedOption::CKorTypedOption(CKorIniOptionExchange* pExchange, const char* pszSection,
                                 const char* pszOption)
    : m_pExchange(pExchange),
      m_strSection(KorText(pszSection)),
      m_strOption(KorText(pszOption)),
      m_bStored(!m_strOption.empty() && // or it would be the first line of the section
                pExchange->GetOptionString(pszSection, pszOption, m_strText))
{
    KorDeQuoteString(m_strText);
}

bool CKorTypedOption::Store(const std::string& strText)
{
    const std::string strStored = Enclosed(strText);
    const SKorIniName oName{m_strSection, m_strOption};
    const std::string strWhyNot = KorIniWhyNotStorable(oName, strStored);
    if (!strWhyNot.empty()) {
        KorReportIniFinding(m_pExchange, KorIniNotStorable(oName, strWhyNot));
        return false;
    }
    m_pExchange->SetOptionString(m_strSection.c_str(), m_strOption.c_str(), strStored.c_str());
    return true;
}

bool CKorTypedOption::RefuseStored(const SKorRefusal& oRefusal, const std::string& strDefault) const
{
    const SKorIniName oName{m_strSection, m_strOption};
    const std::string_view strUsed =
        strDefault.empty() ? std::string_view("the default") : strDefault;
    return Report(m_pExchange,
                  oRefusal.m_bRange ? SKorIniFinding::FINDING_OUT_OF_RANGE
                                    : SKorIniFinding::FINDING_BAD_VALUE,
                  oName,
                  KorConcat({KorIniLabel(oName), "=", m_strText, " ", oRefusal.m_strWhy, "; ",
                             strUsed, " is used"}));
}

bool CKorTypedOption::RefuseNew(const SKorRefusal& oRefusal) const
{
    const SKorIniName oName{m_strSection, m_strOption};
    return Report(m_pExchange,
                  oRefusal.m_bRange ? SKorIniFinding::FINDING_OUT_OF_RANGE
                                    : SKorIniFinding::FINDING_NOT_STORABLE,
                  oName,
                  KorConcat({KorIniLabel(oName), " is not stored: the value ", oRefusal.m_strWhy}));
}

bool KorExchangeName(CKorIniOptionExchange* pExchange, const char* pszSection,
                     const char* pszOption, const std::vector<SKorValueName>& vecNames,
                     size_t nDefault, size_t& rnName)
{
    CKorTypedOption oOption(pExchange, pszSection, pszOption);
    const size_t nNone = vecNames.size();
    const size_t nStored = oOption.IsStored() ? IndexOfName(vecNames, oOption.GetText()) : nNone;
    if (pExchange->IsWriteBack()) {
        if (rnName >= nNone)
            return oOption.RefuseNew({false, NoneOf(vecNames)});
        return (nStored < nNone && vecNames[nStored].m_nFirst == rnName) ||
               oOption.Store(vecNames[rnName].m_strName);
    }
    const bool bTaken = nStored < nNone || !oOption.IsStored();
    rnName = nStored < nNone ? nStored : nDefault;
    return bTaken || oOption.RefuseStored({false, NoneOf(vecNames)},
                                          nDefault < nNone ? vecNames[nDefault].m_strName : "");
}
