// SPDX-License-Identifier: MIT
#ifndef ORDWEL_UTF8_CODEC_H
#define ORDWEL_UTF8_CODEC_H

#include <cstddef>
#include <cstring>
#include <string>

#include <ordwel/types.h>

// The library's own UTF-8 <-> UTF-32 conversion, for platforms whose wchar_t holds UTF-32.
//
// Decoding follows Unicode's well-formed byte sequences exactly (no overlong forms, no surrogates,
// nothing above U+10FFFF). Each maximal subpart of an ill-formed sequence becomes one U+FFFD, the
// practice that Unicode recommends and that the WHATWG decoder and most platforms follow. Encoding
// writes U+FFFD for every value that is no scalar value (surrogates, negatives, above U+10FFFF).

namespace ordwel {
namespace utf8 {

constexpr char32_t k_replacement = 0xFFFD;

// Decodes a_length bytes and appends the code points to a_out, whose value type must hold 21 bits.
template <typename t_wide_string> void decode_append(char const *a_text, std::size_t a_length, t_wide_string &a_out)
{
    using t_unit = typename t_wide_string::value_type;
    static_assert(sizeof(t_unit) >= 4, "UTF-32 output needs 32-bit units");
    std::size_t const l_base = a_out.size();
    // Never more code points than bytes: write straight into the string and trim at the end.
    a_out.resize(l_base + a_length);
    t_unit *l_out = &a_out[0] + l_base;
    auto const *l_in = reinterpret_cast<unsigned char const *>(a_text);
    unsigned char const *const l_end = l_in + a_length;
    while (l_in != l_end) {
        // ASCII runs go eight bytes at a time.
        while (l_end - l_in >= 8) {
            uint64 l_word;
            std::memcpy(&l_word, l_in, 8);
            if ((l_word & 0x8080808080808080ULL) != 0) {
                break;
            }
            for (int l_index = 0; l_index < 8; ++l_index) {
                l_out[l_index] = static_cast<t_unit>(l_in[l_index]);
            }
            l_out += 8;
            l_in += 8;
        }
        if (l_in == l_end) {
            break;
        }
        unsigned int const l_lead = *l_in;
        if (l_lead < 0x80) {
            *l_out++ = static_cast<t_unit>(l_lead);
            ++l_in;
            continue;
        }
        // The allowed range of the second byte depends on the lead; later bytes are 80..BF.
        int l_need;
        unsigned int l_low = 0x80;
        unsigned int l_high = 0xBF;
        char32_t l_code;
        if (l_lead >= 0xC2 && l_lead <= 0xDF) {
            l_need = 1;
            l_code = l_lead & 0x1F;
        } else if (l_lead >= 0xE0 && l_lead <= 0xEF) {
            l_need = 2;
            l_code = l_lead & 0x0F;
            if (l_lead == 0xE0) {
                l_low = 0xA0;
            } else if (l_lead == 0xED) {
                l_high = 0x9F;
            }
        } else if (l_lead >= 0xF0 && l_lead <= 0xF4) {
            l_need = 3;
            l_code = l_lead & 0x07;
            if (l_lead == 0xF0) {
                l_low = 0x90;
            } else if (l_lead == 0xF4) {
                l_high = 0x8F;
            }
        } else {
            *l_out++ = static_cast<t_unit>(k_replacement);
            ++l_in;
            continue;
        }
        ++l_in;
        bool l_complete = true;
        for (int l_index = 0; l_index < l_need; ++l_index) {
            if (l_in == l_end || *l_in < l_low || *l_in > l_high) {
                l_complete = false;
                break;
            }
            l_code = (l_code << 6) | (*l_in & 0x3FU);
            ++l_in;
            l_low = 0x80;
            l_high = 0xBF;
        }
        *l_out++ = static_cast<t_unit>(l_complete ? l_code : k_replacement);
    }
    a_out.resize(static_cast<std::size_t>(l_out - &a_out[0]));
}

// Encodes a_length units (each read as a code point) and appends the bytes to a_out.
template <typename t_unit> void encode_append(t_unit const *a_text, std::size_t a_length, std::string &a_out)
{
    std::size_t const l_base = a_out.size();
    // At most four bytes per unit: write straight into the string and trim at the end.
    a_out.resize(l_base + a_length * 4);
    char *l_out = &a_out[0] + l_base;
    for (std::size_t l_index = 0; l_index < a_length; ++l_index) {
        // Negative units (a signed wchar_t) become huge and so invalid.
        auto l_code = static_cast<uint32>(a_text[l_index]);
        if (l_code < 0x80) {
            *l_out++ = static_cast<char>(l_code);
            continue;
        }
        if (l_code > 0x10FFFF || (l_code >= 0xD800 && l_code <= 0xDFFF)) {
            l_code = k_replacement;
        }
        if (l_code < 0x800) {
            *l_out++ = static_cast<char>(0xC0 | (l_code >> 6));
            *l_out++ = static_cast<char>(0x80 | (l_code & 0x3F));
        } else if (l_code < 0x10000) {
            *l_out++ = static_cast<char>(0xE0 | (l_code >> 12));
            *l_out++ = static_cast<char>(0x80 | ((l_code >> 6) & 0x3F));
            *l_out++ = static_cast<char>(0x80 | (l_code & 0x3F));
        } else {
            *l_out++ = static_cast<char>(0xF0 | (l_code >> 18));
            *l_out++ = static_cast<char>(0x80 | ((l_code >> 12) & 0x3F));
            *l_out++ = static_cast<char>(0x80 | ((l_code >> 6) & 0x3F));
            *l_out++ = static_cast<char>(0x80 | (l_code & 0x3F));
        }
    }
    a_out.resize(static_cast<std::size_t>(l_out - &a_out[0]));
}

} // namespace utf8
} // namespace ordwel

#endif
