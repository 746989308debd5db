#pragma once

/// @file
/// A thread of execution as an object.

#include "base/KorBaseExport.h"

#include <atomic>
#include <pthread.h>

/// @addtogroup threads
/// @{

/// A thread that runs the virtual Run() of its object.
///
/// Derive, override Run() and let it return soon after IsTerminationRequested() became true.
///
/// The destructor waits for the thread, but it runs after the destructors of derived classes.
/// A derived class whose Run() uses its own members therefore ends the thread in its own
/// destructor: Terminate(), then wait until GetState() is #THREAD_ENDED. A thread must not
/// destroy its own object.
class TARVO_BASE_API CKorThread
{
public:
    /// Results of GetState().
    enum EThreadState
    {
        THREAD_STARTING = 1, ///< Start() was called, Run() was not reached yet.
        THREAD_RUNNING = 2,  ///< Initialize() or Run() is executing.
        THREAD_ENDED = 3     ///< Never started, or ended.
    };

    /// Prepares a thread without starting it.
    /// @param nStackSize  stack size in bytes, 0 for the system's default. A size that the
    ///                    system cannot give is rounded up to one that it can.
    explicit CKorThread(unsigned int nStackSize);

    /// Asks the thread to end and waits for it without limit.
    virtual ~CKorThread();

    CKorThread(const CKorThread&) = delete;
    CKorThread& operator=(const CKorThread&) = delete;

    /// The thread's work, called on the new thread. Does nothing in the base class. An exception
    /// that leaves it ends the process.
    virtual void Run();

    /// Called on the new thread before Run(). Returns true in the base class; when an override
    /// returns false, the thread ends without calling Run().
    virtual bool Initialize();

    /// Starts the thread, also anew after it ended, and takes back an earlier Terminate().
    /// @return false, with nothing changed, when the thread is running or the system cannot
    ///         create one.
    bool Start();

    /// Asks the thread to end. Returns at once; may be called from any thread.
    void Terminate();

    /// Tells Run() whether it should return. May be called from any thread.
    bool IsTerminationRequested() const;

    /// The thread's state, one of #EThreadState. May be called from any thread; whoever sees
    /// #THREAD_ENDED also sees everything the thread did.
    int GetState() const;

    /// Suspends the calling thread for at least the given time, on the monotonic clock. Signals
    /// do not cut it short.
    /// @param nSeconds       whole seconds
    /// @param nMilliseconds  milliseconds on top of them, also more than 999
    static void Sleep(unsigned int nSeconds, unsigned int nMilliseconds);

private:
    TARVO_BASE_LOCAL static void* ThreadMain(void* pThread);
    TARVO_BASE_LOCAL bool Create();
    TARVO_BASE_LOCAL void Join();

    const unsigned int m_nStackSize;
    std::atomic<int> m_nState;
    std::atomic<bool> m_bTerminate;
    bool m_bCreated;
    pthread_t m_oThread;
};

/// @}
