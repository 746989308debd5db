#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Makes a JSON object, member by member.
///
///     JsonObject().Text("name", "m1").Number("value", 230.14, 1).ToString();
///     // {"name":"m1","value":230.1}
class JsonObject
{
public:
    JsonObject& Text(std::string_view strName, std::string_view strValue);
    JsonObject& Integer(std::string_view strName, std::int64_t nValue);
    JsonObject& Bool(std::string_view strName, bool bValue);
    /// A number that is none, or endless, is null.
    JsonObject& Number(std::string_view strName, double dValue, unsigned int nDecimals);
    /// A value that is JSON already.
    JsonObject& Json(std::string_view strName, std::string_view strJson);

    std::string ToString() const { return "{" + m_strMembers + "}"; }

private:
    std::string m_strMembers;
};

/// A JSON array of values that are JSON already.
std::string JsonArray(const std::vector<std::string>& vecJson);
