#pragma once

#include "examples/gateway/Reading.h"

#include <cstdint>
#include <string>
#include <utility>

/// The values of a reading as a JSON object: `{"Voltage":{"value":230.1,"unit":"V"}}`.
std::string ValuesJson(const Reading& oReading);

/// A reading as the store keeps it: the meter's name, a line feed, and the JSON that is published.
std::string StoredReading(const Reading& oReading, std::uint64_t nSequence);

/// The meter's name and the JSON.
std::pair<std::string, std::string> SplitStoredReading(const std::string& strStored);

/// A text as part of a topic: what has a meaning there, or is no text, becomes "_".
/// @param bLevels  whether "/" parts levels; those at both ends are left out
std::string TopicText(const std::string& strText, bool bLevels);
