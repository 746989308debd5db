#include "JsonObject.h"

#include "tools/inictl/JsonText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{

constexpr unsigned int MAX_DECIMALS = 17;

void Join(std::string& rstrList, std::string_view strItem)
{
    if (!rstrList.empty())
        rstrList += ',';
    rstrList += strItem;
}

std::string Fixed(double dValue, unsigned int nDecimals)
{
    if (!std::isfinite(dValue))
        return "null";
    char aszText[352]; // the greatest number has 309 digits before its point
    std::snprintf(aszText, sizeof aszText, "%.*f",
                  static_cast<int>(std::min(nDecimals, MAX_DECIMALS)), dValue);
    return aszText;
}

} // namespace

JsonObject& JsonObject::Text(std::string_view strName, std::string_view strValue)
{
    return Json(strName, JsonText(strValue));
}

JsonObject& JsonObject::Integer(std::string_view strName, std::int64_t nValue)
{
    return Json(strName, std::to_string(nValue));
}

JsonObject& JsonObject::Bool(std::string_view strName, bool bValue)
{
    return Json(strName, bValue ? "true" : "false");
}

JsonObject& JsonObject::Number(std::string_view strName, double dValue, unsigned int nDecimals)
{
    return Json(strName, Fixed(dValue, nDecimals));
}

JsonObject& JsonObject::Json(std::string_view strName, std::string_view strJson)
{
    Join(m_strMembers, JsonText(strName).append(":").append(strJson));
    return *this;
}

std::string JsonArray(const std::vector<std::string>& vecJson)
{
    std::string strItems;
    for (const std::string& strJson : vecJson)
        Join(strItems, strJson);
    return "[" + strItems + "]";
}
