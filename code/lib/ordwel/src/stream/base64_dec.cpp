// SPDX-License-Identifier: MIT
#include <ordwel/base64.h>
#include <ordwel/codecs.h>

#include <cstddef>
#include <cstring>

#include <ordwel/es.h>

#include "bytes/writable.h"
#include "core/byte_tables.h"
#include "diag/raise.h"
#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

constexpr unsigned char k_bad = 255;
// Set in every shifted entry of a foreign character: no valid group ever has it.
constexpr uint32 k_bad_flag = 0x01000000;

struct decode_table {
    // Each character's value, 0 to 63, or k_bad.
    unsigned char m_value[256];
    // The value already in place for position 0 to 3 of a group, or k_bad_flag.
    uint32 m_shifted[4][256];
};

constexpr decode_table decode_table_new(char const *a_alphabet)
{
    decode_table l_table{};
    for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
        l_table.m_value[l_byte] = k_bad;
        for (unsigned l_position = 0; l_position < 4; ++l_position) {
            l_table.m_shifted[l_position][l_byte] = k_bad_flag;
        }
    }
    for (unsigned l_value = 0; l_value < 64; ++l_value) {
        auto const l_byte = static_cast<unsigned char>(a_alphabet[l_value]);
        l_table.m_value[l_byte] = static_cast<unsigned char>(l_value);
        for (unsigned l_position = 0; l_position < 4; ++l_position) {
            l_table.m_shifted[l_position][l_byte] = l_value << (18 - 6 * l_position);
        }
    }
    return l_table;
}

constexpr decode_table k_tables[2] = {decode_table_new(internal::k_base64_alphabet),
                                      decode_table_new(internal::k_base64url_alphabet)};

constexpr decode_table const &table_of(base64_alphabet a_alphabet)
{
    return k_tables[a_alphabet == base64_alphabet::url ? 1 : 0];
}

// The three bytes of a group of four characters of the alphabet, or false for any other group.
inline bool decode_group(decode_table const &a_table, unsigned char *a_out, unsigned char const *a_group)
{
    uint32 const l_bits = a_table.m_shifted[0][a_group[0]] | a_table.m_shifted[1][a_group[1]] |
                          a_table.m_shifted[2][a_group[2]] | a_table.m_shifted[3][a_group[3]];
    a_out[0] = static_cast<unsigned char>(l_bits >> 16);
    a_out[1] = static_cast<unsigned char>(l_bits >> 8);
    a_out[2] = static_cast<unsigned char>(l_bits);
    return (l_bits & k_bad_flag) == 0;
}

// A group with a foreign character: the number of foreign characters alone decides how many bytes
// it gives (two: one, one: two, none, three or four: three); the bytes come from the values, 255
// included, with the low-end operand taken as a 6-bit value and the result cut to 8 bits.
unsigned char *decode_odd_group(decode_table const &a_table, unsigned char *a_out, unsigned char const *a_group)
{
    unsigned const l_a = a_table.m_value[a_group[0]];
    unsigned const l_b = a_table.m_value[a_group[1]];
    unsigned const l_c = a_table.m_value[a_group[2]];
    unsigned const l_d = a_table.m_value[a_group[3]];
    unsigned const l_bad = (l_a == k_bad) + (l_b == k_bad) + (l_c == k_bad) + (l_d == k_bad);
    *a_out++ = static_cast<unsigned char>((l_a << 2) | ((l_b & 63) >> 4));
    if (l_bad == 2) {
        return a_out;
    }
    *a_out++ = static_cast<unsigned char>((l_b << 4) | ((l_c & 63) >> 2));
    if (l_bad == 1) {
        return a_out;
    }
    *a_out++ = static_cast<unsigned char>((l_c << 6) | (l_d & 63));
    return a_out;
}

// The room for a_size characters, after the length check.
std::size_t decoded_room(uint64 a_size)
{
    if (a_size % 4 != 0) {
        es::arg::raise(ORDWEL_HERE, nullptr);
    }
    return static_cast<std::size_t>(a_size / 4 * 3);
}

inline std::size_t decode_scalar(decode_table const &a_table, unsigned char *a_out, unsigned char const *a_text,
                                 std::size_t a_size)
{
    unsigned char *l_out = a_out;
    unsigned char const *l_in = a_text;
    unsigned char const *const l_end = a_text + a_size;
    for (; l_in != l_end; l_in += 4) {
        if (decode_group(a_table, l_out, l_in)) {
            l_out += 3;
        } else {
            l_out = decode_odd_group(a_table, l_out, l_in);
        }
    }
    return static_cast<std::size_t>(l_out - a_out);
}

} // namespace

std::size_t internal::base64_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    return decode_scalar(k_tables[0], a_out, a_text, a_size);
}

std::size_t internal::base64url_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    return decode_scalar(k_tables[1], a_out, a_text, a_size);
}

// The whole groups of the alphabet go through the vector prefix and then one at a time; from the
// first group with anything else, or a short tail, only the end of the text may follow, and it is
// checked character by character in reading order, so that the first character that no valid text
// has at its place is the one reported.
internal::base64_strict_step internal::base64_decode_strict_window(unsigned char *a_out, unsigned char const *a_text,
                                                                   std::size_t a_size, bool a_ended,
                                                                   base64_format a_format)
{
    decode_table const &l_table = table_of(a_format.m_alphabet);
    std::size_t l_pos = base64_kernels_of(a_format.m_alphabet).m_decode_prefix.get()(a_out, a_text, a_size);
    unsigned char *l_out = a_out + l_pos / 4 * 3;
    while (a_size - l_pos >= 4 && decode_group(l_table, l_out, a_text + l_pos)) {
        l_pos += 4;
        l_out += 3;
    }
    std::size_t const l_written = static_cast<std::size_t>(l_out - a_out);
    auto const l_more = [&] { return base64_strict_step{base64_strict_step::more, l_pos, l_written}; };
    auto const l_bad = [&](std::size_t a_offset) {
        return base64_strict_step{base64_strict_step::bad, a_offset, l_written};
    };

    // The last group: its characters of the alphabet, 0 to 3 of them here.
    std::size_t l_data = 0;
    while (l_pos + l_data < a_size && l_table.m_value[a_text[l_pos + l_data]] != k_bad) {
        ++l_data;
    }
    uint32 l_bits = 0;
    for (std::size_t l_index = 0; l_index < l_data; ++l_index) {
        l_bits |= uint32(l_table.m_value[a_text[l_pos + l_index]]) << (18 - 6 * l_index);
    }
    // The bits of the bytes that the group does not fill must be zero.
    bool const l_canonical = l_data < 2 || (l_bits & (l_data == 2 ? 0xffff : 0xff)) == 0;
    std::size_t const l_next = l_pos + l_data;
    if (l_next == a_size) {
        if (!a_ended) {
            return l_more();
        }
        if (l_data != 0 && (l_data == 1 || a_format.m_padding == base64_padding::required || !l_canonical)) {
            return l_bad(a_size);
        }
    } else {
        if (a_text[l_next] != '=' || l_data < 2 || a_format.m_padding == base64_padding::forbidden || !l_canonical) {
            return l_bad(l_next);
        }
        for (std::size_t l_index = l_next + 1; l_index < l_pos + 4; ++l_index) {
            if (l_index == a_size) {
                return a_ended ? l_bad(a_size) : l_more();
            }
            if (a_text[l_index] != '=') {
                return l_bad(l_index);
            }
        }
        if (l_pos + 4 != a_size) {
            return l_bad(l_pos + 4);
        }
        if (!a_ended) {
            return l_more();
        }
    }
    for (std::size_t l_index = 0; l_index + 1 < l_data; ++l_index) {
        l_out[l_index] = static_cast<unsigned char>(l_bits >> (16 - 8 * l_index));
    }
    return base64_strict_step{base64_strict_step::done, a_size, l_written + (l_data == 0 ? 0 : l_data - 1)};
}

buffer buffer_decode_base64(unsigned char const *a_bytes, uint64 a_size)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(decoded_room(a_size) + 1);
    l_result.resize(internal::k_base64_decode.get()(l_result.begin(), a_bytes, static_cast<std::size_t>(a_size)));
    return l_result;
}

// Codes straight into the string rather than through a buffer: the same bytes, one copy fewer.
std::string string_decode_base64(unsigned char const *a_bytes, uint64 a_size)
{
    std::string l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(decoded_room(a_size));
    l_result.resize(internal::k_base64_decode.get()(reinterpret_cast<unsigned char *>(&l_result[0]), a_bytes,
                                                    static_cast<std::size_t>(a_size)));
    return l_result;
}

// The whole groups through the lenient kernel; a short last group as if it had its padding.
buffer buffer_decode_base64(unsigned char const *a_bytes, uint64 a_size, base64_format a_format)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    uint64 const l_tail = a_size % 4;
    if (a_format.m_padding == base64_padding::required || l_tail == 1) {
        (void)decoded_room(a_size);
    }
    std::size_t const l_whole = static_cast<std::size_t>(a_size - l_tail);
    l_result.resize(l_whole / 4 * 3 + 3);
    internal::base64_decode_kernel const l_kernel = internal::base64_kernels_of(a_format.m_alphabet).m_decode.get();
    std::size_t l_size = l_kernel(l_result.begin(), a_bytes, l_whole);
    if (l_tail != 0) {
        unsigned char l_group[4] = {'=', '=', '=', '='};
        std::memcpy(l_group, a_bytes + l_whole, static_cast<std::size_t>(l_tail));
        l_size += l_kernel(l_result.begin() + l_size, l_group, 4);
    }
    l_result.resize(l_size);
    return l_result;
}

std::string string_decode_base64(unsigned char const *a_bytes, uint64 a_size, base64_format a_format)
{
    buffer const l_bytes = buffer_decode_base64(a_bytes, a_size, a_format);
    return std::string(reinterpret_cast<char const *>(l_bytes.begin()), static_cast<std::size_t>(l_bytes.size()));
}

namespace {

// Strict decoding into a buffer or a string, straight into its room: true and the bytes, or false,
// the offset and no bytes.
template <typename t_bytes>
bool decode_strict_into(t_bytes &a_bytes, unsigned char const *a_text, uint64 a_size, base64_format a_format,
                        uint64 &a_offset)
{
    if (a_text == nullptr || a_size == 0) {
        return true;
    }
    a_bytes.resize(static_cast<std::size_t>((a_size + 3) / 4 * 3));
    internal::base64_strict_step const l_step = internal::base64_decode_strict_window(
        internal::writable_bytes(a_bytes), a_text, static_cast<std::size_t>(a_size), true, a_format);
    bool const l_valid = l_step.m_state == internal::base64_strict_step::done;
    a_offset = l_valid ? 0 : l_step.m_taken;
    a_bytes.resize(l_valid ? l_step.m_written : 0);
    return l_valid;
}

template <typename t_bytes>
t_bytes decode_strict_or_raise(unsigned char const *a_text, uint64 a_size, base64_format a_format)
{
    t_bytes l_bytes;
    uint64 l_offset = 0;
    if (!decode_strict_into(l_bytes, a_text, a_size, a_format, l_offset)) {
        internal::base64_raise_invalid(l_offset);
    }
    return l_bytes;
}

} // namespace

base64_result base64_decode_strict(unsigned char const *a_text, uint64 a_size, base64_format a_format)
{
    base64_result l_result{true, 0, buffer()};
    l_result.m_valid = decode_strict_into(l_result.m_bytes, a_text, a_size, a_format, l_result.m_offset);
    return l_result;
}

void internal::base64_raise_invalid(uint64 a_offset)
{
    diag::raise_format<es::arg>(ORDWEL_HERE, "invalid Base64 at offset %llu",
                                static_cast<unsigned long long>(a_offset));
}

buffer buffer_decode_base64_strict(unsigned char const *a_text, uint64 a_size, base64_format a_format)
{
    return decode_strict_or_raise<buffer>(a_text, a_size, a_format);
}

std::string string_decode_base64_strict(unsigned char const *a_text, uint64 a_size, base64_format a_format)
{
    return decode_strict_or_raise<std::string>(a_text, a_size, a_format);
}

} // namespace ordwel
