#pragma once

#include <cstddef>

/// Writes to a descriptor without waiting for whoever reads it, without a signal when nobody does,
/// and without changing the mode that it shares with other programs.
///
/// @return how many bytes were taken. None or all of a regular file, a datagram socket and a pipe;
///         a terminal and a stream socket may take a part.
std::size_t KorWriteWithoutWaiting(int nHandle, const char* pBytes, std::size_t nLength);
