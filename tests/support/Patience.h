#pragma once

#include <chrono>
#include <thread>

/// How long a test waits for what must come before it fails.
constexpr std::chrono::seconds PATIENCE(60);
/// The same in milliseconds, as the library takes it.
constexpr int PATIENCE_MS = 60000;

/// Looks every 2 ms until @p fnHolds is true.
/// @return false when that took longer than #PATIENCE
template <typename TTest>
bool WaitUntil(TTest fnHolds)
{
    const auto oDeadline = std::chrono::steady_clock::now() + PATIENCE;
    while (!fnHolds()) {
        if (std::chrono::steady_clock::now() > oDeadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
