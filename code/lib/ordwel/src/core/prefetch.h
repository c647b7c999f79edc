// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_CORE_PREFETCH_H
#define ORDWEL_SRC_CORE_PREFETCH_H

namespace ordwel {
namespace internal {

// Asks the processor to bring the cache line of a_address into this core's cache, ready for a
// write, while the thread goes on with other work: a hint, which never faults and changes no
// data. Meant for memory that another core wrote last, whose lines would otherwise arrive one by
// one, each when the thread first touches it.
inline void prefetch_for_writing(void const *a_address) noexcept
{
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
    // GCC issues prefetchw for __builtin_prefetch only where the build targets it; every x86-64
    // processor takes the instruction (those before its feature bit as a no-op).
    __asm__ volatile("prefetchw %0" : : "m"(*static_cast<char const *>(a_address)));
#elif defined(__GNUC__)
    __builtin_prefetch(a_address, 1);
#else
    static_cast<void>(a_address);
#endif
}

} // namespace internal
} // namespace ordwel

#endif
