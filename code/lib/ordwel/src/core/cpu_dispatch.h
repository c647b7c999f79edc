// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_CORE_CPU_DISPATCH_H
#define ORDWEL_SRC_CORE_CPU_DISPATCH_H

#include <atomic>

#include <ordwel/types.h>

// The processor's vector instruction sets, detected once, and the choice of a kernel per set.
//
// A kernel is written for one level and compiled for it with ORDWEL_TARGET (no global -m flag);
// a dispatch object holds the kernels of one operation and hands out the widest that the processor
// and the operating system support, picked once, on first use. On a processor that is no x86 the
// level is always scalar.
//
// Nothing here is exported: the tests and benchmarks reach it through the static ordwel_private.

namespace ordwel {
namespace internal {

// Each level includes the ones below it.
enum class simd_level : unsigned {
    scalar = 0,
    sse41 = 1,  // SSSE3 and SSE4.1
    avx2 = 2,   // AVX and AVX2, with the YMM state saved by the operating system
    avx512 = 3, // AVX-512 F, BW and VL, with the opmask and ZMM state saved by the operating system,
                // and BMI1 and BMI2 (which every such processor has)
};

// The instruction sets that the levels and the kernels ask about. The AVX and AVX-512 flags are
// set only where the operating system saves the registers, that is where they can be used.
struct cpu_features {
    bool m_ssse3;
    bool m_sse41;
    bool m_avx;
    bool m_avx2;
    bool m_avx512f;
    bool m_avx512bw;
    bool m_avx512vl;
    bool m_avx512vbmi;
    bool m_avx512vbmi2;
    bool m_bmi1;
    bool m_bmi2;
};

struct cpuid_registers {
    uint32 m_eax;
    uint32 m_ebx;
    uint32 m_ecx;
    uint32 m_edx;
};

// The cpuid instruction for a_leaf and a_subleaf. False, with every register 0, where the processor
// lacks the leaf (basic and extended leaves are checked against their own maximum) or is no x86.
bool cpuid(uint32 a_leaf, uint32 a_subleaf, cpuid_registers &a_out);

// The features of the processor the program runs on, detected on the first call.
cpu_features const &cpu_features_detected();

// The widest level that a set of features allows.
simd_level simd_level_of(cpu_features const &a_features);

// The level that dispatch objects choose by: the detected level, lowered to the cap.
simd_level simd_level_active();

// Caps the active level at a_level (simd_level::avx512 lifts the cap). For tests and benchmarks
// that compare the kernels of one machine: a dispatch object that has already chosen keeps its
// choice, so a cap is set before first use, or asked of dispatch::for_level directly.
void simd_level_cap(simd_level a_level);

// The kernels of one operation, t_function being a function pointer type. A level without a kernel
// of its own (null) falls back to the next narrower one; the scalar kernel is required. Built as a
// constant (a static of namespace scope is ready before any code runs) and thread-safe: racing
// first calls pick the same kernel.
template <typename t_function> class dispatch {
public:
    constexpr explicit dispatch(t_function a_scalar, t_function a_sse41 = nullptr, t_function a_avx2 = nullptr,
                                t_function a_avx512 = nullptr)
        : m_kernels{a_scalar, a_sse41, a_avx2, a_avx512}, m_chosen(nullptr)
    {
    }
    dispatch(dispatch const &) = delete;
    dispatch &operator=(dispatch const &) = delete;

    // The kernel for the active level, chosen on the first call.
    t_function get() const
    {
        t_function l_kernel = m_chosen.load(std::memory_order_acquire);
        if (l_kernel == nullptr) {
            l_kernel = for_level(simd_level_active());
            m_chosen.store(l_kernel, std::memory_order_release);
        }
        return l_kernel;
    }

    // The kernel of the widest level at or below a_level that has one, whatever the processor.
    t_function for_level(simd_level a_level) const
    {
        for (auto l_index = static_cast<unsigned>(a_level); l_index > 0; --l_index) {
            if (m_kernels[l_index] != nullptr) {
                return m_kernels[l_index];
            }
        }
        return m_kernels[0];
    }

private:
    t_function m_kernels[4];
    mutable std::atomic<t_function> m_chosen;
};

} // namespace internal
} // namespace ordwel

#endif
