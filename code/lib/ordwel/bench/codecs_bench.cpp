// Base64 and hex over 64 KiB of random bytes, in bytes of input per second. ordwel gives a new
// buffer or string per call (its interface returns values); the peers write into a block the
// benchmark keeps: OpenSSL's EVP_EncodeBlock / EVP_DecodeBlock and libavutil's av_base64_encode /
// av_base64_decode for Base64, Boost.Algorithm's hex_lower / unhex and OpenSSL's
// OPENSSL_buf2hexstr_ex / OPENSSL_hexstr2buf_ex for hex.

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/codecs.h>

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

constexpr std::size_t k_size = 64 * 1024;

std::string const &plain()
{
    static std::string const k_plain = [] {
        std::mt19937 l_random(4648u);
        std::string l_bytes(k_size, '\0');
        for (char &l_byte : l_bytes) {
            l_byte = static_cast<char>(l_random() & 0xff);
        }
        return l_bytes;
    }();
    return k_plain;
}

unsigned char const *plain_bytes()
{
    return reinterpret_cast<unsigned char const *>(plain().data());
}

std::string const &base64_text()
{
    static std::string const k_text = ordwel::string_encode_base64(plain_bytes(), k_size);
    return k_text;
}

std::string const &hex_text()
{
    static std::string const k_text = ordwel::string_encode_hex(plain());
    return k_text;
}

void set_bytes(benchmark::State &a_state)
{
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(k_size));
}

void ordwel_base64_encode_string(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::string_encode_base64(plain_bytes(), k_size));
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_base64_encode_string);

void ordwel_base64_encode_buffer(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::buffer_encode_base64(plain_bytes(), k_size));
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_base64_encode_buffer);

void ordwel_base64_decode_string(benchmark::State &a_state)
{
    auto const *const l_text = reinterpret_cast<unsigned char const *>(base64_text().data());
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::string_decode_base64(l_text, base64_text().size()));
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_base64_decode_string);

void ordwel_base64_decode_buffer(benchmark::State &a_state)
{
    auto const *const l_text = reinterpret_cast<unsigned char const *>(base64_text().data());
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::buffer_decode_base64(l_text, base64_text().size()));
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_base64_decode_buffer);

void ordwel_hex_encode(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::string_encode_hex(plain()));
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_hex_encode);

void ordwel_hex_decode(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(ordwel::string_decode_hex(hex_text()));
    }
    set_bytes(a_state);
}
BENCHMARK(ordwel_hex_decode);

#if defined(ORDWEL_HAVE_OPENSSL)
void openssl_base64_encode(benchmark::State &a_state)
{
    std::vector<unsigned char> l_out(base64_text().size() + 1);
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(EVP_EncodeBlock(l_out.data(), plain_bytes(), static_cast<int>(k_size)));
        benchmark::ClobberMemory();
    }
    set_bytes(a_state);
}
BENCHMARK(openssl_base64_encode);

void openssl_base64_decode(benchmark::State &a_state)
{
    std::vector<unsigned char> l_out(k_size + 3);
    auto const *const l_text = reinterpret_cast<unsigned char const *>(base64_text().data());
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(EVP_DecodeBlock(l_out.data(), l_text, static_cast<int>(base64_text().size())));
        benchmark::ClobberMemory();
    }
    set_bytes(a_state);
}
BENCHMARK(openssl_base64_decode);

void openssl_hex_encode(benchmark::State &a_state)
{
    std::vector<char> l_out(2 * k_size + 1);
    for (auto _ : a_state) {
        std::size_t l_length = 0;
        benchmark::DoNotOptimize(
            OPENSSL_buf2hexstr_ex(l_out.data(), l_out.size(), &l_length, plain_bytes(), k_size, '\0'));
        benchmark::ClobberMemory();
    }
    set_bytes(a_state);
}
BENCHMARK(openssl_hex_encode);

void openssl_hex_decode(benchmark::State &a_state)
{
    std::vector<unsigned char> l_out(k_size);
    for (auto _ : a_state) {
        std::size_t l_length = 0;
        benchmark::DoNotOptimize(
            OPENSSL_hexstr2buf_ex(l_out.data(), l_out.size(), &l_length, hex_text().c_str(), '\0'));
        benchmark::ClobberMemory();
    }
    set_bytes(a_state);
}
BENCHMARK(openssl_hex_decode);
#endif

#if defined(ORDWEL_HAVE_LIBAVUTIL)
void libavutil_base64_encode(benchmark::State &a_state)
{
    std::vector<char> l_out(AV_BASE64_SIZE(k_size));
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(
            av_base64_encode(l_out.data(), static_cast<int>(l_out.size()), plain_bytes(), static_cast<int>(k_size)));
        benchmark::ClobberMemory();
    }
    set_bytes(a_state);
}
BENCHMARK(libavutil_base64_encode);

void libavutil_base64_decode(benchmark::State &a_state)
{
    std::vector<uint8_t> l_out(k_size + 3);
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(av_base64_decode(l_out.data(), base64_text().c_str(), static_cast<int>(l_out.size())));
        benchmark::ClobberMemory();
    }
    set_bytes(a_state);
}
BENCHMARK(libavutil_base64_decode);
#endif

#if defined(ORDWEL_HAVE_BOOST)
void boost_hex_encode(benchmark::State &a_state)
{
    std::string l_out;
    l_out.reserve(2 * k_size);
    for (auto _ : a_state) {
        l_out.clear();
        boost::algorithm::hex_lower(plain().begin(), plain().end(), std::back_inserter(l_out));
        benchmark::DoNotOptimize(l_out.data());
    }
    set_bytes(a_state);
}
BENCHMARK(boost_hex_encode);

void boost_hex_decode(benchmark::State &a_state)
{
    std::string l_out;
    l_out.reserve(k_size);
    for (auto _ : a_state) {
        l_out.clear();
        boost::algorithm::unhex(hex_text().begin(), hex_text().end(), std::back_inserter(l_out));
        benchmark::DoNotOptimize(l_out.data());
    }
    set_bytes(a_state);
}
BENCHMARK(boost_hex_decode);
#endif

} // namespace
