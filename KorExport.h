#pragma once

/// @file
/// Export marks of the library. Everything is hidden unless it carries one.

/// Marks a class or function of `libTarvoExtRelease.so` as public.
#define TARVO_EXT_API __attribute__((visibility("default")))

/// Marks a private function of a public class: no program can call it, so it is not exported.
#define TARVO_EXT_LOCAL __attribute__((visibility("hidden")))
