// SPDX-License-Identifier: MIT
#include <ordwel/url_convert.h>

#include <utility>

#include <ordwel/env.h>
#include <ordwel/path.h>
#include <ordwel/string_helpers.h>
#include <ordwel/url.h>

#include "platform/drive.h"

namespace ordwel {

namespace {

std::string with_char_replaced(std::string a_text, char a_from, char a_to)
{
    for (char &l_char : a_text) {
        if (l_char == a_from) {
            l_char = a_to;
        }
    }
    return a_text;
}

bool begins_with_two_backslashes(std::string const &a_text)
{
    return a_text.size() >= 2 && a_text[0] == '\\' && a_text[1] == '\\';
}

std::string file_url_of(std::string const &a_path)
{
    return url_new_path("file://", a_path, true);
}

// The whole conversion; the platform is asked through the three getters, and only for what the
// input's form needs.
template <class T_directory, class T_home, class T_drive>
std::string create_from_url_or_path(std::string const &a_input, std::string const &a_directory,
                                    T_directory a_working_directory, T_home a_home, T_drive a_drive)
{
    auto const l_directory = [&] {
        return with_char_replaced(a_directory.empty() ? a_working_directory() : a_directory, '\\', '/');
    };
    if (a_input.empty()) {
        return file_url_of(path_rooted(l_directory(), "/"));
    }
    if (a_input.size() > 2 && begins_with_two_backslashes(a_input)) {
        return unc_path_to_url(a_input, "smb");
    }
    std::string const l_scheme = url_scheme(a_input);
    std::string l_copy = with_char_replaced(a_input, '\\', '/');
    if (l_scheme.size() >= 2) {
        return a_input;
    }
    if (l_scheme.size() == 1) {
        return file_url_of(path_root(l_copy, "/"));
    }
    if (l_copy[0] == '/') {
        unsigned const l_drive = a_drive();
        if (l_drive == 0) {
            return file_url_of(path_root(l_copy, "/"));
        }
        std::string l_path(1, static_cast<char>(64 + l_drive));
        l_path += ':';
        path_append(l_path, l_copy, '/');
        return file_url_of(path_root(l_path, "/"));
    }
    if (a_input[0] == '~') {
        std::string const l_home = with_char_replaced(a_home(), '\\', '/');
        return file_url_of(path_rooted(path_appended(l_home, l_copy.substr(1), '/'), "/"));
    }
    return file_url_of(path_rooted(path_appended(l_directory(), l_copy, '/'), "/"));
}

} // namespace

std::string url_create_from_url_or_path(std::string const &a_input, std::string const &a_directory)
{
    return create_from_url_or_path(
        a_input, a_directory, [] { return env::get_current_working_directory_path(); },
        [] { return env::get_user_home_path(); }, [] { return platform::current_drive(); });
}

std::string url_create_from_url_or_path(std::string const &a_input, std::string const &a_directory,
                                        url_path_environment const &a_environment)
{
    return create_from_url_or_path(
        a_input, a_directory, [&] { return a_environment.working_directory; },
        [&] { return a_environment.home_directory; }, [&] { return a_environment.drive; });
}

namespace {

// Where the host of a UNC text ends: its first backslash behind the two, or its end; 0 for a
// text that is no UNC path ("\\" alone is none).
std::size_t unc_host_end(std::string const &a_unc)
{
    if (!begins_with_two_backslashes(a_unc) || a_unc.size() == 2) {
        return 0;
    }
    std::size_t const l_end = a_unc.find('\\', 2);
    return l_end == std::string::npos ? a_unc.size() : l_end;
}

// The share's stretch [first, second); empty at the object's start when there is no share.
std::pair<std::size_t, std::size_t> unc_share_span(std::string const &a_unc)
{
    std::size_t const l_host_end = unc_host_end(a_unc);
    if (l_host_end < a_unc.size() && a_unc[l_host_end] == '\\' && l_host_end != a_unc.size() - 1) {
        std::size_t const l_start = l_host_end + 1;
        std::size_t l_end = a_unc.find('\\', l_start);
        if (l_end == std::string::npos) {
            l_end = a_unc.size();
        }
        return {l_start, l_end};
    }
    return {l_host_end, l_host_end};
}

} // namespace

std::string unc_host(std::string const &a_unc)
{
    std::size_t const l_end = unc_host_end(a_unc);
    return l_end == 0 ? std::string() : a_unc.substr(2, l_end - 2);
}

std::string unc_share(std::string const &a_unc)
{
    std::pair<std::size_t, std::size_t> const l_span = unc_share_span(a_unc);
    return a_unc.substr(l_span.first, l_span.second - l_span.first);
}

std::string unc_object(std::string const &a_unc)
{
    return a_unc.substr(unc_share_span(a_unc).second);
}

std::string unc_path_to_url(std::string const &a_unc, std::string const &a_scheme)
{
    std::string l_url = a_scheme + ":";
    url_set_authority(l_url, unc_host(a_unc), false);
    std::string l_path = "/";
    path_append(l_path, unc_share(a_unc), '/');
    l_path = path_appended(l_path, with_char_replaced(unc_object(a_unc), '\\', '/'), '/');
    return url_set_path(l_url, l_path, true);
}

std::string url_extract_to_unc_path(std::string const &a_url)
{
    std::string l_host = url_host(a_url);
    if (l_host.empty()) {
        l_host = "localhost";
    }
    std::string l_unc = "\\\\" + string_to_uppercase(l_host);
    std::string const l_path = path_unrooted(url_path(a_url, true), "/");
    if (!l_path.empty()) {
        l_unc += '\\';
        l_unc += with_char_replaced(l_path, '/', '\\');
    }
    return l_unc;
}

std::string url_extract_to_unc_or_windows_path(std::string const &a_url)
{
    if (uri_scheme(a_url) == "smb") {
        return url_extract_to_unc_path(a_url);
    }
    std::string const l_host = url_host(a_url);
    std::string const l_path = url_path(a_url, true);
    if (l_host.empty()) {
        return url_path_to_windows_path(l_path);
    }
    bool const l_this_machine =
        l_host == "localhost" || l_host == "127.0.0.1" || l_host == "::1" || l_host == "fe80::1";
    if (l_this_machine && l_path.size() > 3 && l_path[2] == ':') {
        return url_path_to_windows_path(l_path);
    }
    return url_extract_to_unc_path(a_url);
}

std::string url_native_platform_path(std::string const &a_url)
{
    return url_extract_to_unc_or_windows_path(a_url);
}

std::string url_extract_windows_path(std::string const &a_url)
{
    return url_path_to_windows_path(url_path(a_url, true));
}

std::string url_path_to_windows_path(std::string const &a_path)
{
    return with_char_replaced(path_unrooted(a_path, "/"), '/', '\\');
}

std::string windows_path_to_url_path(std::string const &a_path)
{
    if (begins_with_two_backslashes(a_path)) {
        return "/\\\\" + with_char_replaced(a_path.substr(2), '\\', '/');
    }
    std::string l_path = with_char_replaced(a_path, '\\', '/');
    return path_root(l_path, "/");
}

std::string &url_set_windows_path(std::string &a_url, std::string const &a_path)
{
    return url_set_path(a_url, windows_path_to_url_path(a_path), true);
}

std::string url_new_windows_path(std::string const &a_url, std::string const &a_path)
{
    return url_new_path(a_url, windows_path_to_url_path(a_path), true);
}

} // namespace ordwel
