// SPDX-License-Identifier: MIT
#include "core/cpu_dispatch.h"

#if defined(__x86_64__) || defined(_M_X64) || defined(__i386__) || defined(_M_IX86)
#define ORDWEL_CORE_X86 1
#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace ordwel {
namespace internal {

namespace {

#if defined(ORDWEL_CORE_X86)
// The register state that the operating system saves on a context switch (XCR0).
uint64 saved_register_state()
{
#if defined(_MSC_VER) && !defined(__clang__)
    return _xgetbv(0);
#else
    uint32 l_low = 0;
    uint32 l_high = 0;
    __asm__ __volatile__("xgetbv" : "=a"(l_low), "=d"(l_high) : "c"(0));
    return (uint64(l_high) << 32) | l_low;
#endif
}
#endif

bool bit(uint32 a_register, unsigned a_bit)
{
    return ((a_register >> a_bit) & 1U) != 0;
}

cpu_features features_new()
{
    cpu_features l_features{};
    cpuid_registers l_basic{};
    if (!cpuid(1, 0, l_basic)) {
        return l_features;
    }
    l_features.m_ssse3 = bit(l_basic.m_ecx, 9);
    l_features.m_sse41 = bit(l_basic.m_ecx, 19);
    uint64 l_saved = 0;
#if defined(ORDWEL_CORE_X86)
    if (bit(l_basic.m_ecx, 27)) { // OSXSAVE: xgetbv may be asked
        l_saved = saved_register_state();
    }
#endif
    // XMM and YMM state; then opmask, upper ZMM0-15 and ZMM16-31.
    bool const l_ymm = (l_saved & 0x06) == 0x06;
    bool const l_zmm = l_ymm && (l_saved & 0xE0) == 0xE0;
    cpuid_registers l_extended{};
    cpuid(7, 0, l_extended);
    l_features.m_avx = l_ymm && bit(l_basic.m_ecx, 28);
    l_features.m_avx2 = l_features.m_avx && bit(l_extended.m_ebx, 5);
    l_features.m_avx512f = l_zmm && bit(l_extended.m_ebx, 16);
    l_features.m_avx512bw = l_features.m_avx512f && bit(l_extended.m_ebx, 30);
    l_features.m_avx512vl = l_features.m_avx512f && bit(l_extended.m_ebx, 31);
    l_features.m_avx512vbmi = l_features.m_avx512f && bit(l_extended.m_ecx, 1);
    l_features.m_avx512vbmi2 = l_features.m_avx512f && bit(l_extended.m_ecx, 6);
    // Instructions on general registers: they need no state of the operating system's.
    l_features.m_bmi1 = bit(l_extended.m_ebx, 3);
    l_features.m_bmi2 = bit(l_extended.m_ebx, 8);
    return l_features;
}

std::atomic<unsigned> s_cap{static_cast<unsigned>(simd_level::avx512)};

} // namespace

bool cpuid(uint32 a_leaf, uint32 a_subleaf, cpuid_registers &a_out)
{
    a_out = cpuid_registers{};
#if defined(ORDWEL_CORE_X86) && defined(_MSC_VER) && !defined(__clang__)
    int l_registers[4] = {};
    __cpuid(l_registers, static_cast<int>(a_leaf & 0x80000000U));
    if (static_cast<uint32>(l_registers[0]) < a_leaf) {
        return false;
    }
    __cpuidex(l_registers, static_cast<int>(a_leaf), static_cast<int>(a_subleaf));
    a_out = {static_cast<uint32>(l_registers[0]), static_cast<uint32>(l_registers[1]),
             static_cast<uint32>(l_registers[2]), static_cast<uint32>(l_registers[3])};
    return true;
#elif defined(ORDWEL_CORE_X86)
    unsigned const l_maximum = __get_cpuid_max(a_leaf & 0x80000000U, nullptr);
    if (l_maximum == 0 || l_maximum < a_leaf) {
        return false;
    }
    unsigned l_eax = 0, l_ebx = 0, l_ecx = 0, l_edx = 0;
    __cpuid_count(a_leaf, a_subleaf, l_eax, l_ebx, l_ecx, l_edx);
    a_out = {l_eax, l_ebx, l_ecx, l_edx};
    return true;
#else
    (void)a_leaf;
    (void)a_subleaf;
    return false;
#endif
}

cpu_features const &cpu_features_detected()
{
    static cpu_features const s_features = features_new();
    return s_features;
}

simd_level simd_level_of(cpu_features const &a_features)
{
    if (!a_features.m_ssse3 || !a_features.m_sse41) {
        return simd_level::scalar;
    }
    if (!a_features.m_avx || !a_features.m_avx2) {
        return simd_level::sse41;
    }
    if (!a_features.m_avx512f || !a_features.m_avx512bw || !a_features.m_avx512vl || !a_features.m_bmi1 ||
        !a_features.m_bmi2) {
        return simd_level::avx2;
    }
    return simd_level::avx512;
}

simd_level simd_level_active()
{
    static simd_level const s_detected = simd_level_of(cpu_features_detected());
    unsigned const l_cap = s_cap.load(std::memory_order_relaxed);
    return static_cast<unsigned>(s_detected) < l_cap ? s_detected : static_cast<simd_level>(l_cap);
}

void simd_level_cap(simd_level a_level)
{
    s_cap.store(static_cast<unsigned>(a_level), std::memory_order_relaxed);
}

} // namespace internal
} // namespace ordwel
