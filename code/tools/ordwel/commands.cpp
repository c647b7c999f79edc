#include "toolbox.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

#include <ordwel/es.h>
#include <ordwel/path.h>
#include <ordwel/string_helpers.h>
#include <ordwel/timecode.h>
#include <ordwel/url.h>

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
        std::string const &l_value = l_option.second;
        switch (l_option.first) {
        case k_opt_url_scheme:
            url_set_scheme(l_url, l_value);
            break;
        case k_opt_url_authority:
            url_set_authority(l_url, l_value, l_encode);
            break;
        case k_opt_url_domain:
            url_set_domain(l_url, l_value, l_encode);
            break;
        case k_opt_url_user:
            url_set_user(l_url, l_value, l_encode);
            break;
        case k_opt_url_password:
            url_set_password(l_url, l_value, l_encode);
            break;
        case k_opt_url_host:
            url_set_host(l_url, l_value);
            break;
        case k_opt_url_service:
            url_set_service(l_url, l_value, l_encode);
            break;
        case k_opt_url_path:
            url_set_path(l_url, l_value, l_encode);
            break;
        case k_opt_url_params:
            url_set_params(l_url, l_value, l_encode);
            break;
        case k_opt_url_query:
            url_set_query(l_url, l_value, l_encode);
            break;
        case k_opt_url_fragment:
            url_set_fragment(l_url, l_value, l_encode);
            break;
        default:
            continue;
        }
        l_edited = true;
    }
    if (l_edited) {
        std::printf("%s\n", l_url.c_str());
        return k_exit_ok;
    }
    print_part("scheme", url_scheme(l_url));
    print_part("authority", url_authority(l_url, l_decode));
    print_part("domain", url_domain(l_url, l_decode));
    print_part("user", url_user(l_url, l_decode));
    print_part("password", url_password(l_url, l_decode));
    print_part("host", url_host(l_url));
    print_part("service", url_service(l_url, l_decode));
    print_part("path", url_path(l_url, l_decode));
    print_part("params", url_params(l_url, l_decode));
    print_part("query", url_query(l_url, l_decode));
    print_part("fragment", url_fragment(l_url, l_decode));
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
