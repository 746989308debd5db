#pragma once

#include <fcntl.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>

/// Moves a descriptor above 2: where standard error was closed the file would take its place and
/// receive whatever is printed there. Programs that are started do not inherit it.
/// @return the descriptor, or -1 with errno
int KorMoveAboveStandard(int nHandle);

/// Opens a file, as the system does, on a descriptor above 2 that started programs do not inherit.
int KorOpenAboveStandard(const char* pszName, int nFlags, mode_t nMode);

/// The name from the root, so that it stays the same file's when the working directory changes.
/// A null name is the empty one.
std::string KorNameFromRoot(const char* pszName);
