// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "core/cpu_dispatch.h"

namespace {

using namespace ordwel;
using internal::simd_level;

// Lifts any cap that a test set, so that no test sees another's.
struct cpu_dispatch : ::testing::Test {
    ~cpu_dispatch() override { internal::simd_level_cap(simd_level::avx512); }
};

int kernel_scalar()
{
    return 0;
}
int kernel_sse41()
{
    return 1;
}
int kernel_avx2()
{
    return 2;
}
int kernel_avx512()
{
    return 3;
}

constexpr simd_level k_levels[] = {simd_level::scalar, simd_level::sse41, simd_level::avx2, simd_level::avx512};

TEST_F(cpu_dispatch, levels_need_every_feature_of_their_own_and_below)
{
    internal::cpu_features l_all{};
    l_all.m_ssse3 = l_all.m_sse41 = l_all.m_avx = l_all.m_avx2 = true;
    l_all.m_avx512f = l_all.m_avx512bw = l_all.m_avx512vl = l_all.m_bmi1 = l_all.m_bmi2 = true;
    EXPECT_EQ(internal::simd_level_of(l_all), simd_level::avx512);
    EXPECT_EQ(internal::simd_level_of(internal::cpu_features{}), simd_level::scalar);

    // Each feature missing alone: the level drops to the one below the level that needs it.
    struct case_t {
        bool internal::cpu_features::*m_feature;
        simd_level m_level;
    };
    case_t const l_cases[] = {
        {&internal::cpu_features::m_ssse3, simd_level::scalar},
        {&internal::cpu_features::m_sse41, simd_level::scalar},
        {&internal::cpu_features::m_avx, simd_level::sse41},
        {&internal::cpu_features::m_avx2, simd_level::sse41},
        {&internal::cpu_features::m_avx512f, simd_level::avx2},
        {&internal::cpu_features::m_avx512bw, simd_level::avx2},
        {&internal::cpu_features::m_avx512vl, simd_level::avx2},
        {&internal::cpu_features::m_bmi1, simd_level::avx2},
        {&internal::cpu_features::m_bmi2, simd_level::avx2},
    };
    for (case_t const &l_case : l_cases) {
        internal::cpu_features l_features = l_all;
        l_features.*l_case.m_feature = false;
        EXPECT_EQ(internal::simd_level_of(l_features), l_case.m_level);
    }
    // VBMI comes with nothing that a level needs.
    internal::cpu_features l_vbmi{};
    l_vbmi.m_avx512vbmi = l_vbmi.m_avx512vbmi2 = true;
    EXPECT_EQ(internal::simd_level_of(l_vbmi), simd_level::scalar);
}

TEST_F(cpu_dispatch, a_missing_kernel_falls_back_to_the_next_narrower)
{
    internal::dispatch<int (*)()> const l_full(kernel_scalar, kernel_sse41, kernel_avx2, kernel_avx512);
    internal::dispatch<int (*)()> const l_gaps(kernel_scalar, nullptr, kernel_avx2);
    int const l_expected_gaps[] = {0, 0, 2, 2};
    for (unsigned l_index = 0; l_index < 4; ++l_index) {
        EXPECT_EQ(l_full.for_level(k_levels[l_index])(), static_cast<int>(l_index));
        EXPECT_EQ(l_gaps.for_level(k_levels[l_index])(), l_expected_gaps[l_index]);
    }
}

TEST_F(cpu_dispatch, the_cap_bounds_the_choice_and_a_choice_stays)
{
    simd_level const l_detected = internal::simd_level_of(internal::cpu_features_detected());
    EXPECT_EQ(internal::simd_level_active(), l_detected);
    for (simd_level const l_cap : k_levels) {
        internal::simd_level_cap(l_cap);
        simd_level const l_active = internal::simd_level_active();
        EXPECT_EQ(l_active, l_cap < l_detected ? l_cap : l_detected);
        internal::dispatch<int (*)()> const l_kernels(kernel_scalar, kernel_sse41, kernel_avx2, kernel_avx512);
        EXPECT_EQ(l_kernels.get()(), static_cast<int>(l_active));
        // Lifting the cap later does not change a choice made.
        internal::simd_level_cap(simd_level::avx512);
        EXPECT_EQ(l_kernels.get()(), static_cast<int>(l_active));
    }
}

TEST_F(cpu_dispatch, detection_agrees_with_the_compiler)
{
    internal::cpu_features const &l_features = internal::cpu_features_detected();
#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
    __builtin_cpu_init();
    EXPECT_EQ(l_features.m_ssse3, __builtin_cpu_supports("ssse3") != 0);
    EXPECT_EQ(l_features.m_sse41, __builtin_cpu_supports("sse4.1") != 0);
    EXPECT_EQ(l_features.m_avx, __builtin_cpu_supports("avx") != 0);
    EXPECT_EQ(l_features.m_avx2, __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ(l_features.m_avx512f, __builtin_cpu_supports("avx512f") != 0);
    EXPECT_EQ(l_features.m_avx512bw, __builtin_cpu_supports("avx512bw") != 0);
    EXPECT_EQ(l_features.m_avx512vl, __builtin_cpu_supports("avx512vl") != 0);
    EXPECT_EQ(l_features.m_avx512vbmi, __builtin_cpu_supports("avx512vbmi") != 0);
    EXPECT_EQ(l_features.m_avx512vbmi2, __builtin_cpu_supports("avx512vbmi2") != 0);
    EXPECT_EQ(l_features.m_bmi1, __builtin_cpu_supports("bmi") != 0);
    EXPECT_EQ(l_features.m_bmi2, __builtin_cpu_supports("bmi2") != 0);
    internal::cpuid_registers l_registers{};
    EXPECT_TRUE(internal::cpuid(0, 0, l_registers));
    EXPECT_GE(l_registers.m_eax, 1U);
    // Far above any basic leaf: refused, and the registers are cleared.
    EXPECT_FALSE(internal::cpuid(0x7FFFFFFFU, 0, l_registers));
    EXPECT_EQ(l_registers.m_eax | l_registers.m_ebx | l_registers.m_ecx | l_registers.m_edx, 0U);
#else
    EXPECT_EQ(internal::simd_level_of(l_features), simd_level::scalar);
    internal::cpuid_registers l_registers{};
    EXPECT_FALSE(internal::cpuid(0, 0, l_registers));
#endif
}

} // namespace
