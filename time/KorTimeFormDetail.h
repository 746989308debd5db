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

/// The fields of a time, indexed by their ETimeElement, and behind them the pairs of digits of the
/// fields that have more than two.
struct SFields
{
    /// @param bFine  whether micro- and nanoseconds are wanted
    SFields(const CKorUTCTime& oTime, bool bFine)
    {
        const long long nTicks = oTime.GetHighResolutionLocaltime();
        SetDate(KorDateOfTicks(nTicks));
        // The getters of the clock fields would do the long divisions one by one.
        const int nMilliSeconds = static_cast<int>(oTime.GetLocaltime() % 86400000);
        bNegative = nMilliSeconds < 0;
        SetClock(static_cast<unsigned>(bNegative ? -nMilliSeconds : nMilliSeconds));
        if (bFine)
            SetFine(static_cast<std::uint32_t>(KorTicks::Bits(nTicks) % KorTicks::PER_MILLISECOND));
        if (bNegative)
            NegateClock();
    }

    /// Where the first two digits of a field of more than two stand, ...
    static constexpr int First(int nElement)
    {
        return FIELDS + (nElement == CKorUTCTime::eElemYear
                             ? 0
                             : 1 + 2 * (nElement - CKorUTCTime::eElemMilli));
    }
    /// ... and the last two of any field. Of three digits the pairs share the middle one.
    static constexpr int Last(int nElement)
    {
        if (nElement == CKorUTCTime::eElemYear)
            return CKorUTCTime::eElemYear2;
        return FIELD_WIDTHS[nElement] > 2 ? First(nElement) + 1 : nElement;
    }

    void SetDate(const KorCalendar::SDate32& oDate)
    {
        const auto nYear = static_cast<unsigned>(oDate.nYear);
        an[CKorUTCTime::eElemDay] = oDate.nDay;
        an[CKorUTCTime::eElemMonth] = oDate.nMonth;
        an[CKorUTCTime::eElemYear] = oDate.nYear;
        an[CKorUTCTime::eElemYear2] = static_cast<int>(nYear % 100);
        an[First(CKorUTCTime::eElemYear)] = static_cast<int>(nYear / 100);
    }
    void SetClock(unsigned nMilliSeconds)
    {
        const unsigned nSeconds = nMilliSeconds / 1000;
        const unsigned nMinutes = nSeconds / 60;
        an[CKorUTCTime::eElemHour] = static_cast<int>(nMinutes / 60);
        an[CKorUTCTime::eElemMinute] = static_cast<int>(nMinutes % 60);
        an[CKorUTCTime::eElemSecond] = static_cast<int>(nSeconds % 60);
        SetThree(CKorUTCTime::eElemMilli, nMilliSeconds % 1000);
    }
    void SetFine(std::uint32_t nTicksOfMilli)
    {
        SetThree(CKorUTCTime::eElemMicro, nTicksOfMilli / 100);
        SetThree(CKorUTCTime::eElemNano, nTicksOfMilli % 100 * 10);
    }
    void SetThree(int nElement, unsigned nField)
    {
        an[nElement] = static_cast<int>(nField);
        an[First(nElement)] = static_cast<int>(nField / 10);
        an[Last(nElement)] = static_cast<int>(nField % 100);
    }
    void NegateClock()
    {
        for (const int nElement : {CKorUTCTime::eElemHour, CKorUTCTime::eElemMinute,
                                   CKorUTCTime::eElemSecond, CKorUTCTime::eElemMilli})
            an[nElement] = -an[nElement];
    }

    int an[FIELDS + 7];
    bool bNegative; ///< a local clock before year 0, the fields of which are written with "-"
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
            AddPlace(SFields::First(nElement), nLength);
        nLength += nWidth;
        AddPlace(SFields::Last(nElement), nLength - 2);
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
    int nLength = 0;
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
    for (int i = 0; i < oForm.nPlaces; ++i)
        KorDigits::PutTwo(pText + oForm.aoPlaces[i].nOffset,
                          static_cast<unsigned>(oFields.an[oForm.aoPlaces[i].nPair]));
}

} // namespace KorTimeForm
