#pragma once

// What an exchange keeps of its document beside the lines. Not installed.

#include "config/KorIniDocumentDetail.h"
#include "config/KorOptionExchange.h"

struct CKorIniOptionExchange::SDocument : CKorIniDocument<SOptionLine>
{
    using CKorIniDocument<SOptionLine>::CKorIniDocument;

    bool m_bWhole = true; ///< holds all of the file that was read
};
