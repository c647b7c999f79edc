// SPDX-License-Identifier: MIT
// The strict Base64 decoder on arbitrary text, in the format that the first byte chooses: no crash;
// accepted text is canonical (its bytes encode back to it exactly, with padding where it has some); rejected text is
// rejected at the first byte that a reference reading one character at a time rejects. The stream adapters, in pieces
// that the second byte chooses, agree with the buffer functions, strict and lenient.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <ordwel/base64.h>
#include <ordwel/es.h>

#include "fuzz_check.h"

namespace {

using namespace ordwel;

int value_of(unsigned char a_char, base64_alphabet a_alphabet)
{
    char const *const l_alphabet = a_alphabet == base64_alphabet::url
                                       ? "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"
                                       : "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    char const *const l_found = a_char == 0 ? nullptr : std::strchr(l_alphabet, a_char);
    return l_found == nullptr ? -1 : static_cast<int>(l_found - l_alphabet);
}

// The offset where canonical text of a_format stops being possible, or a_size + 1 when a_text is
// valid: one character at a time, with the group position, the last value and the padding seen.
std::size_t reference_offset(unsigned char const *a_text, std::size_t a_size, base64_format a_format)
{
    std::size_t l_position = 0; // characters of the alphabet in the current group
    int l_last = 0;
    std::size_t l_padding = 0; // "=" seen
    auto const l_zero_tail = [&] { return (l_last & (l_position == 2 ? 15 : 3)) == 0; };
    for (std::size_t l_index = 0; l_index < a_size; ++l_index) {
        int const l_value = value_of(a_text[l_index], a_format.m_alphabet);
        if (l_value >= 0 && l_padding == 0) {
            l_last = l_value;
            l_position = (l_position + 1) % 4;
        } else if (a_text[l_index] == '=' && a_format.m_padding != base64_padding::forbidden && l_position >= 2 &&
                   l_position + l_padding < 4 && l_zero_tail()) {
            ++l_padding;
        } else {
            return l_index;
        }
    }
    bool const l_valid = l_padding != 0 ? l_position + l_padding == 4
                                        : l_position == 0 || (l_position >= 2 && l_zero_tail() &&
                                                              a_format.m_padding != base64_padding::required);
    return l_valid ? a_size + 1 : a_size;
}

// A reader over the text that gives it in pieces of 1 to 64 characters, the sizes from a seed.
class pieces_rd : public stream::rd {
public:
    pieces_rd(unsigned char const *a_text, std::size_t a_size, unsigned a_seed)
        : m_text(a_text), m_size(a_size), m_seed(a_seed | 1)
    {
    }
    uint64 read(void *a_destination, uint64 a_size) override
    {
        m_seed = m_seed * 1103515245u + 12345u;
        std::size_t const l_count =
            std::min<std::size_t>({static_cast<std::size_t>(a_size), m_size - m_pos, 1 + (m_seed >> 16) % 64});
        std::memcpy(a_destination, m_text + m_pos, l_count);
        m_pos += l_count;
        return l_count;
    }
    uint64 tell() override { return m_pos; }

private:
    unsigned char const *m_text;
    std::size_t m_size;
    std::size_t m_pos = 0;
    unsigned m_seed;
};

class string_wr : public stream::wr {
public:
    void write(void const *a_source, uint64 a_size) override
    {
        m_text.append(static_cast<char const *>(a_source), static_cast<std::size_t>(a_size));
    }
    void flush() override {}
    uint64 tell() override { return m_text.size(); }

    std::string m_text;
};

// What a reader gives, read in pieces of 1 to 16 bytes, or "raised: <message>".
std::string read_through(stream::base64_rd &a_reader, unsigned a_seed)
{
    std::string l_bytes;
    try {
        char l_piece[16];
        while (uint64 const l_count = a_reader.read(l_piece, 1 + (a_seed++ * 7) % 16)) {
            l_bytes.append(l_piece, static_cast<std::size_t>(l_count));
        }
    } catch (es::arg const &l_error) {
        return std::string("raised: ") + l_error.what();
    }
    return l_bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size < 2) {
        return 0;
    }
    base64_format const l_format{(a_data[0] & 1) != 0 ? base64_alphabet::url : base64_alphabet::standard,
                                 static_cast<base64_padding>((a_data[0] >> 1) % 3)};
    unsigned const l_seed = a_data[1];
    unsigned char const *const l_text = a_data + 2;
    std::size_t const l_size = a_size - 2;

    base64_result const l_result = base64_decode_strict(l_text, l_size, l_format);
    std::size_t const l_expected = reference_offset(l_text, l_size, l_format);
    std::string l_strict;
    if (l_result.m_valid) {
        check(l_expected == l_size + 1);
        l_strict.assign(reinterpret_cast<char const *>(l_result.m_bytes.begin()),
                        static_cast<std::size_t>(l_result.m_bytes.size()));
        // Optional padding accepts both forms: the one that the text has comes back.
        bool const l_padded = l_size != 0 && l_text[l_size - 1] == '=';
        base64_format const l_again_format{l_format.m_alphabet,
                                           l_padded ? base64_padding::required : base64_padding::forbidden};
        std::string const l_again =
            string_encode_base64(l_result.m_bytes.begin(), l_result.m_bytes.size(), l_again_format);
        check(l_again == std::string(reinterpret_cast<char const *>(l_text), l_size));
    } else {
        check(l_result.m_offset == l_expected && l_result.m_bytes.size() == 0);
        l_strict = "raised: invalid Base64 at offset " + std::to_string(l_expected);
    }

    pieces_rd l_source(l_text, l_size, l_seed);
    stream::base64_rd l_reader(l_source, l_format, base64_check::strict);
    check(read_through(l_reader, l_seed) == l_strict);

    std::string l_lenient;
    try {
        l_lenient = string_decode_base64(l_text, l_size, l_format);
    } catch (es::arg const &l_error) {
        l_lenient = std::string("raised: ") + l_error.what();
    }
    pieces_rd l_lenient_source(l_text, l_size, l_seed + 1);
    stream::base64_rd l_lenient_reader(l_lenient_source, l_format, base64_check::lenient);
    check(read_through(l_lenient_reader, l_seed) == l_lenient);

    // The input's bytes through the encoder, in pieces.
    string_wr l_sink;
    stream::base64_wr l_encoder(l_sink, l_format);
    for (std::size_t l_at = 0; l_at < l_size;) {
        std::size_t const l_count = std::min<std::size_t>(l_size - l_at, 1 + (l_text[l_at] + l_seed) % 32);
        l_encoder.write(l_text + l_at, l_count);
        l_at += l_count;
    }
    l_encoder.finish();
    check(l_sink.m_text == string_encode_base64(l_text, l_size, l_format));
    return 0;
}
