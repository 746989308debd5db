#pragma once

#include <string>

/// Prints a line, stamped with the local time, at once.
void LogLine(const std::string& strText);
