// SPDX-License-Identifier: MIT
#include <ordwel/path.h>

#include <algorithm>
#include <vector>

#include <ordwel/string_helpers.h>

namespace ordwel {

namespace {

using size_type = std::string::size_type;
constexpr size_type k_npos = std::string::npos;

// Where the file part starts: behind the last separator, or 0.
size_type file_start(std::string const &a_path, char a_sep)
{
    size_type const l_last = a_path.rfind(a_sep);
    return l_last == k_npos ? 0 : l_last + 1;
}

// The dot in front of the suffix, or npos when the file part has none (or is empty). With a count,
// up to that many further dots within the file part move the start of the suffix back.
size_type suffix_dot(std::string const &a_path, char a_sep, unsigned int a_count)
{
    size_type const l_start = file_start(a_path, a_sep);
    if (l_start == a_path.size()) {
        return k_npos;
    }
    size_type l_dot = a_path.rfind('.');
    if (l_dot == k_npos || l_dot < l_start) {
        return k_npos;
    }
    for (unsigned int l_step = 0; l_step < a_count && l_dot > l_start; ++l_step) {
        size_type const l_earlier = a_path.rfind('.', l_dot - 1);
        if (l_earlier == k_npos || l_earlier < l_start) {
            break;
        }
        l_dot = l_earlier;
    }
    return l_dot;
}

// The length of the directory that path_directory gives for a number of levels.
size_type directory_cut(std::string const &a_path, char a_sep, unsigned int a_levels)
{
    size_type l_cut = file_start(a_path, a_sep);
    for (unsigned int l_level = 0; l_level < a_levels && l_cut != 0; ++l_level) {
        size_type const l_found = a_path.rfind(a_sep, l_cut - 1);
        l_cut = l_found == k_npos ? 0 : l_found;
    }
    return l_cut;
}

// a_left followed by a_right with one separator at the seam, written to a_out.
void join_into(std::string &a_out, std::string const &a_left, std::string const &a_right, char a_sep)
{
    a_out.reserve(a_left.size() + a_right.size() + 1);
    a_out.append(a_left);
    if (a_left.empty() || a_right.empty()) {
        a_out.append(a_right);
        return;
    }
    bool const l_left_has = a_left.back() == a_sep;
    bool const l_right_has = a_right.front() == a_sep;
    if (l_left_has && l_right_has) {
        a_out.append(a_right, 1, k_npos);
    } else {
        if (!l_left_has && !l_right_has) {
            a_out.push_back(a_sep);
        }
        a_out.append(a_right);
    }
}

// Removes the leading '/' of a text, unless it is made of nothing else.
void drop_leading_slashes(std::string &a_text)
{
    size_type const l_first = a_text.find_first_not_of('/');
    if (l_first != k_npos) {
        a_text.erase(0, l_first);
    }
}

} // namespace

std::string path_front(std::string const &a_path, char a_sep)
{
    return a_path.substr(0, a_path.find(a_sep));
}

std::string path_back(std::string const &a_path, char a_sep)
{
    return a_path.substr(file_start(a_path, a_sep));
}

std::string path_file(std::string const &a_path, char a_sep)
{
    return path_back(a_path, a_sep);
}

std::string path_directory(std::string const &a_path, char a_sep, unsigned int a_levels)
{
    return a_path.substr(0, directory_cut(a_path, a_sep, a_levels));
}

std::string path_name(std::string const &a_path, char a_sep)
{
    size_type const l_start = file_start(a_path, a_sep);
    size_type const l_dot = suffix_dot(a_path, a_sep, 0);
    return a_path.substr(l_start, l_dot == k_npos ? k_npos : l_dot - l_start);
}

std::string path_suffix(std::string const &a_path, char a_sep, unsigned int a_count)
{
    size_type const l_dot = suffix_dot(a_path, a_sep, a_count);
    return l_dot == k_npos ? std::string() : a_path.substr(l_dot + 1);
}

std::string &path_append(std::string &a_path, std::string const &a_other, char a_sep)
{
    if (a_path.empty() || a_other.empty()) {
        a_path.append(a_other);
        return a_path;
    }
    bool const l_left_has = a_path.back() == a_sep;
    bool const l_right_has = a_other.front() == a_sep;
    if (l_left_has && l_right_has) {
        a_path.append(a_other, 1, k_npos);
    } else {
        if (!l_left_has && !l_right_has) {
            a_path.push_back(a_sep);
        }
        a_path.append(a_other);
    }
    return a_path;
}

// The copying twins build their result directly instead of copying the path and then editing the
// copy; the text is the same as that of the in-place form.
std::string path_appended(std::string const &a_path, std::string const &a_other, char a_sep)
{
    std::string l_result;
    join_into(l_result, a_path, a_other, a_sep);
    return l_result;
}

std::string &path_push_back(std::string &a_path, std::string const &a_other, char a_sep)
{
    return path_append(a_path, a_other, a_sep);
}

std::string path_pushed_back(std::string const &a_path, std::string const &a_other, char a_sep)
{
    return path_appended(a_path, a_other, a_sep);
}

std::string &path_prepend(std::string &a_path, std::string const &a_other, char a_sep)
{
    std::string l_result;
    join_into(l_result, a_other, a_path, a_sep);
    a_path.swap(l_result);
    return a_path;
}

std::string path_prepended(std::string const &a_path, std::string const &a_other, char a_sep)
{
    std::string l_result;
    join_into(l_result, a_other, a_path, a_sep);
    return l_result;
}

std::string &path_push_front(std::string &a_path, std::string const &a_other, char a_sep)
{
    return path_prepend(a_path, a_other, a_sep);
}

std::string path_pushed_front(std::string const &a_path, std::string const &a_other, char a_sep)
{
    return path_prepended(a_path, a_other, a_sep);
}

std::string &path_pop_back(std::string &a_path, char a_sep)
{
    size_type const l_last = a_path.rfind(a_sep);
    a_path.erase(l_last == k_npos ? 0 : l_last);
    return a_path;
}

// Cut straight out of the path rather than erased from a copy of it.
std::string path_popped_back(std::string const &a_path, char a_sep)
{
    size_type const l_last = a_path.rfind(a_sep);
    return l_last == k_npos ? std::string() : a_path.substr(0, l_last);
}

std::string &path_pop_front(std::string &a_path, char a_sep)
{
    size_type const l_first = a_path.find(a_sep);
    if (l_first == k_npos) {
        a_path.clear();
    } else {
        a_path.erase(0, l_first + 1);
    }
    return a_path;
}

std::string path_popped_front(std::string const &a_path, char a_sep)
{
    size_type const l_first = a_path.find(a_sep);
    return l_first == k_npos ? std::string() : a_path.substr(l_first + 1);
}

std::string &path_set_directory(std::string &a_path, std::string const &a_directory, char a_sep, unsigned int a_levels)
{
    size_type const l_cut = directory_cut(a_path, a_sep, a_levels);
    if (a_directory.empty()) {
        a_path.erase(0, l_cut);
        return a_path;
    }
    bool const l_path_has = l_cut < a_path.size() && a_path[l_cut] == a_sep;
    bool const l_directory_has = a_directory.back() == a_sep;
    if (!l_path_has && !l_directory_has) {
        std::string l_joined;
        l_joined.reserve(a_directory.size() + 1 + a_path.size() - l_cut);
        l_joined.append(a_directory).push_back(a_sep);
        l_joined.append(a_path, l_cut, k_npos);
        a_path.swap(l_joined);
    } else if (l_path_has && l_directory_has) {
        a_path.replace(0, l_cut + 1, a_directory);
    } else {
        a_path.replace(0, l_cut, a_directory);
    }
    return a_path;
}

std::string path_new_directory(std::string const &a_path, std::string const &a_directory, char a_sep,
                               unsigned int a_levels)
{
    std::string l_copy(a_path);
    return path_set_directory(l_copy, a_directory, a_sep, a_levels);
}

std::string &path_set_file(std::string &a_path, std::string const &a_file, char a_sep)
{
    size_type const l_start = file_start(a_path, a_sep);
    return a_path.replace(l_start, k_npos, a_file);
}

std::string path_new_file(std::string const &a_path, std::string const &a_file, char a_sep)
{
    std::string l_copy(a_path);
    return path_set_file(l_copy, a_file, a_sep);
}

std::string &path_set_name(std::string &a_path, std::string const &a_name, char a_sep)
{
    size_type const l_start = file_start(a_path, a_sep);
    size_type const l_dot = suffix_dot(a_path, a_sep, 0);
    return a_path.replace(l_start, l_dot == k_npos ? k_npos : l_dot - l_start, a_name);
}

std::string path_new_name(std::string const &a_path, std::string const &a_name, char a_sep)
{
    std::string l_copy(a_path);
    return path_set_name(l_copy, a_name, a_sep);
}

std::string &path_set_suffix(std::string &a_path, std::string const &a_suffix, char a_sep, unsigned int a_count)
{
    size_type const l_dot = suffix_dot(a_path, a_sep, a_count);
    size_type const l_position = l_dot == k_npos ? a_path.size() : l_dot + 1;
    bool const l_add_dot =
        !a_suffix.empty() && a_suffix.front() != '.' && l_position != 0 && a_path[l_position - 1] != '.';
    a_path.erase(l_position);
    if (l_add_dot) {
        a_path.push_back('.');
    }
    a_path.append(a_suffix);
    return a_path;
}

std::string path_new_suffix(std::string const &a_path, std::string const &a_suffix, char a_sep, unsigned int a_count)
{
    std::string l_copy(a_path);
    return path_set_suffix(l_copy, a_suffix, a_sep, a_count);
}

namespace {

// The components are kept as places in the original text, so nothing is copied until the result
// is put together. The list never holds more entries than the text has components, which are
// counted first: usual paths keep it on the stack.
std::string normalized_text(std::string const &a_path, char a_sep)
{
    struct component {
        size_type start;
        size_type length;
    };
    char const *const l_data = a_path.data();
    size_type const l_size = a_path.size();
    size_type const l_count = static_cast<size_type>(std::count(l_data, l_data + l_size, a_sep)) + 1;
    constexpr size_type k_inline = 64;
    component l_inline[k_inline];
    std::vector<component> l_spill;
    component *l_kept = l_inline;
    if (l_count > k_inline) {
        l_spill.resize(l_count);
        l_kept = l_spill.data();
    }
    size_type l_kept_count = 0;
    size_type l_start = 0;
    for (;;) {
        size_type l_end = l_start;
        while (l_end < l_size && l_data[l_end] != a_sep) {
            ++l_end;
        }
        size_type const l_length = l_end - l_start;
        bool const l_first = l_start == 0;
        bool const l_last = l_end == l_size;
        if (l_length == 0 || (l_length == 1 && l_data[l_start] == '.')) {
            if (l_first || l_last) {
                l_kept[l_kept_count++] = component{l_start, 0};
            }
        } else if (l_length == 2 && l_data[l_start] == '.' && l_data[l_start + 1] == '.') {
            if (l_kept_count == 0) {
                l_kept[l_kept_count++] = component{l_start, l_length};
            } else {
                --l_kept_count;
            }
        } else {
            l_kept[l_kept_count++] = component{l_start, l_length};
        }
        if (l_last) {
            break;
        }
        l_start = l_end + 1;
    }
    std::string l_result;
    if (l_kept_count != 0) {
        size_type l_total = l_kept_count - 1;
        for (size_type l_index = 0; l_index < l_kept_count; ++l_index) {
            l_total += l_kept[l_index].length;
        }
        l_result.reserve(l_total);
        l_result.append(l_data + l_kept[0].start, l_kept[0].length);
        for (size_type l_index = 1; l_index < l_kept_count; ++l_index) {
            l_result.push_back(a_sep);
            l_result.append(l_data + l_kept[l_index].start, l_kept[l_index].length);
        }
    }
    return l_result;
}

} // namespace

std::string &path_normalize(std::string &a_path, char a_sep)
{
    std::string l_result = normalized_text(a_path, a_sep);
    a_path.swap(l_result);
    return a_path;
}

std::string path_normalized(std::string const &a_path, char a_sep)
{
    return normalized_text(a_path, a_sep);
}

std::string &path_root(std::string &a_path, std::string const &a_root)
{
    if (!a_path.empty() && a_path.front() == '/') {
        return a_path;
    }
    std::string l_result;
    l_result.reserve(a_root.size() + a_path.size() + 2);
    if (a_root.empty() || a_root.front() != '/') {
        l_result.push_back('/');
    }
    l_result.append(a_root);
    if (l_result.back() != '/' && !a_path.empty()) {
        l_result.push_back('/');
    }
    l_result.append(a_path);
    a_path.swap(l_result);
    return a_path;
}

std::string path_rooted(std::string const &a_path, std::string const &a_root)
{
    std::string l_copy(a_path);
    return path_root(l_copy, a_root);
}

std::string &path_unroot(std::string &a_path, std::string const &a_root)
{
    std::string const l_root = trimmed(a_root, '/');
    if (a_path.empty()) {
        return a_path;
    }
    if (a_path == "/") {
        a_path.clear();
        return a_path;
    }
    drop_leading_slashes(a_path);
    if (starts_with(l_root, a_path)) {
        a_path.erase(0, l_root.size());
        drop_leading_slashes(a_path);
    }
    return a_path;
}

std::string path_unrooted(std::string const &a_path, std::string const &a_root)
{
    std::string l_copy(a_path);
    return path_unroot(l_copy, a_root);
}

} // namespace ordwel
