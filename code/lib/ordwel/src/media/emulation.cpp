// SPDX-License-Identifier: MIT
#include <ordwel/emulation.h>

#include <ordwel/internal/byte_order.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "bytes/writable.h"
#include "core/byte_scan.h"

namespace ordwel {

namespace {

// Both directions carry a count of zeros (0 to 2): the zero bytes that end the data so far,
// counted from the last emulation prevention byte. Removal counts them in its input, insertion in
// its output; either way a 03 is an escape where the count is 2.

// The zeros, up to 2, that end a_data[a_from, a_end).
unsigned zeros_at_end(unsigned char const *a_data, uint64 a_from, uint64 a_end)
{
    if (a_end == a_from || a_data[a_end - 1] != 0) {
        return 0;
    }
    return a_end - a_from >= 2 && a_data[a_end - 2] == 0 ? 2 : 1;
}

// Removal over a_source[0, a_size) into a_destination (equal to a_source, or apart from it), with
// a_zeros carried in and out. Gives the bytes written.
uint64 remove_carrying(unsigned char *a_destination, unsigned char const *a_source, uint64 a_size, unsigned &a_zeros)
{
    uint64 l_in = 0;
    uint64 l_out = 0;
    unsigned l_zeros = a_zeros;
    // Zeros carried from before: byte by byte, until a byte other than 0 or an escape leaves no
    // zero pending.
    while (l_zeros != 0 && l_in < a_size) {
        unsigned char const l_byte = a_source[l_in++];
        if (l_zeros == 2 && l_byte == 3) {
            l_zeros = 0;
            break;
        }
        a_destination[l_out++] = l_byte;
        l_zeros = l_byte != 0 ? 0 : std::min(l_zeros + 1, 2U);
    }
    if (l_zeros != 0 || l_in == a_size) {
        a_zeros = l_zeros;
        return l_out;
    }
    // Nothing pending: every escape is a 00 00 03 found by the vector scan, and the runs between
    // escapes move in bulk. In place, a run moves only once an escape has been dropped before it.
    internal::triple_find const l_find = internal::k_triple_find.get();
    uint64 l_fresh = l_out;
    for (;;) {
        auto const l_rest = static_cast<std::size_t>(a_size - l_in);
        std::size_t const l_at = l_find(a_source + l_in, l_rest, 0, 0, 3);
        std::size_t const l_run = l_at == l_rest ? l_rest : l_at + 2;
        if (a_destination + l_out != a_source + l_in) {
            std::memmove(a_destination + l_out, a_source + l_in, l_run);
        }
        l_out += l_run;
        if (l_at == l_rest) {
            break;
        }
        l_in += l_at + 3;
        l_fresh = l_out;
    }
    a_zeros = zeros_at_end(a_destination, l_fresh, l_out);
    return l_out;
}

// Whether one of the 8 bytes of a_word is 0.
bool has_zero_byte(uint64 a_word)
{
    return ((a_word - 0x0101010101010101ULL) & ~a_word & 0x8080808080808080ULL) != 0;
}

// Insertion over a_source[0, a_size) into a_destination, which holds
// emulation_inserted_bound(a_size) bytes, with a_zeros carried in and out; no final 03. Gives
// the bytes written.
uint64 insert_carrying(unsigned char *a_destination, unsigned char const *a_source, uint64 a_size, unsigned &a_zeros)
{
    uint64 l_in = 0;
    uint64 l_out = 0;
    unsigned l_zeros = a_zeros;
    while (l_in < a_size) {
        // Up to the next zero nothing is inserted: where the next 8 bytes hold none, one copy to
        // it. Zero-rich bytes go byte by byte, which costs less there than a search per zero.
        if (l_zeros == 0 && a_size - l_in >= 8 && !has_zero_byte(internal::load_native<uint64>(a_source + l_in))) {
            auto const l_rest = static_cast<std::size_t>(a_size - l_in);
            auto const *const l_hit = static_cast<unsigned char const *>(std::memchr(a_source + l_in, 0, l_rest));
            std::size_t const l_run = l_hit == nullptr ? l_rest : static_cast<std::size_t>(l_hit - (a_source + l_in));
            std::memcpy(a_destination + l_out, a_source + l_in, l_run);
            l_in += l_run;
            l_out += l_run;
            if (l_in == a_size) {
                break;
            }
        }
        unsigned char const l_byte = a_source[l_in++];
        if (l_zeros == 2 && l_byte <= 3) {
            a_destination[l_out++] = 3;
            l_zeros = 0;
        }
        a_destination[l_out++] = l_byte;
        l_zeros = l_byte == 0 ? l_zeros + 1 : 0;
    }
    a_zeros = l_zeros;
    return l_out;
}

} // namespace

uint64 remove_emulation(unsigned char *a_destination, unsigned char const *a_source, uint64 a_size)
{
    unsigned l_zeros = 0;
    return remove_carrying(a_destination, a_source, a_size, l_zeros);
}

uint64 insert_emulation(unsigned char *a_destination, unsigned char const *a_source, uint64 a_size)
{
    unsigned l_zeros = 0;
    uint64 l_count = insert_carrying(a_destination, a_source, a_size, l_zeros);
    if (l_zeros == 2) {
        a_destination[l_count++] = 3;
    }
    return l_count;
}

namespace {

// What a_code (remove_emulation or insert_emulation) makes of the a_size bytes at a_bytes, in a
// buffer or a string that holds a_room bytes to start with.
template <typename t_result>
t_result result_of(uint64 (*a_code)(unsigned char *, unsigned char const *, uint64), unsigned char const *a_bytes,
                   uint64 a_size, uint64 a_room)
{
    t_result l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(static_cast<std::size_t>(a_room));
    l_result.resize(static_cast<std::size_t>(a_code(internal::writable_bytes(l_result), a_bytes, a_size)));
    return l_result;
}

} // namespace

buffer buffer_remove_emulation(unsigned char const *a_bytes, uint64 a_size)
{
    return result_of<buffer>(remove_emulation, a_bytes, a_size, a_size);
}

std::string string_remove_emulation(unsigned char const *a_bytes, uint64 a_size)
{
    return result_of<std::string>(remove_emulation, a_bytes, a_size, a_size);
}

buffer buffer_insert_emulation(unsigned char const *a_bytes, uint64 a_size)
{
    return result_of<buffer>(insert_emulation, a_bytes, a_size, emulation_inserted_bound(a_size));
}

std::string string_insert_emulation(unsigned char const *a_bytes, uint64 a_size)
{
    return result_of<std::string>(insert_emulation, a_bytes, a_size, emulation_inserted_bound(a_size));
}

namespace stream {

ep_remove_rd::ep_remove_rd(rd &a_source) : m_source(&a_source), m_zeros(0), m_position(0)
{
}

ep_remove_rd::~ep_remove_rd() = default;

uint64 ep_remove_rd::read(void *a_destination, uint64 a_size)
{
    if (a_size == 0) {
        return 0;
    }
    auto *const l_bytes = static_cast<unsigned char *>(a_destination);
    for (;;) {
        uint64 const l_read = std::min(m_source->read(l_bytes, a_size), a_size);
        if (l_read == 0) {
            return 0;
        }
        uint64 const l_kept = remove_carrying(l_bytes, l_bytes, l_read, m_zeros);
        if (l_kept != 0) {
            m_position += l_kept;
            return l_kept;
        }
    }
}

uint64 ep_remove_rd::tell()
{
    return m_position;
}

namespace {

// The bytes that the writer inserts in one go, and its stage, which holds their output.
constexpr uint64 k_piece = 8192;
constexpr uint64 k_stage = emulation_inserted_bound(k_piece);

} // namespace

ep_insert_wr::ep_insert_wr(wr &a_sink)
    : m_sink(&a_sink), m_zeros(0), m_position(0), m_stage(new unsigned char[static_cast<std::size_t>(k_stage)])
{
}

ep_insert_wr::~ep_insert_wr() = default;

void ep_insert_wr::write(void const *a_source, uint64 a_size)
{
    auto const *l_bytes = static_cast<unsigned char const *>(a_source);
    uint64 l_left = a_size;
    while (l_left != 0) {
        uint64 const l_piece = std::min(l_left, k_piece);
        uint64 const l_count = insert_carrying(m_stage.get(), l_bytes, l_piece, m_zeros);
        m_sink->write(m_stage.get(), l_count);
        m_position += l_piece;
        l_bytes += l_piece;
        l_left -= l_piece;
    }
}

void ep_insert_wr::flush()
{
    m_sink->flush();
}

uint64 ep_insert_wr::tell()
{
    return m_position;
}

void ep_insert_wr::finish()
{
    if (m_zeros == 2) {
        unsigned char const l_escape = 3;
        m_sink->write(&l_escape, 1);
    }
    m_zeros = 0;
}

} // namespace stream
} // namespace ordwel
