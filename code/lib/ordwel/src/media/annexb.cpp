// SPDX-License-Identifier: MIT
#include <ordwel/annexb.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/byte_scan.h"
#include "stream/stream_memory.h"

namespace ordwel {
namespace annexb {

namespace {

// The first 00 00 01 in a_data[0, a_size) by the vector scan of the processor; a_size when there
// is none.
uint64 find_code(unsigned char const *a_data, uint64 a_size)
{
    return a_size < 3 ? a_size : internal::k_triple_find.get()(a_data, static_cast<std::size_t>(a_size), 0, 0, 1);
}

// The length of a_data[0, a_size) without its zero bytes at the end.
uint64 without_zeros(unsigned char const *a_data, uint64 a_size)
{
    while (a_size > 0 && a_data[a_size - 1] == 0) {
        --a_size;
    }
    return a_size;
}

// Zeros that the stream reader hands out for a run of zero bytes that it only counted.
unsigned char const k_zeros[256] = {};

constexpr char const *k_h264_names[32] = {
    "unspecified",  "non-IDR slice",
    "slice part A", "slice part B",
    "slice part C", "IDR slice",
    "SEI",          "SPS",
    "PPS",          "AUD",
    "end of seq",   "end of stream",
    "filler",       "SPS extension",
    "prefix",       "subset SPS",
    "DPS",          "reserved",
    "reserved",     "auxiliary slice",
    "slice ext",    "depth slice ext",
    "reserved",     "reserved",
    "unspecified",  "unspecified",
    "unspecified",  "unspecified",
    "unspecified",  "unspecified",
    "unspecified",  "unspecified",
};

constexpr char const *k_hevc_names[64] = {
    "TRAIL_N",     "TRAIL_R",     "TSA_N",       "TSA_R",       "STSA_N",      "STSA_R",      "RADL_N",
    "RADL_R",      "RASL_N",      "RASL_R",      "reserved",    "reserved",    "reserved",    "reserved",
    "reserved",    "reserved",    "BLA_W_LP",    "BLA_W_RADL",  "BLA_N_LP",    "IDR_W_RADL",  "IDR_N_LP",
    "CRA",         "reserved",    "reserved",    "reserved",    "reserved",    "reserved",    "reserved",
    "reserved",    "reserved",    "reserved",    "reserved",    "VPS",         "SPS",         "PPS",
    "AUD",         "EOS",         "EOB",         "FD",          "prefix SEI",  "suffix SEI",  "reserved",
    "reserved",    "reserved",    "reserved",    "reserved",    "reserved",    "reserved",    "unspecified",
    "unspecified", "unspecified", "unspecified", "unspecified", "unspecified", "unspecified", "unspecified",
    "unspecified", "unspecified", "unspecified", "unspecified", "unspecified", "unspecified", "unspecified",
    "unspecified",
};

} // namespace

units::units(void const *a_data, uint64 a_size)
    : m_data(static_cast<unsigned char const *>(a_data)), m_size(a_size), m_code(find_code(m_data, a_size)),
      m_leading(m_code == a_size ? a_size : m_code - (m_code > 0 && m_data[m_code - 1] == 0 ? 1 : 0))
{
}

bool units::next(unit &a_unit)
{
    if (m_code == m_size) {
        return false;
    }
    a_unit.m_start = m_code - (m_code > 0 && m_data[m_code - 1] == 0 ? 1 : 0);
    a_unit.m_offset = m_code + 3;
    a_unit.m_data = m_data + a_unit.m_offset;
    uint64 const l_rest = m_size - a_unit.m_offset;
    uint64 const l_next = find_code(a_unit.m_data, l_rest);
    a_unit.m_size = without_zeros(a_unit.m_data, l_next);
    a_unit.m_header[0] = a_unit.m_size > 0 ? a_unit.m_data[0] : 0;
    a_unit.m_header[1] = a_unit.m_size > 1 ? a_unit.m_data[1] : 0;
    m_code = l_next == l_rest ? m_size : a_unit.m_offset + l_next;
    return true;
}

unit_reader::unit_reader(stream::rd &a_stream, uint64 a_block)
    : m_stream(&a_stream), m_capacity(std::max<uint64>(a_block, 16)),
      m_block(new unsigned char[static_cast<std::size_t>(m_capacity)]), m_window(m_block.get())
{
}

unit_reader::~unit_reader() = default;

void unit_reader::fill()
{
    if (m_ended || m_end - m_begin >= 3) {
        return;
    }
    // Over the library's memory streams the rest of the memory is the window, scanned where it
    // lies: the stream moves to its end at once.
    stream::memory_span l_memory{};
    if (m_begin == m_end && stream::memory_access::span_of(*m_stream, l_memory) &&
        l_memory.m_position <= l_memory.m_size) {
        m_window = l_memory.m_data + l_memory.m_position;
        m_begin = 0;
        m_end = l_memory.m_size - l_memory.m_position;
        stream::memory_access::set_position(*m_stream, l_memory.m_size);
        m_ended = true;
        return;
    }
    unsigned char *const l_block = m_block.get();
    std::memmove(l_block, m_window + m_begin, static_cast<std::size_t>(m_end - m_begin));
    m_window = l_block;
    m_end -= m_begin;
    m_begin = 0;
    // A source may hand out less than asked while more is coming: it is asked again until a start
    // code fits.
    while (m_end < 3) {
        uint64 const l_room = m_capacity - m_end;
        uint64 const l_count = std::min(m_stream->read(l_block + m_end, l_room), l_room);
        if (l_count == 0) {
            m_ended = true;
            return;
        }
        m_end += l_count;
    }
}

void unit_reader::take(unsigned char const *a_bytes, uint64 a_count)
{
    for (uint64 l_index = 0; l_index < a_count && m_unit.m_size + l_index < 2; ++l_index) {
        m_unit.m_header[m_unit.m_size + l_index] = a_bytes[l_index];
    }
    m_unit.m_size += a_count;
}

unit_reader::event unit_reader::step(unsigned char const *&a_bytes, uint64 &a_count)
{
    for (;;) {
        if (m_state == state::done) {
            return event::done;
        }
        fill();
        unsigned char const *const l_window = m_window + m_begin;
        uint64 const l_size = m_end - m_begin;
        if (m_state == state::begin) {
            m_unit = m_next;
            m_peek[0] = l_size > 0 ? l_window[0] : 0;
            m_peek[1] = l_size > 1 ? l_window[1] : 0;
            m_state = state::unit;
            return event::begin;
        }
        // The next 00 00 01, at l_code of the window; -1 or -2 when it begins among the zeros
        // counted before the window.
        long long l_code = 0;
        if (m_zeros >= 2 && l_size >= 1 && l_window[0] == 1) {
            l_code = -2;
        } else if (m_zeros >= 1 && l_size >= 2 && l_window[0] == 0 && l_window[1] == 1) {
            l_code = -1;
        } else {
            l_code = static_cast<long long>(find_code(l_window, l_size));
        }
        bool const l_found = l_code < static_cast<long long>(l_size);
        // What stands before the start code (or the end of what is read) up to its last non-zero
        // byte goes to the payload; the zeros behind it wait for what follows them.
        uint64 const l_data = without_zeros(l_window, l_found ? static_cast<uint64>(std::max(l_code, 0LL)) : l_size);
        if (l_data > 0) {
            if (m_state == state::unit && m_zeros > 0) {
                a_bytes = k_zeros;
                a_count = std::min<uint64>({m_zeros, sizeof k_zeros, m_capacity});
                m_zeros -= a_count;
                take(a_bytes, a_count);
                return event::data;
            }
            m_zeros = 0;
            m_begin += l_data;
            m_position += l_data;
            if (m_state == state::unit) {
                a_bytes = l_window;
                a_count = l_data;
                take(a_bytes, a_count);
                return event::data;
            }
            continue;
        }
        if (!l_found && !m_ended) {
            // Zeros only: counted, and the window is read anew.
            m_zeros += l_size;
            m_begin = m_end;
            m_position += l_size;
            continue;
        }
        bool const l_in_unit = m_state == state::unit;
        if (l_found) {
            // The 00 00 01 at l_position; a zero byte before it makes the start code 4 bytes long.
            uint64 const l_position = m_position + static_cast<uint64>(l_code + 2) - 2;
            bool const l_zero_before = l_code > 0 ? l_window[l_code - 1] == 0 : m_zeros > static_cast<uint64>(-l_code);
            m_next = unit();
            m_next.m_start = l_position - (l_zero_before ? 1 : 0);
            m_next.m_offset = l_position + 3;
            uint64 const l_passed = static_cast<uint64>(l_code + 3);
            m_begin += l_passed;
            m_position += l_passed;
            m_zeros = 0;
            if (m_state == state::leading) {
                m_leading = m_next.m_start;
            }
            m_state = state::begin;
        } else {
            if (m_state == state::leading) {
                m_leading = m_position + l_size;
            }
            m_position += l_size;
            m_begin = m_end;
            m_state = state::done;
        }
        if (l_in_unit) {
            return event::end;
        }
    }
}

uint64 unit_reader::for_each(unit_handler &a_handler)
{
    uint64 l_count = 0;
    unsigned char const *l_bytes = nullptr;
    uint64 l_size = 0;
    for (;;) {
        switch (step(l_bytes, l_size)) {
        case event::begin: {
            unit l_unit = m_unit;
            std::memcpy(l_unit.m_header, m_peek, sizeof m_peek);
            a_handler.begin(l_unit);
            break;
        }
        case event::data:
            a_handler.data(l_bytes, l_size);
            break;
        case event::end:
            ++l_count;
            a_handler.end(m_unit);
            break;
        case event::done:
            return l_count;
        }
    }
}

bool unit_reader::next(unit &a_unit, buffer &a_payload)
{
    a_payload.resize(0);
    unsigned char const *l_bytes = nullptr;
    uint64 l_size = 0;
    for (;;) {
        switch (step(l_bytes, l_size)) {
        case event::begin:
            break;
        case event::data:
            a_payload.append(l_bytes, l_size);
            break;
        case event::end:
            a_unit = m_unit;
            a_unit.m_data = a_payload.begin();
            return true;
        case event::done:
            return false;
        }
    }
}

char const *h264_type_name(unsigned int a_type)
{
    return k_h264_names[a_type % 32];
}

char const *hevc_type_name(unsigned int a_type)
{
    return k_hevc_names[a_type % 64];
}

} // namespace annexb
} // namespace ordwel
