// SPDX-License-Identifier: MIT
#ifndef ORDWEL_INTERNAL_ATTRIBUTES_H
#define ORDWEL_INTERNAL_ATTRIBUTES_H

// Compiler attributes that the library's headers and sources share. Each macro expands to
// nothing on a compiler that lacks the attribute, so code that uses them stays portable.

// ORDWEL_PRINTF_FORMAT(a_format, a_first): the compiler checks the arguments of a printf-style
// function. a_format is the 1-based position of the format parameter, a_first that of the first
// variadic argument (0 for a function that takes a va_list). mingw-w64 formats with its own
// printf, whose conversions are GNU's, not msvcrt's.
#if defined(__MINGW32__)
#define ORDWEL_PRINTF_FORMAT(a_format, a_first) __attribute__((format(gnu_printf, a_format, a_first)))
#elif defined(__GNUC__)
#define ORDWEL_PRINTF_FORMAT(a_format, a_first) __attribute__((format(printf, a_format, a_first)))
#else
#define ORDWEL_PRINTF_FORMAT(a_format, a_first)
#endif

// ORDWEL_ALWAYS_INLINE: an inline function that the compiler inlines even where its heuristics
// would not, for small steps of hot loops. Written in place of the keyword inline.
#if defined(__GNUC__)
#define ORDWEL_ALWAYS_INLINE inline __attribute__((always_inline))
#elif defined(_MSC_VER)
#define ORDWEL_ALWAYS_INLINE __forceinline
#else
#define ORDWEL_ALWAYS_INLINE inline
#endif

// ORDWEL_NOINLINE: a function that the compiler never inlines, for a path that its callers rarely
// take, so that it doesn't swell them.
#if defined(__GNUC__)
#define ORDWEL_NOINLINE __attribute__((noinline))
#elif defined(_MSC_VER)
#define ORDWEL_NOINLINE __declspec(noinline)
#else
#define ORDWEL_NOINLINE
#endif

// ORDWEL_CODE_ALIGN(64): a function that starts at a boundary of that many bytes, for a hot loop
// whose speed would otherwise depend on where the code around it happens to put it.
#if defined(__GNUC__)
#define ORDWEL_CODE_ALIGN(a_bytes) __attribute__((aligned(a_bytes)))
#else
#define ORDWEL_CODE_ALIGN(a_bytes)
#endif

// ORDWEL_TARGET("avx2"): compiles one function for an instruction set extension that the rest of
// the build does not assume, so that a kernel can use it behind a run-time processor check
// without a global -m flag. Only GCC and Clang on x86 know the attribute; elsewhere it expands to
// nothing and such a function must not be compiled at all.
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#define ORDWEL_TARGET(a_features) __attribute__((target(a_features)))
#else
#define ORDWEL_TARGET(a_features)
#endif

#endif
