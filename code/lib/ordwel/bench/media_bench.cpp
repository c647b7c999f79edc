// SPDX-License-Identifier: MIT
// Byte-stream units of made-up H.264 streams of 1 MiB (which stays in the second-level cache) and
// 4 MiB, units of 200 bytes to 40 KiB of random bytes with emulation prevention behind 3- and
// 4-byte start codes, in bytes of data per second: split in memory and read through a stream::mem
// by the unit reader, beside GStreamer's gst_h264_parser_identify_nalu stepped through the same
// buffer.

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/annexb.h>
#include <ordwel/stream.h>

#if defined(ORDWEL_HAVE_GSTREAMER_CODECPARSERS_1_0)
#define GST_USE_UNSTABLE_API
#include <gst/codecparsers/gsth264parser.h>
#endif

namespace {

// A made-up stream of a_size bytes or a little more, each size made once.
std::vector<unsigned char> const &annexb_stream(std::size_t a_size)
{
    static std::map<std::size_t, std::vector<unsigned char>> s_streams;
    std::vector<unsigned char> &l_bytes = s_streams[a_size];
    std::mt19937 l_random(264);
    while (l_bytes.size() < a_size) {
        if (l_random() % 2 == 0) {
            l_bytes.push_back(0);
        }
        l_bytes.insert(l_bytes.end(), {0, 0, 1, static_cast<unsigned char>(0x60 | (1 + l_random() % 8))});
        std::size_t const l_size = 200 + l_random() % (40 * 1024);
        unsigned int l_zeros = 0;
        for (std::size_t l_index = 0; l_index < l_size; ++l_index) {
            auto const l_byte = static_cast<unsigned char>(l_random());
            if (l_zeros >= 2 && l_byte <= 3) {
                l_bytes.push_back(3);
                l_zeros = 0;
            }
            l_bytes.push_back(l_byte);
            l_zeros = l_byte == 0 ? l_zeros + 1 : 0;
        }
        if (l_bytes.back() == 0) {
            l_bytes.push_back(3);
        }
    }
    return l_bytes;
}

void bm_annexb_units_memory(benchmark::State &a_state)
{
    std::vector<unsigned char> const &l_stream = annexb_stream(static_cast<std::size_t>(a_state.range(0)));
    for (auto _ : a_state) {
        ordwel::annexb::units l_units(l_stream.data(), l_stream.size());
        ordwel::annexb::unit l_unit;
        ordwel::uint64 l_sum = 0;
        while (l_units.next(l_unit)) {
            l_sum += l_unit.m_size + l_unit.m_header[0];
        }
        benchmark::DoNotOptimize(l_sum);
    }
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations() * l_stream.size()));
}
BENCHMARK(bm_annexb_units_memory)->Arg(1 << 20)->Arg(4 << 20);

// Counts the units and their payload as the reader hands them out.
class annexb_counter : public ordwel::annexb::unit_handler {
public:
    void data(unsigned char const *a_bytes, ordwel::uint64 a_count) override { m_sum += a_bytes[0] + a_count; }
    void end(ordwel::annexb::unit const &a_unit) override { m_sum += a_unit.m_header[0]; }

    ordwel::uint64 m_sum = 0;
};

void bm_annexb_units_stream(benchmark::State &a_state)
{
    std::vector<unsigned char> const &l_stream = annexb_stream(static_cast<std::size_t>(a_state.range(0)));
    for (auto _ : a_state) {
        ordwel::stream::mem l_source(const_cast<unsigned char *>(l_stream.data()), l_stream.size());
        ordwel::annexb::unit_reader l_reader(l_source);
        annexb_counter l_counter;
        l_reader.for_each(l_counter);
        benchmark::DoNotOptimize(l_counter.m_sum);
    }
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations() * l_stream.size()));
}
BENCHMARK(bm_annexb_units_stream)->Arg(1 << 20)->Arg(4 << 20);

#if defined(ORDWEL_HAVE_GSTREAMER_CODECPARSERS_1_0)
void bm_annexb_gstreamer_identify_nalu(benchmark::State &a_state)
{
    std::vector<unsigned char> const &l_stream = annexb_stream(static_cast<std::size_t>(a_state.range(0)));
    GstH264NalParser *const l_parser = gst_h264_nal_parser_new();
    for (auto _ : a_state) {
        GstH264NalUnit l_nal;
        guint l_from = 0;
        ordwel::uint64 l_sum = 0;
        for (;;) {
            GstH264ParserResult const l_result =
                gst_h264_parser_identify_nalu(l_parser, l_stream.data(), l_from, l_stream.size(), &l_nal);
            if (l_result != GST_H264_PARSER_OK) {
                break;
            }
            l_sum += l_nal.size + l_nal.type;
            l_from = l_nal.offset + l_nal.size;
        }
        benchmark::DoNotOptimize(l_sum);
    }
    gst_h264_nal_parser_free(l_parser);
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations() * l_stream.size()));
}
BENCHMARK(bm_annexb_gstreamer_identify_nalu)->Arg(1 << 20)->Arg(4 << 20);
#endif

} // namespace
