#include "time/KorLocalTime.h"
#include "time/KorStreamSlotDetail.h"
#include "time/KorTimeTextDetail.h"
#include "time/KorTimeTicksDetail.h"
#include "time/KorUTCTime.h"
#include "time/StreamExtension.h"

#include <istream>
#include <ostream>
#include <sstream>
#include <typeinfo>

namespace
{

using ETimeElement = CKorUTCTime::ETimeElement;

constexpr int FIELDS = CKorUTCTime::eElemNano + 1;
constexpr int FIELD_WIDTHS[FIELDS] = {2, 2, 4, 2, 2, 2, 2, 3, 3, 3};

/// What stands for the elements from eElemDot on.
constexpr char SEPARATORS[][2] = {".", "/", ":", "", " ", "", "-"};

constexpr char pszMonths[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool IsKnown(long nFormat)
{
    return nFormat >= CKorUTCTime::eDateTimeMs && nFormat <= CKorUTCTime::eMailFormat;
}

/// The fields of a time, indexed by their ETimeElement.
struct SFields
{
    explicit SFields(const CKorUTCTime& oTime)
    {
        oTime.CalcDate(anFields[CKorUTCTime::eElemYear], anFields[CKorUTCTime::eElemMonth],
                       anFields[CKorUTCTime::eElemDay]);
        anFields[CKorUTCTime::eElemYear2] = anFields[CKorUTCTime::eElemYear] % 100;
        // The getters of the clock fields would do the long divisions one by one.
        const int nMilliSeconds = static_cast<int>(oTime.GetLocaltime() % 86400000);
        anFields[CKorUTCTime::eElemHour] = nMilliSeconds / 3600000;
        anFields[CKorUTCTime::eElemMinute] = nMilliSeconds / 60000 % 60;
        anFields[CKorUTCTime::eElemSecond] = nMilliSeconds / 1000 % 60;
        anFields[CKorUTCTime::eElemMilli] = nMilliSeconds % 1000;
        const auto nTicks = static_cast<std::uint64_t>(oTime.GetHighResolutionLocaltime());
        const int nBelowMilli = static_cast<int>(nTicks % KorTicks::PER_MILLISECOND);
        anFields[CKorUTCTime::eElemMicro] = nBelowMilli / 100;
        anFields[CKorUTCTime::eElemNano] = nBelowMilli % 100 * 10;
    }

    int operator[](std::int32_t nElement) const { return anFields[nElement]; }

    int anFields[FIELDS];
};

void AddRecord(CKorTimeText& oText, const CKorUTCTime& oTime, const std::int32_t (&anRecord)[17])
{
    const SFields oFields(oTime);
    for (const std::int32_t nElement : anRecord) {
        if (nElement < FIELDS)
            oText.AddInt(oFields[nElement], FIELD_WIDTHS[nElement]);
        else if (SEPARATORS[nElement - CKorUTCTime::eElemDot][0] != '\0')
            oText.AddText(SEPARATORS[nElement - CKorUTCTime::eElemDot]);
    }
}

void AddMailForm(CKorTimeText& oText, const CKorUTCTime& oTime)
{
    const SFields oFields(oTime);
    oText.AddInt(oFields[CKorUTCTime::eElemDay], 0);
    oText.AddText(" ");
    oText.AddText(pszMonths[oFields[CKorUTCTime::eElemMonth] - 1]);
    oText.AddText(" ");
    oText.AddInt(oFields[CKorUTCTime::eElemYear2], 2);
    oText.AddText(" ");
    oText.AddInt(oFields[CKorUTCTime::eElemHour], 2);
    oText.AddText(":");
    oText.AddInt(oFields[CKorUTCTime::eElemMinute], 2);
    oText.AddText(" +0100"); // wanted: whatever the zone
}

/// Unlike std::ws of newer libraries, no failure on a stream that is at its end.
void SkipWhiteSpace(std::istream& oStream)
{
    if (oStream.good())
        oStream >> std::ws;
}

/// Reads one element of a record, a field into its part.
void ReadElement(std::istream& oStream, std::int32_t nElement, unsigned (&anParts)[FIELDS])
{
    if (nElement < FIELDS) {
        const auto nDigits = static_cast<unsigned>(FIELD_WIDTHS[nElement]);
        anParts[nElement] = GetSizedUInt(oStream, nDigits, nullptr, false);
        if (nElement == CKorUTCTime::eElemYear2) {
            const unsigned nYear = anParts[nElement];
            anParts[CKorUTCTime::eElemYear] = nYear + (nYear < 46 ? 2000 : 1900);
        }
    } else if (nElement == CKorUTCTime::eElemAnySep) {
        TryRemoveNonDigit(oStream);
    } else if (nElement == CKorUTCTime::eElemSpace) {
        SkipWhiteSpace(oStream);
    } else if (nElement != CKorUTCTime::eElemNone) {
        SeparateChar(oStream, SEPARATORS[nElement - CKorUTCTime::eElemDot][0], false);
    }
}

} // namespace

int CKorUTCTime::m_nFormatIdx = -1;

const std::int32_t CKorUTCTime::m_aoFormatTable[12][17] = {
    // DD.MM.YYYY hh:mm:ss.mmm
    {eElemDay, eElemDot, eElemMonth, eElemDot, eElemYear, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemDot, eElemMilli, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // DD.MM.YYYY hh:mm:ss
    {eElemDay, eElemDot, eElemMonth, eElemDot, eElemYear, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // DD.MM.YYYY
    {eElemDay, eElemDot, eElemMonth, eElemDot, eElemYear, eElemNone, eElemNone, eElemNone,
     eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // DD.MM.YYYY hh:mm:ss.mmm.uuu
    {eElemDay, eElemDot, eElemMonth, eElemDot, eElemYear, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemDot, eElemMilli, eElemDot, eElemMicro, eElemNone,
     eElemNone},
    // DD.MM.YYYY hh:mm:ss.mmm.uuu.nnn
    {eElemDay, eElemDot, eElemMonth, eElemDot, eElemYear, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemDot, eElemMilli, eElemDot, eElemMicro, eElemDot,
     eElemNano},
    // hh:mm:ss
    {eElemHour, eElemColon, eElemMinute, eElemColon, eElemSecond, eElemNone, eElemNone, eElemNone,
     eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // MM/DD/YYYY hh:mm:ss
    {eElemMonth, eElemSlash, eElemDay, eElemSlash, eElemYear, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // MM/DD/YYYY and a space, which is wanted
    {eElemMonth, eElemSlash, eElemDay, eElemSlash, eElemYear, eElemSpace, eElemNone, eElemNone,
     eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // YYYY-MM-DD and a space, which is wanted
    {eElemYear, eElemDash, eElemMonth, eElemDash, eElemDay, eElemSpace, eElemNone, eElemNone,
     eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // hh:mm:ss.mmm
    {eElemHour, eElemColon, eElemMinute, eElemColon, eElemSecond, eElemDot, eElemMilli, eElemNone,
     eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // YYYY-MM-DD hh:mm:ss.mmm
    {eElemYear, eElemDash, eElemMonth, eElemDash, eElemDay, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemDot, eElemMilli, eElemNone, eElemNone, eElemNone,
     eElemNone},
    // DD MM YY hh:mm:ss, for reading only: wanted, although the mail form does not read back
    {eElemDay, eElemSpace, eElemMonth, eElemSpace, eElemYear2, eElemSpace, eElemHour, eElemColon,
     eElemMinute, eElemColon, eElemSecond, eElemNone, eElemNone, eElemNone, eElemNone, eElemNone,
     eElemNone},
};

CKorUTCTime::CKorUTCTime(const std::string& strText, ETimeFormat eFormat) : m_bValid(false)
{
    std::istringstream oStream(strText);
    SetTimeFlag(oStream, eFormat);
    CKorUTCTime::GetStream(oStream);
}

std::ios_base& CKorUTCTime::SetTimeFlag(std::ios_base& oStream, ETimeFormat eFormat)
{
    static const int nIndex = KorTakeStreamSlot(m_nFormatIdx);
    oStream.iword(nIndex) = eFormat;
    return oStream;
}

std::ostream& CKorUTCTime::PutStream(std::ostream& oStream) const
{
    const long nFormat = KorStreamSlot(oStream, m_nFormatIdx);
    if (!IsKnown(nFormat))
        return oStream;
    if (nFormat == eMailFormat)
        return MailFormat(oStream);
    CKorTimeText oText;
    AddRecord(oText, *this, m_aoFormatTable[nFormat]);
    return oText.Put(oStream);
}

std::ostream& CKorUTCTime::MailFormat(std::ostream& oStream) const
{
    CKorTimeText oText;
    AddMailForm(oText, *this);
    return oText.Put(oStream).flush();
}

std::istream& CKorUTCTime::GetStream(std::istream& oStream)
{
    SkipWhiteSpace(oStream);
    const long nFormat = KorStreamSlot(oStream, m_nFormatIdx);
    if (!IsKnown(nFormat))
        return oStream;
    unsigned anParts[FIELDS] = {};
    for (const std::int32_t nElement : m_aoFormatTable[nFormat])
        ReadElement(oStream, nElement, anParts);
    SetDate(anParts[eElemDay], anParts[eElemMonth], anParts[eElemYear], anParts[eElemHour],
            anParts[eElemMinute], anParts[eElemSecond], anParts[eElemMilli], anParts[eElemMicro],
            anParts[eElemNano]);
    if (oStream.fail()) {
        m_bValid = false;
        oStream.clear(std::ios_base::failbit);
    }
    return oStream;
}

std::string CKorUTCTime::Time2Str(ETimeFormat eFormat) const
{
    if (typeid(*this) != typeid(CKorUTCTime) && typeid(*this) != typeid(CKorLocalTime)) {
        // A class of the program's own may write something else.
        std::ostringstream oStream;
        SetTimeFlag(oStream, eFormat);
        oStream << *this;
        return oStream.str();
    }
    CKorTimeText oText;
    if (eFormat == eMailFormat)
        AddMailForm(oText, *this);
    else if (IsKnown(eFormat))
        AddRecord(oText, *this, m_aoFormatTable[eFormat]);
    return oText.ToString();
}

void CKorUTCTime::SetDate(const std::string& strText, ETimeFormat eFormat)
{
    std::istringstream oStream(strText);
    SetTimeFlag(oStream, eFormat);
    oStream >> *this;
}

std::ostream& operator<<(std::ostream& oStream, const CKorUTCTime& oTime)
{
    return oTime.PutStream(oStream);
}

std::istream& operator>>(std::istream& oStream, CKorUTCTime& oTime)
{
    return oTime.GetStream(oStream);
}

std::string KorToString(const CKorUTCTime& oTime, CKorUTCTime::ETimeFormat eFormat)
{
    return oTime.Time2Str(eFormat);
}

bool KorFromString(CKorUTCTime& oTime, CKorUTCTime::ETimeFormat eFormat, const std::string& strText)
{
    // At the zero every number ends before the end of the input, which would fail the stream.
    std::istringstream oStream(strText + '\0');
    CKorUTCTime::SetTimeFlag(oStream, eFormat);
    oStream >> oTime;
    return !oStream.fail();
}
