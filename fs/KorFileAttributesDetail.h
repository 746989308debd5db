#pragma once

// Owner, mode and extended attributes of open files. Not installed.

/// Gives a file the owner, the extended attributes and the mode of another one. The mode comes
/// last, so that at no moment more people may read the one than the other.
/// @return false with `errno` when the two differ in one of them
bool KorCopyFileAttributes(int hFrom, int hTo);
