#pragma once

/// Counts a call. Declares none of the C library's.
/// @param pszKind  its kind; null for one that always passes
/// @return 0 to let it pass, or the `errno` of its failure
int DecideOnCall(const char* pszKind);
