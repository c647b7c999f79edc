// SPDX-License-Identifier: MIT
#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/codecs.h>
#include <ordwel/emulation.h>

#include "support/scripted_streams.h"
#include "support/test_support.h"

namespace {

using namespace ordwel;

unsigned char const *bytes(std::string const &a_text)
{
    return reinterpret_cast<unsigned char const *>(a_text.data());
}

std::string removed(std::string const &a_text)
{
    return string_remove_emulation(bytes(a_text), a_text.size());
}

std::string inserted(std::string const &a_text)
{
    return string_insert_emulation(bytes(a_text), a_text.size());
}

// Random bytes, most of them 0 to 3, so that every kind of escape comes up often.
std::string zero_rich(std::mt19937 &a_random, std::size_t a_size)
{
    std::string l_text(a_size, '\0');
    for (char &l_char : l_text) {
        unsigned const l_pick = a_random() % 8;
        l_char = static_cast<char>(l_pick < 3 ? 0 : l_pick < 6 ? l_pick - 2 : a_random());
    }
    return l_text;
}

// Payloads and their escaped form, in hex; in both directions, as a string and as a buffer.
TEST(emulation, known_pairs)
{
    std::pair<char const *, char const *> const k_pairs[] = {
        {"", ""},
        {"00", "00"},
        {"0000", "000003"},
        {"000000", "00000300"},
        {"00000000", "000003000003"},
        {"00000001", "0000030001"},
        {"000003", "00000303"},
        {"00000303", "0000030303"},
        {"00000400", "00000400"},
        {"ab0000ef0000020000", "ab0000ef00000302000003"},
    };
    for (auto const &l_pair : k_pairs) {
        std::string const l_payload = string_decode_hex(std::string(l_pair.first));
        std::string const l_escaped = string_decode_hex(std::string(l_pair.second));
        EXPECT_EQ(string_encode_hex(inserted(l_payload)), l_pair.second);
        EXPECT_EQ(string_encode_hex(removed(l_escaped)), l_pair.first);
        EXPECT_EQ(buffer_insert_emulation(bytes(l_payload), l_payload.size()), ordwel_test::buffer_of(l_escaped));
        EXPECT_EQ(buffer_remove_emulation(bytes(l_escaped), l_escaped.size()), ordwel_test::buffer_of(l_payload));
    }
    // Bytes that no insertion makes: a 00 00 03 among them is an escape where its zeros count
    // from the last one dropped.
    EXPECT_EQ(string_encode_hex(removed(string_decode_hex(std::string("0000030003000003")))), "000000030000");
}

// remove(insert(x)) is x; the escaped form holds no 00 00 00, 00 00 01 or 00 00 02; removal in
// place gives what removal into other memory gives.
TEST(emulation, round_trips)
{
    std::mt19937 l_random(3);
    for (std::size_t l_size = 0; l_size < 3000; l_size += 1 + l_size / 16) {
        for (int l_round = 0; l_round < 8; ++l_round) {
            std::string const l_payload = zero_rich(l_random, l_size);
            std::string const l_escaped = inserted(l_payload);
            ASSERT_EQ(removed(l_escaped), l_payload);
            for (char const l_third : {0, 1, 2}) {
                ASSERT_EQ(l_escaped.find(std::string{0, 0, l_third}), std::string::npos);
            }
            std::string l_in_place = l_payload;
            auto *const l_data = reinterpret_cast<unsigned char *>(&l_in_place[0]);
            l_in_place.resize(static_cast<std::size_t>(remove_emulation(l_data, l_data, l_size)));
            ASSERT_EQ(l_in_place, removed(l_payload));
        }
    }
}

// The stream adapters give what the buffer functions give, whatever the pieces that the source
// hands out, the reads and the writes.
TEST(emulation, streams_match_buffers)
{
    std::mt19937 l_random(7);
    for (int l_round = 0; l_round < 300; ++l_round) {
        std::string const l_payload = zero_rich(l_random, l_random() % 20000);
        std::vector<uint64> l_pieces;
        for (int l_piece = 0; l_piece < 20; ++l_piece) {
            l_pieces.push_back(1 + l_random() % (l_round % 2 == 0 ? 5 : 3000));
        }
        ordwel_test::scripted_rd l_source(l_payload, l_pieces);
        stream::ep_remove_rd l_reader(l_source);
        std::string l_read;
        std::string l_piece(20000, '\0');
        for (uint64 l_count = 1; l_count != 0;) {
            l_count = l_reader.read(&l_piece[0], 1 + l_random() % (l_round % 3 == 0 ? 4 : 20000));
            l_read.append(l_piece, 0, static_cast<std::size_t>(l_count));
        }
        ASSERT_EQ(l_read, removed(l_payload));
        EXPECT_EQ(l_reader.tell(), l_read.size());

        ordwel_test::recording_wr l_sink;
        stream::ep_insert_wr l_writer(l_sink);
        for (std::size_t l_at = 0; l_at < l_payload.size();) {
            std::size_t const l_count = std::min<std::size_t>(l_payload.size() - l_at, l_pieces[l_at % 20]);
            l_writer.write(l_payload.data() + l_at, l_count);
            l_at += l_count;
        }
        EXPECT_EQ(l_writer.tell(), l_payload.size());
        l_writer.finish();
        ASSERT_EQ(l_sink.all(), inserted(l_payload));
    }
}

} // namespace
