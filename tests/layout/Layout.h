#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

/// Pins a member's place and size. Mirror is a class that declares the members in their documented
/// order; Probe is derived from the library's class, so that its protected members show.
#define PIN_MEMBER(Probe, Mirror, member)                                                          \
    static_assert(offsetof(Probe, member) == offsetof(Mirror, member), "place of " #member);       \
    static_assert(SameSize<decltype(Probe::member), decltype(Mirror::member)>, "size of " #member)

template <class TOne, class TOther>
constexpr bool SameSize = sizeof(TOne) == sizeof(TOther);

/// The number of a virtual operation's slot in the table of its class, from 0.
template <class TOperation>
std::size_t SlotOf(TOperation pOperation)
{
    // Such a pointer begins with the slot's offset in bytes, on most processors plus 1.
    std::uintptr_t nOffset = 0;
    std::memcpy(&nOffset, &pOperation, sizeof nOffset);
    return nOffset / sizeof(void*);
}

/// Pins the slots of a class: the destructor's two come first, then those given, one after the
/// other. The last one given is an operation which the probe adds, so that there are no others.
inline void ExpectInOrderBehindDestructor(const std::vector<std::size_t>& vecSlots)
{
    for (std::size_t i = 0; i < vecSlots.size(); ++i)
        EXPECT_EQ(i + 2, vecSlots[i]) << "operation " << i;
}
