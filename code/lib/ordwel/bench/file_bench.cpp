// SPDX-License-Identifier: MIT
// Whole-file reads and writes of 1 MiB: fileutil against the C library's fopen/fread/fwrite, in
// one run, on a file in the system's temporary directory (page cache, so the library's own cost
// shows rather than the disk's). Rates are taken over wall-clock time: a file system's cost is
// partly spent outside the process's CPU time.
#include <cstdio>
#include <string>

#include <unistd.h>

#include <benchmark/benchmark.h>

#include <ordwel/buffer.h>
#include <ordwel/env.h>
#include <ordwel/file.h>

namespace {

using namespace ordwel;

constexpr std::size_t k_size = 1024 * 1024;

std::string bench_path()
{
    return env::get_default_tmp_path() + "ordwel_file_bench_" + std::to_string(getpid()) + ".bin";
}

std::string const &content()
{
    static std::string const l_content = [] {
        std::string l_text(k_size, '\0');
        for (std::size_t l_index = 0; l_index < k_size; ++l_index) {
            l_text[l_index] = static_cast<char>((l_index * 131) >> 3);
        }
        return l_text;
    }();
    return l_content;
}

// The C library's whole-file read: size by seeking to the end, one fread.
bool stdio_read(std::string const &a_path, std::string &a_content)
{
    std::FILE *const l_file = std::fopen(a_path.c_str(), "rb");
    if (l_file == nullptr) {
        return false;
    }
    std::fseek(l_file, 0, SEEK_END);
    long const l_size = std::ftell(l_file);
    std::fseek(l_file, 0, SEEK_SET);
    std::string l_block(static_cast<std::size_t>(l_size), '\0');
    std::size_t const l_done = std::fread(&l_block[0], 1, l_block.size(), l_file);
    std::fclose(l_file);
    a_content.swap(l_block);
    return l_done == a_content.size();
}

bool stdio_write(std::string const &a_path, std::string const &a_content)
{
    std::FILE *const l_file = std::fopen(a_path.c_str(), "wb");
    if (l_file == nullptr) {
        return false;
    }
    std::size_t const l_done = std::fwrite(a_content.data(), 1, a_content.size(), l_file);
    return std::fclose(l_file) == 0 && l_done == a_content.size();
}

void bm_fileutil_read_string(benchmark::State &a_state)
{
    std::string const l_path = bench_path();
    fileutil::set_file_content(l_path, content());
    std::string l_content;
    for (auto _ : a_state) {
        fileutil::get_file_content(l_path, l_content);
        benchmark::DoNotOptimize(l_content.data());
    }
    fileutil::remove_file(l_path);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_size));
}

void bm_fileutil_read_buffer(benchmark::State &a_state)
{
    std::string const l_path = bench_path();
    fileutil::set_file_content(l_path, content());
    buffer l_content;
    for (auto _ : a_state) {
        fileutil::get_file_content(l_path, l_content);
        benchmark::DoNotOptimize(l_content.begin());
    }
    fileutil::remove_file(l_path);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_size));
}

void bm_stdio_read(benchmark::State &a_state)
{
    std::string const l_path = bench_path();
    fileutil::set_file_content(l_path, content());
    std::string l_content;
    for (auto _ : a_state) {
        if (!stdio_read(l_path, l_content)) {
            a_state.SkipWithError("fread failed");
            break;
        }
        benchmark::DoNotOptimize(l_content.data());
    }
    fileutil::remove_file(l_path);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_size));
}

void bm_fileutil_write(benchmark::State &a_state)
{
    std::string const l_path = bench_path();
    for (auto _ : a_state) {
        fileutil::set_file_content(l_path, content());
    }
    fileutil::remove_file(l_path);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_size));
}

void bm_stdio_write(benchmark::State &a_state)
{
    std::string const l_path = bench_path();
    for (auto _ : a_state) {
        if (!stdio_write(l_path, content())) {
            a_state.SkipWithError("fwrite failed");
            break;
        }
    }
    fileutil::remove_file(l_path);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_size));
}

BENCHMARK(bm_fileutil_read_string)->UseRealTime();
BENCHMARK(bm_fileutil_read_buffer)->UseRealTime();
BENCHMARK(bm_stdio_read)->UseRealTime();
BENCHMARK(bm_fileutil_write)->UseRealTime();
BENCHMARK(bm_stdio_write)->UseRealTime();

} // namespace
