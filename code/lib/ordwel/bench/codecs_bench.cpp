// SPDX-License-Identifier: MIT
// Base64 and hex over random bytes of 64 B, 4 KiB, 64 KiB and 16 MiB (the argument), in plain bytes
// per second: bytes in for the encoders, bytes out for the decoders, so that each compares with
// memcpy of the argument's size measured in the same run. ordwel gives a new buffer per call (its
// interface returns values); the peers write into a block the benchmark keeps: OpenSSL's
// EVP_EncodeBlock / EVP_DecodeBlock and libavutil's av_base64_encode / av_base64_decode for
// Base64, Boost.Algorithm's hex_lower / unhex and OpenSSL's OPENSSL_buf2hexstr_ex /
// OPENSSL_hexstr2buf_ex for hex. Linked with the private library, the program also runs the
// kernels themselves into a kept block: those of the processor's level ("_kernel") beside those of
// the AVX2, SSSE3/SSE4.1 and scalar levels ("_avx2", "_sse41", "_scalar"; skipped where the
// processor lacks the level).

#include <cstddef>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/base64.h>
#include <ordwel/codecs.h>

#if defined(ORDWEL_BENCH_PRIVATE)
#include "stream/codec_kernels.h"
#endif
#if defined(ORDWEL_HAVE_OPENSSL)
#include <openssl/crypto.h>
#include <openssl/evp.h>
#endif
#if defined(ORDWEL_HAVE_LIBAVUTIL)
extern "C" {
#include <libavutil/base64.h>
}
#endif
#if defined(ORDWEL_HAVE_BOOST)
#include <boost/algorithm/hex.hpp>
#endif

namespace {

// The plain bytes, and their codings, of each size.
struct sample {
    std::string m_plain;
    std::string m_base64;
    std::string m_base64url;
    std::string m_hex;
};

sample const &sample_of(std::size_t a_size)
{
    static std::map<std::size_t, sample> s_samples;
    sample &l_sample = s_samples[a_size];
    if (l_sample.m_plain.size() != a_size) {
        std::mt19937 l_random(4648u);
        l_sample.m_plain.resize(a_size);
        for (char &l_byte : l_sample.m_plain) {
            l_byte = static_cast<char>(l_random() & 0xff);
        }
        auto const *const l_bytes = reinterpret_cast<unsigned char const *>(l_sample.m_plain.data());
        l_sample.m_base64 = ordwel::string_encode_base64(l_bytes, a_size);
        l_sample.m_base64url = ordwel::string_encode_base64(l_bytes, a_size, ordwel::k_base64_url);
        l_sample.m_hex = ordwel::string_encode_hex(l_sample.m_plain);
    }
    return l_sample;
}

unsigned char const *bytes_of(std::string const &a_text)
{
    return reinterpret_cast<unsigned char const *>(a_text.data());
}

// Runs a_step (given the sample and a block of room) once per iteration and counts the plain bytes.
template <typename t_step> void measure(benchmark::State &a_state, t_step a_step)
{
    auto const l_size = static_cast<std::size_t>(a_state.range(0));
    sample const &l_sample = sample_of(l_size);
    std::vector<unsigned char> l_room(2 * l_size + 64);
    for (auto _ : a_state) {
        a_step(l_sample, l_room.data());
        benchmark::ClobberMemory();
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_size));
}

#define ORDWEL_CODECS_BENCHMARK(a_name) BENCHMARK(a_name)->Arg(64)->Arg(4 << 10)->Arg(64 << 10)->Arg(16 << 20)

void memcpy_plain(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        std::memcpy(a_room, a_sample.m_plain.data(), a_sample.m_plain.size());
        benchmark::DoNotOptimize(a_room);
    });
}
ORDWEL_CODECS_BENCHMARK(memcpy_plain);

void ordwel_base64_encode_buffer(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_encode_base64(bytes_of(a_sample.m_plain), a_sample.m_plain.size()));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64_encode_buffer);

void ordwel_base64_encode_string(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::string_encode_base64(bytes_of(a_sample.m_plain), a_sample.m_plain.size()));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64_encode_string);

void ordwel_base64_decode_buffer(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_decode_base64(bytes_of(a_sample.m_base64), a_sample.m_base64.size()));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64_decode_buffer);

void ordwel_base64_decode_string(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::string_decode_base64(bytes_of(a_sample.m_base64), a_sample.m_base64.size()));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64_decode_string);

// The URL-safe alphabet (no padding) and strict decoding, to hold against the standard lenient
// decoder: the same kernels, so the same speed.
void ordwel_base64url_encode_buffer(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(
            ordwel::buffer_encode_base64(bytes_of(a_sample.m_plain), a_sample.m_plain.size(), ordwel::k_base64_url));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64url_encode_buffer);

void ordwel_base64url_decode_buffer(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_decode_base64(bytes_of(a_sample.m_base64url),
                                                              a_sample.m_base64url.size(), ordwel::k_base64_url));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64url_decode_buffer);

void ordwel_base64_decode_strict(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_decode_base64_strict(
            bytes_of(a_sample.m_base64), a_sample.m_base64.size(), ordwel::k_base64_standard));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64_decode_strict);

void ordwel_base64url_decode_strict(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_decode_base64_strict(
            bytes_of(a_sample.m_base64url), a_sample.m_base64url.size(), ordwel::k_base64_url));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_base64url_decode_strict);

void ordwel_hex_encode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_encode_hex(bytes_of(a_sample.m_plain), a_sample.m_plain.size()));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_hex_encode);

void ordwel_hex_decode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *) {
        benchmark::DoNotOptimize(ordwel::buffer_decode_hex(bytes_of(a_sample.m_hex), a_sample.m_hex.size()));
    });
}
ORDWEL_CODECS_BENCHMARK(ordwel_hex_decode);

#if defined(ORDWEL_BENCH_PRIVATE)
using ordwel::internal::simd_level;

// The kernel of a_level (simd_level::avx512: the processor's own), into the kept block.
template <typename t_dispatch> auto kernel_of(t_dispatch const &a_dispatch, simd_level a_level)
{
    return a_level == simd_level::avx512 ? a_dispatch.get() : a_dispatch.for_level(a_level);
}

// Whether the processor runs a_level (simd_level::avx512 stands for its own); if not, the benchmark
// is skipped.
bool runs_level(benchmark::State &a_state, simd_level a_level)
{
    if (a_level != simd_level::avx512 &&
        a_level > ordwel::internal::simd_level_of(ordwel::internal::cpu_features_detected())) {
        a_state.SkipWithError("the processor lacks this level");
        return false;
    }
    return true;
}

template <simd_level t_level> void ordwel_base64_encode_level(benchmark::State &a_state)
{
    if (!runs_level(a_state, t_level)) {
        return;
    }
    auto const l_kernel = kernel_of(ordwel::internal::k_base64_encode, t_level);
    measure(a_state, [l_kernel](sample const &a_sample, unsigned char *a_room) {
        benchmark::DoNotOptimize(
            l_kernel(reinterpret_cast<char *>(a_room), bytes_of(a_sample.m_plain), a_sample.m_plain.size()));
    });
}

template <simd_level t_level> void ordwel_base64_decode_level(benchmark::State &a_state)
{
    if (!runs_level(a_state, t_level)) {
        return;
    }
    auto const l_kernel = kernel_of(ordwel::internal::k_base64_decode, t_level);
    measure(a_state, [l_kernel](sample const &a_sample, unsigned char *a_room) {
        benchmark::DoNotOptimize(l_kernel(a_room, bytes_of(a_sample.m_base64), a_sample.m_base64.size()));
    });
}

template <simd_level t_level> void ordwel_hex_encode_level(benchmark::State &a_state)
{
    if (!runs_level(a_state, t_level)) {
        return;
    }
    auto const l_kernel = kernel_of(ordwel::internal::k_hex_encode, t_level);
    measure(a_state, [l_kernel](sample const &a_sample, unsigned char *a_room) {
        l_kernel(reinterpret_cast<char *>(a_room), bytes_of(a_sample.m_plain), a_sample.m_plain.size());
    });
}

template <simd_level t_level> void ordwel_hex_decode_level(benchmark::State &a_state)
{
    if (!runs_level(a_state, t_level)) {
        return;
    }
    auto const l_kernel = kernel_of(ordwel::internal::k_hex_decode, t_level);
    measure(a_state, [l_kernel](sample const &a_sample, unsigned char *a_room) {
        l_kernel(a_room, bytes_of(a_sample.m_hex), a_sample.m_plain.size());
    });
}

#define ORDWEL_CODECS_LEVELS(a_name)                                                                                   \
    ORDWEL_CODECS_BENCHMARK(a_name<simd_level::avx512>)->Name(#a_name "_kernel");                                      \
    ORDWEL_CODECS_BENCHMARK(a_name<simd_level::avx2>)->Name(#a_name "_avx2");                                          \
    ORDWEL_CODECS_BENCHMARK(a_name<simd_level::sse41>)->Name(#a_name "_sse41");                                        \
    ORDWEL_CODECS_BENCHMARK(a_name<simd_level::scalar>)->Name(#a_name "_scalar")

ORDWEL_CODECS_LEVELS(ordwel_base64_encode_level);
ORDWEL_CODECS_LEVELS(ordwel_base64_decode_level);
ORDWEL_CODECS_LEVELS(ordwel_hex_encode_level);
ORDWEL_CODECS_LEVELS(ordwel_hex_decode_level);
#endif

#if defined(ORDWEL_HAVE_OPENSSL)
void openssl_base64_encode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        benchmark::DoNotOptimize(
            EVP_EncodeBlock(a_room, bytes_of(a_sample.m_plain), static_cast<int>(a_sample.m_plain.size())));
    });
}
ORDWEL_CODECS_BENCHMARK(openssl_base64_encode);

void openssl_base64_decode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        benchmark::DoNotOptimize(
            EVP_DecodeBlock(a_room, bytes_of(a_sample.m_base64), static_cast<int>(a_sample.m_base64.size())));
    });
}
ORDWEL_CODECS_BENCHMARK(openssl_base64_decode);

void openssl_hex_encode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        std::size_t l_length = 0;
        benchmark::DoNotOptimize(OPENSSL_buf2hexstr_ex(reinterpret_cast<char *>(a_room),
                                                       2 * a_sample.m_plain.size() + 1, &l_length,
                                                       bytes_of(a_sample.m_plain), a_sample.m_plain.size(), '\0'));
    });
}
ORDWEL_CODECS_BENCHMARK(openssl_hex_encode);

void openssl_hex_decode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        std::size_t l_length = 0;
        benchmark::DoNotOptimize(
            OPENSSL_hexstr2buf_ex(a_room, a_sample.m_plain.size(), &l_length, a_sample.m_hex.c_str(), '\0'));
    });
}
ORDWEL_CODECS_BENCHMARK(openssl_hex_decode);
#endif

#if defined(ORDWEL_HAVE_LIBAVUTIL)
void libavutil_base64_encode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        benchmark::DoNotOptimize(av_base64_encode(
            reinterpret_cast<char *>(a_room), static_cast<int>(AV_BASE64_SIZE(a_sample.m_plain.size())),
            bytes_of(a_sample.m_plain), static_cast<int>(a_sample.m_plain.size())));
    });
}
ORDWEL_CODECS_BENCHMARK(libavutil_base64_encode);

void libavutil_base64_decode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        benchmark::DoNotOptimize(
            av_base64_decode(a_room, a_sample.m_base64.c_str(), static_cast<int>(a_sample.m_plain.size() + 3)));
    });
}
ORDWEL_CODECS_BENCHMARK(libavutil_base64_decode);
#endif

#if defined(ORDWEL_HAVE_BOOST)
void boost_hex_encode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        boost::algorithm::hex_lower(a_sample.m_plain.begin(), a_sample.m_plain.end(), reinterpret_cast<char *>(a_room));
    });
}
ORDWEL_CODECS_BENCHMARK(boost_hex_encode);

void boost_hex_decode(benchmark::State &a_state)
{
    measure(a_state, [](sample const &a_sample, unsigned char *a_room) {
        boost::algorithm::unhex(a_sample.m_hex.begin(), a_sample.m_hex.end(), reinterpret_cast<char *>(a_room));
    });
}
ORDWEL_CODECS_BENCHMARK(boost_hex_decode);
#endif

} // namespace
