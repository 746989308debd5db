#include "config/KorIniWatchDetail.h"

#include "config/KorIniReportDetail.h"
#include "config/KorOptionExchangeDetail.h"

void CKorIniWatch::Attach(CKorIniOptionExchange& oExchange)
{
    oExchange.m_pDocument->m_pWatch = this;
    oExchange.ReadIniOptions();
}

CKorIniWatch* CKorIniWatch::Of(const CKorIniOptionExchange& oExchange)
{
    return oExchange.m_pDocument->m_pWatch;
}

void CKorIniWatch::Note(EUse eUse, const SKorIniName& oName)
{
    m_oNames.Note(m_oNames.Add(oName)) |= eUse;
}

void CKorIniWatch::Note(const SKorIniFinding& oFinding)
{
    KorIniAdd(m_vecFindings, oFinding);
}

CKorIniTextLines CKorIniWatch::Lines()
{
    for (size_t i = 0; i < m_oNames.Size(); ++i)
        m_oNames.Note(i) = USE_ASKED;
    return CKorIniTextLines(m_strText);
}
