// SPDX-License-Identifier: MIT
#include <ordwel/ds.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <ordwel/es.h>

#include "core/byte_tables.h"
#include <ordwel/file.h>

namespace ordwel {

namespace ds {

void abort(char const *a_file, uint32 a_line, char const *a_format, ...)
{
    va_list l_args;
    va_start(l_args, a_format);
    abort_va(a_file, a_line, a_format, l_args);
}

void abort_va(char const *a_file, uint32 a_line, char const *a_format, va_list a_args)
{
    char l_text[1024];
    l_text[0] = '\0';
    if (a_format != nullptr) {
        std::vsnprintf(l_text, sizeof l_text, a_format, a_args);
    }
    std::printf("Abort [%s:%u] '%s'", a_file != nullptr ? a_file : "n/a", static_cast<unsigned int>(a_line), l_text);
    std::exit(1);
}

} // namespace ds

namespace ds_og {

namespace {

// The process-wide channel mask: channel n is bit n & 31 of word n >> 5.
class channel_mask {
public:
    static constexpr uint64 k_initial_words = 32;

    channel_mask() : m_size(k_initial_words), m_buf(new (std::nothrow) uint32[k_initial_words]())
    {
        abort_if(m_buf == nullptr, "0 == m_buf", ORDWEL_HERE);
        m_buf[0] = 31;
    }
    ~channel_mask() { delete[] m_buf; }
    channel_mask(channel_mask const &) = delete;
    channel_mask &operator=(channel_mask const &) = delete;

    bool bit(uint64 a_channel) const
    {
        uint64 const l_word = a_channel >> 5;
        return l_word < m_size && ((m_buf[l_word] >> (a_channel & 31)) & 1U) != 0;
    }

    void set(uint64 a_channel)
    {
        uint64 const l_word = a_channel >> 5;
        if (l_word >= m_size) {
            grow(l_word);
        }
        m_buf[l_word] |= 1U << (a_channel & 31);
    }

    void clear(uint64 a_channel)
    {
        uint64 const l_word = a_channel >> 5;
        if (l_word < m_size) {
            m_buf[l_word] &= ~(1U << (a_channel & 31));
        }
    }

    uint64 channels() const { return m_size * 32; }

private:
    // A size that does not fit in memory takes the same abort path as a failed allocation, so no
    // size computation wraps and nothing here throws.
    void grow(uint64 a_word)
    {
        uint64 const l_size = (a_word + 1 + 31) / 32 * 32;
        uint32 *const l_buf = l_size <= SIZE_MAX / sizeof(uint32) ? new (std::nothrow)
                                                                        uint32[static_cast<std::size_t>(l_size)]()
                                                                  : nullptr;
        abort_if(l_buf == nullptr, "0 == m_buf", ORDWEL_HERE);
        std::memcpy(l_buf, m_buf, static_cast<std::size_t>(m_size) * sizeof(uint32));
        delete[] m_buf;
        m_buf = l_buf;
        m_size = l_size;
    }

    uint64 m_size;
    uint32 *m_buf;
};

channel_mask &the_mask()
{
    static channel_mask l_mask;
    return l_mask;
}

// Made at load, so that the first channel test pays nothing.
[[maybe_unused]] channel_mask &s_mask_at_load = the_mask();

using internal::k_hex_digits_lower;

void put_hex_byte(char *a_target, unsigned char a_byte)
{
    a_target[0] = k_hex_digits_lower[a_byte >> 4];
    a_target[1] = k_hex_digits_lower[a_byte & 15];
}

} // namespace

void abort(char const *a_expression, char const *a_file, uint32 a_line)
{
    print(0, "abort: '%s' [ %s:%u ]\n", a_expression != nullptr ? a_expression : "", a_file != nullptr ? a_file : "n/a",
          static_cast<unsigned int>(a_line));
    std::exit(1);
}

void abort_if(bool a_condition, char const *a_expression, char const *a_file, uint32 a_line)
{
    if (a_condition) {
        abort(a_expression, a_file, a_line);
    }
}

void print(uint64 a_channel, char const *a_format, ...)
{
    if (!the_mask().bit(a_channel) || a_format == nullptr) {
        return;
    }
    va_list l_args;
    va_start(l_args, a_format);
    std::vfprintf(stderr, a_format, l_args);
    va_end(l_args);
}

void print_buf(uint64 a_channel, void const *a_bytes, uint64 a_size)
{
    if (a_bytes == nullptr || a_size == 0 || !the_mask().bit(a_channel)) {
        return;
    }
    auto const *const l_bytes = static_cast<unsigned char const *>(a_bytes);
    constexpr std::size_t k_line_size = 79;
    char l_line[k_line_size];
    // Lines step by 16 bytes; the last one holds no data and shows the total size as its offset.
    for (uint64 l_offset = 0;; l_offset += 16) {
        uint64 const l_position = l_offset < a_size ? l_offset : a_size;
        uint64 const l_count = a_size - l_position < 16 ? a_size - l_position : 16;
        std::memset(l_line, ' ', k_line_size);
        auto const l_low = static_cast<uint32>(l_position);
        for (int l_digit = 0; l_digit < 8; ++l_digit) {
            l_line[l_digit] = k_hex_digits_lower[(l_low >> (28 - 4 * l_digit)) & 15U];
        }
        for (uint64 l_index = 0; l_index < l_count; ++l_index) {
            unsigned char const l_byte = l_bytes[l_position + l_index];
            std::size_t const l_column = (l_index < 8 ? 10 : 35) + 3 * static_cast<std::size_t>(l_index & 7);
            put_hex_byte(l_line + l_column, l_byte);
            l_line[61 + l_index] = (l_byte >= 32 && l_byte <= 126) ? static_cast<char>(l_byte) : '.';
        }
        l_line[60] = '|';
        l_line[77] = '|';
        l_line[78] = '\n';
        std::fwrite(l_line, 1, k_line_size, stderr);
        if (l_count == 0) {
            break;
        }
    }
}

void flush(uint64 a_channel)
{
    if (the_mask().bit(a_channel)) {
        std::fflush(stderr);
    }
}

void dump_buf(uint64 a_channel, char const *a_path, void const *a_bytes, uint64 a_size)
{
    if (a_path == nullptr || a_bytes == nullptr || a_size == 0 || !the_mask().bit(a_channel)) {
        return;
    }
    file l_file;
    try {
        l_file.open(a_path, file_write | file_create | file_truncate, 420);
    } catch (es::base const &) {
    }
    if (!l_file.is_open()) {
        std::fputs("error: debug dump failed: couldn't open file\n", stderr);
        return;
    }
    char const *l_failure = nullptr;
    try {
        // A short write is as much a failure as a failed one.
        if (l_file.write(a_bytes, a_size) != a_size) {
            l_failure = "error: debug dump failed: failed to write file\n";
        }
    } catch (es::base const &) {
        l_failure = "error: debug dump failed: failed to write file\n";
    }
    l_file.close();
    if (l_failure != nullptr) {
        std::fputs(l_failure, stderr);
    }
}

bool mask_bit(uint64 a_channel)
{
    return the_mask().bit(a_channel);
}

void mask_set_bit(uint64 a_channel)
{
    the_mask().set(a_channel);
}

void mask_clear_bit(uint64 a_channel)
{
    the_mask().clear(a_channel);
}

void mask_set_bits(uint64 const *a_channels, uint64 a_count)
{
    for (uint64 l_index = 0; a_channels != nullptr && l_index < a_count; ++l_index) {
        mask_set_bit(a_channels[l_index]);
    }
}

void mask_clear_bits(uint64 const *a_channels, uint64 a_count)
{
    for (uint64 l_index = 0; a_channels != nullptr && l_index < a_count; ++l_index) {
        mask_clear_bit(a_channels[l_index]);
    }
}

// The loops stop after a_last itself, so even the largest channel number ends them.
void mask_set_range(uint64 a_first, uint64 a_last)
{
    for (uint64 l_channel = a_first; l_channel <= a_last; ++l_channel) {
        mask_set_bit(l_channel);
        if (l_channel == a_last) {
            break;
        }
    }
}

void mask_clear_range(uint64 a_first, uint64 a_last)
{
    channel_mask &l_mask = the_mask();
    // Channels beyond the mask are off already: stop there instead of stepping through them.
    uint64 const l_end = a_last < l_mask.channels() ? a_last : l_mask.channels() - 1;
    for (uint64 l_channel = a_first; l_channel <= l_end; ++l_channel) {
        l_mask.clear(l_channel);
        if (l_channel == l_end) {
            break;
        }
    }
}

void mask_print(uint64 a_channel)
{
    channel_mask const &l_mask = the_mask();
    if (!l_mask.bit(a_channel)) {
        return;
    }
    std::fputs("{ ", stderr);
    uint64 const l_channels = l_mask.channels();
    uint64 l_channel = 0;
    while (l_channel < l_channels) {
        if (!l_mask.bit(l_channel)) {
            ++l_channel;
            continue;
        }
        uint64 l_last = l_channel;
        while (l_last + 1 < l_channels && l_mask.bit(l_last + 1)) {
            ++l_last;
        }
        auto const l_first_out = static_cast<unsigned long long>(l_channel);
        auto const l_last_out = static_cast<unsigned long long>(l_last);
        if (l_last == l_channel) {
            std::fprintf(stderr, "%llu, ", l_first_out);
        } else if (l_last == l_channel + 1) {
            std::fprintf(stderr, "%llu, %llu, ", l_first_out, l_last_out);
        } else {
            std::fprintf(stderr, "[%llu..%llu], ", l_first_out, l_last_out);
        }
        l_channel = l_last + 1;
    }
    std::fputs("}\n", stderr);
}

} // namespace ds_og

char const *cstr_with_severity(severity a_severity)
{
    static char const *const k_names[8] = {"fatal", "alert", "critical", "error", "warning", "notice", "info", "debug"};
    auto const l_index = static_cast<unsigned int>(a_severity);
    return l_index < 8 ? k_names[l_index] : "UNKNOWN";
}

} // namespace ordwel
