// SPDX-License-Identifier: MIT
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/buffer.h>
#include <ordwel/es.h>
#include <ordwel/expgolomb.h>

namespace {

using namespace ordwel;

// Bytes from a text of '0' and '1', the last byte filled with zeros.
buffer bytes_of_bits(std::string const &a_bits)
{
    buffer l_bytes((a_bits.size() + 7) / 8, static_cast<unsigned char>(0));
    for (std::size_t l_at = 0; l_at < a_bits.size(); ++l_at) {
        l_bytes.begin()[l_at / 8] |= static_cast<unsigned char>((a_bits[l_at] - '0') << (7 - l_at % 8));
    }
    return l_bytes;
}

std::string zeros(std::size_t a_count)
{
    return std::string(a_count, '0');
}

// Writing gives exactly the bits of the table, and reading them gives the value back and stops
// behind them (a marker bit behind each code reads as 1).
TEST(expgolomb, known_codes)
{
    struct code {
        bool m_signed;
        sint64 m_value;
        std::string m_bits;
    };
    code const k_codes[] = {
        {false, 0, "1"},
        {false, 1, "010"},
        {false, 2, "011"},
        {false, 3, "00100"},
        {false, 65534, zeros(15) + "1" + std::string(15, '1')},
        {false, 65535, zeros(16) + "1" + zeros(16)},
        {false, 0xffffffffLL, zeros(32) + "1" + zeros(32)},
        {true, 0, "1"},
        {true, 1, "010"},
        {true, -1, "011"},
        {true, 2, "00100"},
        {true, std::numeric_limits<sint32>::max(), zeros(31) + "1" + std::string(30, '1') + "0"},
        {true, std::numeric_limits<sint32>::min(), zeros(32) + "1" + zeros(31) + "1"},
    };
    for (code const &l_code : k_codes) {
        buffer l_written;
        {
            stream::buf l_sink(l_written);
            bitstream::wr l_writer(l_sink, 8);
            l_code.m_signed ? bitstream::write_se(l_writer, static_cast<sint32>(l_code.m_value))
                            : bitstream::write_ue(l_writer, static_cast<uint32>(l_code.m_value));
        }
        EXPECT_EQ(l_written, bytes_of_bits(l_code.m_bits)) << l_code.m_bits;
        buffer l_data = bytes_of_bits(l_code.m_bits + "1");
        stream::mem l_source(l_data.begin(), l_data.size());
        bitstream::rd const l_reader(l_source, 4);
        sint64 const l_read =
            l_code.m_signed ? sint64(bitstream::read_se(l_reader)) : sint64(bitstream::read_ue(l_reader));
        EXPECT_EQ(l_read, l_code.m_value) << l_code.m_bits;
        EXPECT_EQ(l_reader.read(1), 1u) << l_code.m_bits;
    }
}

// Every value up to 2^20 and random ones of all sizes, both kinds interleaved, through a small
// block so that codes straddle refills.
TEST(expgolomb, round_trip)
{
    std::mt19937 l_random(20);
    std::vector<uint32> l_values;
    for (uint32 l_value = 0; l_value <= (1U << 20); ++l_value) {
        l_values.push_back(l_value);
        l_values.push_back(static_cast<uint32>(l_random()) >> (l_random() % 32));
    }
    buffer l_data;
    l_data.set_aggressive(true);
    {
        stream::buf l_sink(l_data);
        bitstream::wr l_writer(l_sink, 64);
        for (uint32 const l_value : l_values) {
            bitstream::write_ue(l_writer, l_value);
            bitstream::write_se(l_writer, static_cast<sint32>(l_value));
        }
    }
    stream::mem l_source(l_data.begin(), l_data.size());
    bitstream::rd const l_reader(l_source, 36);
    for (uint32 const l_value : l_values) {
        ASSERT_EQ(bitstream::read_ue(l_reader), l_value);
        ASSERT_EQ(bitstream::read_se(l_reader), static_cast<sint32>(l_value));
    }
    EXPECT_FALSE(l_reader.has_bits(8));
}

// Codes that run past the data (u) or beyond 32 bits or the type (o), read as ue and as se; v: a
// valid code of that kind. The data end at the next whole byte, in zeros.
TEST(expgolomb, failures)
{
    struct failure {
        std::string m_bits;
        char m_ue;
        char m_se;
    };
    failure const k_failures[] = {
        {"", 'u', 'u'},
        {zeros(8), 'u', 'u'},
        {zeros(15) + "1", 'u', 'u'},
        {zeros(16) + "1" + zeros(7), 'u', 'u'},
        {zeros(32), 'u', 'u'},
        {zeros(33), 'o', 'o'},
        {zeros(32) + "1" + zeros(31), 'u', 'u'},
        {zeros(32) + "1" + zeros(31) + "1", 'o', 'v'},
        {zeros(32) + "1" + zeros(32), 'v', 'o'},
        {zeros(32) + "1" + zeros(30) + "10", 'o', 'o'},
    };
    for (failure const &l_failure : k_failures) {
        buffer l_data = bytes_of_bits(l_failure.m_bits);
        for (bool const l_signed : {false, true}) {
            stream::mem l_source(l_data.begin(), l_data.size());
            bitstream::rd const l_reader(l_source, 4);
            auto const l_read = [&] {
                l_signed ? static_cast<void>(bitstream::read_se(l_reader))
                         : static_cast<void>(bitstream::read_ue(l_reader));
            };
            switch (l_signed ? l_failure.m_se : l_failure.m_ue) {
            case 'o':
                EXPECT_THROW(l_read(), es::oflow) << l_failure.m_bits << " " << l_signed;
                break;
            case 'u':
                EXPECT_THROW(l_read(), es::uflow) << l_failure.m_bits << " " << l_signed;
                break;
            default:
                EXPECT_NO_THROW(l_read()) << l_failure.m_bits << " " << l_signed;
            }
        }
    }
}

} // namespace
