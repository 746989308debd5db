#include "config/KorIniWatchDetail.h"

#include "config/KorIniReportDetail.h"
#include "config/KorOptionExchangeDetail.h"

#include <algorithm>

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
    const size_t nName = m_oNames.Add(oName);
    m_vecUses.resize(m_oNames.Size());
    m_vecUses[nName] |= eUse;
}

void CKorIniWatch::Note(const SKorIniFinding& oFinding)
{
    KorIniAdd(m_vecFindings, oFinding);
}

CKorIniTextLines CKorIniWatch::Lines()
{
    std::fill(m_vecUses.begin(), m_vecUses.end(), USE_ASKED);
    return CKorIniTextLines(m_strText);
}
