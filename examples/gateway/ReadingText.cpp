#include "ReadingText.h"

#include "examples/gateway/JsonObject.h"
#include "time/KorIsoTime.h"
#include "tools/inictl/JsonText.h"

#include <algorithm>
#include <string_view>

namespace
{

std::string Json(const Reading& oReading, std::uint64_t nSequence)
{
    return JsonObject()
        .Integer("seq", static_cast<std::int64_t>(nSequence))
        .Text("meter", oReading.m_strMeter)
        .Text("time", KorToIsoString(oReading.m_oTime))
        .Json("values", ValuesJson(oReading))
        .ToString();
}

/// Whether a topic may hold the text as it is, but for the characters with a meaning.
bool IsText(const std::string& strText)
{
    return JsonText(strText).size() == strText.size() + 2;
}

bool IsPrintable(char cByte)
{
    return cByte > ' ' && cByte < '\x7F';
}

} // namespace

std::string ValuesJson(const Reading& oReading)
{
    JsonObject oValues;
    for (const ReadingValue& oValue : oReading.m_vecValues) {
        JsonObject oMember;
        oMember.Number("value", oValue.m_dValue, oValue.m_nDecimals);
        if (!oValue.m_strUnit.empty())
            oMember.Text("unit", oValue.m_strUnit);
        oValues.Json(oValue.m_strName, oMember.ToString());
    }
    return oValues.ToString();
}

std::string StoredReading(const Reading& oReading, std::uint64_t nSequence)
{
    return TopicText(oReading.m_strMeter, false) + "\n" + Json(oReading, nSequence);
}

std::pair<std::string, std::string> SplitStoredReading(const std::string& strStored)
{
    const std::size_t nEnd = std::min(strStored.find('\n'), strStored.size());
    return {strStored.substr(0, nEnd), strStored.substr(std::min(nEnd + 1, strStored.size()))};
}

std::string TopicText(const std::string& strText, bool bLevels)
{
    constexpr std::string_view WITH_MEANING = "+#/";
    const bool bText = IsText(strText);
    std::string strTopic = strText;
    for (char& rByte : strTopic) {
        const bool bKept =
            WITH_MEANING.find(rByte) == std::string_view::npos || (bLevels && rByte == '/');
        if (!bKept || (!bText && !IsPrintable(rByte)))
            rByte = '_';
    }
    if (!bLevels)
        return strTopic;
    const std::size_t nBegin = strTopic.find_first_not_of('/');
    const std::size_t nEnd = strTopic.find_last_not_of('/');
    return nBegin == std::string::npos ? "_" : strTopic.substr(nBegin, nEnd - nBegin + 1);
}
