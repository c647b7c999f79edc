// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <ordwel/path.h>
#include <ordwel/url.h>
#include <ordwel/url_parts.h>

#include "options.h"
#include "tool_io.h"

namespace ordwel_toolbox {

namespace {

using namespace ordwel;

using fields = std::vector<std::pair<char const *, std::string>>;

// Named values, one a line, or as one JSON object.
void print_fields(fields const &a_fields, bool a_json)
{
    if (a_json) {
        std::string l_text = "{";
        for (auto const &l_field : a_fields) {
            l_text += std::string(l_text.size() > 1 ? ", " : "") + json_string(l_field.first) + ": " +
                      json_string(l_field.second);
        }
        std::printf("%s}\n", l_text.c_str());
        return;
    }
    for (auto const &l_field : a_fields) {
        std::printf("%-12s%s\n", l_field.first, l_field.second.c_str());
    }
}

// The part that a --scheme ... --fragment option edits, or nullptr for any other option.
url_part const *url_part_of_option(int a_id)
{
    int const l_index = k_opt_url_part - a_id;
    return l_index >= 0 && l_index < static_cast<int>(k_url_part_count) ? &k_url_parts[l_index] : nullptr;
}

// The part and value of a --set word "part=value"; nullptr after a usage error line.
url_part const *url_part_of_setting(std::string const &a_setting, std::string &a_value)
{
    std::string::size_type const l_equals = a_setting.find('=');
    url_part const *const l_part =
        l_equals == std::string::npos ? nullptr : find_url_part(std::string_view(a_setting).substr(0, l_equals));
    if (l_part == nullptr) {
        std::string l_names;
        for (url_part const &l_known : k_url_parts) {
            l_names += std::string(l_names.empty() ? "" : ", ") + l_known.m_name;
        }
        usage_error("--set takes part=value, the part one of " + l_names + ", not `" + a_setting + "'");
        return nullptr;
    }
    a_value = a_setting.substr(l_equals + 1);
    return l_part;
}

} // namespace

int run_url(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("url takes one URL");
    }
    std::string l_url = a_input.m_words.front();
    bool const l_decode = a_input.has(k_opt_decode);
    bool const l_encode = a_input.has(k_opt_encode);
    bool const l_show_password = a_input.has(k_opt_show_password);
    bool l_edited = false;
    for (auto const &l_option : a_input.m_options) {
        std::string l_value = l_option.second;
        url_part const *l_part = url_part_of_option(l_option.first);
        if (l_option.first == k_opt_set && (l_part = url_part_of_setting(l_option.second, l_value)) == nullptr) {
            return k_exit_usage;
        }
        if (l_part != nullptr) {
            l_part->m_set(l_url, l_value, l_encode);
            l_edited = true;
        }
    }
    std::string const l_shown = l_show_password ? l_url : url_protected_output(l_url);
    if (l_edited) {
        if (a_input.has(k_opt_json)) {
            print_fields({{"url", l_shown}}, true);
        } else {
            std::printf("%s\n", l_shown.c_str());
        }
        return k_exit_ok;
    }
    bool const l_masked = !l_show_password && !url_password(l_url, false).empty();
    fields l_fields;
    for (url_part const &l_part : k_url_parts) {
        // The mask shown as typed, not in the encoded form that the protected URL holds.
        bool const l_mask = l_masked && &l_part == find_url_part("password");
        l_fields.emplace_back(l_part.m_name, l_mask ? std::string("********") : l_part.m_get(l_shown, l_decode));
    }
    print_fields(l_fields, a_input.has(k_opt_json));
    return k_exit_ok;
}

int run_path(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("path takes one path");
    }
    char l_separator = '/';
    if (std::string const *const l_text = a_input.last(k_opt_separator)) {
        if (l_text->size() != 1) {
            return usage_error("the separator is one character");
        }
        l_separator = (*l_text)[0];
    }
    std::string const &l_path = a_input.m_words.front();
    print_fields({{"normalized", path_normalized(l_path, l_separator)},
                  {"directory", path_directory(l_path, l_separator, 0)},
                  {"file", path_file(l_path, l_separator)},
                  {"name", path_name(l_path, l_separator)},
                  {"suffix", path_suffix(l_path, l_separator)}},
                 a_input.has(k_opt_json));
    return k_exit_ok;
}

} // namespace ordwel_toolbox
