#pragma once

/// Whether a user-mode emulator runs this test program on a foreign processor.
bool UnderEmulation();
