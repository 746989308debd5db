#pragma once

// What the options of a line are as settings of a terminal. Not installed.

#include "serial/KorLineTermiosDetail.h"
#include "serial/KorSerialLine.h"

/// Whether the options make sense.
bool KorAreLineOptionsValid(const SKorLineOptions& oOptions);

/// The settings for a line that had @p oBefore: raw in every bit, with the options.
SKorLineSettings KorMakeLineSettings(const SKorLineSettings& oBefore,
                                     const SKorLineOptions& oOptions);

/// Whether the driver took what it was asked for. A pseudo-terminal is not held to size and
/// parity, which it does not have.
bool KorDidLineTake(const SKorLineSettings& oAsked, const SKorLineSettings& oTaken,
                    bool bPseudoTerminal);
