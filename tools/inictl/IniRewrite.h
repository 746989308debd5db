#pragma once

#include "config/KorIniFinding.h"
#include "config/KorIniNamesDetail.h"

#include <string_view>
#include <vector>

/// What KorCheckIniFile() leaves out, in line order: options that move when CKorIniFile rewrites
/// the file, and values that end at a "#" without a blank before it.
std::vector<SKorIniFinding> CheckForRewrite(std::string_view strText, bool bCaseSensitive);
