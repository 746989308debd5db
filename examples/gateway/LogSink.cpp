#include "examples/gateway/LogSink.h"

#include "app/KorLog.h"

#include <cmath>
#include <cstdio>

std::string ValueText(const ReadingValue& oValue)
{
    if (!std::isfinite(oValue.m_dValue))
        return "-";
    char szNumber[352]; // the greatest number has 309 digits before its point
    std::snprintf(szNumber, sizeof szNumber, "%.*f", static_cast<int>(oValue.m_nDecimals),
                  oValue.m_dValue);
    return oValue.m_strUnit.empty() ? szNumber : szNumber + (" " + oValue.m_strUnit);
}

std::string ReadingText(const Reading& oReading)
{
    std::string strText;
    for (const ReadingValue& oValue : oReading.m_vecValues) {
        strText += strText.empty() ? "" : ", ";
        strText += oValue.m_strName + " " + ValueText(oValue);
    }
    return strText;
}

void LogSink::Take(const Reading& oReading)
{
    KorGetLog().Write(CKorLog::LEVEL_INFO, "%s: %s", oReading.m_strMeter.c_str(),
                      ReadingText(oReading).c_str());
}

void LogSink::TakeStatistics(const std::string& strMeter, const std::string& strJson)
{
    KorGetLog().Write(CKorLog::LEVEL_DEBUG, "%s: statistics %s", strMeter.c_str(), strJson.c_str());
}
