#pragma once

#include "event/KorEventLoop.h"
#include "tests/support/Patience.h"

/// Lets a loop turn until something holds.
/// @return false when that took longer than #PATIENCE
template <typename TTest>
bool LoopUntil(CKorEventLoop& roLoop, TTest fnHolds)
{
    const auto oDeadline = std::chrono::steady_clock::now() + PATIENCE;
    while (!fnHolds()) {
        if (std::chrono::steady_clock::now() > oDeadline)
            return false;
        roLoop.RunOnce(10);
    }
    return true;
}
