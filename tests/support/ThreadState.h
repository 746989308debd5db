#pragma once

#include <set>

/// The system's number of the calling thread.
int ThreadId();

/// Whether a thread of this process sleeps: in a wait, for a lock, or in a system call.
bool IsAsleep(int nThread);

/// How often a thread of this process has waited for something so far.
unsigned long Waits(int nThread);

/// The threads of this process.
std::set<int> Threads();
