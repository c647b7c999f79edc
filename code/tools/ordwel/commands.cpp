#include "toolbox.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

#include <ordwel/es.h>
#include <ordwel/path.h>
#include <ordwel/string_helpers.h>
#include <ordwel/timecode.h>
#include <ordwel/url_parts.h>

#include "options.h"

namespace ordwel_toolbox {

namespace {

using namespace ordwel;

void print_part(char const *a_name, std::string const &a_value)
{
    std::printf("%-12s%s\n", a_name, a_value.c_str());
}

// A whole decimal number, optionally signed; false for anything else or a number out of range.
bool number_with_text(std::string const &a_text, long long &a_number)
{
    if (a_text.empty()) {
        return false;
    }
    char *l_end = nullptr;
    errno = 0;
    long long const l_number = std::strtoll(a_text.c_str(), &l_end, 10);
    if (errno != 0 || l_end == nullptr || *l_end != '\0') {
        return false;
    }
    a_number = l_number;
    return true;
}

// The part that a --scheme ... --fragment option edits, or nullptr for any other option.
url_part const *url_part_of_option(int a_id)
{
    int const l_index = k_opt_url_part - a_id;
    return l_index >= 0 && l_index < static_cast<int>(k_url_part_count) ? &k_url_parts[l_index] : nullptr;
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
    bool l_edited = false;
    for (auto const &l_option : a_input.m_options) {
        url_part const *const l_part = url_part_of_option(l_option.first);
        if (l_part != nullptr) {
            l_part->m_set(l_url, l_option.second, l_encode);
            l_edited = true;
        }
    }
    if (l_edited) {
        std::printf("%s\n", l_url.c_str());
        return k_exit_ok;
    }
    for (url_part const &l_part : k_url_parts) {
        print_part(l_part.m_name, l_part.m_get(l_url, l_decode));
    }
    return k_exit_ok;
}

int run_path(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("path takes one path");
    }
    char l_separator = '/';
    for (auto const &l_option : a_input.m_options) {
        if (l_option.first == k_opt_separator) {
            if (l_option.second.size() != 1) {
                return usage_error("the separator is one character");
            }
            l_separator = l_option.second[0];
        }
    }
    std::string const &l_path = a_input.m_words.front();
    print_part("normalized", path_normalized(l_path, l_separator));
    print_part("directory", path_directory(l_path, l_separator, 0));
    print_part("file", path_file(l_path, l_separator));
    print_part("name", path_name(l_path, l_separator));
    print_part("suffix", path_suffix(l_path, l_separator));
    return k_exit_ok;
}

int run_timecode(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("timecode takes one timecode");
    }
    std::string const &l_text = a_input.m_words.front();
    timecode l_timecode;
    try {
        l_timecode = timecode(l_text);
    } catch (es::arg const &l_error) {
        std::fprintf(stderr, "*** %s\n", l_error.what());
        return k_exit_failed;
    }
    if (!l_timecode.is_valid()) {
        std::fprintf(stderr, "*** timecode `%s' has no frame mode (hh:mm:ss:ff@mode)\n", l_text.c_str());
        return k_exit_failed;
    }
    for (auto const &l_option : a_input.m_options) {
        if (l_option.first == k_opt_mode) {
            timecode::mode_type const l_mode = timecode::mode_from_string(l_option.second);
            if (l_mode == timecode::mode_invalid) {
                std::fprintf(stderr, "*** no such frame mode `%s'\n", l_option.second.c_str());
                return k_exit_usage;
            }
            l_timecode = timecode_with_timestamp(l_mode, l_timecode.as_timestamp(), l_timecode.factor());
        } else if (l_option.first == k_opt_add) {
            long long l_frames = 0;
            if (!number_with_text(l_option.second, l_frames) || l_frames > UINT_MAX ||
                l_frames < -(long long)UINT_MAX) {
                std::fprintf(stderr, "*** not a number of frames `%s'\n", l_option.second.c_str());
                return k_exit_usage;
            }
            if (l_frames >= 0) {
                l_timecode += static_cast<unsigned int>(l_frames);
            } else {
                l_timecode -= static_cast<unsigned int>(-l_frames);
            }
        }
    }
    std::printf("%s@%s\n", string_with_timecode(l_timecode, true).c_str(), timecode::mode_c_str(l_timecode.mode()));
    if (a_input.has(k_opt_total)) {
        std::printf("%u\n", l_timecode.total_frames());
    }
    return k_exit_ok;
}

} // namespace ordwel_toolbox
