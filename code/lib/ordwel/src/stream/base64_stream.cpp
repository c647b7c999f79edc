// SPDX-License-Identifier: MIT
#include <ordwel/base64.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <ordwel/es.h>

#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

// The characters that one write to the target, or one read from the source, moves at most.
constexpr std::size_t k_text_block = 4096;

} // namespace

stream::base64_wr::base64_wr(wr &a_target, base64_format a_format)
    : m_target(&a_target), m_format(a_format), m_text(k_text_block), m_held{0, 0}, m_held_size(0), m_position(0),
      m_finished(false)
{
}

stream::base64_wr::~base64_wr() = default;

// The held bytes and the first bytes of a_source make the first group; then the whole groups go out
// in blocks of text, the first block behind that group.
void stream::base64_wr::write(void const *a_source, uint64 a_size)
{
    if (m_finished) {
        es::unsupp::raise(ORDWEL_HERE, "Base64 text already finished");
    }
    if (a_size == 0) {
        return;
    }
    auto const *l_in = static_cast<unsigned char const *>(a_source);
    uint64 l_left = a_size;
    internal::base64_encode_kernel const l_encode = internal::base64_kernels_of(m_format.m_alphabet).m_encode.get();
    std::size_t l_text = 0;
    if (m_held_size != 0 && m_held_size + l_left >= 3) {
        unsigned char l_group[3];
        std::size_t const l_fill = 3 - m_held_size;
        std::memcpy(l_group, m_held, m_held_size);
        std::memcpy(l_group + m_held_size, l_in, l_fill);
        l_text = l_encode(m_text.data(), l_group, 3);
        l_in += l_fill;
        l_left -= l_fill;
        m_held_size = 0;
    }
    while (l_left >= 3) {
        std::size_t const l_bytes =
            static_cast<std::size_t>(std::min<uint64>(l_left / 3 * 3, (k_text_block - l_text) / 4 * 3));
        l_text += l_encode(m_text.data() + l_text, l_in, l_bytes);
        m_target->write(m_text.data(), l_text);
        l_text = 0;
        l_in += l_bytes;
        l_left -= l_bytes;
    }
    if (l_text != 0) {
        m_target->write(m_text.data(), l_text);
    }
    std::memcpy(m_held + m_held_size, l_in, static_cast<std::size_t>(l_left));
    m_held_size += static_cast<unsigned>(l_left);
    m_position += a_size;
}

void stream::base64_wr::flush()
{
    m_target->flush();
}

uint64 stream::base64_wr::tell()
{
    return m_position;
}

void stream::base64_wr::finish()
{
    if (m_finished) {
        return;
    }
    if (m_held_size != 0) {
        char l_group[4];
        (void)internal::base64_kernels_of(m_format.m_alphabet).m_encode.get()(l_group, m_held, m_held_size);
        m_target->write(l_group, m_format.m_padding == base64_padding::required ? 4 : m_held_size + 1);
        m_held_size = 0;
    }
    m_finished = true;
    m_target->flush();
}

stream::base64_rd::base64_rd(rd &a_source, base64_format a_format, base64_check a_check)
    : m_source(&a_source), m_format(a_format), m_check(a_check), m_text(k_text_block),
      m_bytes(k_text_block / 4 * 3 + 3), m_text_size(0), m_text_offset(0), m_bytes_pos(0), m_bytes_size(0),
      m_position(0), m_error_offset(0), m_source_ended(false), m_finished(false), m_failed(false)
{
}

stream::base64_rd::~base64_rd() = default;

// Hands out the bytes of the window before it decodes the next one, so that a failure comes only
// after every byte decoded before it, from a read that gives nothing.
uint64 stream::base64_rd::read(void *a_destination, uint64 a_size)
{
    auto *const l_out = static_cast<unsigned char *>(a_destination);
    uint64 l_total = 0;
    while (l_total < a_size) {
        if (m_bytes_pos != m_bytes_size) {
            uint64 const l_count = std::min(a_size - l_total, m_bytes_size - m_bytes_pos);
            std::memcpy(l_out + l_total, m_bytes.data() + m_bytes_pos, static_cast<std::size_t>(l_count));
            m_bytes_pos += l_count;
            l_total += l_count;
        } else if (m_failed) {
            if (l_total != 0) {
                break;
            }
            if (m_check == base64_check::lenient) {
                es::arg::raise(ORDWEL_HERE, nullptr);
            }
            internal::base64_raise_invalid(m_error_offset);
        } else if (m_finished) {
            break;
        } else {
            refill();
        }
    }
    m_position += l_total;
    return l_total;
}

uint64 stream::base64_rd::tell()
{
    return m_position;
}

// Reads into the room behind the characters kept from before, decodes what can be decided, and
// keeps the rest (at most a group) at the front of the window.
void stream::base64_rd::refill()
{
    if (!m_source_ended) {
        uint64 const l_read = m_source->read(m_text.data() + m_text_size, m_text.size() - m_text_size);
        m_source_ended = l_read == 0;
        m_text_size += l_read;
    }
    auto const l_size = static_cast<std::size_t>(m_text_size);
    std::size_t l_taken = 0;
    std::size_t l_written = 0;
    if (m_check == base64_check::strict) {
        internal::base64_strict_step const l_step =
            internal::base64_decode_strict_window(m_bytes.data(), m_text.data(), l_size, m_source_ended, m_format);
        l_written = l_step.m_written;
        if (l_step.m_state == internal::base64_strict_step::bad) {
            m_failed = true;
            m_error_offset = m_text_offset + l_step.m_taken;
        } else {
            l_taken = l_step.m_taken;
            m_finished = l_step.m_state == internal::base64_strict_step::done;
        }
    } else {
        internal::base64_decode_kernel const l_decode = internal::base64_kernels_of(m_format.m_alphabet).m_decode.get();
        l_taken = l_size / 4 * 4;
        l_written = l_decode(m_bytes.data(), m_text.data(), l_taken);
        std::size_t const l_tail = l_size - l_taken;
        if (m_source_ended && l_tail != 0) {
            if (m_format.m_padding == base64_padding::required || l_tail == 1) {
                m_failed = true;
            } else {
                unsigned char l_group[4] = {'=', '=', '=', '='};
                std::memcpy(l_group, m_text.data() + l_taken, l_tail);
                l_written += l_decode(m_bytes.data() + l_written, l_group, 4);
                l_taken = l_size;
            }
        }
        m_finished = m_source_ended && !m_failed;
    }
    m_bytes_pos = 0;
    m_bytes_size = l_written;
    std::memmove(m_text.data(), m_text.data() + l_taken, l_size - l_taken);
    m_text_size -= l_taken;
    m_text_offset += l_taken;
}

} // namespace ordwel
