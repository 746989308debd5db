#pragma once

/// @file
/// Export marks of the library. Everything is hidden unless it carries one.

/// Marks a class or function of `libTarvoExtRelease.so` as public.
#define TARVO_EXT_API __attribute__((visibility("default")))
