#include "config/KorConfigBase.h"

CKorConfigBase::CKorConfigBase() = default;

CKorConfigBase::~CKorConfigBase() = default;

void CKorConfigBase::DoOptionExchange(CKorConfigExchange*) {}

CKorConfigExchange::CKorConfigExchange(bool bWriteBack)
    : m_bModified(false), m_bWriteBack(bWriteBack)
{
}

CKorConfigExchange::CKorConfigExchange() : CKorConfigExchange(false) {}

CKorConfigExchange::~CKorConfigExchange() = default;

bool CKorConfigExchange::IsWriteBack() const
{
    return m_bWriteBack;
}
