#pragma once

#include "tests/time/TimeForms.h"
#include "time/KorUTCTime.h"

#include <iomanip>
#include <ostream>
#include <string>

/// Writes with the stream's own operators, field by field.
class Writer
{
public:
    explicit Writer(std::ostream& oStream) : m_oStream(oStream) {}
    template <typename Number>
    Writer& Field(int nWidth, Number nNumber)
    {
        m_oStream << std::setw(nWidth) << std::setfill('0') << nNumber;
        return *this;
    }
    template <typename Anything>
    Writer& Plain(Anything oAnything)
    {
        m_oStream << oAnything;
        return *this;
    }

private:
    std::ostream& m_oStream;
};

inline void ModelDate(Writer& o, const CKorUTCTime& oTime, const char* pszOrder, char cSeparator)
{
    for (const char* p = pszOrder; *p != '\0'; ++p) {
        if (p != pszOrder)
            o.Plain(cSeparator);
        if (*p == 'D')
            o.Field(2, oTime.GetDay());
        else if (*p == 'M')
            o.Field(2, oTime.GetMonth());
        else
            o.Field(4, oTime.GetYear());
    }
}

inline void ModelClock(Writer& o, const CKorUTCTime& oTime, int nSubSeconds)
{
    o.Field(2, oTime.GetHour()).Plain(':').Field(2, oTime.GetMinute()).Plain(':');
    o.Field(2, oTime.GetSecond());
    if (nSubSeconds > 0)
        o.Plain('.').Field(3, oTime.GetMilliSecond());
    if (nSubSeconds > 1)
        o.Plain('.').Field(3, oTime.GetMicroSecond());
    if (nSubSeconds > 2)
        o.Plain('.').Field(3, oTime.GetNanoSecond());
}

inline void ModelMail(std::ostream& oStream, const CKorUTCTime& oTime)
{
    const std::string strMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const auto nMonth = static_cast<size_t>(oTime.GetMonth() - 1);
    Writer o(oStream);
    o.Plain(oTime.GetDay()).Plain(" ").Plain(strMonths.substr(nMonth * 3, 3)).Plain(" ");
    o.Field(2, oTime.GetYear() % 100).Plain(" ").Field(2, oTime.GetHour()).Plain(":");
    o.Field(2, oTime.GetMinute()).Plain(" ").Plain("+0100");
    oStream.flush();
}

inline void ModelPut(std::ostream& oStream, const CKorUTCTime& oTime, int nFormat)
{
    if (nFormat == 11)
        ModelMail(oStream, oTime);
    if (nFormat < 0 || nFormat > 10)
        return;
    const DateForm& oForm = FORMS[nFormat];
    Writer o(oStream);
    if (oForm.pszOrder != nullptr)
        ModelDate(o, oTime, oForm.pszOrder, oForm.cSeparator);
    if (oForm.pszOrder != nullptr && nFormat != CKorUTCTime::eDate)
        o.Plain(' ');
    if (oForm.nSubSeconds >= 0)
        ModelClock(o, oTime, oForm.nSubSeconds);
}

inline void ModelPut(std::ostream& oStream, long long nTicks, int nFormat)
{
    using Number = unsigned long long;
    const auto nUnsigned = static_cast<Number>(nTicks);
    const Number nAbsolute = nTicks < 0 ? 0 - nUnsigned : nUnsigned;
    Writer o(oStream);
    if (nTicks < 0)
        o.Plain('-');
    if (nFormat == 0 || nFormat == 7) {
        o.Plain(nAbsolute / (nFormat == 0 ? 100000U : 100U));
    } else if (nFormat >= 1 && nFormat <= 6) {
        if (nFormat == 6) {
            o.Plain(nUnsigned / 8640000000000ULL).Plain('#');
            o.Field(2, nAbsolute / 360000000000ULL);
        } else {
            o.Plain(nUnsigned / 360000000000ULL);
        }
        o.Plain(':').Field(2, nAbsolute / 6000000000ULL % 60);
        if (nFormat >= 2)
            o.Plain(':').Field(2, nAbsolute / 100000000U % 60);
        if (nFormat >= 3 && nFormat <= 5)
            o.Plain('.').Field(3, nAbsolute / 100000U % 1000);
        if (nFormat == 4 || nFormat == 5)
            o.Plain('.').Field(3, nAbsolute / 100U % 1000);
        if (nFormat == 5)
            o.Plain('.').Field(3, nAbsolute % 100U * 10);
    } else {
        o.Plain("Fehler ");
    }
}
