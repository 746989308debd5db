#include "time/KorOverrideDetail.h"
#include "time/KorStreamSlotDetail.h"
#include "time/KorTextReaderDetail.h"
#include "time/KorTextWriterDetail.h"
#include "time/KorTimeFormDetail.h"

#include <cstring>

using namespace KorTimeForm;

namespace
{

constexpr char pszMonths[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool IsKnown(long nFormat)
{
    return nFormat >= CKorUTCTime::eDateTimeMs && nFormat <= CKorUTCTime::eMailFormat;
}

/// Lets the stream's own operators write a record.
void WriteRecord(std::ostream& oStream, const SFields& oFields, const Record& anRecord)
{
    CKorStreamText oText(oStream);
    for (const std::int32_t nElement : anRecord) {
        if (nElement < FIELDS)
            oText.Number(oFields.an[nElement], FIELD_WIDTHS[nElement]);
        else if (SEPARATORS[nElement - CKorUTCTime::eElemDot][0] != '\0')
            oText.Text(SEPARATORS[nElement - CKorUTCTime::eElemDot]);
    }
}

template <class TText>
void AddMailForm(TText& oText, const SFields& oFields)
{
    oText.Number(oFields.an[CKorUTCTime::eElemDay], 0);
    oText.Text(" ");
    oText.Text(pszMonths[oFields.an[CKorUTCTime::eElemMonth] - 1]);
    oText.Text(" ");
    oText.Number(oFields.an[CKorUTCTime::eElemYear2], 2);
    oText.Text(" ");
    oText.Number(oFields.an[CKorUTCTime::eElemHour], 2);
    oText.Text(":");
    oText.Number(oFields.an[CKorUTCTime::eElemMinute], 2);
    oText.Text(" +0100"); // wanted: whatever the zone
}

std::string MailText(const SFields& oFields)
{
    CKorPlainText oText;
    AddMailForm(oText, oFields);
    return oText.ToString();
}

std::string RecordText(const SFields& oFields, const SForm& oForm)
{
    std::string strText(oForm.acText, static_cast<size_t>(oForm.nLength));
    PutDigits(&strText[0], oForm, oFields);
    return strText;
}

/// Reads what stands between two fields.
template <class TSource>
void ReadSeparator(TSource& oSource, std::int32_t nElement)
{
    if (nElement == CKorUTCTime::eElemSpace)
        oSource.SkipWhiteSpace();
    else if (nElement == CKorUTCTime::eElemAnySep)
        KorTakeNonDigit(oSource);
    else
        KorTakeSeparator(oSource, SEPARATORS[nElement - CKorUTCTime::eElemDot][0]);
}

/// Reads the fields of a record into their parts.
template <class TSource>
void ReadFields(TSource& oSource, const Record& anRecord, unsigned (&anParts)[FIELDS])
{
    for (const std::int32_t nElement : anRecord) {
        if (nElement < FIELDS)
            anParts[nElement] = oSource.TakeNumber(static_cast<unsigned>(FIELD_WIDTHS[nElement]));
        else if (nElement != CKorUTCTime::eElemNone)
            ReadSeparator(oSource, nElement);
    }
}

/// Reads a text as it is written, in less time; otherwise nothing.
bool ReadForm(CKorTextSource& oSource, const SForm& oForm, unsigned (&anParts)[FIELDS])
{
    unsigned an[FIELDS + 1];
    if (!oSource.TakeForm(oForm.acText, oForm.nLength, an))
        return false;
    for (int i = 0; i < oForm.nElements; ++i)
        anParts[oForm.anElements[i]] = an[i];
    return true;
}

/// What a stream holds can be read only one by one.
bool ReadForm(CKorStreamSource&, const SForm&, unsigned (&)[FIELDS])
{
    return false;
}

std::string StreamText(const CKorUTCTime& oTime, CKorUTCTime::ETimeFormat eFormat)
{
    std::ostringstream oStream;
    CKorUTCTime::SetTimeFlag(oStream, eFormat);
    oStream << oTime;
    return oStream.str();
}

} // namespace

int CKorUTCTime::m_nFormatIdx = -1;

constexpr std::int32_t CKorUTCTime::m_aoFormatTable[12][17] = {
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

namespace
{

/// Reaches the table, which is for derived classes.
struct STable : CKorUTCTime
{
    static constexpr const Record (&aanRecords)[12] = m_aoFormatTable;
};

constexpr SForms FORMS(STable::aanRecords);

} // namespace

CKorUTCTime::CKorUTCTime(const std::string& strText, ETimeFormat eFormat) : m_bValid(false)
{
    ReadText(strText.data(), strText.data() + strText.size(), eFormat);
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
    const SForm& oForm = FORMS.ao[nFormat];
    const SFields oFields(*this, oForm.bFine);
    if (oFields.bNegative || !KorWritesPlainly(oStream, true)) {
        WriteRecord(oStream, oFields, m_aoFormatTable[nFormat]);
        return oStream;
    }
    char acText[SForm::MAX_LENGTH];
    std::memcpy(acText, oForm.acText, SForm::MAX_LENGTH);
    PutDigits(acText, oForm, oFields);
    return KorPutPlainText(oStream, acText, acText + oForm.nLength, true);
}

std::ostream& CKorUTCTime::MailFormat(std::ostream& oStream) const
{
    const SFields oFields(*this, false);
    return KorPutText(oStream, !oFields.bNegative,
                      [&oFields](auto& oText) { AddMailForm(oText, oFields); })
        .flush();
}

std::istream& CKorUTCTime::GetStream(std::istream& oStream)
{
    CKorStreamSource oSource(oStream);
    oSource.SkipWhiteSpace();
    const long nFormat = KorStreamSlot(oStream, m_nFormatIdx);
    if (!IsKnown(nFormat))
        return oStream;
    ReadRecord(oSource, nFormat);
    if (oStream.fail())
        oStream.clear(std::ios_base::failbit);
    return oStream;
}

std::string CKorUTCTime::Time2Str(ETimeFormat eFormat) const
{
    if (IsKnown(eFormat) && KorNewStreamWritesPlainly() &&
        !KorOverrides<&CKorUTCTime::PutStream>(*this)) {
        const SForm& oForm = FORMS.ao[eFormat];
        const SFields oFields(*this, oForm.bFine);
        if (!oFields.bNegative)
            return eFormat == eMailFormat ? MailText(oFields) : RecordText(oFields, oForm);
    }
    return StreamText(*this, eFormat);
}

void CKorUTCTime::SetDate(const std::string& strText, ETimeFormat eFormat)
{
    ReadAnyText(strText.data(), strText.data() + strText.size(), eFormat);
}

template <class TSource>
void CKorUTCTime::ReadRecord(TSource& oSource, long nFormat)
{
    unsigned an[FIELDS] = {};
    if (!ReadForm(oSource, FORMS.ao[nFormat], an))
        ReadFields(oSource, m_aoFormatTable[nFormat], an);
    if (nFormat == eMailFormat)
        an[eElemYear] = an[eElemYear2] + (an[eElemYear2] < 46 ? 2000 : 1900);
    SetDate(an[eElemDay], an[eElemMonth], an[eElemYear], an[eElemHour], an[eElemMinute],
            an[eElemSecond], an[eElemMilli], an[eElemMicro], an[eElemNano]);
    if (oSource.HasFailed())
        m_bValid = false;
}

bool CKorUTCTime::ReadText(const char* pBegin, const char* pEnd, ETimeFormat eFormat)
{
    CKorTextSource oSource(pBegin, pEnd);
    oSource.SkipWhiteSpace();
    if (IsKnown(eFormat))
        ReadRecord(oSource, eFormat);
    return !oSource.HasFailed();
}

bool CKorUTCTime::ReadAnyText(const char* pBegin, const char* pEnd, ETimeFormat eFormat)
{
    if (!KorOverrides<&CKorUTCTime::GetStream>(*this))
        return ReadText(pBegin, pEnd, eFormat);
    std::istringstream oStream(std::string(pBegin, pEnd));
    SetTimeFlag(oStream, eFormat);
    oStream >> *this;
    return !oStream.fail();
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
    // With the zero behind the text: at it every number ends before the end of the input, which
    // would fail.
    return oTime.ReadAnyText(strText.c_str(), strText.c_str() + strText.size() + 1, eFormat);
}
