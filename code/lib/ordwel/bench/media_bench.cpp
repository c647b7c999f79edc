// SPDX-License-Identifier: MIT
// Media helpers, in bytes of input per second.
//
// Emulation prevention over 64 KiB: removal from a realistic coded payload (random bytes, an
// escape every 4 KiB or so) and from a zero-rich one (most bytes 0 to 3, an escape every 11 bytes
// or so), beside memcpy of the same 64 KiB (the bound: one pass that only copies) and beside
// GStreamer's H.264 parser reading the same payload as SEI user data through its own removal;
// insertion into the same two payloads.
//
// Exp-Golomb: 1 MiB of ue(v) codes, mostly small values as a slice header has them, read through
// a bit cursor over a stream::mem, beside a straightforward reader that counts the zeros bit by
// bit over the bytes.
//
// Byte-stream units of made-up H.264 streams of 1 MiB (which stays in the second-level cache) and
// 4 MiB, units of 200 bytes to 40 KiB of random bytes with emulation prevention behind 3- and
// 4-byte start codes, in bytes of data per second: split in memory and read through a stream::mem
// by the unit reader, beside GStreamer's gst_h264_parser_identify_nalu stepped through the same
// buffer.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/annexb.h>
#include <ordwel/bitstream.h>
#include <ordwel/buffer.h>
#include <ordwel/emulation.h>
#include <ordwel/expgolomb.h>
#include <ordwel/stream.h>

#if defined(ORDWEL_HAVE_GSTREAMER_CODECPARSERS_1_0)
#define GST_USE_UNSTABLE_API
#include <gst/codecparsers/gsth264parser.h>
#endif

namespace {

constexpr std::size_t k_ep_size = 64 * 1024;

// Payloads before escaping: realistic (random bytes without 00 00, and a 00 00 0x every 4 KiB
// or so) and zero-rich.
std::vector<unsigned char> payload(bool a_zero_rich)
{
    std::mt19937 l_random(a_zero_rich ? 7u : 5u);
    std::vector<unsigned char> l_bytes(k_ep_size);
    for (std::size_t l_at = 0; l_at < k_ep_size; ++l_at) {
        unsigned const l_pick = l_random() % 8;
        l_bytes[l_at] = static_cast<unsigned char>(!a_zero_rich || l_pick >= 6 ? l_random()
                                                   : l_pick < 3                ? 0
                                                                               : l_pick - 2);
        if (!a_zero_rich && l_at != 0 && l_bytes[l_at - 1] == 0 && l_bytes[l_at] == 0) {
            l_bytes[l_at] = 0x80;
        }
    }
    for (std::size_t l_at = 1000; !a_zero_rich && l_at + 3 < k_ep_size; l_at += 4001) {
        l_bytes[l_at] = 0;
        l_bytes[l_at + 1] = 0;
        l_bytes[l_at + 2] = static_cast<unsigned char>(l_at % 4);
    }
    return l_bytes;
}

// The payload escaped, cut to 64 KiB.
std::vector<unsigned char> escaped(bool a_zero_rich)
{
    std::vector<unsigned char> const l_payload = payload(a_zero_rich);
    std::vector<unsigned char> l_escaped(ordwel::emulation_inserted_bound(k_ep_size));
    l_escaped.resize(
        static_cast<std::size_t>(ordwel::insert_emulation(l_escaped.data(), l_payload.data(), l_payload.size())));
    l_escaped.resize(k_ep_size);
    return l_escaped;
}

void set_ep_bytes(benchmark::State &a_state)
{
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(k_ep_size));
}

void bm_ep_remove(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_input = escaped(a_state.range(0) != 0);
    std::vector<unsigned char> l_output(k_ep_size);
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::remove_emulation(l_output.data(), l_input.data(), k_ep_size));
        benchmark::ClobberMemory();
    }
    set_ep_bytes(a_state);
}
BENCHMARK(bm_ep_remove)->ArgName("zero_rich")->Arg(0)->Arg(1);

void bm_ep_insert(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_input = payload(a_state.range(0) != 0);
    std::vector<unsigned char> l_output(ordwel::emulation_inserted_bound(k_ep_size));
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::insert_emulation(l_output.data(), l_input.data(), k_ep_size));
        benchmark::ClobberMemory();
    }
    set_ep_bytes(a_state);
}
BENCHMARK(bm_ep_insert)->ArgName("zero_rich")->Arg(0)->Arg(1);

void bm_ep_memcpy(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_input = escaped(false);
    std::vector<unsigned char> l_output(k_ep_size);
    for (auto _ : a_state) {
        std::memcpy(l_output.data(), l_input.data(), k_ep_size);
        benchmark::DoNotOptimize(l_output.data());
        benchmark::ClobberMemory();
    }
    set_ep_bytes(a_state);
}
BENCHMARK(bm_ep_memcpy);

#if defined(ORDWEL_HAVE_GSTREAMER_CODECPARSERS_1_0)
// The escaped payload as the user data of an SEI unit, which GStreamer's parser reads byte by byte
// through its own removal.
void bm_ep_remove_gstreamer_sei(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_data = payload(a_state.range(0) != 0);
    std::string l_rbsp(1, '\x04');
    std::size_t l_size = 1 + l_data.size();
    for (; l_size >= 255; l_size -= 255) {
        l_rbsp += '\xff';
    }
    l_rbsp += static_cast<char>(l_size);
    l_rbsp += '\xb5';
    l_rbsp.append(l_data.begin(), l_data.end());
    l_rbsp += '\x80';
    std::string const l_unit =
        std::string("\x00\x00\x00\x01\x06", 5) +
        ordwel::string_insert_emulation(reinterpret_cast<unsigned char const *>(l_rbsp.data()), l_rbsp.size());
    GstH264NalParser *const l_parser = gst_h264_nal_parser_new();
    for (auto _ : a_state) {
        GstH264NalUnit l_nal{};
        GArray *l_messages = nullptr;
        gst_h264_parser_identify_nalu_unchecked(l_parser, reinterpret_cast<guint8 const *>(l_unit.data()), 0,
                                                l_unit.size(), &l_nal);
        gst_h264_parser_parse_sei(l_parser, &l_nal, &l_messages);
        benchmark::DoNotOptimize(l_messages);
        if (l_messages != nullptr) {
            g_array_free(l_messages, TRUE);
        }
    }
    gst_h264_nal_parser_free(l_parser);
    set_ep_bytes(a_state);
}
BENCHMARK(bm_ep_remove_gstreamer_sei)->ArgName("zero_rich")->Arg(0)->Arg(1);
#endif

// ---- Exp-Golomb

constexpr std::size_t k_golomb_size = 1024 * 1024;

// ue(v) codes until 1 MiB is full: values of 0 to 3 bits most of the time, up to 20 bits now and
// then. Gives the bytes (with 8 zero bytes behind them) and the count of codes.
std::vector<unsigned char> const &golomb_data(std::size_t &a_codes)
{
    static std::size_t s_codes = 0;
    static std::vector<unsigned char> const k_data = [] {
        std::mt19937 l_random(9);
        ordwel::buffer l_bytes;
        l_bytes.set_aggressive(true);
        {
            ordwel::stream::buf l_sink(l_bytes);
            ordwel::bitstream::wr l_writer(l_sink, 4096);
            while (l_writer.tell() + 8 < k_golomb_size) {
                unsigned const l_bits = l_random() % 16 == 0 ? 20 : 3;
                ordwel::bitstream::write_ue(l_writer, l_random() & ((1U << l_bits) - 1));
                ++s_codes;
            }
        }
        std::vector<unsigned char> l_vector(l_bytes.begin(), l_bytes.end());
        l_vector.resize(l_vector.size() + 8, 0);
        return l_vector;
    }();
    a_codes = s_codes;
    return k_data;
}

void set_golomb_items(benchmark::State &a_state, std::size_t a_codes)
{
    a_state.SetItemsProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(a_codes));
}

void bm_golomb_read_ue(benchmark::State &a_state)
{
    std::size_t l_codes = 0;
    std::vector<unsigned char> const &l_data = golomb_data(l_codes);
    for (auto _ : a_state) {
        ordwel::stream::mem l_stream(const_cast<unsigned char *>(l_data.data()), l_data.size());
        ordwel::bitstream::rd const l_reader(l_stream, 4096);
        ordwel::uint32 l_sum = 0;
        for (std::size_t l_index = 0; l_index < l_codes; ++l_index) {
            l_sum += ordwel::bitstream::read_ue(l_reader);
        }
        benchmark::DoNotOptimize(l_sum);
    }
    set_golomb_items(a_state, l_codes);
}
BENCHMARK(bm_golomb_read_ue);

// The textbook reader: one bit at a time from the bytes.
void bm_golomb_read_ue_by_bit(benchmark::State &a_state)
{
    std::size_t l_codes = 0;
    std::vector<unsigned char> const &l_data = golomb_data(l_codes);
    for (auto _ : a_state) {
        std::size_t l_bit = 0;
        auto const l_next = [&] {
            unsigned const l_value = (l_data[l_bit / 8] >> (7 - l_bit % 8)) & 1;
            ++l_bit;
            return l_value;
        };
        ordwel::uint32 l_sum = 0;
        for (std::size_t l_index = 0; l_index < l_codes; ++l_index) {
            unsigned l_zeros = 0;
            while (l_next() == 0 && l_zeros < 32) {
                ++l_zeros;
            }
            ordwel::uint32 l_value = 0;
            for (unsigned l_count = 0; l_count < l_zeros; ++l_count) {
                l_value = (l_value << 1) | l_next();
            }
            l_sum += (1U << l_zeros) - 1 + l_value;
        }
        benchmark::DoNotOptimize(l_sum);
    }
    set_golomb_items(a_state, l_codes);
}
BENCHMARK(bm_golomb_read_ue_by_bit);

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
