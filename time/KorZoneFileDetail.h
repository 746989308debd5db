#pragma once

#include "time/KorZoneDataDetail.h"

#include <memory>
#include <string>

/// Reads the content of a zone file (TZif of the versions 1 to 4).
/// @return null when any part of it is missing, out of bounds or against the format, when
/// something follows its end, or when it counts leap seconds
std::shared_ptr<const CKorZoneData> KorReadZoneFile(const std::string& strContent);
