#pragma once

#include <atomic>
#include <cstring>

/// The kinds of calls that libFailCalls.so counts and fails.
constexpr const char* FAIL_KINDS[] = {"open", "read",   "write",  "fsync", "rename",    "memory",
                                      "fork", "handle", "select", "poll",  "tcsetattr", "thread"};
constexpr int FAIL_KIND_COUNT = sizeof FAIL_KINDS / sizeof FAIL_KINDS[0];
constexpr int FAIL_NOTHING = -1;

/// The place of a kind among them; FAIL_NOTHING for any other name.
inline int FailKindOf(const char* pszKind)
{
    for (int nKind = 0; nKind < FAIL_KIND_COUNT; ++nKind) {
        if (std::strcmp(FAIL_KINDS[nKind], pszKind) == 0)
            return nKind;
    }
    return FAIL_NOTHING;
}

/// What a program and libFailCalls.so tell each other. It lies in memory that forked processes
/// share, so that calls are counted through a program's whole family.
struct SFailCalls
{
    std::atomic<bool> m_bArmed{false}; ///< Calls count.
    int m_nKind = FAIL_NOTHING;        ///< Which kind is to fail.
    unsigned int m_nNumber = 0;        ///< Which call of it, from 1 on.
    int m_nError = 0;                  ///< Its `errno`.
    bool m_bOn = false;                ///< All calls of the kind after it fail as well.
    std::atomic<unsigned int> m_anCounts[FAIL_KIND_COUNT] = {};

    /// Whether the call that was to fail has come.
    bool HasFailed() const { return m_nKind != FAIL_NOTHING && m_anCounts[m_nKind] >= m_nNumber; }
};

extern "C" {

/// Found with dlsym() by the program that libFailCalls.so was loaded before.
SFailCalls* FailCalls();

/// How many blocks of memory the process has and did not free.
long FailCallsBlocks();

/// The calling thread's calls neither count nor fail while this is not 0.
int* FailCallsPause();
}
