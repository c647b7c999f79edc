// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TEST_ANNEXB_STREAMS_H
#define ORDWEL_TEST_ANNEXB_STREAMS_H

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <ordwel/annexb.h>

namespace ordwel_test {

// A made-up H.264 or HEVC byte stream and the units it was made of.
struct annexb_stream {
    std::string m_bytes;
    std::vector<ordwel::annexb::unit> m_units;
    ordwel::uint64 m_leading = 0;
};

// a_count units of 1 to a_max_size bytes before emulation prevention, half of their bytes zero,
// with emulation prevention bytes where 00 00 meets a byte up to 3 and a final 03 after a zero, as
// an encoder writes them. Start codes of 3 and 4 bytes, up to 2 more zeros before each, nonzero
// bytes of garbage at the start and zeros at the end. Unit types are drawn from a_types.
inline annexb_stream make_annexb_stream(std::mt19937 &a_random, unsigned int a_count, unsigned int a_max_size,
                                        bool a_hevc, std::vector<unsigned int> const &a_types)
{
    annexb_stream l_stream;
    auto const l_draw = [&](unsigned int a_limit) { return static_cast<unsigned int>(a_random() % a_limit); };
    for (unsigned int l_index = l_draw(4); l_index > 0; --l_index) {
        l_stream.m_bytes += static_cast<char>(0x80 | l_draw(128));
    }
    for (unsigned int l_unit = 0; l_unit < a_count; ++l_unit) {
        unsigned int const l_zeros = l_draw(3) + (l_draw(2) == 0 ? 1 : 0);
        l_stream.m_bytes.append(l_zeros, '\0').append("\0\0\1", 3);
        ordwel::annexb::unit l_expected;
        l_expected.m_offset = l_stream.m_bytes.size();
        l_expected.m_start = l_expected.m_offset - (l_zeros > 0 ? 4 : 3);
        unsigned int const l_type = a_types[l_draw(static_cast<unsigned int>(a_types.size()))];
        std::string l_raw(1, static_cast<char>(a_hevc ? l_type << 1 | l_draw(2) : l_draw(4) << 5 | l_type));
        if (a_hevc) {
            l_raw += static_cast<char>(l_draw(32) << 3 | (1 + l_draw(7)));
        }
        for (unsigned int l_size = 1 + l_draw(a_max_size); l_size > 0; --l_size) {
            l_raw += static_cast<char>(l_draw(2) == 0 ? 0 : l_draw(256));
        }
        unsigned int l_run = 0;
        for (char const l_byte : l_raw) {
            if (l_run >= 2 && static_cast<unsigned char>(l_byte) <= 3) {
                l_stream.m_bytes += '\3';
                l_run = 0;
            }
            l_stream.m_bytes += l_byte;
            l_run = l_byte == 0 ? l_run + 1 : 0;
        }
        if (l_stream.m_bytes.back() == 0) {
            l_stream.m_bytes += '\3';
        }
        l_expected.m_size = l_stream.m_bytes.size() - l_expected.m_offset;
        std::memcpy(l_expected.m_header, &l_stream.m_bytes[l_expected.m_offset], 2);
        l_stream.m_units.push_back(l_expected);
    }
    l_stream.m_bytes.append(l_draw(4), '\0');
    l_stream.m_leading = a_count == 0 ? l_stream.m_bytes.size() : l_stream.m_units.front().m_start;
    return l_stream;
}

} // namespace ordwel_test

#endif
