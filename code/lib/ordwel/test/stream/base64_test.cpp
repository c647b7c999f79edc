// SPDX-License-Identifier: MIT
// Base64 formats: the URL-safe kernels of every level against the scalar ones, the strict decoder's
// verdicts and offsets, and the stream adapters against the buffer functions.

#include <ordwel/base64.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "core/cpu_dispatch.h"
#include "stream/codec_kernels.h"
#include "support/scripted_streams.h"
#include "support/simd_levels.h"
#include "support/test_support.h"

namespace {

using namespace ordwel;
using internal::simd_level;
using ordwel_test::bytes_of;
using ordwel_test::raised_text;
using ordwel_test::random_bytes;

constexpr base64_format k_url_padded{base64_alphabet::url, base64_padding::required};
constexpr base64_format k_url_bare{base64_alphabet::url, base64_padding::forbidden};
constexpr base64_format k_formats[] = {k_base64_standard, k_base64_url, k_url_padded, k_url_bare};

std::string encoded(std::string const &a_bytes, base64_format a_format)
{
    return string_encode_base64(bytes_of(a_bytes), a_bytes.size(), a_format);
}

// "ok <bytes>" or "bad <offset>".
std::string strict_verdict(std::string const &a_text, base64_format a_format)
{
    base64_result const l_result = base64_decode_strict(bytes_of(a_text), a_text.size(), a_format);
    if (!l_result.m_valid) {
        return "bad " + std::to_string(l_result.m_offset);
    }
    return "ok " + ordwel_test::text_of(l_result.m_bytes);
}

TEST(base64, url_safe_codes_alike_at_every_level_and_every_length)
{
    std::mt19937 l_random(4648u);
    for (std::size_t l_size = 0; l_size <= 300; ++l_size) {
        std::string const l_bytes = random_bytes(l_random, l_size);
        // The URL-safe text is the standard one with "-" and "_" for "+" and "/".
        std::string l_expected = encoded(l_bytes, k_url_padded);
        std::string l_standard = encoded(l_bytes, k_base64_standard);
        std::replace(l_standard.begin(), l_standard.end(), '+', '-');
        std::replace(l_standard.begin(), l_standard.end(), '/', '_');
        ASSERT_EQ(l_expected, l_standard);
        for (simd_level const l_at : ordwel_test::simd_levels_here()) {
            unsigned const l_level = static_cast<unsigned>(l_at);
            std::string l_text(l_expected.size(), '\0');
            internal::k_base64url_encode.for_level(l_at)(&l_text[0], bytes_of(l_bytes), l_size);
            ASSERT_EQ(l_text, l_expected) << "level " << l_level << ", size " << l_size;
            std::string l_decoded(l_text.size() / 4 * 3, '\0');
            auto *const l_out = reinterpret_cast<unsigned char *>(&l_decoded[0]);
            ASSERT_EQ(internal::k_base64url_decode.for_level(l_at)(l_out, bytes_of(l_text), l_text.size()), l_size);
            ASSERT_EQ(l_decoded.substr(0, l_size), l_bytes) << "level " << l_level << ", size " << l_size;
            // Text of the alphabet alone: the vector blocks take all but a tail shorter than a block.
            std::size_t const l_whole = l_size / 3 * 4;
            std::fill(l_decoded.begin(), l_decoded.end(), '\0');
            std::size_t const l_taken =
                internal::k_base64url_decode_prefix.for_level(l_at)(l_out, bytes_of(l_text), l_whole);
            ASSERT_EQ(l_taken % 4, 0u);
            ASSERT_LT(l_whole - l_taken, l_at >= simd_level::avx2 ? 32u : l_whole + 1);
            ASSERT_EQ(l_decoded.substr(0, l_taken / 4 * 3), l_bytes.substr(0, l_taken / 4 * 3));
        }
        for (base64_format const l_format : k_formats) {
            std::string const l_text = encoded(l_bytes, l_format);
            EXPECT_EQ(strict_verdict(l_text, l_format), "ok " + l_bytes);
            EXPECT_EQ(string_decode_base64(bytes_of(l_text), l_text.size(), l_format), l_bytes);
        }
    }
}

// Every byte outside the alphabet, at every offset of a text long enough for the widest vector:
// strict decoding names that offset, and the lenient vector decoders agree with the scalar one.
TEST(base64, strict_decoding_reports_a_foreign_byte_at_every_offset)
{
    std::mt19937 l_random(255u);
    std::vector<simd_level> const l_vector_levels = ordwel_test::simd_levels_here(simd_level::sse41);
    for (base64_format const l_format : {k_base64_standard, k_base64_url}) {
        std::string const l_valid = encoded(random_bytes(l_random, 150), l_format);
        char const *const l_alphabet = l_format.m_alphabet == base64_alphabet::url
                                           ? "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_="
                                           : "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
        for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
            if (l_byte != 0 && std::string(l_alphabet).find(static_cast<char>(l_byte)) != std::string::npos) {
                continue;
            }
            for (std::size_t l_offset = 0; l_offset < l_valid.size(); ++l_offset) {
                std::string l_text = l_valid;
                l_text[l_offset] = static_cast<char>(l_byte);
                ASSERT_EQ(strict_verdict(l_text, l_format), "bad " + std::to_string(l_offset)) << "byte " << l_byte;
                internal::dispatch<internal::base64_decode_kernel> const &l_lenient =
                    internal::base64_kernels_of(l_format.m_alphabet).m_decode;
                std::string l_expected(l_text.size(), '\0');
                l_expected.resize(l_lenient.for_level(simd_level::scalar)(
                    reinterpret_cast<unsigned char *>(&l_expected[0]), bytes_of(l_text), l_text.size()));
                for (simd_level const l_level : l_vector_levels) {
                    std::string l_decoded(l_text.size(), '\0');
                    l_decoded.resize(l_lenient.for_level(l_level)(reinterpret_cast<unsigned char *>(&l_decoded[0]),
                                                                  bytes_of(l_text), l_text.size()));
                    ASSERT_EQ(l_decoded, l_expected) << "byte " << l_byte << " at " << l_offset;
                }
            }
        }
    }
}

TEST(base64, strict_decoding_takes_only_canonical_padding_and_trailing_bits)
{
    struct row {
        char const *m_text;
        char const *m_required; // standard alphabet, padding required
        char const *m_optional; // URL-safe, padding optional
        char const *m_forbidden;
    };
    // "Q" is 16, "R" 17: "QQ" leaves zero bits, "QR" does not; "QUI" and "QUJ" likewise.
    row const l_rows[] = {
        {"", "ok ", "ok ", "ok "},
        {"QQ==", "ok A", "ok A", "bad 2"},
        {"QQ", "bad 2", "ok A", "ok A"},
        {"QQ=", "bad 3", "bad 3", "bad 2"},
        {"QR==", "bad 2", "bad 2", "bad 2"},
        {"QR", "bad 2", "bad 2", "bad 2"},
        {"QUI=", "ok AB", "ok AB", "bad 3"},
        {"QUI", "bad 3", "ok AB", "ok AB"},
        {"QUJ=", "bad 3", "bad 3", "bad 3"},
        {"QUJ", "bad 3", "bad 3", "bad 3"},
        {"Q", "bad 1", "bad 1", "bad 1"},
        {"Q===", "bad 1", "bad 1", "bad 1"},
        {"====", "bad 0", "bad 0", "bad 0"},
        {"QQ=A", "bad 3", "bad 3", "bad 2"},
        {"QQ==QUJD", "bad 4", "bad 4", "bad 2"},
        {"QUI==", "bad 4", "bad 4", "bad 3"},
        {"QUJD=", "bad 4", "bad 4", "bad 4"},
        {"QUJDQ", "bad 5", "bad 5", "bad 5"},
        {"QUJD\n", "bad 4", "bad 4", "bad 4"},
        {" QUJD", "bad 0", "bad 0", "bad 0"},
        {"QUJD+/8=", "ok ABC\xfb\xff", "bad 4", "bad 4"},
        {"QUJD-_8", "bad 4", "ok ABC\xfb\xff", "ok ABC\xfb\xff"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(strict_verdict(l_row.m_text, k_base64_standard), l_row.m_required) << l_row.m_text;
        EXPECT_EQ(strict_verdict(l_row.m_text, k_base64_url), l_row.m_optional) << l_row.m_text;
        EXPECT_EQ(strict_verdict(l_row.m_text, k_url_bare), l_row.m_forbidden) << l_row.m_text;
    }
    std::string const l_spaced = "QUJD QUJD";
    EXPECT_EQ(raised_text<es::arg>(
                  [&] { (void)string_decode_base64_strict(bytes_of(l_spaced), l_spaced.size(), k_base64_standard); }),
              "invalid Base64 at offset 4");
    // Lenient: a short last group as if padded where padding is not required; a lone one raises.
    EXPECT_EQ(string_decode_base64(bytes_of(std::string("QUJ")), 3, k_base64_url), "AB");
    for (base64_format const l_format : {k_base64_standard, k_base64_url}) {
        EXPECT_EQ(raised_text<es::arg>([&] { (void)buffer_decode_base64(bytes_of(l_spaced), 5, l_format); }), "n/a");
    }
}

// Reads a_reader to its end in pieces of random size, appending to a_bytes.
void read_all(stream::rd &a_reader, std::mt19937 &a_random, std::string &a_bytes)
{
    char l_piece[9000];
    while (uint64 const l_count = a_reader.read(l_piece, 1 + a_random() % (a_random() % 2 ? 9000 : 8))) {
        a_bytes.append(l_piece, l_count);
    }
}

std::vector<uint64> random_pieces(std::mt19937 &a_random)
{
    std::vector<uint64> l_pieces(1 + a_random() % 20);
    for (uint64 &l_piece : l_pieces) {
        l_piece = 1 + a_random() % (a_random() % 3 == 0 ? 6000 : 7);
    }
    return l_pieces;
}

TEST(base64, stream_adapters_code_as_the_buffer_functions_under_any_chunking)
{
    std::mt19937 l_random(77u);
    for (int l_round = 0; l_round < 400; ++l_round) {
        std::size_t const l_size = l_round < 40 ? static_cast<std::size_t>(l_round) : l_random() % 12000;
        std::string const l_bytes = random_bytes(l_random, l_size);
        base64_format const l_format = k_formats[l_random() % 4];
        std::string const l_text = encoded(l_bytes, l_format);

        ordwel_test::recording_wr l_sink;
        stream::base64_wr l_encoder(l_sink, l_format);
        for (std::size_t l_at = 0; l_at < l_size;) {
            std::size_t const l_count = std::min<std::size_t>(l_size - l_at, l_random() % (l_round % 2 ? 5 : 5000));
            l_encoder.write(l_bytes.data() + l_at, l_count);
            l_at += l_count;
        }
        ASSERT_EQ(l_encoder.tell(), l_size);
        l_encoder.finish();
        ASSERT_EQ(l_sink.all(), l_text);
        ASSERT_EQ(l_sink.flushes(), 1);

        for (base64_check const l_check : {base64_check::strict, base64_check::lenient}) {
            ordwel_test::scripted_rd l_source(l_text, random_pieces(l_random));
            stream::base64_rd l_decoder(l_source, l_format, l_check);
            std::string l_decoded;
            read_all(l_decoder, l_random, l_decoded);
            ASSERT_EQ(l_decoded, l_bytes) << l_size;
            ASSERT_EQ(l_decoder.tell(), l_size);
        }
        // A foreign character: the strict reader gives the bytes of the groups before its group,
        // then raises with the buffer decoder's offset.
        std::string l_bad = l_text;
        std::size_t const l_where = l_random() % (l_bad.size() + 1);
        l_bad.insert(l_where, 1, '.');
        std::string l_given;
        ordwel_test::scripted_rd l_source(l_bad, random_pieces(l_random));
        stream::base64_rd l_decoder(l_source, l_format);
        std::string const l_message = "invalid Base64 at offset " + std::to_string(l_where);
        ASSERT_EQ(raised_text<es::arg>([&] { read_all(l_decoder, l_random, l_given); }), l_message);
        ASSERT_EQ(raised_text<es::arg>([&] { read_all(l_decoder, l_random, l_given); }), l_message);
        ASSERT_EQ(l_given, l_bytes.substr(0, std::min(l_where / 4, l_size / 3) * 3));
        ASSERT_EQ(l_decoder.tell(), l_given.size());
    }
}

TEST(base64, encoder_ends_the_text_only_on_finish)
{
    ordwel_test::recording_wr l_sink;
    {
        stream::base64_wr l_encoder(l_sink, k_base64_standard);
        l_encoder.write("ABCDE", 5);
        l_encoder.flush();
        EXPECT_EQ(l_sink.all(), "QUJD");
        EXPECT_EQ(l_sink.flushes(), 1);
    }
    // Destroyed unfinished: the held bytes are dropped.
    EXPECT_EQ(l_sink.all(), "QUJD");
    stream::base64_wr l_encoder(l_sink, k_base64_url);
    l_encoder.write("\xfb\xff", 2);
    l_encoder.finish();
    l_encoder.finish();
    EXPECT_EQ(l_sink.all(), "QUJD-_8");
    EXPECT_EQ(raised_text<es::unsupp>([&] { l_encoder.write("A", 1); }), "Base64 text already finished");
}

} // namespace
