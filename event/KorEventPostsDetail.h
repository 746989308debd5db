#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

/// Calls that threads posted to a loop.
class CKorEventPosts
{
public:
    /// From any thread.
    void Add(std::function<void()>&& fnHandler)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_vecNew.push_back(std::move(fnHandler));
        m_bNew = true;
    }

    /// Whether there is something to call.
    bool IsDue() const { return m_bNew || m_nNext < m_vecTaken.size(); }

    /// Takes what was posted up to now, unless calls are left from the time before.
    void Take()
    {
        if (m_nNext < m_vecTaken.size() || !m_bNew.exchange(false))
            return;
        m_vecTaken.clear();
        m_nNext = 0;
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_vecTaken.swap(m_vecNew);
    }

    /// The next call of those that were taken, empty when there is none.
    std::function<void()> Next()
    {
        if (m_nNext == m_vecTaken.size())
            return nullptr;
        return std::move(m_vecTaken[m_nNext++]);
    }

private:
    std::mutex m_oMutex;
    std::vector<std::function<void()>> m_vecNew;
    std::atomic<bool> m_bNew{false};
    std::vector<std::function<void()>> m_vecTaken; ///< The loop's own.
    size_t m_nNext = 0;
};
