// SPDX-License-Identifier: MIT
#include <ordwel/string_helpers.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "text/format.h"

namespace ordwel {

bool contains(std::string const &a_sought, std::string const &a_text)
{
    if (a_sought.size() > a_text.size()) {
        return false;
    }
    return a_text.find(a_sought) != std::string::npos;
}

bool contains(char a_sought, std::string const &a_text)
{
    return !a_text.empty() && std::memchr(a_text.data(), a_sought, a_text.size()) != nullptr;
}

bool starts_with(std::string const &a_prefix, std::string const &a_text)
{
    return a_prefix.size() <= a_text.size() && a_text.compare(0, a_prefix.size(), a_prefix) == 0;
}

bool ends_with(std::string const &a_suffix, std::string const &a_text)
{
    return a_suffix.size() <= a_text.size() &&
           a_text.compare(a_text.size() - a_suffix.size(), a_suffix.size(), a_suffix) == 0;
}

std::string appended(std::string const &a_first, std::string const &a_second)
{
    std::string l_result;
    l_result.reserve(a_first.size() + a_second.size());
    l_result.append(a_first).append(a_second);
    return l_result;
}

std::string &capitalize(std::string &a_text)
{
    if (!a_text.empty() && std::islower(static_cast<unsigned char>(a_text[0]))) {
        a_text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(a_text[0])));
    }
    return a_text;
}

std::string capitalized(std::string const &a_text)
{
    std::string l_copy(a_text);
    return capitalize(l_copy);
}

std::string &to_lowercase(std::string &a_text)
{
    for (char &l_byte : a_text) {
        l_byte = static_cast<char>(std::tolower(static_cast<unsigned char>(l_byte)));
    }
    return a_text;
}

std::string &to_uppercase(std::string &a_text)
{
    for (char &l_byte : a_text) {
        l_byte = static_cast<char>(std::toupper(static_cast<unsigned char>(l_byte)));
    }
    return a_text;
}

std::string string_to_lowercase(std::string const &a_text)
{
    std::string l_copy(a_text);
    return to_lowercase(l_copy);
}

std::string string_to_uppercase(std::string const &a_text)
{
    std::string l_copy(a_text);
    return to_uppercase(l_copy);
}

// Replacing in place and searching on behind the inserted text is the same as one pass over the
// original text that copies the stretches between non-overlapping matches. The pass is linear,
// where repeated in-place replacing is quadratic on texts with many matches.
std::string &replace(std::string &a_text, std::string const &a_from, std::string const &a_to)
{
    if (a_from.empty()) {
        return a_text;
    }
    std::string::size_type l_found = a_text.find(a_from);
    if (l_found == std::string::npos) {
        return a_text;
    }
    std::string l_result;
    l_result.reserve(a_text.size());
    std::string::size_type l_position = 0;
    do {
        l_result.append(a_text, l_position, l_found - l_position).append(a_to);
        l_position = l_found + a_from.size();
        l_found = a_text.find(a_from, l_position);
    } while (l_found != std::string::npos);
    l_result.append(a_text, l_position, std::string::npos);
    a_text.swap(l_result);
    return a_text;
}

// In place, the byte form searches on at the found position plus one in the changed text. With a
// non-empty a_to that is inside a_to or right behind it; we go on right behind it, which gives the
// same result wherever a_to holds no a_from behind its first byte, and ends where it does. With an
// empty a_to the byte that moves up into the found position is passed over, as in place.
std::string &replace(std::string &a_text, char a_from, std::string const &a_to)
{
    char const *const l_begin = a_text.data();
    char const *const l_end = l_begin + a_text.size();
    auto const *l_found = static_cast<char const *>(std::memchr(l_begin, a_from, a_text.size()));
    if (l_found == nullptr) {
        return a_text;
    }
    std::string l_result;
    l_result.reserve(a_text.size() + (a_to.size() > 1 ? a_to.size() * 4 : 0));
    char const *l_position = l_begin;
    while (l_found != nullptr) {
        l_result.append(l_position, l_found).append(a_to);
        l_position = l_found + 1;
        if (a_to.empty() && l_position != l_end) {
            l_result.push_back(*l_position);
            ++l_position;
        }
        l_found =
            static_cast<char const *>(std::memchr(l_position, a_from, static_cast<std::size_t>(l_end - l_position)));
    }
    l_result.append(l_position, l_end);
    a_text.swap(l_result);
    return a_text;
}

std::string string_replaced(std::string const &a_text, std::string const &a_from, std::string const &a_to)
{
    std::string l_copy(a_text);
    return replace(l_copy, a_from, a_to);
}

std::string string_replaced(std::string const &a_text, char a_from, std::string const &a_to)
{
    std::string l_copy(a_text);
    return replace(l_copy, a_from, a_to);
}

std::pair<std::string, std::string> split(std::string const &a_text, char a_separator)
{
    std::string::size_type const l_found = a_text.find(a_separator);
    if (l_found == std::string::npos) {
        return {a_text, std::string()};
    }
    return {a_text.substr(0, l_found), a_text.substr(l_found + 1)};
}

std::string trimmed(std::string const &a_text, std::string const &a_set)
{
    std::string::size_type const l_first = a_text.find_first_not_of(a_set);
    if (l_first == std::string::npos) {
        return a_text;
    }
    std::string::size_type const l_last = a_text.find_last_not_of(a_set);
    return a_text.substr(l_first, l_last - l_first + 1);
}

std::string trimmed(std::string const &a_text, char a_byte)
{
    return trimmed(a_text, std::string(1, a_byte));
}

std::string string_space_align(std::string const &a_text, unsigned int a_width, e_space_align a_align)
{
    auto const l_length = static_cast<uint32>(a_text.size());
    if (l_length > a_width) {
        return a_text;
    }
    unsigned int const l_pad = a_width - l_length;
    std::string l_result;
    l_result.reserve(a_text.size() + l_pad);
    switch (static_cast<int>(a_align)) {
    case space_align_left:
        l_result.append(a_text).append(l_pad, ' ');
        break;
    case space_align_right:
        l_result.append(l_pad, ' ').append(a_text);
        break;
    default:
        l_result.append((l_pad + 1) / 2, ' ').append(a_text).append(l_pad / 2, ' ');
        break;
    }
    return l_result;
}

std::string string_truncate(std::string const &a_text, unsigned int a_width, e_truncate_whence a_whence)
{
    auto const l_length = static_cast<uint32>(a_text.size());
    if (l_length <= a_width) {
        return a_text;
    }
    if (a_width == 0) {
        return std::string();
    }
    int const l_whence = static_cast<int>(a_whence);
    if (a_width == 1) {
        return std::string(1, l_whence == truncate_front ? a_text.back() : a_text.front());
    }
    unsigned int const l_dots = a_width <= 5 ? 1 : (a_width <= 12 ? 2 : 3);
    unsigned int const l_keep = a_width - l_dots;
    std::string l_result;
    l_result.reserve(a_width);
    switch (l_whence) {
    case truncate_front:
        l_result.append(l_dots, '.').append(a_text, a_text.size() - l_keep, l_keep);
        break;
    case truncate_back:
        l_result.append(a_text, 0, l_keep).append(l_dots, '.');
        break;
    default:
        l_result.append(a_text, 0, (l_keep + 1) / 2)
            .append(l_dots, '.')
            .append(a_text, a_text.size() - l_keep / 2, l_keep / 2);
        break;
    }
    return l_result;
}

std::string string_with_cstr(char const *a_text, uint64 a_length)
{
    if (a_text == nullptr || a_length == 0) {
        return std::string();
    }
    if (a_length == static_cast<uint64>(std::string::npos)) {
        return std::string(a_text);
    }
    return std::string(a_text, static_cast<std::string::size_type>(a_length));
}

std::string string_with_format_va(char const *a_format, va_list a_args)
{
    if (a_format == nullptr) {
        return std::string();
    }
    // Most messages are short: format once into the stack and measure at the same time; only a
    // longer text takes a second pass into a string of the measured size.
    char l_small[256];
    va_list l_args;
    va_copy(l_args, a_args);
    int const l_length = std::vsnprintf(l_small, sizeof l_small, a_format, l_args);
    va_end(l_args);
    if (l_length < 1) {
        return std::string();
    }
    if (static_cast<unsigned int>(l_length) < sizeof l_small) {
        return std::string(l_small, static_cast<std::size_t>(l_length));
    }
    std::string l_result(static_cast<std::size_t>(l_length), '\0');
    va_copy(l_args, a_args);
    int const l_written = std::vsnprintf(&l_result[0], l_result.size() + 1, a_format, l_args);
    va_end(l_args);
    if (l_written <= 0) {
        return std::string();
    }
    return l_result;
}

std::string string_with_format(char const *a_format, ...)
{
    va_list l_args;
    va_start(l_args, a_format);
    std::string l_result = string_with_format_va(a_format, l_args);
    va_end(l_args);
    return l_result;
}

std::string string_with_fourcc(unsigned int a_code, char a_substitute)
{
    std::string l_result(4, '\0');
    for (int l_index = 0; l_index < 4; ++l_index) {
        auto const l_byte = static_cast<unsigned char>((a_code >> (24 - 8 * l_index)) & 0xffU);
        l_result[static_cast<std::size_t>(l_index)] =
            (l_byte < 32 || l_byte >= 127) ? a_substitute : static_cast<char>(l_byte);
    }
    return l_result;
}

std::string const &string_empty_string()
{
    static std::string const l_empty;
    return l_empty;
}

namespace {
// Built at load, so that the first caller never pays for it.
[[maybe_unused]] std::string const &s_empty_string_at_load = string_empty_string();
} // namespace

} // namespace ordwel
