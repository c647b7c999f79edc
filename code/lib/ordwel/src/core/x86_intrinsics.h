// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_CORE_X86_INTRINSICS_H
#define ORDWEL_SRC_CORE_X86_INTRINSICS_H

// The vector intrinsics of x86-64 for the kernels that ORDWEL_TARGET compiles for one level each.
// ORDWEL_X86_KERNELS is 1 where they exist (GCC or Clang on x86-64); elsewhere a kernel file
// compiles its scalar code alone.
#if defined(__GNUC__) && (defined(__x86_64__) || defined(_M_X64))
#define ORDWEL_X86_KERNELS 1
// GCC 12 takes the deliberately undefined source of the AVX-512 intrinsics (_mm512_undefined_*)
// for an uninitialised variable once they are inlined; the warning points into its own headers.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#endif

#endif
