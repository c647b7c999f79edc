// SPDX-License-Identifier: MIT
// Memory streams and byte cursors against std::stringstream / std::istringstream, and against
// memcpy over a std::vector as the lower bound, in one run. Every case moves 1 MiB per iteration
// in pieces (or items) of the given size and reports bytes/s.
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/buffer.h>
#include <ordwel/bytestream.h>
#include <ordwel/stream.h>

namespace {

using namespace ordwel;

constexpr std::size_t k_total = 1024 * 1024;

void piece_sizes(benchmark::internal::Benchmark *a_bench)
{
    for (int l_piece : {8, 64, 4096, 65536}) {
        a_bench->Arg(l_piece);
    }
}

void count_bytes(benchmark::State &a_state)
{
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_total));
}

// ---- writing pieces ----

void bm_stream_buf_write(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> const l_source(l_piece, 0x5a);
    buffer l_buffer;
    stream::buf l_stream(l_buffer);
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            l_stream.write(l_source.data(), l_piece);
        }
        benchmark::DoNotOptimize(l_buffer.begin());
    }
    count_bytes(a_state);
}

void bm_stream_mem_write(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> const l_source(l_piece, 0x5a);
    std::vector<unsigned char> l_memory(k_total);
    stream::mem l_stream(l_memory.data(), l_memory.size());
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            l_stream.write(l_source.data(), l_piece);
        }
        benchmark::DoNotOptimize(l_memory.data());
    }
    count_bytes(a_state);
}

void bm_stringstream_write(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::string const l_source(l_piece, 'Z');
    std::stringstream l_stream;
    for (auto _ : a_state) {
        l_stream.seekp(0);
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            l_stream.write(l_source.data(), static_cast<std::streamsize>(l_piece));
        }
        benchmark::DoNotOptimize(&l_stream);
    }
    count_bytes(a_state);
}

void bm_memcpy_write(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> const l_source(l_piece, 0x5a);
    std::vector<unsigned char> l_memory(k_total);
    for (auto _ : a_state) {
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            std::memcpy(l_memory.data() + l_done, l_source.data(), l_piece);
        }
        benchmark::DoNotOptimize(l_memory.data());
        benchmark::ClobberMemory();
    }
    count_bytes(a_state);
}

// ---- reading pieces ----

void bm_stream_mem_read(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> l_memory(k_total, 0x5a);
    std::vector<unsigned char> l_target(l_piece);
    stream::mem l_stream(l_memory.data(), l_memory.size());
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        while (l_stream.read(l_target.data(), l_piece) != 0) {
            benchmark::DoNotOptimize(l_target.data());
        }
    }
    count_bytes(a_state);
}

void bm_stream_buf_read(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    buffer l_buffer(k_total, static_cast<unsigned char>(0x5a));
    std::vector<unsigned char> l_target(l_piece);
    stream::buf l_stream(l_buffer);
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        while (l_stream.read(l_target.data(), l_piece) != 0) {
            benchmark::DoNotOptimize(l_target.data());
        }
    }
    count_bytes(a_state);
}

void bm_istringstream_read(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::istringstream l_stream(std::string(k_total, 'Z'));
    std::vector<char> l_target(l_piece);
    for (auto _ : a_state) {
        l_stream.clear();
        l_stream.seekg(0);
        while (l_stream.read(l_target.data(), static_cast<std::streamsize>(l_piece))) {
            benchmark::DoNotOptimize(l_target.data());
        }
    }
    count_bytes(a_state);
}

void bm_memcpy_read(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> const l_memory(k_total, 0x5a);
    std::vector<unsigned char> l_target(l_piece);
    for (auto _ : a_state) {
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            std::memcpy(l_target.data(), l_memory.data() + l_done, l_piece);
            benchmark::DoNotOptimize(l_target.data());
        }
    }
    count_bytes(a_state);
}

// ---- small items through the byte cursor ----

std::vector<unsigned char> item_data()
{
    std::vector<unsigned char> l_data(k_total);
    for (std::size_t l_index = 0; l_index < k_total; ++l_index) {
        l_data[l_index] = static_cast<unsigned char>(l_index * 7);
    }
    return l_data;
}

void bm_bytestream_read_u32(benchmark::State &a_state)
{
    std::vector<unsigned char> l_data = item_data();
    stream::mem l_stream(l_data.data(), l_data.size());
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        bytestream::rd l_cursor(l_stream, 4096);
        uint32 l_sum = 0;
        for (std::size_t l_done = 0; l_done < k_total; l_done += 4) {
            l_sum += l_cursor.read_be<uint32>();
        }
        benchmark::DoNotOptimize(l_sum);
    }
    count_bytes(a_state);
}

void bm_bytestream_read_u8(benchmark::State &a_state)
{
    std::vector<unsigned char> l_data = item_data();
    stream::mem l_stream(l_data.data(), l_data.size());
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        bytestream::rd l_cursor(l_stream, 4096);
        uint32 l_sum = 0;
        for (std::size_t l_done = 0; l_done < k_total; ++l_done) {
            l_sum += l_cursor.read_u8();
        }
        benchmark::DoNotOptimize(l_sum);
    }
    count_bytes(a_state);
}

void bm_istringstream_read_u32(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_data = item_data();
    std::istringstream l_stream(std::string(l_data.begin(), l_data.end()));
    for (auto _ : a_state) {
        l_stream.clear();
        l_stream.seekg(0);
        uint32 l_sum = 0;
        for (std::size_t l_done = 0; l_done < k_total; l_done += 4) {
            unsigned char l_bytes[4];
            l_stream.read(reinterpret_cast<char *>(l_bytes), 4);
            l_sum += uint32(l_bytes[0]) << 24 | uint32(l_bytes[1]) << 16 | uint32(l_bytes[2]) << 8 | l_bytes[3];
        }
        benchmark::DoNotOptimize(l_sum);
    }
    count_bytes(a_state);
}

void bm_istringstream_read_u8(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_data = item_data();
    std::istringstream l_stream(std::string(l_data.begin(), l_data.end()));
    for (auto _ : a_state) {
        l_stream.clear();
        l_stream.seekg(0);
        uint32 l_sum = 0;
        for (std::size_t l_done = 0; l_done < k_total; ++l_done) {
            l_sum += static_cast<unsigned char>(l_stream.get());
        }
        benchmark::DoNotOptimize(l_sum);
    }
    count_bytes(a_state);
}

void bm_memcpy_read_u32(benchmark::State &a_state)
{
    std::vector<unsigned char> const l_data = item_data();
    for (auto _ : a_state) {
        uint32 l_sum = 0;
        for (std::size_t l_done = 0; l_done < k_total; l_done += 4) {
            uint32 l_word;
            std::memcpy(&l_word, l_data.data() + l_done, 4);
            l_sum += __builtin_bswap32(l_word);
            benchmark::DoNotOptimize(l_sum);
        }
    }
    count_bytes(a_state);
}

void bm_bytestream_write_u32(benchmark::State &a_state)
{
    std::vector<unsigned char> l_memory(k_total);
    stream::mem l_stream(l_memory.data(), l_memory.size());
    for (auto _ : a_state) {
        l_stream.seek(0, stream::begin);
        {
            bytestream::wr l_cursor(l_stream, 4096);
            for (uint32 l_done = 0; l_done < k_total; l_done += 4) {
                l_cursor.write_be<uint32>(l_done);
            }
        }
        benchmark::DoNotOptimize(l_memory.data());
    }
    count_bytes(a_state);
}

void bm_ostringstream_write_u32(benchmark::State &a_state)
{
    std::ostringstream l_stream;
    for (auto _ : a_state) {
        l_stream.seekp(0);
        for (uint32 l_done = 0; l_done < k_total; l_done += 4) {
            char const l_bytes[4] = {static_cast<char>(l_done >> 24), static_cast<char>(l_done >> 16),
                                     static_cast<char>(l_done >> 8), static_cast<char>(l_done)};
            l_stream.write(l_bytes, 4);
        }
        benchmark::DoNotOptimize(&l_stream);
    }
    count_bytes(a_state);
}

} // namespace

BENCHMARK(bm_stream_buf_write)->Apply(piece_sizes);
BENCHMARK(bm_stream_mem_write)->Apply(piece_sizes);
BENCHMARK(bm_stringstream_write)->Apply(piece_sizes);
BENCHMARK(bm_memcpy_write)->Apply(piece_sizes);
BENCHMARK(bm_stream_mem_read)->Apply(piece_sizes);
BENCHMARK(bm_stream_buf_read)->Apply(piece_sizes);
BENCHMARK(bm_istringstream_read)->Apply(piece_sizes);
BENCHMARK(bm_memcpy_read)->Apply(piece_sizes);
BENCHMARK(bm_bytestream_read_u32);
BENCHMARK(bm_istringstream_read_u32);
BENCHMARK(bm_memcpy_read_u32);
BENCHMARK(bm_bytestream_read_u8);
BENCHMARK(bm_istringstream_read_u8);
BENCHMARK(bm_bytestream_write_u32);
BENCHMARK(bm_ostringstream_write_u32);
