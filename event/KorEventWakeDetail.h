#pragma once

#include <atomic>

/// Ends a loop's wait from elsewhere: from other threads and from signal handlers.
///
/// The loop announces that it is about to wait, looks once more whether something came, and then
/// waits; whoever brings something leaves it in the loop's memory first and then wakes it. Nobody
/// writes to the handle while the loop is busy. The handle is watched edge-triggered and is never
/// read.
class CKorEventWake
{
public:
    CKorEventWake() = default;
    ~CKorEventWake();
    CKorEventWake(const CKorEventWake&) = delete;
    CKorEventWake& operator=(const CKorEventWake&) = delete;

    /// Opens the handle for the calling process; an earlier one is closed.
    bool Open();
    void Close();
    /// Whether the handle is open and the calling process opened it.
    bool IsOwn() const;
    int GetHandle() const { return m_hWake; }

    void BeginWait() { m_bWaiting = true; }
    void EndWait() { m_bWaiting = false; }
    void Wake();

private:
    std::atomic<int> m_hWake{-1};
    std::atomic<int> m_nProcess{0};
    unsigned int m_nForks =
        0; ///< How often the program had been forked when the handle was opened.
    std::atomic<bool> m_bWaiting{false};
};
