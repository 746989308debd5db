#pragma once

#include "tests/time/InstantSupport.h"
#include "time/KorTimeZone.h"
#include "time/KorUnixTime.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

constexpr std::int64_t JANUARY_2024 = 1704067200;
constexpr std::int64_t JULY_2024 = 1719792000;
constexpr std::int64_t DAY = 86400;

inline CKorTimeZone Zone(const char* pszName)
{
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load(pszName)) << pszName;
    return oZone;
}

inline int OffsetAt(const CKorTimeZone& oZone, std::int64_t nSeconds)
{
    return oZone.GetOffset(TimeOfUnix(nSeconds));
}

/// The Unix second at which UTC shows this.
inline std::int64_t Utc(int nYear, int nMonth, int nDay, int nHour = 0, int nMinute = 0,
                        int nSecond = 0)
{
    return KorToUnixTime(CKorTimeZone().ToUtc(nYear, nMonth, nDay, nHour, nMinute, nSecond));
}

/// An environment variable for the length of a scope.
class VariableScope
{
public:
    VariableScope(const char* pszName, const std::string& strValue) : m_pszName(pszName)
    {
        setenv(pszName, strValue.c_str(), 1);
    }
    ~VariableScope() { unsetenv(m_pszName); }
    VariableScope(const VariableScope&) = delete;
    VariableScope& operator=(const VariableScope&) = delete;

private:
    const char* m_pszName;
};
