// SPDX-License-Identifier: MIT
// The Base64 and hex decoders on arbitrary text: no crash and no sanitizer report; a length of the
// wrong kind raises es::arg and nothing else; the byte count follows the length (and, for Base64,
// the foreign characters). The input taken as bytes comes back from its encodings, and valid
// encoded text comes back from its decoding.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <ordwel/codecs.h>
#include <ordwel/es.h>

#include "fuzz_check.h"

namespace {

bool in_alphabet(unsigned char a_char)
{
    return (a_char >= 'A' && a_char <= 'Z') || (a_char >= 'a' && a_char <= 'z') || (a_char >= '0' && a_char <= '9') ||
           a_char == '+' || a_char == '/';
}

void fuzz_base64_decode(unsigned char const *a_text, std::size_t a_size)
{
    std::string l_decoded;
    try {
        l_decoded = ordwel::string_decode_base64(a_text, a_size);
    } catch (ordwel::es::arg const &) {
        check(a_size % 4 != 0);
        return;
    }
    check(a_size % 4 == 0);
    std::size_t l_expected = 0;
    for (std::size_t l_group = 0; l_group < a_size; l_group += 4) {
        int l_bad = 0;
        for (std::size_t l_index = l_group; l_index < l_group + 4; ++l_index) {
            l_bad += in_alphabet(a_text[l_index]) ? 0 : 1;
        }
        l_expected += l_bad == 2 ? 1 : l_bad == 1 ? 2 : 3;
    }
    check(l_decoded.size() == l_expected);
    ordwel::buffer const l_buffer = ordwel::buffer_decode_base64(a_text, a_size);
    check(l_buffer.size() == l_decoded.size());
    check(l_decoded.empty() ||
          std::string(reinterpret_cast<char const *>(l_buffer.begin()), l_buffer.size()) == l_decoded);
}

void fuzz_hex_decode(unsigned char const *a_text, std::size_t a_size)
{
    std::string l_decoded;
    try {
        l_decoded = ordwel::string_decode_hex(a_text, a_size);
    } catch (ordwel::es::arg const &) {
        check(a_size % 2 != 0);
        return;
    }
    check(a_size % 2 == 0 && l_decoded.size() == a_size / 2);
    check(ordwel::buffer_decode_hex(a_text, a_size).size() == l_decoded.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    fuzz_base64_decode(a_data, a_size);
    fuzz_hex_decode(a_data, a_size);

    std::string const l_plain(reinterpret_cast<char const *>(a_data), a_size);
    std::string const l_base64 = ordwel::string_encode_base64(a_data, a_size);
    check(l_base64.size() == (a_size + 2) / 3 * 4);
    auto const *const l_base64_bytes = reinterpret_cast<unsigned char const *>(l_base64.data());
    check(ordwel::string_decode_base64(l_base64_bytes, l_base64.size()) == l_plain);
    ordwel::buffer const l_base64_buffer = ordwel::buffer_encode_base64(a_data, a_size);
    check(std::string(reinterpret_cast<char const *>(l_base64_buffer.begin()), l_base64_buffer.size()) == l_base64);

    std::string const l_hex = ordwel::string_encode_hex(l_plain);
    check(l_hex.size() == 2 * a_size);
    check(ordwel::string_decode_hex(l_hex) == l_plain);
    check(ordwel::string_encode_hex(ordwel::buffer_decode_hex(l_hex)) == l_hex);

    // Text that is valid Base64 without padding decodes and encodes back to itself.
    std::string l_valid;
    for (std::size_t l_index = 0; l_index < a_size; ++l_index) {
        if (in_alphabet(a_data[l_index])) {
            l_valid += static_cast<char>(a_data[l_index]);
        }
    }
    l_valid.resize(l_valid.size() / 4 * 4);
    std::string const l_bytes =
        ordwel::string_decode_base64(reinterpret_cast<unsigned char const *>(l_valid.data()), l_valid.size());
    check(ordwel::string_encode_base64(reinterpret_cast<unsigned char const *>(l_bytes.data()), l_bytes.size()) ==
          l_valid);
    return 0;
}
