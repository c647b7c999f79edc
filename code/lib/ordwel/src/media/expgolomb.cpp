// SPDX-License-Identifier: MIT
#include <ordwel/expgolomb.h>

#include <ordwel/es.h>

namespace ordwel {
namespace bitstream {

namespace {

// The leading zeros of a word that is not 0.
inline unsigned leading_zeros(uint32 a_word)
{
#if defined(__GNUC__)
    return static_cast<unsigned>(__builtin_clz(a_word));
#else
    unsigned l_count = 0;
    for (uint32 l_bit = uint32(1) << 31; (a_word & l_bit) == 0; l_bit >>= 1) {
        ++l_count;
    }
    return l_count;
#endif
}

// The code number of the next code: up to 2^33 - 2, from at most 32 leading zeros.
uint64 read_code(rd const &a_reader)
{
    // A code of at most 15 zeros fits in the next 32 bits (the inline path of the header takes
    // those whose 32 bits are all data). The bits behind the data read as zero, so a 1 seen in the
    // word is in the data; has_bits tells whether the rest of the code is.
    uint32 const l_word = a_reader.peek(32);
    if (l_word >= 0x10000) {
        unsigned const l_length = 2 * leading_zeros(l_word) + 1;
        if (!a_reader.has_bits(l_length)) {
            es::uflow::raise(ORDWEL_HERE, nullptr);
        }
        a_reader.read(l_length);
        return (l_word >> (32 - l_length)) - 1;
    }
    // 16 zeros or more. A word of zeros is 32 zeros only when all of it is data.
    unsigned l_zeros = 0;
    if (l_word == 0) {
        if (!a_reader.has_bits(32)) {
            es::uflow::raise(ORDWEL_HERE, nullptr);
        }
        a_reader.read(32);
        if (!a_reader.has_bits(1)) {
            es::uflow::raise(ORDWEL_HERE, nullptr);
        }
        if (a_reader.peek(1) == 0) {
            es::oflow::raise(ORDWEL_HERE, nullptr);
        }
        l_zeros = 32;
        a_reader.read(1);
    } else {
        l_zeros = leading_zeros(l_word);
        a_reader.read(l_zeros + 1);
    }
    if (!a_reader.has_bits(l_zeros)) {
        es::uflow::raise(ORDWEL_HERE, nullptr);
    }
    return (uint64(1) << l_zeros) - 1 + a_reader.read(l_zeros);
}

// Writes the code of a code number up to 2^32: its zeros, then the number plus 1 (up to 33 bits).
void write_code(wr &a_writer, uint64 a_code)
{
    uint64 const l_value = a_code + 1;
    unsigned l_bits = 1;
    while (l_bits < 64 && (l_value >> l_bits) != 0) {
        ++l_bits;
    }
    unsigned const l_zeros = l_bits - 1;
    if (l_zeros + l_bits <= 32) {
        // The zeros come with the value: its bits above l_bits are zero.
        a_writer.write(static_cast<unsigned>(l_value), l_zeros + l_bits);
        return;
    }
    a_writer.write(0, l_zeros);
    if (l_bits > 32) {
        a_writer.write(static_cast<unsigned>(l_value >> 32), l_bits - 32);
        a_writer.write(static_cast<unsigned>(l_value), 32);
    } else {
        a_writer.write(static_cast<unsigned>(l_value), l_bits);
    }
}

} // namespace

namespace detail {

uint32 read_ue_checked(rd const &a_reader)
{
    uint64 const l_code = read_code(a_reader);
    if (l_code > 0xffffffffU) {
        es::oflow::raise(ORDWEL_HERE, nullptr);
    }
    return static_cast<uint32>(l_code);
}

sint32 read_se_checked(rd const &a_reader)
{
    // Odd code numbers are the positive values, even ones zero and the negative values: 2^32 is
    // the last that fits, -2^31.
    uint64 const l_code = read_code(a_reader);
    if (l_code > (uint64(1) << 32) || l_code == (uint64(1) << 32) - 1) {
        es::oflow::raise(ORDWEL_HERE, nullptr);
    }
    if ((l_code & 1) != 0) {
        return static_cast<sint32>((l_code + 1) / 2);
    }
    return static_cast<sint32>(-static_cast<sint64>(l_code / 2));
}

} // namespace detail

void write_ue(wr &a_writer, uint32 a_value)
{
    write_code(a_writer, a_value);
}

void write_se(wr &a_writer, sint32 a_value)
{
    sint64 const l_value = a_value;
    write_code(a_writer, l_value > 0 ? static_cast<uint64>(2 * l_value - 1) : static_cast<uint64>(-2 * l_value));
}

} // namespace bitstream
} // namespace ordwel
