// SPDX-License-Identifier: MIT
#include <ordwel/strutil.h>

#include <cstring>

#include <ordwel/string_helpers.h>

#include "platform/text.h"

namespace ordwel {
namespace strutil {

namespace {

using size_type = std::string::size_type;

// The length of a text up to its first NUL, or its whole length when it holds none.
size_type length_to_nul(std::string const &a_text)
{
    void const *const l_nul = std::memchr(a_text.data(), '\0', a_text.size());
    return l_nul == nullptr ? a_text.size() : static_cast<size_type>(static_cast<char const *>(l_nul) - a_text.data());
}

// The quote and bracket tokenisers keep every byte of a token, brackets and quotes included, so a
// token is always one stretch of the text between two cutting delimiters: it is taken whole
// instead of byte by byte.
template <typename t_is_cut>
void tokenize_stretches(std::string const &a_text, char a_delimiter, std::vector<std::string> &a_out, t_is_cut a_is_cut)
{
    size_type const l_length = length_to_nul(a_text);
    char const *const l_data = a_text.data();
    size_type l_start = 0;
    for (size_type l_index = 0; l_index < l_length; ++l_index) {
        char const l_byte = l_data[l_index];
        if (a_is_cut(l_byte) && l_byte == a_delimiter) {
            a_out.emplace_back(l_data + l_start, l_index - l_start);
            l_start = l_index + 1;
        }
    }
    a_out.emplace_back(l_data + l_start, l_length - l_start);
}

// Measures the joined length first, so the output is reserved once before appending.
template <typename t_list> void join_with_byte(t_list const &a_list, char a_separator, std::string &a_out)
{
    if (a_list.empty()) {
        return;
    }
    size_type l_total = a_out.size();
    for (std::string const &l_item : a_list) {
        l_total += l_item.size() + 1;
    }
    a_out.reserve(l_total);
    auto l_iter = a_list.begin();
    a_out.append(*l_iter);
    for (++l_iter; l_iter != a_list.end(); ++l_iter) {
        if (a_separator != '\0') {
            a_out.push_back(a_separator);
        }
        a_out.append(*l_iter);
    }
}

// The last of equal keys wins: an existing key's value is assigned in place, a new key goes in at
// the place that the search for it found.
void insert_last_wins(std::map<std::string, std::string> &a_map, char const *a_key, size_type a_key_length,
                      char const *a_value, size_type a_value_length)
{
    std::string l_key(a_key, a_key_length);
    auto const l_found = a_map.lower_bound(l_key);
    if (l_found != a_map.end() && l_found->first == l_key) {
        l_found->second.assign(a_value, a_value_length);
    } else {
        a_map.emplace_hint(l_found, std::move(l_key), std::string(a_value, a_value_length));
    }
}

} // namespace

void tokenize_string(std::string const &a_text, char a_delimiter, std::vector<std::string> &a_out, bool a_keep_empty)
{
    char const *const l_data = a_text.data();
    size_type const l_size = a_text.size();
    size_type l_position = 0;
    for (;;) {
        auto const *const l_found =
            static_cast<char const *>(std::memchr(l_data + l_position, a_delimiter, l_size - l_position));
        size_type const l_end = l_found == nullptr ? l_size : static_cast<size_type>(l_found - l_data);
        if (a_keep_empty || l_end != l_position) {
            a_out.emplace_back(l_data + l_position, l_end - l_position);
        }
        if (l_found == nullptr) {
            return;
        }
        l_position = l_end + 1;
    }
}

void tokenize_string(std::string const &a_text, char a_delimiter, char a_quote, std::vector<std::string> &a_out)
{
    bool l_quoted = false;
    tokenize_stretches(a_text, a_delimiter, a_out, [&l_quoted, a_quote](char a_byte) {
        if (a_byte == a_quote) {
            l_quoted = !l_quoted;
        }
        return !l_quoted;
    });
}

void tokenize_string(std::string const &a_text, char a_delimiter, char a_open, char a_close,
                     std::vector<std::string> &a_out)
{
    // The depth cannot pass the text's length, so 64 bits never overflow.
    uint64 l_depth = 0;
    tokenize_stretches(a_text, a_delimiter, a_out, [&l_depth, a_open, a_close](char a_byte) {
        if (a_byte == a_open) {
            ++l_depth;
        } else if (a_byte == a_close && l_depth > 0) {
            --l_depth;
        }
        return l_depth == 0;
    });
}

// The remaining text is tracked by its start instead of being cut off a copy, which keeps long
// texts linear. Positions below are relative to that start, as if the copy had been cut.
void tokenize_string(std::string const &a_text, char a_delimiter, unsigned int a_width, std::vector<std::string> &a_out)
{
    size_type const l_size = a_text.size();
    size_type const l_width = a_width;
    size_type l_start = 0;
    while (l_size - l_start > l_width) {
        size_type const l_next = a_text.find(a_delimiter, l_start + l_width);
        size_type l_previous = a_text.rfind(a_delimiter, l_start + l_width);
        if (l_previous != std::string::npos && l_previous < l_start) {
            l_previous = std::string::npos;
        }
        size_type l_cut;
        if (l_next == std::string::npos && l_previous == std::string::npos) {
            break;
        } else if (l_next == std::string::npos) {
            l_cut = l_previous;
        } else if (l_previous == std::string::npos) {
            l_cut = l_next;
        } else {
            size_type const l_after = l_next - l_start - l_width;
            size_type const l_before = l_width - (l_previous - l_start);
            l_cut = l_after >= l_before ? l_previous : l_next;
        }
        a_out.emplace_back(a_text, l_start, l_cut - l_start);
        l_start = l_cut + 1;
    }
    a_out.emplace_back(a_text, l_start, std::string::npos);
}

void join_strings(std::list<std::string> const &a_list, char a_separator, std::string &a_out)
{
    join_with_byte(a_list, a_separator, a_out);
}

void join_strings(std::vector<std::string> const &a_list, char a_separator, std::string &a_out)
{
    join_with_byte(a_list, a_separator, a_out);
}

void join_strings(std::vector<std::string> const &a_list, std::string const &a_separator, std::string &a_out)
{
    if (a_list.empty()) {
        return;
    }
    size_type l_total = a_out.size();
    for (std::string const &l_item : a_list) {
        l_total += l_item.size() + a_separator.size();
    }
    a_out.reserve(l_total);
    a_out.append(a_list.front());
    for (auto l_iter = a_list.begin() + 1; l_iter != a_list.end(); ++l_iter) {
        a_out.append(a_separator).append(*l_iter);
    }
}

void kvmap_with_kvstr(std::map<std::string, std::string> &a_map, std::string const &a_text, char a_pair, char a_kv)
{
    if (a_text.empty()) {
        return;
    }
    char const *const l_data = a_text.data();
    size_type const l_size = a_text.size();
    if (a_kv == '\0') {
        insert_last_wins(a_map, l_data, l_size, l_data, 0);
        return;
    }
    size_type l_position = 0;
    for (;;) {
        // The first byte that ends the key: a_kv, or a_pair for a pair without a value.
        size_type l_mark = l_position;
        while (l_mark < l_size && l_data[l_mark] != a_kv && l_data[l_mark] != a_pair) {
            ++l_mark;
        }
        size_type l_pair_end = l_size;
        if (l_mark < l_size) {
            auto const *const l_found =
                static_cast<char const *>(std::memchr(l_data + l_mark, a_pair, l_size - l_mark));
            if (l_found != nullptr) {
                l_pair_end = static_cast<size_type>(l_found - l_data);
            }
        }
        // The value runs from behind the mark to the pair's end; a mark at the text's end (no
        // separator left) or at a pair separator leaves it empty.
        size_type const l_value_start = l_mark + 1;
        size_type const l_value_length = l_value_start < l_pair_end ? l_pair_end - l_value_start : 0;
        char const *const l_value = l_value_length != 0 ? l_data + l_value_start : l_data;
        insert_last_wins(a_map, l_data + l_position, l_mark - l_position, l_value, l_value_length);
        if (l_pair_end == l_size) {
            return;
        }
        l_position = l_pair_end + 1;
    }
}

std::map<std::string, std::string> kvmap_with_kvstr(std::string const &a_text, char a_pair, char a_kv)
{
    std::map<std::string, std::string> l_map;
    kvmap_with_kvstr(l_map, a_text, a_pair, a_kv);
    return l_map;
}

void kvstr_with_kvmap(std::string &a_out, std::map<std::string, std::string> const &a_map, char a_pair, char a_kv)
{
    for (auto const &l_entry : a_map) {
        if (!l_entry.first.empty()) {
            if (!a_out.empty()) {
                a_out.push_back(a_pair);
            }
            a_out.append(l_entry.first);
        }
        if (!l_entry.second.empty()) {
            a_out.push_back(a_kv);
            a_out.append(l_entry.second);
        }
    }
}

std::string kvstr_with_kvmap(std::map<std::string, std::string> const &a_map, char a_pair, char a_kv)
{
    std::string l_text;
    kvstr_with_kvmap(l_text, a_map, a_pair, a_kv);
    return l_text;
}

// Measures the result first and reserves exactly that, so a long replacement value costs no more
// than it writes, and a text without any key byte is left alone without a copy.
std::string &replace(std::string &a_text, std::map<char, std::string> const &a_map)
{
    if (a_map.empty() || a_text.empty()) {
        return a_text;
    }
    std::string const *l_values[256] = {};
    for (auto const &l_entry : a_map) {
        l_values[static_cast<unsigned char>(l_entry.first)] = &l_entry.second;
    }
    size_type l_length = 0;
    bool l_any = false;
    for (char const l_byte : a_text) {
        std::string const *const l_value = l_values[static_cast<unsigned char>(l_byte)];
        if (l_value == nullptr) {
            ++l_length;
        } else {
            l_length += l_value->size();
            l_any = true;
        }
    }
    if (!l_any) {
        return a_text;
    }
    std::string l_result;
    l_result.reserve(l_length);
    char const *const l_end = a_text.data() + a_text.size();
    char const *l_run = a_text.data();
    for (char const *l_iter = l_run; l_iter != l_end; ++l_iter) {
        std::string const *const l_value = l_values[static_cast<unsigned char>(*l_iter)];
        if (l_value != nullptr) {
            l_result.append(l_run, l_iter).append(*l_value);
            l_run = l_iter + 1;
        }
    }
    l_result.append(l_run, l_end);
    a_text.swap(l_result);
    return a_text;
}

std::string &replace(std::string &a_text, std::map<std::string, std::string> const &a_map)
{
    for (auto const &l_entry : a_map) {
        ordwel::replace(a_text, l_entry.first, l_entry.second);
    }
    return a_text;
}

std::string string_replaced(std::string const &a_text, std::map<char, std::string> const &a_map)
{
    std::string l_copy(a_text);
    return replace(l_copy, a_map);
}

std::string string_replaced(std::string const &a_text, std::map<std::string, std::string> const &a_map)
{
    std::string l_copy(a_text);
    return replace(l_copy, a_map);
}

std::string buffer_to_string(buffer const &a_buffer)
{
    std::string l_text;
    buffer_to_string(l_text, a_buffer);
    return l_text;
}

void buffer_to_string(std::string &a_out, buffer const &a_buffer)
{
    if (a_buffer.empty()) {
        a_out.clear();
        return;
    }
    a_out.assign(reinterpret_cast<char const *>(a_buffer.begin()), static_cast<size_type>(a_buffer.size()));
}

std::wstring string_to_wstring(std::string const &a_text)
{
    return platform::wide_with_utf8(a_text.c_str(), length_to_nul(a_text));
}

std::string wstring_to_string(std::wstring const &a_text)
{
    std::wstring::size_type const l_length = a_text.find(L'\0');
    return platform::utf8_with_wide(a_text.c_str(), l_length == std::wstring::npos ? a_text.size() : l_length);
}

} // namespace strutil
} // namespace ordwel
