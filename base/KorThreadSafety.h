#pragma once

/// @file
/// Says which mutex guards what, in words that clang checks (`-Wthread-safety`) and every other
/// compiler skips.
///
///     CKorMutex m_oMutex;
///     std::string m_strState KOR_GUARDED_BY(m_oMutex); // only while m_oMutex is held
///     void Append(char c) KOR_REQUIRES(m_oMutex);      // the caller holds it

/// @addtogroup threads
/// @{

/// One attribute of clang, nothing for other compilers.
#ifdef __clang__
#define KOR_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define KOR_THREAD_SAFETY(attribute)
#endif

/// Marks a class as a lock of the given kind.
#define KOR_CAPABILITY(kind) KOR_THREAD_SAFETY(capability(kind))
/// Marks a class that holds a lock from its constructor to its destructor.
#define KOR_SCOPED_CAPABILITY KOR_THREAD_SAFETY(scoped_lockable)
/// Marks a member that is used only while the lock is held.
#define KOR_GUARDED_BY(lock) KOR_THREAD_SAFETY(guarded_by(lock))
/// Marks a function that is called only while the lock is held.
#define KOR_REQUIRES(lock) KOR_THREAD_SAFETY(requires_capability(lock))
/// Marks a function that takes the lock.
#define KOR_ACQUIRE(...) KOR_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
/// Marks a function that takes the lock when its result is @p result.
#define KOR_TRY_ACQUIRE(result) KOR_THREAD_SAFETY(try_acquire_capability(result))
/// Marks a function that releases the lock.
#define KOR_RELEASE(...) KOR_THREAD_SAFETY(release_capability(__VA_ARGS__))
/// Marks a function whose locking cannot be followed.
#define KOR_NO_THREAD_SAFETY_ANALYSIS KOR_THREAD_SAFETY(no_thread_safety_analysis)

/// @}
