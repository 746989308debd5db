#pragma once

#include <functional>

/// Runs a function on a thread of its own, which nobody waits for: for what may block for long and
/// touches nothing that can go away.
/// @return false when the system has no thread to give
bool RunDetached(std::function<void()> fnMain);
