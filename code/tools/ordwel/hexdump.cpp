// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <cstring>
#include <vector>

#include "options.h"
#include "tool_io.h"

namespace ordwel_toolbox {

namespace {

using ordwel::uint64;

// The line of ds_og::print_buf, 79 bytes: offset, 16 bytes in two groups of 8, the bytes as
// characters between bars. Offsets beyond 32 bits take more digits and push the line to the right.
std::size_t format_line(char *a_line, uint64 a_offset, unsigned char const *a_bytes, std::size_t a_count)
{
    static char const k_digits[] = "0123456789abcdef";
    int l_digits = 8;
    while (l_digits < 16 && (a_offset >> (4 * l_digits)) != 0) {
        ++l_digits;
    }
    char *const l_body = a_line + (l_digits - 8);
    std::memset(a_line, ' ', 79 + (l_digits - 8));
    for (int l_digit = 0; l_digit < l_digits; ++l_digit) {
        a_line[l_digit] = k_digits[(a_offset >> (4 * (l_digits - 1 - l_digit))) & 15U];
    }
    for (std::size_t l_index = 0; l_index < a_count; ++l_index) {
        unsigned char const l_byte = a_bytes[l_index];
        std::size_t const l_column = (l_index < 8 ? 10 : 35) + 3 * (l_index & 7);
        l_body[l_column] = k_digits[l_byte >> 4];
        l_body[l_column + 1] = k_digits[l_byte & 15];
        l_body[61 + l_index] = (l_byte >= 32 && l_byte <= 126) ? static_cast<char>(l_byte) : '.';
    }
    l_body[60] = '|';
    l_body[77] = '|';
    l_body[78] = '\n';
    return 79 + (l_digits - 8);
}

bool number_option(command_input const &a_input, int a_id, char const *a_what, uint64 &a_number)
{
    std::string const *const l_text = a_input.last(a_id);
    if (l_text != nullptr && !unsigned_with_text(*l_text, a_number)) {
        bad_value(std::string("not ") + a_what + " `" + *l_text + "'");
        return false;
    }
    return true;
}

} // namespace

int run_hexdump(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("hexdump takes one file");
    }
    uint64 l_offset = 0;
    uint64 l_length = ~uint64(0);
    if (!number_option(a_input, k_opt_skip, "an offset", l_offset) ||
        !number_option(a_input, k_opt_length, "a length", l_length)) {
        return k_exit_usage;
    }
    input l_input;
    if (!l_input.open(a_input.m_words.front()) || !l_input.skip(l_offset)) {
        return k_exit_failed;
    }
    // Whole lines a chunk, so that every line but the last holds 16 bytes; out as soon as read.
    constexpr std::size_t k_chunk = 4096;
    unsigned char l_bytes[k_chunk];
    std::vector<char> l_text((k_chunk / 16 + 1) * 90);
    uint64 l_position = l_offset;
    uint64 l_left = l_length;
    for (;;) {
        std::size_t const l_want = l_left < k_chunk ? static_cast<std::size_t>(l_left) : k_chunk;
        std::size_t l_count = 0;
        // Standard input may hand over less than asked: fill the chunk so that lines stay whole.
        while (l_count < l_want) {
            std::size_t const l_read = l_input.read(l_bytes + l_count, l_want - l_count);
            if (l_read == 0) {
                break;
            }
            l_count += l_read;
        }
        if (l_input.failed()) {
            return k_exit_failed;
        }
        std::size_t l_size = 0;
        for (std::size_t l_start = 0; l_start < l_count; l_start += 16) {
            std::size_t const l_line = l_count - l_start < 16 ? l_count - l_start : 16;
            l_size += format_line(l_text.data() + l_size, l_position + l_start, l_bytes + l_start, l_line);
        }
        l_position += l_count;
        l_left -= l_count;
        bool const l_end = l_count < l_want || l_left == 0;
        if (l_end && l_position > l_offset) {
            l_size += format_line(l_text.data() + l_size, l_position, nullptr, 0);
        }
        if (!write_out(l_text.data(), l_size) || !flush_out()) {
            return k_exit_failed;
        }
        if (l_end) {
            return k_exit_ok;
        }
    }
}

} // namespace ordwel_toolbox
