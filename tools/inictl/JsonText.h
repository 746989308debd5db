#pragma once

#include <string>
#include <string_view>

/// The text as a JSON string, quotes included. A byte that is no part of UTF-8 text stands for the
/// character of that number, as in ISO 8859-1.
std::string JsonText(std::string_view strText);
