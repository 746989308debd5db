#pragma once

#include "time/KorDateOfTicksDetail.h"
#include "time/KorDigitsDetail.h"
#include "time/KorTimeTicksDetail.h"
#include "time/KorUTCTime.h"

#include <cstddef>
#include <cstdint>

/// What the texts of times are made of: records of elements, the fields of a time, and the forms
/// into which the digits of these are put.
namespace KorTimeForm
{

using Record = std::int32_t[17];

constexpr int FIELDS = CKorUTCTime::eElemNano + 1;
constexpr int FIELD_WIDTHS[FIELDS] = {2, 2, 4, 2, 2, 2, 2, 3, 3, 3};

/// What stands for the elements from eElemDot on.
constexpr char SEPARATORS[][2] = {".", "/", ":", "", " ", "", "-"};

/// The fields of a time, indexed by their ETimeElement.
struct SFields
{
    explicit SFields(const CKorUTCTime& oTime)
    {
        const long long nTicks = oTime.GetHighResolutionLocaltime();
        const KorCalendar::SDate32 oDate = KorDateOfTicks(nTicks);
        an[CKorUTCTime::eElemDay] = oDate.nDay;
        an[CKorUTCTime::eElemMonth] = oDate.nMonth;
        an[CKorUTCTime::eElemYear] = oDate.nYear;
        an[CKorUTCTime::eElemYear2] = oDate.nYear % 100;
        // The getters of the clock fields would do the long divisions one by one.
        const int nMilliSeconds = static_cast<int>(oTime.GetLocaltime() % 86400000);
        bNegative = nMilliSeconds < 0;
        const auto nAbsolute = static_cast<unsigned>(bNegative ? -nMilliSeconds : nMilliSeconds);
        SetClock(nAbsolute, bNegative ? -1 : 1);
        const auto nBelowMilli =
            static_cast<std::uint32_t>(KorTicks::Bits(nTicks) % KorTicks::PER_MILLISECOND);
        an[CKorUTCTime::eElemMicro] = static_cast<int>(nBelowMilli / 100);
        an[CKorUTCTime::eElemNano] = static_cast<int>(nBelowMilli % 100 * 10);
    }

    void SetClock(unsigned nMilliSeconds, int nSign)
    {
        const unsigned nSeconds = nMilliSeconds / 1000;
        const unsigned nMinutes = nSeconds / 60;
        an[CKorUTCTime::eElemHour] = static_cast<int>(nMinutes / 60) * nSign;
        an[CKorUTCTime::eElemMinute] = static_cast<int>(nMinutes % 60) * nSign;
        an[CKorUTCTime::eElemSecond] = static_cast<int>(nSeconds % 60) * nSign;
        an[CKorUTCTime::eElemMilli] = static_cast<int>(nMilliSeconds % 1000) * nSign;
    }

    int an[FIELDS];
    bool bNegative; ///< a local clock before year 0, the fields of which are written with "-"
};

/// The fields of a time in pairs of digits. A field of three or four digits has two of them: of
/// three digits they share the middle one.
struct SPairs
{
    /// @param bFine  whether there are micro- and nanoseconds as well
    SPairs(const SFields& oFields, bool bFine)
    {
        for (const int nElement :
             {CKorUTCTime::eElemDay, CKorUTCTime::eElemMonth, CKorUTCTime::eElemYear2,
              CKorUTCTime::eElemHour, CKorUTCTime::eElemMinute, CKorUTCTime::eElemSecond})
            an[Last(nElement)] = static_cast<unsigned>(oFields.an[nElement]);
        Split(oFields, CKorUTCTime::eElemYear, 100);
        Split(oFields, CKorUTCTime::eElemMilli, 10);
        if (bFine) {
            Split(oFields, CKorUTCTime::eElemMicro, 10);
            Split(oFields, CKorUTCTime::eElemNano, 10);
        }
    }

    static constexpr int First(int nElement) { return 2 * nElement; }
    static constexpr int Last(int nElement) { return 2 * nElement + 1; }

    void Split(const SFields& oFields, int nElement, unsigned nDivisor)
    {
        const auto nField = static_cast<unsigned>(oFields.an[nElement]);
        an[First(nElement)] = nField / nDivisor;
        an[Last(nElement)] = nField % 100;
    }

    unsigned an[2 * FIELDS];
};

/// A record with everything in place but the digits, for which there are zeros.
struct SForm
{
    constexpr SForm() = default;
    explicit constexpr SForm(const Record& anRecord)
    {
        for (const int nElement : anRecord) {
            if (nElement < FIELDS)
                AddField(nElement, FIELD_WIDTHS[nElement]);
            else if (SEPARATORS[nElement - CKorUTCTime::eElemDot][0] != '\0')
                acText[nLength++] = SEPARATORS[nElement - CKorUTCTime::eElemDot][0];
        }
    }

    constexpr void AddField(int nElement, int nWidth)
    {
        anElements[nElements++] = static_cast<std::uint8_t>(nElement);
        if (nWidth > 2)
            AddPlace(SPairs::First(nElement), nLength);
        nLength = static_cast<std::uint8_t>(nLength + nWidth);
        AddPlace(SPairs::Last(nElement), nLength - 2);
        bFine = bFine || nElement >= CKorUTCTime::eElemMicro;
    }
    constexpr void AddPlace(int nPair, int nOffset)
    {
        aoPlaces[nPlaces++] = {static_cast<std::uint8_t>(nPair),
                               static_cast<std::uint8_t>(nOffset)};
    }

    struct SPlace
    {
        std::uint8_t nPair;
        std::uint8_t nOffset;
    };
    static constexpr size_t MAX_LENGTH = 32; ///< one more than the longest record has

    char acText[MAX_LENGTH] = {};
    std::uint8_t nLength = 0;
    std::uint8_t anElements[9] = {}; ///< the fields
    std::uint8_t nElements = 0;
    SPlace aoPlaces[13] = {}; ///< where their digits go
    std::uint8_t nPlaces = 0;
    bool bFine = false; ///< whether it has more than milliseconds
};

/// The forms of all records of the format table.
struct SForms
{
    explicit constexpr SForms(const Record (&aanRecords)[12])
    {
        for (size_t i = 0; i < 12; ++i)
            ao[i] = SForm(aanRecords[i]);
    }
    SForm ao[12];
};

/// Puts the digits of a form into place; no field may be negative.
inline void PutDigits(char* pText, const SForm& oForm, const SFields& oFields)
{
    const SPairs oPairs(oFields, oForm.bFine);
    for (int i = 0; i < oForm.nPlaces; ++i)
        KorDigits::PutTwo(pText + oForm.aoPlaces[i].nOffset, oPairs.an[oForm.aoPlaces[i].nPair]);
}

} // namespace KorTimeForm
