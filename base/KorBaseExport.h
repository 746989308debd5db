#pragma once

/// @file
/// Export marks of the base library. Everything is hidden unless it carries it.

/// Marks a class of `libTarvoRelease.so` as public.
#define TARVO_BASE_API __attribute__((visibility("default")))

/// Marks a private function of a public class: no program can call it, so it is not exported.
#define TARVO_BASE_LOCAL __attribute__((visibility("hidden")))
