#pragma once

// Race-free access to plain members that two threads use. std::atomic would make their types
// something else than derived classes count on. Not installed.

template <typename T>
T KorAtomicLoad(const T& value)
{
    return __atomic_load_n(&value, __ATOMIC_ACQUIRE);
}

template <typename T>
void KorAtomicStore(T& value, T newValue)
{
    __atomic_store_n(&value, newValue, __ATOMIC_RELEASE);
}
