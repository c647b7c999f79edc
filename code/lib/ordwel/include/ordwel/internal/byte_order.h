// SPDX-License-Identifier: MIT
#ifndef ORDWEL_INTERNAL_BYTE_ORDER_H
#define ORDWEL_INTERNAL_BYTE_ORDER_H

#include <cstring>
#include <type_traits>

#include <ordwel/types.h>

#if defined(_MSC_VER) && !defined(__clang__)
#include <stdlib.h>
#endif

// Unsigned integers of 1, 2, 4 and 8 bytes loaded from and stored to byte pointers in a given byte
// order, whatever the machine's own. The bytes need no alignment: every access is one memcpy of
// the whole word (which the compiler turns into a single load or store) and, where the orders
// differ, one byte swap. On a machine whose order the compiler does not tell, the bytes are put
// together one by one. For the library's own headers and sources; no part of the public interface.

namespace ordwel {
namespace internal {

enum class host_order { little, big, unknown };

#if defined(__BYTE_ORDER__) && defined(__ORDER_LITTLE_ENDIAN__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr host_order k_host_order = host_order::little;
#elif defined(__BYTE_ORDER__) && defined(__ORDER_BIG_ENDIAN__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
constexpr host_order k_host_order = host_order::big;
#elif defined(_WIN32)
constexpr host_order k_host_order = host_order::little;
#else
constexpr host_order k_host_order = host_order::unknown;
#endif

// The value with its bytes in the opposite order.
inline uint8 byte_swap(uint8 a_value)
{
    return a_value;
}

inline uint16 byte_swap(uint16 a_value)
{
#if defined(__GNUC__)
    return __builtin_bswap16(a_value);
#elif defined(_MSC_VER)
    return _byteswap_ushort(a_value);
#else
    return static_cast<uint16>((a_value << 8) | (a_value >> 8));
#endif
}

inline uint32 byte_swap(uint32 a_value)
{
#if defined(__GNUC__)
    return __builtin_bswap32(a_value);
#elif defined(_MSC_VER)
    return _byteswap_ulong(a_value);
#else
    return (a_value << 24) | ((a_value << 8) & 0x00FF0000U) | ((a_value >> 8) & 0x0000FF00U) | (a_value >> 24);
#endif
}

inline uint64 byte_swap(uint64 a_value)
{
#if defined(__GNUC__)
    return __builtin_bswap64(a_value);
#elif defined(_MSC_VER)
    return _byteswap_uint64(a_value);
#else
    return (uint64(byte_swap(static_cast<uint32>(a_value))) << 32) | byte_swap(static_cast<uint32>(a_value >> 32));
#endif
}

namespace byte_order_detail {

template <typename W> constexpr void check_word()
{
    static_assert(std::is_same<W, uint8>::value || std::is_same<W, uint16>::value || std::is_same<W, uint32>::value ||
                      std::is_same<W, uint64>::value,
                  "byte-order words are uint8, uint16, uint32 or uint64");
}

// The word of the bytes taken as most (a_big) or least significant first, one by one.
template <typename W> inline W assemble(unsigned char const *a_bytes, bool a_big)
{
    W l_value = 0;
    for (unsigned l_index = 0; l_index < sizeof(W); ++l_index) {
        unsigned const l_at = a_big ? l_index : unsigned(sizeof(W)) - 1 - l_index;
        l_value = static_cast<W>((uint64(l_value) << 8) | a_bytes[l_at]);
    }
    return l_value;
}

template <typename W> inline void scatter(unsigned char *a_bytes, W a_value, bool a_big)
{
    for (unsigned l_index = 0; l_index < sizeof(W); ++l_index) {
        unsigned const l_at = a_big ? unsigned(sizeof(W)) - 1 - l_index : l_index;
        a_bytes[l_at] = static_cast<unsigned char>(a_value);
        a_value = static_cast<W>(uint64(a_value) >> 8);
    }
}

} // namespace byte_order_detail

// The word as the machine holds it, from unaligned bytes, and back.
template <typename W> inline W load_native(unsigned char const *a_bytes)
{
    byte_order_detail::check_word<W>();
    W l_value;
    std::memcpy(&l_value, a_bytes, sizeof l_value);
    return l_value;
}

template <typename W> inline void store_native(unsigned char *a_bytes, W a_value)
{
    byte_order_detail::check_word<W>();
    std::memcpy(a_bytes, &a_value, sizeof a_value);
}

// Most significant byte first (big-endian, network order).
template <typename W> inline W load_be(unsigned char const *a_bytes)
{
    if constexpr (k_host_order == host_order::big) {
        return load_native<W>(a_bytes);
    } else if constexpr (k_host_order == host_order::little) {
        return byte_swap(load_native<W>(a_bytes));
    } else {
        byte_order_detail::check_word<W>();
        return byte_order_detail::assemble<W>(a_bytes, true);
    }
}

template <typename W> inline void store_be(unsigned char *a_bytes, W a_value)
{
    if constexpr (k_host_order == host_order::big) {
        store_native<W>(a_bytes, a_value);
    } else if constexpr (k_host_order == host_order::little) {
        store_native<W>(a_bytes, byte_swap(a_value));
    } else {
        byte_order_detail::check_word<W>();
        byte_order_detail::scatter<W>(a_bytes, a_value, true);
    }
}

// Least significant byte first (little-endian).
template <typename W> inline W load_le(unsigned char const *a_bytes)
{
    if constexpr (k_host_order == host_order::little) {
        return load_native<W>(a_bytes);
    } else if constexpr (k_host_order == host_order::big) {
        return byte_swap(load_native<W>(a_bytes));
    } else {
        byte_order_detail::check_word<W>();
        return byte_order_detail::assemble<W>(a_bytes, false);
    }
}

template <typename W> inline void store_le(unsigned char *a_bytes, W a_value)
{
    if constexpr (k_host_order == host_order::little) {
        store_native<W>(a_bytes, a_value);
    } else if constexpr (k_host_order == host_order::big) {
        store_native<W>(a_bytes, byte_swap(a_value));
    } else {
        byte_order_detail::check_word<W>();
        byte_order_detail::scatter<W>(a_bytes, a_value, false);
    }
}

} // namespace internal
} // namespace ordwel

#endif
