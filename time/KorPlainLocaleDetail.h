#pragma once

#include <locale>

/// Whether a locale treats numbers as the classic one does: they are written with its digits and
/// without separators of thousands, and read without taking digits for white space, or a blank for
/// anything else.
///
/// Looking into a locale takes as long as writing a time. So the first locale but the classic one
/// for which this was true is remembered, and kept alive, until the process ends: programs have
/// one as a rule. May be called from any thread.
bool KorIsPlainLocale(const std::locale& oLocale);
