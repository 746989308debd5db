#pragma once

// What an exchange keeps of its document beside the lines. Not installed.

#include "config/KorIniDocumentDetail.h"
#include "config/KorIniWatchDetail.h"
#include "config/KorOptionExchange.h"

struct CKorIniOptionExchange::SDocument : CKorIniDocument<SOptionLine>
{
    using CKorIniDocument<SOptionLine>::CKorIniDocument;

    /// Tells the watch, if there is one, of a use of an option.
    void Note(CKorIniWatch::EUse eUse, const SKorIniName& oName) const
    {
        if (m_pWatch != nullptr)
            m_pWatch->Note(eUse, oName);
    }

    /// Places the lines that a reader gives.
    template <class TReader>
    void PlaceAll(TReader& oReader)
    {
        std::string strCurrentSection;
        std::string_view strLine;
        while (oReader.Next(strLine))
            Place(strLine, strCurrentSection);
        Settled();
    }

    bool m_bWhole = true;             ///< holds all of the file that was read
    CKorIniWatch* m_pWatch = nullptr; ///< takes the file's place
};
