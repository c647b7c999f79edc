// SPDX-License-Identifier: MIT
// The units of made-up H.264 and HEVC byte streams against GStreamer's unit identification
// (gst_h264_parser_identify_nalu, gst_h265_parser_identify_nalu), stepped through each stream as
// a parser does: from the end of one unit to the next start code.
//
// Where the two differ, by design:
// - The last unit: GStreamer finds no next start code (GST_*_PARSER_NO_NAL_END) and gives the
//   rest of the data, trailing zeros included; ordwel leaves them out. The comparison takes
//   GStreamer's size less those zeros and checks that only zeros were cut.
// - GStreamer gives an end-of-sequence or end-of-stream unit the size of its header whatever
//   follows, and reports units shorter than 2 bytes (3 for HEVC) as broken data; ordwel splits
//   them like any other. The streams here have no such units.
// - A start code that ends the data is no start code for GStreamer (its scan needs a byte behind
//   it): 00 00 01 41 9a 00 00 01 is one unit of 5 bytes there, and two units (2 bytes, then an
//   empty one at offset 8) here. The streams here end with a unit of a few bytes.

#include <ordwel/annexb.h>

#include <random>
#include <string>
#include <vector>

// The codec parsers warn that their interface may still change; the calls used here are old.
#define GST_USE_UNSTABLE_API
#include <gst/codecparsers/gsth264parser.h>
#include <gst/codecparsers/gsth265parser.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include "support/annexb_streams.h"

namespace {

using namespace ordwel;

// One unit as both tell it: start code, payload offset and size, then the header fields.
std::string text_of(uint64 a_start, uint64 a_offset, uint64 a_size)
{
    return std::to_string(a_start) + " " + std::to_string(a_offset) + " " + std::to_string(a_size);
}

std::string fields_of(unsigned int a_type, unsigned int a_second, int a_third)
{
    return " " + std::to_string(a_type) + " " + std::to_string(a_second) + " " + std::to_string(a_third);
}

std::vector<std::string> ours(std::string const &a_bytes, bool a_hevc)
{
    std::vector<std::string> l_units;
    annexb::units l_split(a_bytes.data(), a_bytes.size());
    annexb::unit l_unit;
    while (l_split.next(l_unit)) {
        unsigned char const *const l_header = l_unit.m_header;
        l_units.push_back(text_of(l_unit.m_start, l_unit.m_offset, l_unit.m_size) +
                          (a_hevc ? fields_of(annexb::hevc_type(l_header), annexb::hevc_layer_id(l_header),
                                              annexb::hevc_temporal_id(l_header))
                                  : fields_of(annexb::h264_type(l_header), annexb::h264_ref_idc(l_header), 0)));
    }
    return l_units;
}

// Both parsers number their results alike.
static_assert(int(GST_H264_PARSER_OK) == int(GST_H265_PARSER_OK) &&
                  int(GST_H264_PARSER_NO_NAL) == int(GST_H265_PARSER_NO_NAL) &&
                  int(GST_H264_PARSER_NO_NAL_END) == int(GST_H265_PARSER_NO_NAL_END),
              "GStreamer's parser results");

// Steps a GStreamer parser through a_bytes from the end of one unit on; a_fields gives a unit's
// header fields. The last unit (no start code behind it) keeps the trailing zeros there: they are
// cut here, after a check that they reach the end of the data.
template <class t_nal, class t_parser, class t_result, class F>
std::vector<std::string> gstreamer_units(std::string const &a_bytes, t_parser *a_parser,
                                         t_result (*a_identify)(t_parser *, guint8 const *, guint, gsize, t_nal *),
                                         F a_fields)
{
    std::vector<std::string> l_units;
    auto const *const l_data = reinterpret_cast<guint8 const *>(a_bytes.data());
    t_nal l_nal{};
    for (guint l_from = 0;; l_from = l_nal.offset + l_nal.size) {
        int const l_result = a_identify(a_parser, l_data, l_from, a_bytes.size(), &l_nal);
        bool const l_last = l_result == GST_H264_PARSER_NO_NAL_END;
        if (l_result != GST_H264_PARSER_OK && !l_last) {
            EXPECT_EQ(l_result, GST_H264_PARSER_NO_NAL);
            return l_units;
        }
        uint64 l_size = l_nal.size;
        while (l_last && l_size > 0 && a_bytes[l_nal.offset + l_size - 1] == 0) {
            --l_size;
        }
        l_units.push_back(text_of(l_nal.sc_offset, l_nal.offset, l_size) + a_fields(l_nal));
        if (l_last) {
            EXPECT_EQ(l_nal.offset + l_nal.size, a_bytes.size());
            return l_units;
        }
    }
}

TEST(annexb_oracle, units_as_gstreamer_identifies_them)
{
    gst_init(nullptr, nullptr);
    GstH264NalParser *const l_h264_parser = gst_h264_nal_parser_new();
    GstH265Parser *const l_hevc_parser = gst_h265_parser_new();
    // Every H.264 type but the end-of-sequence and end-of-stream units; HEVC likewise without EOS
    // and EOB.
    std::vector<unsigned int> l_h264_types;
    std::vector<unsigned int> l_hevc_types;
    for (unsigned int l_type = 1; l_type < 64; ++l_type) {
        if (l_type < 32 && l_type != 10 && l_type != 11) {
            l_h264_types.push_back(l_type);
        }
        if (l_type != 36 && l_type != 37) {
            l_hevc_types.push_back(l_type);
        }
    }
    std::mt19937 l_random(77);
    unsigned int l_compared = 0;
    for (unsigned int l_case = 0; l_case < 1200; ++l_case) {
        bool const l_hevc = l_case % 2 == 1;
        std::string const l_bytes = ordwel_test::make_annexb_stream(l_random, 1 + l_case % 40, 1 + (l_case * 37) % 3000,
                                                                    l_hevc, l_hevc ? l_hevc_types : l_h264_types)
                                        .m_bytes;
        std::vector<std::string> const l_ours = ours(l_bytes, l_hevc);
        ASSERT_EQ(l_ours, l_hevc ? gstreamer_units(l_bytes, l_hevc_parser, gst_h265_parser_identify_nalu,
                                                   [](GstH265NalUnit const &a_nal) {
                                                       return fields_of(a_nal.type, a_nal.layer_id,
                                                                        int(a_nal.temporal_id_plus1) - 1);
                                                   })
                                 : gstreamer_units(l_bytes, l_h264_parser, gst_h264_parser_identify_nalu,
                                                   [](GstH264NalUnit const &a_nal) {
                                                       return fields_of(a_nal.type, a_nal.ref_idc, 0);
                                                   }))
            << "case " << l_case;
        l_compared += static_cast<unsigned int>(l_ours.size());
    }
    EXPECT_GT(l_compared, 20000u);
    gst_h264_nal_parser_free(l_h264_parser);
    gst_h265_parser_free(l_hevc_parser);
}

} // namespace
