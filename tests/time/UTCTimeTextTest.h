#pragma once

#include "time/KorLocalTime.h"
#include "time/KorUTCTime.h"

#include <string>

using ETimeFormat = CKorUTCTime::ETimeFormat;

const CKorUTCTime TIME(5, 3, 2024, 14, 7, 9, 250, 125, 999);

inline std::string Text(const CKorUTCTime& oTime, int nFormat)
{
    return KorToString(oTime, static_cast<ETimeFormat>(nFormat));
}

inline CKorUTCTime Read(int nFormat, const std::string& strText)
{
    return CKorUTCTime(strText, static_cast<ETimeFormat>(nFormat));
}

inline CKorUTCTime Date(unsigned nYear, unsigned nMonth, unsigned nDay)
{
    return CKorUTCTime(nDay, nMonth, nYear, 0, 0, 0, 0, 0, 0);
}
