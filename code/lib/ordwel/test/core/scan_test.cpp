// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/byte_scan.h"
#include "core/cpu_dispatch.h"
#include "support/simd_levels.h"

namespace {

using namespace ordwel;
using internal::simd_level;

std::size_t triple_by_loop(std::vector<unsigned char> const &a_data, unsigned char const (&a_triple)[3])
{
    for (std::size_t l_at = 0; l_at + 3 <= a_data.size(); ++l_at) {
        if (a_data[l_at] == a_triple[0] && a_data[l_at + 1] == a_triple[1] && a_data[l_at + 2] == a_triple[2]) {
            return l_at;
        }
    }
    return a_data.size();
}

// Each length has its own allocation of exactly that size, so that a read beyond it shows under
// AddressSanitizer.
TEST(scan, triple_at_every_position_of_every_length)
{
    for (simd_level const l_level : ordwel_test::simd_levels_here()) {
        internal::triple_find const l_find = internal::k_triple_find.for_level(l_level);
        for (std::size_t l_size = 0; l_size <= 300; ++l_size) {
            // Zeros all through: a 1 at l_at + 2 makes the first start code at l_at.
            std::vector<unsigned char> l_zeros(l_size, 0);
            EXPECT_EQ(l_find(l_zeros.data(), l_size, 0, 0, 1), l_size);
            for (std::size_t l_at = 0; l_at + 3 <= l_size; ++l_at) {
                l_zeros[l_at + 2] = 1;
                ASSERT_EQ(l_find(l_zeros.data(), l_size, 0, 0, 1), l_at)
                    << "level " << static_cast<unsigned>(l_level) << ", size " << l_size;
                l_zeros[l_at + 2] = 0;
            }
            // 00 00 cut by the end: no code, and nothing read behind the end.
            if (l_size >= 2) {
                EXPECT_EQ(l_find(l_zeros.data() + l_size - 2, 2, 0, 0, 0), 2u);
            }
        }
    }
}

TEST(scan, triple_agrees_with_a_loop_over_random_data)
{
    std::mt19937 l_random(17);
    for (simd_level const l_level : ordwel_test::simd_levels_here()) {
        internal::triple_find const l_find = internal::k_triple_find.for_level(l_level);
        for (int l_round = 0; l_round < 3000; ++l_round) {
            // Few distinct bytes, so that near misses and matches abound.
            std::vector<unsigned char> l_data(l_random() % 300);
            unsigned const l_alphabet = 2 + l_random() % 3;
            for (unsigned char &l_byte : l_data) {
                l_byte = static_cast<unsigned char>(0xfe + l_random() % l_alphabet);
            }
            unsigned char const l_triple[3] = {static_cast<unsigned char>(0xfe + l_random() % l_alphabet),
                                               static_cast<unsigned char>(0xfe + l_random() % l_alphabet),
                                               static_cast<unsigned char>(0xfe + l_random() % l_alphabet)};
            ASSERT_EQ(l_find(l_data.data(), l_data.size(), l_triple[0], l_triple[1], l_triple[2]),
                      triple_by_loop(l_data, l_triple))
                << "level " << static_cast<unsigned>(l_level);
        }
    }
}

// The starts of a_triple below a_reach in a_data, at most a_room of them.
std::vector<uint64> triples_by_loop(std::vector<unsigned char> const &a_data, unsigned char const (&a_triple)[3],
                                    std::size_t a_room, std::size_t a_reach)
{
    std::vector<uint64> l_starts;
    for (std::size_t l_at = 0; l_at + 3 <= a_data.size() && l_at < a_reach && l_starts.size() < a_room; ++l_at) {
        if (a_data[l_at] == a_triple[0] && a_data[l_at + 1] == a_triple[1] && a_data[l_at + 2] == a_triple[2]) {
            l_starts.push_back(l_at);
        }
    }
    return l_starts;
}

// The collecting search on data that is mostly one filler byte with runs planted: start codes
// (whose word filter also lets 00 01 at even offsets through: planted as decoys), a run that
// overlaps itself (00 00 00 00 holds two of 00 00 00) and a run whose two words differ in many
// bits (taken by the plain search). Long data crosses stretches of the vector kernel; each
// length is an allocation of its own, and a copy at every offset modulo 64 moves the steps
// against the cache lines.
TEST(scan, triple_collect_agrees_with_a_loop)
{
    struct run {
        unsigned char m_triple[3];
        unsigned char m_filler;
    };
    run const l_runs[] = {{{0, 0, 1}, 0x80}, {{0, 0, 0}, 0x11}, {{0x12, 0xed, 0x7c}, 0x12}, {{0xfe, 0xfe, 0xff}, 0xfe}};
    std::size_t const l_rooms[] = {1, 2, 3, 16};
    std::size_t const l_reaches[] = {0, 1, 5, 64, 255, 256, 700, 4096, ~std::size_t(0)};
    std::mt19937 l_random(31);
    for (run const &l_run : l_runs) {
        for (std::size_t const l_size : {0, 1, 2, 3, 4, 63, 64, 65, 257, 258, 259, 600, 4400, 9000}) {
            for (std::size_t const l_spacing : {40, 400}) {
                std::vector<unsigned char> l_data(l_size, l_run.m_filler);
                for (std::size_t l_plant = 0; l_plant < l_size / l_spacing + 1 && l_size >= 3; ++l_plant) {
                    std::size_t const l_at = l_random() % (l_size - 2);
                    switch (l_random() % 4) {
                    case 0:
                        std::copy(l_run.m_triple, l_run.m_triple + 3,
                                  l_data.begin() + static_cast<std::ptrdiff_t>(l_at));
                        break;
                    case 1:
                        // Half a run: its second and third byte, or its first and second.
                        l_data[l_at] = l_run.m_triple[l_random() % 2];
                        l_data[l_at + 1] = l_run.m_triple[l_random() % 2 + 1];
                        break;
                    case 2:
                        l_data[l_at] = 0;
                        l_data[l_at + 1] = 1;
                        break;
                    default:
                        l_data[l_at] = static_cast<unsigned char>(l_random());
                    }
                }
                if (l_size >= 3) {
                    std::copy(l_run.m_triple, l_run.m_triple + 3, l_data.end() - 3);
                }
                std::vector<unsigned char> l_shifted(l_size + 128);
                for (simd_level const l_level : ordwel_test::simd_levels_here()) {
                    internal::triple_collect const l_collect = internal::k_triple_collect.for_level(l_level);
                    for (std::size_t const l_room : l_rooms) {
                        for (std::size_t const l_reach : l_reaches) {
                            std::vector<uint64> const l_expected =
                                triples_by_loop(l_data, l_run.m_triple, l_room, l_reach);
                            std::size_t const l_offset = l_random() % 64;
                            unsigned char *const l_copy =
                                l_shifted.data() + (64 - reinterpret_cast<std::uintptr_t>(l_shifted.data()) % 64) +
                                l_offset;
                            std::copy(l_data.begin(), l_data.end(), l_copy);
                            for (unsigned char const *const l_from : {static_cast<unsigned char const *>(l_data.data()),
                                                                      static_cast<unsigned char const *>(l_copy)}) {
                                std::vector<uint64> l_out(l_room, 0);
                                std::size_t const l_count =
                                    l_collect(l_from, l_size, l_run.m_triple[0], l_run.m_triple[1], l_run.m_triple[2],
                                              l_out.data(), l_room, l_reach);
                                ASSERT_LE(l_count, l_room);
                                l_out.resize(l_count);
                                ASSERT_EQ(l_out, l_expected)
                                    << "level " << static_cast<unsigned>(l_level) << ", size " << l_size << ", room "
                                    << l_room << ", reach " << l_reach << ", offset " << l_offset;
                            }
                        }
                    }
                }
            }
        }
    }
}

// Runs that pass the vector kernel's word filter in one lane of a 256-byte step: the same offset
// in several 64-byte blocks, from the word's first byte or from the byte before it (00 00 00 00
// holds both). They must come out in order, the room cutting them short where it is small.
TEST(scan, triple_collect_keeps_runs_of_one_lane_in_order)
{
    struct plant {
        unsigned char m_triple[3];
        unsigned char m_filler;
        std::size_t m_offsets[4];
    };
    plant const l_plants[] = {
        {{0, 0, 1}, 0x80, {5, 64 + 6, 192 + 5, 192 + 6}},
        {{0, 0, 1}, 0x80, {0, 64, 128, 192}},
        {{0, 0, 0}, 0x11, {2, 3, 128 + 2, 128 + 3}},
        {{0, 0, 0}, 0x11, {61, 62, 64 + 61, 192 + 62}},
        {{0xfe, 0xfe, 0xff}, 0xfe, {9, 64 + 10, 128 + 9, 192 + 10}},
    };
    for (plant const &l_plant : l_plants) {
        for (std::size_t const l_start : {0, 1, 63, 64, 300, 1000}) {
            std::vector<unsigned char> l_data(l_start + 1400, l_plant.m_filler);
            for (std::size_t const l_offset : l_plant.m_offsets) {
                for (std::size_t l_byte = 0; l_byte < 3; ++l_byte) {
                    l_data[l_start + l_offset + l_byte] = l_plant.m_triple[l_byte];
                }
            }
            for (simd_level const l_level : ordwel_test::simd_levels_here()) {
                internal::triple_collect const l_collect = internal::k_triple_collect.for_level(l_level);
                for (std::size_t const l_room : {2, 5, 16}) {
                    for (std::size_t const l_reach : {l_start + 1, l_start + 130, std::size_t(1400)}) {
                        std::vector<uint64> l_out(l_room, 0);
                        l_out.resize(l_collect(l_data.data(), l_data.size(), l_plant.m_triple[0], l_plant.m_triple[1],
                                               l_plant.m_triple[2], l_out.data(), l_room, l_reach));
                        ASSERT_EQ(l_out, triples_by_loop(l_data, l_plant.m_triple, l_room, l_reach))
                            << "level " << static_cast<unsigned>(l_level) << ", start " << l_start << ", room "
                            << l_room << ", reach " << l_reach;
                    }
                }
            }
        }
    }
}

// Sets of 1 to 16 bytes, low and high halves, 0x00 and 0xff among them.
std::vector<std::string> const &sets()
{
    static std::vector<std::string> const k_sets = {
        std::string("%", 1),
        std::string("\0", 1),
        std::string("\xff", 1),
        std::string(":/?#[]@", 7),
        std::string("\x80\x7f\x00\x0f", 4),
        std::string("&=+;,!$'()*% \t\r\n", 16),
        std::string("\x10\x90\x1f\x9f\xf0\xe1\x01\x81\xc3\x43\x3c\xbc\xaa\x55\x5a\xa5", 16),
    };
    return k_sets;
}

TEST(scan, set_find_at_every_position_of_every_length)
{
    for (std::string const &l_members : sets()) {
        auto const *const l_bytes = reinterpret_cast<unsigned char const *>(l_members.data());
        internal::byte_set const l_set = internal::byte_set_of(l_bytes, l_members.size());
        // The first byte that is not in the set fills the data.
        unsigned l_filler = 0;
        while (l_members.find(static_cast<char>(l_filler)) != std::string::npos) {
            ++l_filler;
        }
        for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
            ASSERT_EQ(internal::byte_set_has(l_set, static_cast<unsigned char>(l_byte)),
                      l_members.find(static_cast<char>(l_byte)) != std::string::npos)
                << l_byte;
        }
        for (simd_level const l_level : ordwel_test::simd_levels_here()) {
            internal::set_find const l_find = internal::k_set_find.for_level(l_level);
            for (std::size_t l_size = 0; l_size <= 300; ++l_size) {
                std::vector<unsigned char> l_data(l_size, static_cast<unsigned char>(l_filler));
                EXPECT_EQ(l_find(l_data.data(), l_size, l_set), l_size);
                for (std::size_t l_at = 0; l_at < l_size; ++l_at) {
                    // Each member in turn, and a second one behind it that must not be taken.
                    l_data[l_at] = l_bytes[l_at % l_members.size()];
                    if (l_at + 1 < l_size) {
                        l_data[l_at + 1] = l_bytes[0];
                    }
                    ASSERT_EQ(l_find(l_data.data(), l_size, l_set), l_at)
                        << "level " << static_cast<unsigned>(l_level) << ", size " << l_size;
                    l_data[l_at] = static_cast<unsigned char>(l_filler);
                    if (l_at + 1 < l_size) {
                        l_data[l_at + 1] = static_cast<unsigned char>(l_filler);
                    }
                }
            }
        }
    }
}

// Lengths 0 to 300 (each its own allocation, so that a read beyond shows under AddressSanitizer),
// bytes drawn from the eight asked for and a few others, 0 among both.
TEST(scan, byte_positions_agree_with_a_loop)
{
    std::mt19937 l_random(8);
    unsigned char const l_bytes[internal::k_byte_positions_count] = {'#', ':', '/', '@', 0, 0xff, ';', '/'};
    for (std::size_t l_size = 0; l_size <= 300; ++l_size) {
        std::vector<unsigned char> l_data(l_size);
        for (unsigned char &l_byte : l_data) {
            l_byte = l_random() % 2 == 0 ? l_bytes[l_random() % 8] : static_cast<unsigned char>(l_random() % 4);
        }
        std::vector<uint64> l_expected((l_size + 63) / 64 * 8, 0);
        for (std::size_t l_at = 0; l_at < l_size; ++l_at) {
            for (std::size_t l_byte = 0; l_byte < 8; ++l_byte) {
                l_expected[l_at / 64 * 8 + l_byte] |= uint64(l_data[l_at] == l_bytes[l_byte]) << (l_at % 64);
            }
        }
        for (simd_level const l_level : ordwel_test::simd_levels_here()) {
            std::vector<uint64> l_out(l_expected.size(), 0x5a5a);
            internal::k_byte_positions.for_level(l_level)(l_data.data(), l_size, l_bytes, l_out.data());
            ASSERT_EQ(l_out, l_expected) << "level " << static_cast<unsigned>(l_level) << ", size " << l_size;
        }
    }
}

} // namespace
