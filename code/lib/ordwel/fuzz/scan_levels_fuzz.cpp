// SPDX-License-Identifier: MIT
// The byte scans at every vector level the processor has, side by side with the scalar level, on
// arbitrary data; and the bit reader's search at byte positions over a memory stream (scanned in
// place) beside the same search through a source that hands out a few bytes at a time, both
// readers moving alike between some searches. The first
// byte picks the sizes, the next three are the run searched for, then up to 16 bytes of a set; the
// rest is the data, copied to an allocation of its own size so that a read beyond it shows.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <ordwel/bitstream.h>
#include <ordwel/stream.h>

#include "core/byte_scan.h"
#include "core/cpu_dispatch.h"
#include "support/simd_levels.h"

#include "fuzz_check.h"

namespace {

using namespace ordwel;

class trickle : public stream::rd {
public:
    trickle(std::vector<unsigned char> const &a_data, std::size_t a_piece) : m_data(a_data), m_piece(a_piece) {}
    uint64 read(void *a_destination, uint64 a_size) override
    {
        std::size_t const l_count =
            std::min<std::size_t>({static_cast<std::size_t>(a_size), m_piece, m_data.size() - m_at});
        std::copy_n(m_data.data() + m_at, l_count, static_cast<unsigned char *>(a_destination));
        m_at += l_count;
        return l_count;
    }
    uint64 tell() override { return m_at; }

private:
    std::vector<unsigned char> const &m_data;
    std::size_t m_piece;
    std::size_t m_at = 0;
};

// The position maps of the eight bytes at a_bytes (the triple and five more) over a_data.
std::vector<uint64> positions(internal::simd_level a_level, std::vector<unsigned char> const &a_data,
                              unsigned char const *a_bytes)
{
    unsigned char const l_bytes[internal::k_byte_positions_count] = {a_bytes[0], a_bytes[1], a_bytes[2], '#',
                                                                     ':',        '/',        '@',        0};
    std::vector<uint64> l_out((a_data.size() + 63) / 64 * internal::k_byte_positions_count);
    internal::k_byte_positions.for_level(a_level)(a_data.data(), a_data.size(), l_bytes, l_out.data());
    return l_out;
}

void scans_agree(std::vector<unsigned char> const &a_data, unsigned char const *a_triple,
                 internal::byte_set const &a_set)
{
    using internal::simd_level;
    static std::vector<simd_level> const s_vector_levels = ordwel_test::simd_levels_here(simd_level::sse41);
    std::size_t const l_triple = internal::k_triple_find.for_level(simd_level::scalar)(
        a_data.data(), a_data.size(), a_triple[0], a_triple[1], a_triple[2]);
    std::size_t const l_first = internal::k_set_find.for_level(simd_level::scalar)(a_data.data(), a_data.size(), a_set);
    for (simd_level const l_at : s_vector_levels) {
        check(internal::k_triple_find.for_level(l_at)(a_data.data(), a_data.size(), a_triple[0], a_triple[1],
                                                      a_triple[2]) == l_triple);
        check(internal::k_set_find.for_level(l_at)(a_data.data(), a_data.size(), a_set) == l_first);
        check(positions(l_at, a_data, a_triple) == positions(simd_level::scalar, a_data, a_triple));
    }
    // The collecting search, with a room and a reach taken from the data's size.
    std::size_t const l_room = 1 + a_data.size() % 17;
    std::size_t const l_reach = a_data.size() % 3 == 0 ? a_data.size() : a_data.size() / 3;
    std::vector<uint64> l_scalar(l_room);
    l_scalar.resize(internal::k_triple_collect.for_level(simd_level::scalar)(
        a_data.data(), a_data.size(), a_triple[0], a_triple[1], a_triple[2], l_scalar.data(), l_room, l_reach));
    for (simd_level const l_level : s_vector_levels) {
        std::vector<uint64> l_starts(l_room);
        l_starts.resize(internal::k_triple_collect.for_level(l_level)(
            a_data.data(), a_data.size(), a_triple[0], a_triple[1], a_triple[2], l_starts.data(), l_room, l_reach));
        check(l_starts == l_scalar);
    }
}

void searches_agree(std::vector<unsigned char> &a_data, unsigned char const *a_triple, std::size_t a_block,
                    std::size_t a_piece, unsigned a_bits)
{
    unsigned const l_value = (unsigned(a_triple[0]) << 16 | unsigned(a_triple[1]) << 8 | a_triple[2]) >> (24 - a_bits);
    stream::mem l_memory(a_data.data(), a_data.size());
    trickle l_trickle(a_data, a_piece);
    bitstream::rd l_in_place(l_memory, a_block);
    bitstream::rd l_through(l_trickle, a_block);
    // Between some searches both readers move alike: the matches that the search in place keeps
    // must give way. (A bulk read would not do: it makes one read of the source, which gives the
    // trickle's few bytes.)
    auto const l_move = [](bitstream::rd const &a_reader, std::size_t a_count) {
        switch (a_count % 5) {
        case 1:
            a_reader.read(7);
            break;
        case 2:
            a_reader.skip(8 * (a_count * 37 % 300));
            break;
        case 3:
            a_reader.read(32);
            a_reader.read(32);
            break;
        default:
            break;
        }
    };
    for (std::size_t l_count = 0;; ++l_count) {
        bool const l_found = l_in_place.find(l_value, a_bits, 8, 8);
        check(l_through.find(l_value, a_bits, 8, 8) == l_found);
        check(l_in_place.tell() == l_through.tell());
        check(l_in_place.peek(13) == l_through.peek(13));
        if (!l_found) {
            break;
        }
        l_move(l_in_place, l_count);
        l_move(l_through, l_count);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size < 4) {
        return 0;
    }
    unsigned char const l_shape = a_data[0];
    unsigned char const *const l_triple = a_data + 1;
    std::size_t const l_set_size = std::min<std::size_t>(l_shape % 17, a_size - 4);
    internal::byte_set const l_set = internal::byte_set_of(a_data + 4, l_set_size);
    std::vector<unsigned char> l_data(a_data + 4 + l_set_size, a_data + a_size);
    scans_agree(l_data, l_triple, l_set);
    std::size_t const l_block = 4 * (1 + (l_shape >> 4) % 8);
    std::size_t const l_piece = 1 + (l_shape >> 2) % 5;
    searches_agree(l_data, l_triple, l_block, l_piece, (l_shape & 1) != 0 ? 24 : 16);
    return 0;
}
