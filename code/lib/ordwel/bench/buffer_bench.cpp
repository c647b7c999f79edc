// SPDX-License-Identifier: MIT
// buffer against std::vector<unsigned char>, and string_with_format against snprintf into a
// std::string, in one run.
#include <cstdio>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/buffer.h>
#include <ordwel/string_helpers.h>

namespace {

using namespace ordwel;

// Appends pieces of a_piece bytes until 64 KiB stand in the container.
constexpr std::size_t k_total = 64 * 1024;

void bm_buffer_append(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> const l_source(l_piece, 0x5a);
    for (auto _ : a_state) {
        buffer l_buffer;
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            l_buffer.append(l_source.data(), l_piece);
        }
        benchmark::DoNotOptimize(l_buffer.begin());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_total));
}

void bm_vector_append(benchmark::State &a_state)
{
    std::size_t const l_piece = static_cast<std::size_t>(a_state.range(0));
    std::vector<unsigned char> const l_source(l_piece, 0x5a);
    for (auto _ : a_state) {
        std::vector<unsigned char> l_vector;
        l_vector.reserve(1024);
        for (std::size_t l_done = 0; l_done < k_total; l_done += l_piece) {
            l_vector.insert(l_vector.end(), l_source.begin(), l_source.end());
        }
        benchmark::DoNotOptimize(l_vector.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_total));
}

// Grows by resizing in steps, as a reader that makes room before each read does.
void bm_buffer_resize(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        buffer l_buffer;
        for (uint64 l_size = 0; l_size < k_total; l_size += 100) {
            l_buffer.resize(l_size + 100);
            l_buffer[l_size] = 1;
        }
        benchmark::DoNotOptimize(l_buffer.begin());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_total));
}

void bm_vector_resize(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        std::vector<unsigned char> l_vector;
        l_vector.reserve(1024);
        for (std::size_t l_size = 0; l_size < k_total; l_size += 100) {
            l_vector.resize(l_size + 100);
            l_vector[l_size] = 1;
        }
        benchmark::DoNotOptimize(l_vector.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * k_total));
}

void bm_string_with_format(benchmark::State &a_state)
{
    int l_counter = 0;
    for (auto _ : a_state) {
        std::string l_text = string_with_format("Failed to %s file %s (%s) at %d", "open", "/media/clip.mov",
                                                "No such file or directory", ++l_counter);
        benchmark::DoNotOptimize(l_text.data());
    }
    a_state.SetItemsProcessed(a_state.iterations());
}

// The usual hand-written peer: measure, size the string, format into it.
void bm_snprintf_string(benchmark::State &a_state)
{
    int l_counter = 0;
    for (auto _ : a_state) {
        ++l_counter;
        int const l_length = std::snprintf(nullptr, 0, "Failed to %s file %s (%s) at %d", "open", "/media/clip.mov",
                                           "No such file or directory", l_counter);
        std::string l_text(static_cast<std::size_t>(l_length), '\0');
        std::snprintf(&l_text[0], l_text.size() + 1, "Failed to %s file %s (%s) at %d", "open", "/media/clip.mov",
                      "No such file or directory", l_counter);
        benchmark::DoNotOptimize(l_text.data());
    }
    a_state.SetItemsProcessed(a_state.iterations());
}

} // namespace

BENCHMARK(bm_buffer_append)->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(bm_vector_append)->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(bm_buffer_resize);
BENCHMARK(bm_vector_resize);
BENCHMARK(bm_string_with_format);
BENCHMARK(bm_snprintf_string);
