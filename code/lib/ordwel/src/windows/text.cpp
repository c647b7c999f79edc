// SPDX-License-Identifier: MIT
#include "platform/text.h"

#include <climits>
#include <cstdlib>
#include <vector>

#include <windows.h>

namespace ordwel {
namespace platform {

namespace {

// The conversion calls take 32-bit lengths. Texts beyond that go in pieces that end on a
// character boundary; every usual text is one piece, converted with its terminating NUL.
constexpr std::size_t k_piece = static_cast<std::size_t>(INT_MAX) / 4;

std::size_t utf8_piece(char const *a_text, std::size_t a_length)
{
    if (a_length <= k_piece) {
        return a_length;
    }
    std::size_t l_cut = k_piece;
    // Back over at most three continuation bytes, so that a sequence is not split.
    for (int l_step = 0; l_step < 3 && (static_cast<unsigned char>(a_text[l_cut]) & 0xC0) == 0x80; ++l_step) {
        --l_cut;
    }
    return l_cut;
}

std::size_t utf16_piece(wchar_t const *a_text, std::size_t a_length)
{
    if (a_length <= k_piece) {
        return a_length;
    }
    // Do not split a surrogate pair.
    return (a_text[k_piece - 1] >= 0xD800 && a_text[k_piece - 1] <= 0xDBFF) ? k_piece - 1 : k_piece;
}

// Appends the a_done units that a conversion call wrote (none when it failed), up to the first NUL.
template <typename t_unit, typename t_string>
void append_written(std::vector<t_unit> const &a_units, int a_done, t_string &a_out)
{
    std::size_t l_length = 0;
    while (l_length < static_cast<std::size_t>(a_done > 0 ? a_done : 0) && a_units[l_length] != t_unit(0)) {
        ++l_length;
    }
    a_out.append(a_units.data(), l_length);
}

// One MultiByteToWideChar conversion, first sizing and then filling. A piece that is the whole
// rest of the text also takes its terminating NUL along, which then ends the result.
void append_wide(UINT a_code_page, char const *a_text, std::size_t a_count, std::wstring &a_out)
{
    int const l_size = MultiByteToWideChar(a_code_page, 0, a_text, static_cast<int>(a_count), nullptr, 0);
    if (l_size <= 0) {
        return;
    }
    std::vector<wchar_t> l_wide(static_cast<std::size_t>(l_size) + 1, L'\0');
    int const l_done = MultiByteToWideChar(a_code_page, 0, a_text, static_cast<int>(a_count), l_wide.data(), l_size);
    append_written(l_wide, l_done, a_out);
}

void append_narrow(UINT a_code_page, wchar_t const *a_text, std::size_t a_count, std::string &a_out)
{
    int const l_size =
        WideCharToMultiByte(a_code_page, 0, a_text, static_cast<int>(a_count), nullptr, 0, nullptr, nullptr);
    if (l_size <= 0) {
        return;
    }
    std::vector<char> l_bytes(static_cast<std::size_t>(l_size) + 1, '\0');
    int const l_done = WideCharToMultiByte(a_code_page, 0, a_text, static_cast<int>(a_count), l_bytes.data(), l_size,
                                           nullptr, nullptr);
    append_written(l_bytes, l_done, a_out);
}

// A UTF-8 conversion of a whole text, piece by piece: a_cut ends each piece on a character
// boundary, a_append converts it; the last piece takes the terminating NUL along.
template <typename t_out, typename t_unit, typename t_cut, typename t_append>
t_out utf8_converted(t_unit const *a_text, std::size_t a_length, t_cut a_cut, t_append a_append)
{
    t_out l_out;
    while (a_length > k_piece) {
        std::size_t const l_count = a_cut(a_text, a_length);
        a_append(CP_UTF8, a_text, l_count, l_out);
        a_text += l_count;
        a_length -= l_count;
    }
    a_append(CP_UTF8, a_text, a_length + 1, l_out);
    return l_out;
}

} // namespace

std::wstring wide_with_utf8(char const *a_text, std::size_t a_length)
{
    return utf8_converted<std::wstring>(a_text, a_length, utf8_piece, append_wide);
}

std::string utf8_with_wide(wchar_t const *a_text, std::size_t a_length)
{
    return utf8_converted<std::string>(a_text, a_length, utf16_piece, append_narrow);
}

// UTF-8 to UTF-16 to the ANSI code page (code page 0), through arrays of the text's length plus
// one, as wide and as narrow as the text: a conversion that would not fit gives what was written.
std::string ansi_with_utf8(char const *a_text, std::size_t a_length)
{
    if (a_length >= k_piece) {
        std::wstring const l_wide = wide_with_utf8(a_text, a_length);
        std::string l_text;
        for (std::size_t l_at = 0; l_at < l_wide.size();) {
            std::size_t const l_count = utf16_piece(l_wide.data() + l_at, l_wide.size() - l_at);
            append_narrow(CP_ACP, l_wide.data() + l_at, l_count, l_text);
            l_at += l_count;
        }
        return l_text;
    }
    int const l_n = static_cast<int>(a_length) + 1;
    std::vector<wchar_t> l_wide(static_cast<std::size_t>(l_n), L'\0');
    std::vector<char> l_bytes(static_cast<std::size_t>(l_n) + 1, '\0');
    MultiByteToWideChar(CP_UTF8, 0, a_text, l_n, l_wide.data(), l_n);
    WideCharToMultiByte(CP_ACP, 0, l_wide.data(), l_n, l_bytes.data(), l_n, nullptr, nullptr);
    return std::string(l_bytes.data());
}

sint32 parse_long(char const *a_text, int a_base)
{
    return static_cast<sint32>(std::strtol(a_text, nullptr, a_base));
}

uint32 parse_ulong(char const *a_text, int a_base)
{
    return static_cast<uint32>(std::strtoul(a_text, nullptr, a_base));
}

sint64 parse_int64(char const *a_text, int a_base)
{
    return static_cast<sint64>(_strtoi64(a_text, nullptr, a_base));
}

uint64 parse_uint64(char const *a_text, int a_base)
{
    return static_cast<uint64>(_strtoui64(a_text, nullptr, a_base));
}

} // namespace platform
} // namespace ordwel
