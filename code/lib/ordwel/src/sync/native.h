// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_NATIVE_H
#define ORDWEL_SRC_NATIVE_H

#include <cstddef>
#include <new>

namespace ordwel {

// The public lock classes keep the platform's object in a byte array, so that their layout does
// not hang on the platform's type (mutex.h still includes <pthread.h> for its inline lock and
// unlock). These two helpers place the object there and reach it.
template <class T, std::size_t N> T *native_place(unsigned char (&a_storage)[N]) noexcept
{
    static_assert(sizeof(T) <= N, "the platform object does not fit its storage");
    static_assert(alignof(T) <= 8, "the platform object needs a stronger alignment than its storage");
    return ::new (static_cast<void *>(a_storage)) T();
}

template <class T, std::size_t N> T *native_of(unsigned char (&a_storage)[N]) noexcept
{
    return std::launder(reinterpret_cast<T *>(a_storage));
}

} // namespace ordwel

#endif
