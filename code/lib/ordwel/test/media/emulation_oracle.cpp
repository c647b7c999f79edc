// SPDX-License-Identifier: MIT
// Emulation prevention against GStreamer's H.264 parser and writer, over SEI units that carry
// registered user data rich in zeros: GStreamer removes what ordwel inserted and ordwel what
// GStreamer inserted, and each side agrees with the other byte for byte.
#include <random>
#include <string>

#include <gtest/gtest.h>

// The H.264 parser's interface is marked unstable; these tests follow it.
#define GST_USE_UNSTABLE_API
#include <gst/codecparsers/gsth264parser.h>
#include <gst/gst.h>

#include <ordwel/emulation.h>

namespace {

using namespace ordwel;

// The ITU-T T.35 country code of the user data: one byte.
constexpr unsigned char k_country = 0xb5;

// The SEI payload of user data: the country code, then the bytes.
std::string sei_rbsp(std::string const &a_data)
{
    std::string l_rbsp(1, '\x04');
    std::size_t l_size = 1 + a_data.size();
    for (; l_size >= 255; l_size -= 255) {
        l_rbsp += '\xff';
    }
    l_rbsp += static_cast<char>(l_size);
    l_rbsp += static_cast<char>(k_country);
    return l_rbsp + a_data + '\x80';
}

std::string inserted(std::string const &a_text)
{
    return string_insert_emulation(reinterpret_cast<unsigned char const *>(a_text.data()), a_text.size());
}

// The user data that GStreamer reads from an SEI unit with a start code.
std::string gstreamer_user_data(std::string const &a_unit)
{
    GstH264NalParser *const l_parser = gst_h264_nal_parser_new();
    GstH264NalUnit l_unit{};
    auto const *const l_bytes = reinterpret_cast<guint8 const *>(a_unit.data());
    std::string l_data = "not parsed";
    GArray *l_messages = nullptr;
    if (gst_h264_parser_identify_nalu_unchecked(l_parser, l_bytes, 0, a_unit.size(), &l_unit) == GST_H264_PARSER_OK &&
        gst_h264_parser_parse_sei(l_parser, &l_unit, &l_messages) == GST_H264_PARSER_OK && l_messages->len == 1) {
        GstH264RegisteredUserData const &l_user =
            g_array_index(l_messages, GstH264SEIMessage, 0).payload.registered_user_data;
        l_data.assign(reinterpret_cast<char const *>(l_user.data), l_user.size);
    }
    if (l_messages != nullptr) {
        g_array_free(l_messages, TRUE);
    }
    gst_h264_nal_parser_free(l_parser);
    return l_data;
}

// The SEI unit that GStreamer writes for the user data, with a 4-byte start code.
std::string gstreamer_sei_unit(std::string const &a_data)
{
    GstH264SEIMessage l_message{};
    l_message.payloadType = GST_H264_SEI_REGISTERED_USER_DATA;
    GstH264RegisteredUserData &l_user = l_message.payload.registered_user_data;
    l_user.country_code = k_country;
    l_user.data = reinterpret_cast<guint8 const *>(a_data.data());
    l_user.size = static_cast<guint>(a_data.size());
    GArray *const l_messages = g_array_new(FALSE, FALSE, sizeof(GstH264SEIMessage));
    g_array_append_val(l_messages, l_message);
    GstMemory *const l_memory = gst_h264_create_sei_memory(4, l_messages);
    g_array_free(l_messages, TRUE);
    std::string l_unit;
    GstMapInfo l_map;
    if (l_memory != nullptr && gst_memory_map(l_memory, &l_map, GST_MAP_READ)) {
        l_unit.assign(reinterpret_cast<char const *>(l_map.data), l_map.size);
        gst_memory_unmap(l_memory, &l_map);
    }
    if (l_memory != nullptr) {
        gst_memory_unref(l_memory);
    }
    return l_unit;
}

TEST(emulation_oracle, agrees_with_gstreamer)
{
    gst_init(nullptr, nullptr);
    std::string const l_start("\x00\x00\x00\x01\x06", 5);
    std::mt19937 l_random(11);
    for (int l_round = 0; l_round < 400; ++l_round) {
        std::string l_data(1 + l_random() % (l_round < 200 ? 40 : 3000), '\0');
        for (char &l_char : l_data) {
            unsigned const l_pick = l_random() % 8;
            l_char = static_cast<char>(l_pick < 3 ? 0 : l_pick < 6 ? l_pick - 2 : l_random());
        }
        std::string const l_rbsp = sei_rbsp(l_data);
        std::size_t const l_offset = l_rbsp.size() - 1 - l_data.size();
        // GStreamer removes what ordwel inserted, as ordwel does.
        std::string const l_ours = inserted(l_rbsp);
        ASSERT_EQ(gstreamer_user_data(l_start + l_ours), l_data) << l_round;
        ASSERT_EQ(string_remove_emulation(reinterpret_cast<unsigned char const *>(l_ours.data()), l_ours.size())
                      .substr(l_offset, l_data.size()),
                  l_data)
            << l_round;
        // ordwel removes what GStreamer inserted, and inserts the same.
        std::string const l_theirs = gstreamer_sei_unit(l_data);
        ASSERT_EQ(l_theirs.substr(0, 5), l_start);
        EXPECT_EQ(
            string_remove_emulation(reinterpret_cast<unsigned char const *>(l_theirs.data()) + 5, l_theirs.size() - 5),
            l_rbsp)
            << l_round;
        EXPECT_EQ(l_theirs.substr(5), l_ours) << l_round;
    }
}

} // namespace
