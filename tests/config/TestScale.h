#pragma once

/// Divides the volume of a test where each step costs many times more: under a sanitizer and on
/// 32-bit ARM, which mostly is an emulated one.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__arm__)
constexpr int TEST_SCALE = 20;
#else
constexpr int TEST_SCALE = 1;
#endif
