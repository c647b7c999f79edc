// SPDX-License-Identifier: MIT
// Byte cursors driven by arbitrary input: the first bytes choose the block size, how many bytes
// the source gives per read and a script of operations; the rest is the data. The reader must
// hand out exactly the data's bytes and tell the right position, or raise es::uflow at the end;
// the writer must deliver exactly what it was given. Any other outcome traps.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include <ordwel/bytestream.h>
#include <ordwel/es.h>
#include <ordwel/stream.h>

#include "fuzz_check.h"

namespace {

using namespace ordwel;

// A source over the data that gives at most a_piece bytes per read (0: all it can).
class piecewise_rd : public stream::rd {
public:
    piecewise_rd(unsigned char const *a_data, uint64 a_size, uint64 a_piece)
        : m_data(a_data), m_size(a_size), m_piece(a_piece)
    {
    }
    uint64 read(void *a_destination, uint64 a_size) override
    {
        uint64 l_count = a_size < m_size - m_pos ? a_size : m_size - m_pos;
        if (m_piece != 0 && l_count > m_piece) {
            l_count = m_piece;
        }
        if (l_count != 0) {
            std::memcpy(a_destination, m_data + m_pos, l_count);
        }
        m_pos += l_count;
        return l_count;
    }
    uint64 tell() override { return m_pos; }

private:
    unsigned char const *m_data;
    uint64 m_size;
    uint64 m_piece;
    uint64 m_pos = 0;
};

uint64 be_at(unsigned char const *a_data, unsigned a_size)
{
    uint64 l_value = 0;
    for (unsigned l_index = 0; l_index < a_size; ++l_index) {
        l_value = (l_value << 8) | a_data[l_index];
    }
    return l_value;
}

uint64 le_at(unsigned char const *a_data, unsigned a_size)
{
    uint64 l_value = 0;
    for (unsigned l_index = a_size; l_index-- > 0;) {
        l_value = (l_value << 8) | a_data[l_index];
    }
    return l_value;
}

// One typed read of a_size bytes in either order, checked against the data at a_pos.
void typed_read(bytestream::rd const &a_cursor, unsigned char const *a_data, uint64 a_size, uint64 &a_pos,
                unsigned a_item, bool a_big, bool a_peek)
{
    uint64 l_value = 0;
    try {
        switch (a_item) {
        case 1:
            l_value = a_peek ? a_cursor.peek_u8() : a_cursor.read_u8();
            break;
        case 2:
            l_value = a_big ? (a_peek ? a_cursor.peek_be<uint16>() : a_cursor.read_be<uint16>())
                            : (a_peek ? a_cursor.peek_le<uint16>() : a_cursor.read_le<uint16>());
            break;
        case 4:
            l_value = a_big ? (a_peek ? a_cursor.peek_be<uint32>() : a_cursor.read_be<uint32>())
                            : (a_peek ? a_cursor.peek_le<uint32>() : a_cursor.read_le<uint32>());
            break;
        default:
            l_value = a_big ? (a_peek ? a_cursor.peek_be<uint64>() : a_cursor.read_be<uint64>())
                            : (a_peek ? a_cursor.peek_le<uint64>() : a_cursor.read_le<uint64>());
            break;
        }
    } catch (es::uflow const &) {
        // Only at the end, and the bytes that were there stay.
        check(a_pos + a_item > a_size);
        return;
    }
    check(a_pos + a_item <= a_size);
    check(l_value == (a_big ? be_at(a_data + a_pos, a_item) : le_at(a_data + a_pos, a_item)));
    if (!a_peek) {
        a_pos += a_item;
    }
}

void run_reader(uint8_t const *a_script, std::size_t a_script_size, unsigned char const *a_data, uint64 a_size,
                uint64 a_block, uint64 a_piece)
{
    piecewise_rd l_source(a_data, a_size, a_piece);
    bytestream::rd l_cursor(l_source, a_block);
    uint64 l_pos = 0;
    std::string l_bytes;
    for (std::size_t l_index = 0; l_index < a_script_size; ++l_index) {
        uint8_t const l_op = a_script[l_index];
        uint64 const l_arg = l_op >> 3;
        switch (l_op & 7) {
        case 0:
        case 1:
            typed_read(l_cursor, a_data, a_size, l_pos, 1u << (l_arg & 3), (l_arg & 4) != 0, (l_op & 7) == 1);
            break;
        case 2:
            try {
                l_cursor.skip(l_arg * 3);
                check(l_pos + l_arg * 3 <= a_size);
                l_pos += l_arg * 3;
            } catch (es::uflow const &) {
                check(l_pos + l_arg * 3 > a_size);
                l_pos = a_size;
            }
            break;
        case 3:
            l_bytes.assign(l_arg * 5, '\0');
            try {
                check(l_cursor.read(reinterpret_cast<unsigned char *>(&l_bytes[0]), l_bytes.size()) == l_bytes.size());
                check(l_pos + l_bytes.size() <= a_size);
                check(l_bytes.empty() || std::memcmp(l_bytes.data(), a_data + l_pos, l_bytes.size()) == 0);
                l_pos += l_bytes.size();
            } catch (es::uflow const &) {
                check(l_pos + l_bytes.size() > a_size);
                l_pos = a_size;
            }
            break;
        case 4:
            try {
                if (l_cursor.has_bytes(l_arg)) {
                    check(l_pos + l_arg <= a_size);
                }
            } catch (es::uflow const &) {
                // Raised only when the source has ended with fewer bytes than asked.
                check(l_pos + l_arg > a_size);
            }
            break;
        case 5: {
            // Alignment is reckoned on the block; the model follows the cursor, within bounds.
            uint64 const l_align = uint64(1) << (l_arg & 7);
            check(l_cursor.boundary(l_align) < l_align);
            l_cursor.align(l_align);
            uint64 const l_told = l_cursor.tell();
            check(l_told >= l_pos && l_told - l_pos < l_align);
            l_pos = l_told;
            break;
        }
        default:
            break;
        }
        check(l_cursor.tell() == l_pos);
    }
}

void run_writer(uint8_t const *a_script, std::size_t a_script_size, unsigned char const *a_data, uint64 a_size,
                uint64 a_block)
{
    buffer l_sink_bytes;
    stream::buf l_sink(l_sink_bytes);
    std::string l_expected;
    uint64 l_taken = 0;
    {
        bytestream::wr l_cursor(l_sink, a_block);
        for (std::size_t l_index = 0; l_index < a_script_size; ++l_index) {
            uint8_t const l_op = a_script[l_index];
            uint64 const l_arg = l_op >> 3;
            uint64 l_count = 0;
            switch (l_op & 3) {
            case 0:
                l_count = uint64(1) << (l_arg & 3);
                if (l_taken + l_count > a_size) {
                    break;
                }
                if (l_count == 1) {
                    l_cursor.write_u8(a_data[l_taken]);
                } else if (l_count == 2) {
                    l_cursor.write_be<uint16>(static_cast<uint16>(be_at(a_data + l_taken, 2)));
                } else if (l_count == 4) {
                    l_cursor.write_le<uint32>(static_cast<uint32>(le_at(a_data + l_taken, 4)));
                } else {
                    l_cursor.write_be<uint64>(be_at(a_data + l_taken, 8));
                }
                l_expected.append(reinterpret_cast<char const *>(a_data + l_taken), l_count);
                l_taken += l_count;
                break;
            case 1:
                l_count = l_arg * 3 < a_size - l_taken ? l_arg * 3 : a_size - l_taken;
                l_cursor.write(a_data + l_taken, l_count);
                l_expected.append(reinterpret_cast<char const *>(a_data + l_taken), l_count);
                l_taken += l_count;
                break;
            case 2:
                l_cursor.skip(l_arg);
                l_expected.append(l_arg, '\0');
                break;
            default: {
                uint64 const l_before = l_cursor.tell();
                l_cursor.align(uint64(1) << (l_arg & 3));
                l_expected.append(l_cursor.tell() - l_before, '\0');
                break;
            }
            }
            check(l_cursor.tell() == l_expected.size());
        }
    }
    check(l_sink_bytes.size() == l_expected.size());
    check(l_expected.empty() || std::memcmp(l_sink_bytes.begin(), l_expected.data(), l_expected.size()) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *a_data, std::size_t a_size)
{
    if (a_size < 3) {
        return 0;
    }
    uint64 const l_block = a_data[0] % 80;
    uint64 const l_piece = a_data[1] % 20;
    std::size_t const l_script_size = a_data[2] < a_size - 3 ? a_data[2] : a_size - 3;
    uint8_t const *const l_script = a_data + 3;
    unsigned char const *const l_payload = a_data + 3 + l_script_size;
    uint64 const l_payload_size = a_size - 3 - l_script_size;
    run_reader(l_script, l_script_size, l_payload, l_payload_size, l_block, l_piece);
    run_writer(l_script, l_script_size, l_payload, l_payload_size, l_block);
    return 0;
}
