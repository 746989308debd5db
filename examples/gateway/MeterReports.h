#pragma once

/// @file
/// What the gateway tells of its meters, as JSON for programs and as text for people.

#include "examples/gateway/Poller.h"

#include <string>

/// How polling a meter went so far, as a JSON object.
std::string StatisticsJson(const PolledMeter& oMeter);

/// A reading as a JSON object: its time and its values.
std::string ReadingJson(const Reading& oReading);

/// All meters with statistics and last readings, as a JSON array.
std::string MetersJson(const Poller& oPoller);

/// The same as a table.
std::string MetersText(const Poller& oPoller);

/// All lines as a JSON array.
std::string LinesJson(const Poller& oPoller);

/// The same as a table.
std::string LinesText(const Poller& oPoller);
