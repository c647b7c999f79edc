// SPDX-License-Identifier: MIT
// Bit cursors over 1 MiB in memory, in bytes of data per second: fields of
// mixed widths (1 to 32 bits) read beside GStreamer's GstBitReader (its inline
// checked getter) and written beside GstBitWriter; and a search for 00 00 01
// start codes at byte positions beside GstByteReader's masked 32-bit scan and
// beside memchr over the same 1 MiB (a bound: one pass, one byte compared),
// with the search also at the scalar level. ordwel reads through a stream::mem
// and writes into a stream::buf, both with a 4 KiB block.

#include <cstddef>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/bitstream.h>
#include <ordwel/buffer.h>
#include <ordwel/stream.h>

#include "core/cpu_dispatch.h"

#if defined(ORDWEL_HAVE_GSTREAMER_BASE_1_0)
#include <gst/base/gstbitreader.h>
#include <gst/base/gstbitwriter.h>
#include <gst/base/gstbytereader.h>
#endif

namespace {

constexpr std::size_t k_size = 1024 * 1024;
constexpr unsigned k_widths[] = {1, 3, 8, 5, 16, 2, 12, 32, 7, 24, 1, 13};

std::vector<unsigned char> const &data()
{
    static std::vector<unsigned char> const k_data = [] {
        std::mt19937 l_random(1125u);
        std::vector<unsigned char> l_bytes(k_size);
        for (unsigned char &l_byte : l_bytes) {
            l_byte = static_cast<unsigned char>(l_random());
        }
        // A start code every 1,000 bytes or so, the rest without 00 00 01 at byte
        // positions.
        for (std::size_t l_at = 0; l_at + 2 < k_size; ++l_at) {
            if (l_bytes[l_at] == 0 && l_bytes[l_at + 1] == 0) {
                l_bytes[l_at + 1] = 0x80;
            }
        }
        for (std::size_t l_at = 500; l_at + 4 < k_size; l_at += 997) {
            l_bytes[l_at] = 0;
            l_bytes[l_at + 1] = 0;
            l_bytes[l_at + 2] = 1;
        }
        return l_bytes;
    }();
    return k_data;
}

// The widths cycle until the data is used up: the number of fields and their
// total bits.
std::size_t field_count()
{
    std::size_t l_bits = 0;
    std::size_t l_count = 0;
    for (;;) {
        unsigned const l_width = k_widths[l_count % (sizeof k_widths / sizeof k_widths[0])];
        if (l_bits + l_width > k_size * 8) {
            return l_count;
        }
        l_bits += l_width;
        ++l_count;
    }
}

void set_bytes(benchmark::State &a_state)
{
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(k_size));
}

void ordwel_bit_read(benchmark::State &a_state)
{
    std::size_t const l_fields = field_count();
    for (auto _ : a_state) {
        ordwel::stream::mem l_stream(const_cast<unsigned char *>(data().data()), k_size);
        ordwel::bitstream::rd l_reader(l_stream, 4096);
        ordwel::uint32 l_sum = 0;
        for (std::size_t l_index = 0; l_index < l_fields;) {
            for (unsigned const l_width : k_widths) {
                l_sum += l_reader.read(l_width);
            }
            l_index += sizeof k_widths / sizeof k_widths[0];
        }
        benchmark::DoNotOptimize(l_sum);
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_bit_read);

void ordwel_bit_write(benchmark::State &a_state)
{
    std::size_t const l_fields = field_count();
    ordwel::buffer l_out;
    for (auto _ : a_state) {
        ordwel::stream::buf l_stream(l_out);
        {
            ordwel::bitstream::wr l_writer(l_stream, 4096);
            ordwel::uint32 l_value = 0x9e3779b9u;
            for (std::size_t l_index = 0; l_index < l_fields;) {
                for (unsigned const l_width : k_widths) {
                    l_writer.write(l_value, l_width);
                    l_value = l_value * 1664525u + 1013904223u;
                }
                l_index += sizeof k_widths / sizeof k_widths[0];
            }
        }
        benchmark::DoNotOptimize(l_out.begin());
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_bit_write);

// The reader's block is a_state.range(0) bytes: 4 KiB, and 64 KiB as the toolbox's startcodes
// command reads. A search over memory looks no further ahead than one block.
void ordwel_find_start_codes(benchmark::State &a_state)
{
    auto const l_block = static_cast<ordwel::uint64>(a_state.range(0));
    for (auto _ : a_state) {
        ordwel::stream::mem l_stream(const_cast<unsigned char *>(data().data()), k_size);
        ordwel::bitstream::rd l_reader(l_stream, l_block);
        std::size_t l_found = 0;
        while (l_reader.find(1, 24, 8, 8)) {
            ++l_found;
        }
        benchmark::DoNotOptimize(l_found);
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_find_start_codes)->Arg(4096)->Arg(65536);

// The search as a processor without vector kernels runs it.
void ordwel_find_start_codes_scalar(benchmark::State &a_state)
{
    ordwel::internal::simd_level_cap(ordwel::internal::simd_level::scalar);
    ordwel_find_start_codes(a_state);
    ordwel::internal::simd_level_cap(ordwel::internal::simd_level::avx512);
}
BENCHMARK(ordwel_find_start_codes_scalar)->Arg(4096);

// memchr for a byte that the data does not hold: one pass over the 1 MiB.
void memchr_scan(benchmark::State &a_state)
{
    static std::vector<unsigned char> const k_without = [] {
        std::vector<unsigned char> l_bytes = data();
        for (unsigned char &l_byte : l_bytes) {
            l_byte = l_byte == 0xa5 ? 0xa4 : l_byte;
        }
        return l_bytes;
    }();
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(std::memchr(k_without.data(), 0xa5, k_size));
    }
    set_bytes(a_state);
}
BENCHMARK(memchr_scan);

#if defined(ORDWEL_HAVE_GSTREAMER_BASE_1_0)
void gstreamer_bit_read(benchmark::State &a_state)
{
    std::size_t const l_fields = field_count();
    for (auto _ : a_state) {
        GstBitReader l_reader;
        gst_bit_reader_init(&l_reader, data().data(), static_cast<guint>(k_size));
        guint32 l_sum = 0;
        for (std::size_t l_index = 0; l_index < l_fields;) {
            for (unsigned const l_width : k_widths) {
                guint32 l_value = 0;
                if (gst_bit_reader_get_bits_uint32(&l_reader, &l_value, l_width)) {
                    l_sum += l_value;
                }
            }
            l_index += sizeof k_widths / sizeof k_widths[0];
        }
        benchmark::DoNotOptimize(l_sum);
    }
    set_bytes(a_state);
}
BENCHMARK(gstreamer_bit_read);

void gstreamer_bit_write(benchmark::State &a_state)
{
    std::size_t const l_fields = field_count();
    for (auto _ : a_state) {
        GstBitWriter l_writer;
        gst_bit_writer_init_with_size(&l_writer, static_cast<guint32>(k_size), FALSE);
        guint32 l_value = 0x9e3779b9u;
        for (std::size_t l_index = 0; l_index < l_fields;) {
            for (unsigned const l_width : k_widths) {
                gst_bit_writer_put_bits_uint32(&l_writer, l_value, l_width);
                l_value = l_value * 1664525u + 1013904223u;
            }
            l_index += sizeof k_widths / sizeof k_widths[0];
        }
        benchmark::DoNotOptimize(gst_bit_writer_get_data(&l_writer));
        gst_bit_writer_reset(&l_writer);
    }
    set_bytes(a_state);
}
BENCHMARK(gstreamer_bit_write);

void gstreamer_find_start_codes(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        GstByteReader l_reader;
        gst_byte_reader_init(&l_reader, data().data(), static_cast<guint>(k_size));
        std::size_t l_found = 0;
        guint l_offset = 0;
        while (l_offset + 3 <= k_size) {
            // The 32-bit scan wants the byte behind the code too; the last 3 bytes
            // hold no code here.
            guint const l_at =
                gst_byte_reader_masked_scan_uint32(&l_reader, 0xffffff00u, 0x00000100u, l_offset, k_size - l_offset);
            if (l_at == static_cast<guint>(-1)) {
                break;
            }
            ++l_found;
            l_offset = l_at + 3;
        }
        benchmark::DoNotOptimize(l_found);
    }
    set_bytes(a_state);
}
BENCHMARK(gstreamer_find_start_codes);
#endif

} // namespace
