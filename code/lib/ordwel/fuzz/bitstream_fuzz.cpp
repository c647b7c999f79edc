// SPDX-License-Identifier: MIT
// The bit cursors on arbitrary data and arbitrary programs: no crash and no sanitizer report, and
// every result agrees with a plain model of the bits. The first byte gives the length of the
// program, the second the source's piece size and the block size; the rest is the data. The
// reader follows the program (fields, peeks, skips, byte reads, searches at every bit position and
// for start codes at byte positions), from a source that hands out pieces or from a memory stream;
// the writer writes the fields that the reader read, and gives the same bytes as the model.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <ordwel/bitstream.h>
#include <ordwel/stream.h>

#include "fuzz_check.h"

namespace {

class source : public ordwel::stream::rd {
public:
    source(std::uint8_t const *a_data, std::size_t a_size, std::size_t a_piece)
        : m_data(a_data), m_size(a_size), m_piece(a_piece)
    {
    }
    ordwel::uint64 read(void *a_destination, ordwel::uint64 a_size) override
    {
        std::size_t const l_count = std::min<std::size_t>({static_cast<std::size_t>(a_size), m_piece, m_size - m_at});
        std::copy_n(m_data + m_at, l_count, static_cast<std::uint8_t *>(a_destination));
        m_at += l_count;
        return l_count;
    }
    ordwel::uint64 tell() override { return m_at; }

private:
    std::uint8_t const *m_data;
    std::size_t m_size;
    std::size_t m_piece;
    std::size_t m_at = 0;
};

class sink : public ordwel::stream::wr {
public:
    void write(void const *a_source, ordwel::uint64 a_size) override
    {
        m_bytes.append(static_cast<char const *>(a_source), static_cast<std::size_t>(a_size));
    }
    void flush() override {}
    ordwel::uint64 tell() override { return m_bytes.size(); }

    std::string m_bytes;
};

struct model {
    std::uint8_t const *data;
    std::size_t bits;

    ordwel::uint32 field(std::size_t a_at, unsigned a_count) const
    {
        ordwel::uint32 l_value = 0;
        for (unsigned l_index = 0; l_index < a_count; ++l_index) {
            std::size_t const l_bit = a_at + l_index;
            unsigned const l_one = l_bit < bits ? (data[l_bit / 8] >> (7 - l_bit % 8)) & 1 : 0;
            l_value = (l_value << 1) | l_one;
        }
        return l_value;
    }
};

void append(std::vector<bool> &a_bits, ordwel::uint32 a_value, unsigned a_count)
{
    for (unsigned l_index = a_count; l_index > 0; --l_index) {
        a_bits.push_back(((a_value >> (l_index - 1)) & 1) != 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size < 2) {
        return 0;
    }
    std::size_t const l_length = std::min<std::size_t>(a_data[0], a_size - 2);
    std::uint8_t const *const l_program = a_data + 2;
    std::size_t const l_piece = 1 + (a_data[1] & 15);
    ordwel::uint64 const l_block = 4 * (a_data[1] >> 4);
    std::uint8_t const *const l_bytes = a_data + 2 + l_length;
    std::size_t const l_size = a_size - 2 - l_length;
    model const l_model{l_bytes, 8 * l_size};

    // The largest piece size stands for a memory stream, which the reader's search scans in place.
    source l_source(l_bytes, l_size, l_piece);
    ordwel::stream::mem l_memory(const_cast<std::uint8_t *>(l_bytes), l_size);
    bool const l_in_memory = l_piece == 16;
    ordwel::bitstream::rd l_reader(l_in_memory ? static_cast<ordwel::stream::rd &>(l_memory)
                                               : static_cast<ordwel::stream::rd &>(l_source),
                                   l_block);
    sink l_sink;
    std::vector<bool> l_written;
    {
        ordwel::bitstream::wr l_writer(l_sink, l_block + 5);
        std::size_t l_at = 0;
        for (std::size_t l_index = 0; l_index < l_length; ++l_index) {
            unsigned const l_op = l_program[l_index] >> 6;
            unsigned const l_arg = l_program[l_index] & 63;
            switch (l_op) {
            case 0: {
                unsigned const l_count = std::min(l_arg, 32u);
                check(l_reader.has_bits(l_count) == (l_at + l_count <= l_model.bits));
                check(l_reader.peek(l_count) == l_model.field(l_at, l_count));
                ordwel::uint32 const l_value = l_reader.read(l_count);
                check(l_value == l_model.field(l_at, l_count));
                std::size_t const l_next = std::min(l_at + l_count, l_model.bits);
                unsigned const l_taken = static_cast<unsigned>(l_next - l_at);
                ordwel::uint32 const l_kept = l_taken == 0 ? 0 : l_value >> (l_count - l_taken);
                l_writer.write(l_kept, l_taken);
                append(l_written, l_kept, l_taken);
                l_at = l_next;
                break;
            }
            case 1: {
                l_reader.skip(l_arg * 3);
                std::size_t const l_next = std::min<std::size_t>(l_at + l_arg * 3, l_model.bits);
                l_writer.skip(l_next - l_at);
                l_written.resize(l_written.size() + (l_next - l_at), false);
                l_at = l_next;
                break;
            }
            case 2: {
                // Bytes from the next byte boundary.
                std::uint8_t l_out[64] = {};
                std::size_t const l_from = std::min((l_at + 7) / 8 * 8, l_model.bits);
                ordwel::uint64 const l_got = l_reader.read(l_out, l_arg, 8);
                // One read of the source for what the block does not hold: a source that hands out
                // pieces may give fewer bytes than there are.
                check(l_got <= std::min<std::size_t>(l_arg, (l_model.bits - l_from) / 8));
                check(l_piece < l_arg || l_got == std::min<std::size_t>(l_arg, (l_model.bits - l_from) / 8));
                for (std::size_t l_byte = 0; l_byte < l_got; ++l_byte) {
                    check(l_out[l_byte] == l_model.field(l_from + 8 * l_byte, 8));
                }
                l_writer.skip(l_from - l_at);
                l_written.resize(l_written.size() + (l_from - l_at), false);
                l_writer.write(l_out, l_got, 8);
                for (std::size_t l_byte = 0; l_byte < l_got; ++l_byte) {
                    append(l_written, l_out[l_byte], 8);
                }
                l_at = l_from + 8 * l_got;
                break;
            }
            default: {
                if (l_arg >= 48) {
                    // A start code at byte positions from the next byte boundary, or everything
                    // consumed.
                    std::size_t l_match = (l_at + 7) / 8 * 8;
                    while (l_match + 24 <= l_model.bits && l_model.field(l_match, 24) != 1) {
                        l_match += 8;
                    }
                    bool const l_found = l_reader.find(1, 24, 8, 8);
                    check(l_found == (l_match + 24 <= l_model.bits));
                    std::size_t const l_behind = l_found ? l_match + 24 : l_model.bits;
                    for (std::size_t l_bit = l_at; l_bit < l_behind; ++l_bit) {
                        l_writer.write(l_model.field(l_bit, 1), 1);
                        append(l_written, l_model.field(l_bit, 1), 1);
                    }
                    l_at = l_behind;
                    break;
                }
                // Every position: the first match from the cursor, or everything consumed.
                unsigned const l_bits = 1 + l_arg % 16;
                ordwel::uint32 const l_value = l_program[(l_index + 1) % l_length] | (l_arg << 8);
                std::size_t l_match = l_at;
                while (l_match + l_bits <= l_model.bits &&
                       l_model.field(l_match, l_bits) != (l_value & ((1u << l_bits) - 1))) {
                    ++l_match;
                }
                bool const l_found = l_reader.find(l_value, l_bits, 1, 1);
                check(l_found == (l_match + l_bits <= l_model.bits));
                std::size_t const l_behind = l_found ? l_match + l_bits : l_model.bits;
                for (std::size_t l_bit = l_at; l_bit < l_behind; ++l_bit) {
                    l_writer.write(l_model.field(l_bit, 1), 1);
                    append(l_written, l_model.field(l_bit, 1), 1);
                }
                l_at = l_behind;
                break;
            }
            }
            check(l_reader.tell() == l_at / 8 + (l_at % 8 != 0 ? 1 : 0));
        }
        check(l_written.size() == l_at);
        check(l_writer.tell() == (l_at + 7) / 8);
    }
    std::string l_expected((l_written.size() + 7) / 8, '\0');
    for (std::size_t l_bit = 0; l_bit < l_written.size(); ++l_bit) {
        if (l_written[l_bit]) {
            l_expected[l_bit / 8] = static_cast<char>(l_expected[l_bit / 8] | (0x80 >> (l_bit % 8)));
        }
    }
    check(l_sink.m_bytes == l_expected);
    return 0;
}
