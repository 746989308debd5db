#pragma once

/// @file
/// Export mark of the base library. Everything is hidden unless it carries it.

/// Marks a class of `libTarvoRelease.so` as public.
#define TARVO_BASE_API __attribute__((visibility("default")))
