#pragma once

#include "tests/serial/LineTestPeer.h"

#include <condition_variable>
#include <mutex>

/// What a reception told, for a test that waits for it.
class Listener
{
public:
    CKorSerialLine::DataHandler Data()
    {
        return [this](const char* pData, unsigned int nLength) {
            const std::lock_guard<std::mutex> oLock(m_oMutex);
            m_strData.append(pData, nLength);
            m_oChanged.notify_all();
        };
    }
    CKorSerialLine::HangupHandler Hangup()
    {
        return [this](int nErrno) {
            const std::lock_guard<std::mutex> oLock(m_oMutex);
            m_strData += "[" + std::to_string(nErrno) + "]";
            m_oChanged.notify_all();
        };
    }
    /// Waits until so much was told; gives all that was.
    std::string Await(std::size_t nLength)
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        m_oChanged.wait_for(oLock, PATIENCE, [&]() { return m_strData.size() >= nLength; });
        return m_strData;
    }

private:
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    std::string m_strData;
};

const std::string HUNG_UP = "[" + std::to_string(EIO) + "]";
const Outcome RUNS_ALREADY{THREAD_RUNNING, EALREADY};

/// A flag that a thread waits for.
class Signal
{
public:
    void Set()
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_bSet = true;
        m_oChanged.notify_all();
    }
    void Await()
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        EXPECT_TRUE(m_oChanged.wait_for(oLock, PATIENCE, [this]() { return m_bSet; }));
    }

private:
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    bool m_bSet = false;
};
