// SPDX-License-Identifier: MIT
// The byte-stream unit split on arbitrary data: the split of memory equals a byte-by-byte model,
// the units and what lies between them cover the data exactly, and a stream reader gives the same
// units and payloads, over a memory stream and whatever pieces a source hands out. The first byte
// picks the block size, the next four the lengths of the source's pieces (repeated); the rest is
// the data.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <ordwel/annexb.h>
#include <ordwel/buffer.h>
#include <ordwel/stream.h>

#include "fuzz_check.h"

namespace {

// Hands the data out in pieces of the scripted lengths, in turn.
class source : public ordwel::stream::rd {
public:
    source(std::uint8_t const *a_data, std::size_t a_size, std::uint8_t const *a_pieces)
        : m_data(a_data), m_size(a_size), m_pieces(a_pieces)
    {
    }
    ordwel::uint64 read(void *a_destination, ordwel::uint64 a_size) override
    {
        std::size_t const l_piece = 1 + m_pieces[m_calls++ % 4];
        std::size_t const l_count = std::min<std::size_t>({static_cast<std::size_t>(a_size), l_piece, m_size - m_at});
        std::copy_n(m_data + m_at, l_count, static_cast<std::uint8_t *>(a_destination));
        m_at += l_count;
        return l_count;
    }
    ordwel::uint64 tell() override { return m_at; }

private:
    std::uint8_t const *m_data;
    std::size_t m_size;
    std::uint8_t const *m_pieces;
    std::size_t m_at = 0;
    std::size_t m_calls = 0;
};

struct model_unit {
    std::size_t m_start;
    std::size_t m_offset;
    std::size_t m_size;
};

bool code_at(std::uint8_t const *a_data, std::size_t a_size, std::size_t a_at)
{
    return a_at + 3 <= a_size && a_data[a_at] == 0 && a_data[a_at + 1] == 0 && a_data[a_at + 2] == 1;
}

// The split, one byte at a time.
std::vector<model_unit> model(std::uint8_t const *a_data, std::size_t a_size)
{
    std::vector<model_unit> l_units;
    std::size_t l_at = 0;
    while (l_at < a_size && !code_at(a_data, a_size, l_at)) {
        ++l_at;
    }
    while (l_at < a_size) {
        model_unit l_unit{l_at > 0 && a_data[l_at - 1] == 0 ? l_at - 1 : l_at, l_at + 3, 0};
        l_at += 3;
        while (l_at < a_size && !code_at(a_data, a_size, l_at)) {
            ++l_at;
        }
        std::size_t l_end = l_at;
        while (l_end > l_unit.m_offset && a_data[l_end - 1] == 0) {
            --l_end;
        }
        l_unit.m_size = l_end - l_unit.m_offset;
        l_units.push_back(l_unit);
    }
    return l_units;
}

bool zeros(std::uint8_t const *a_data, std::size_t a_from, std::size_t a_to)
{
    return std::all_of(a_data + a_from, a_data + a_to, [](std::uint8_t a_byte) { return a_byte == 0; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size < 5 || a_size > 65536) {
        return 0;
    }
    ordwel::uint64 const l_block = 16 + a_data[0] * 4;
    std::uint8_t const *const l_pieces = a_data + 1;
    std::uint8_t const *const l_data = a_data + 5;
    std::size_t const l_size = a_size - 5;

    std::vector<model_unit> const l_model = model(l_data, l_size);
    ordwel::annexb::units l_units(l_data, l_size);
    ordwel::annexb::unit l_unit;
    std::vector<ordwel::annexb::unit> l_memory;
    while (l_units.next(l_unit)) {
        l_memory.push_back(l_unit);
    }
    check(l_memory.size() == l_model.size());
    check(l_units.leading() == (l_model.empty() ? l_size : l_model.front().m_start));
    // Each unit: its start code, its payload (no zero at its end), then only zeros up to the next.
    for (std::size_t l_index = 0; l_index < l_memory.size(); ++l_index) {
        ordwel::annexb::unit const &l_got = l_memory[l_index];
        check(l_got.m_start == l_model[l_index].m_start && l_got.m_offset == l_model[l_index].m_offset &&
              l_got.m_size == l_model[l_index].m_size);
        check(l_got.m_data == l_data + l_got.m_offset);
        check(code_at(l_data, l_size, l_got.m_offset - 3) && zeros(l_data, l_got.m_start, l_got.m_offset - 3));
        check(l_got.start_code_size() == 3 || l_got.start_code_size() == 4);
        check(l_got.m_size == 0 || l_data[l_got.m_offset + l_got.m_size - 1] != 0);
        std::size_t const l_next = l_index + 1 < l_memory.size() ? l_memory[l_index + 1].m_start : l_size;
        check(l_got.m_offset + l_got.m_size <= l_next && zeros(l_data, l_got.m_offset + l_got.m_size, l_next));
        for (std::size_t l_byte = 0; l_byte < 2; ++l_byte) {
            check(l_got.m_header[l_byte] == (l_byte < l_got.m_size ? l_data[l_got.m_offset + l_byte] : 0));
        }
    }

    // The reader over the scripted source (through its block) and over a memory stream (in place).
    source l_source(l_data, l_size, l_pieces);
    std::vector<std::uint8_t> l_copy(l_data, l_data + l_size);
    ordwel::stream::mem l_in_place(l_copy.data(), l_copy.size());
    for (ordwel::stream::rd *const l_stream :
         {static_cast<ordwel::stream::rd *>(&l_source), static_cast<ordwel::stream::rd *>(&l_in_place)}) {
        ordwel::annexb::unit_reader l_reader(*l_stream, l_block);
        ordwel::buffer l_payload;
        std::size_t l_count = 0;
        while (l_reader.next(l_unit, l_payload)) {
            check(l_count < l_memory.size());
            ordwel::annexb::unit const &l_want = l_memory[l_count++];
            check(l_unit.m_start == l_want.m_start && l_unit.m_offset == l_want.m_offset &&
                  l_unit.m_size == l_want.m_size && l_payload.size() == l_want.m_size);
            check(std::equal(l_payload.begin(), l_payload.end(), l_want.m_data));
            check(l_unit.m_header[0] == l_want.m_header[0] && l_unit.m_header[1] == l_want.m_header[1]);
        }
        check(l_count == l_memory.size() && l_reader.leading() == l_units.leading());
    }
    return 0;
}
