#pragma once

// Shared objects. Not installed.

#include <memory>
#include <utility>

/// Takes an object over.
std::shared_ptr<void> KorShare(void* pObject, void (*pfnDelete)(void*));

/// As std::make_shared(), which brings a control block of its own for each type and so takes a
/// quarter of a KiB more each.
template <class T, class... TArguments>
std::shared_ptr<T> KorMakeShared(TArguments&&... arguments)
{
    T* const pObject = new T(std::forward<TArguments>(arguments)...);
    return std::shared_ptr<T>(KorShare(pObject, [](void* p) { delete static_cast<T*>(p); }),
                              pObject);
}
