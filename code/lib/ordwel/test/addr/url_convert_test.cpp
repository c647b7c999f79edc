// SPDX-License-Identifier: MIT
#include <ordwel/url_convert.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/env.h>

namespace {

using namespace ordwel;

struct pair_row {
    std::string input;
    std::string expected;
};

url_path_environment const k_windows = {"C:\\work", "C:\\Users\\me", 3};

TEST(url_create_from_url_or_path, every_form_of_input)
{
    std::vector<pair_row> const l_rows = {
        {"C:\\dir\\f x.txt", "file:///C%3a/dir/f%20x.txt"},
        {"C:/dir/file", "file:///C%3a/dir/file"},
        {"c:file", "file:///c%3afile"},
        {"/dir/file", "file:///C%3a/dir/file"},
        {"\\dir\\file", "file:///C%3a/dir/file"},
        {"~", "file:///C%3a/Users/me"},
        {"~/a", "file:///C%3a/Users/me/a"},
        {"dir\\file", "file:///C%3a/work/dir/file"},
        {"..\\a", "file:///C%3a/work/../a"},
        {"\\\\host\\share\\dir\\f", "smb://host/share/dir/f"},
        {"\\\\host", "smb://host/"},
        {"\\\\", "file:///C%3a//"},
        {"smb://h/s", "smb://h/s"},
        {"ab:c", "ab:c"},
        {"a:b", "file:///a%3ab"},
        {"#f", "file:///C%3a/work/%23f"},
        {"", "file:///C%3a/work"},
    };
    for (pair_row const &l_row : l_rows) {
        EXPECT_EQ(url_create_from_url_or_path(l_row.input, "", k_windows), l_row.expected) << l_row.input;
    }
}

TEST(url_create_from_url_or_path, a_directory_serves_relative_input_only)
{
    std::vector<pair_row> const l_rows = {
        {"dir\\file", "file:///D%3a/b/dir/file"}, {"", "file:///D%3a/b"},
        {"/dir/file", "file:///C%3a/dir/file"},   {"E:\\x", "file:///E%3a/x"},
        {"~/a", "file:///C%3a/Users/me/a"},       {"~a", "file:///C%3a/Users/me/a"},
    };
    for (pair_row const &l_row : l_rows) {
        EXPECT_EQ(url_create_from_url_or_path(l_row.input, "D:\\b", k_windows), l_row.expected) << l_row.input;
    }
}

TEST(url_create_from_url_or_path, without_drives_a_rooted_path_stays_at_the_root)
{
    url_path_environment const l_posix = {"/home/me/work", "/home/me", 0};
    std::vector<pair_row> const l_rows = {
        {"/dir/file", "file:///dir/file"},
        {"dir/f", "file:///home/me/work/dir/f"},
        {"~/a", "file:///home/me/a"},
        {"", "file:///home/me/work"},
    };
    for (pair_row const &l_row : l_rows) {
        EXPECT_EQ(url_create_from_url_or_path(l_row.input, "", l_posix), l_row.expected) << l_row.input;
    }
}

TEST(url_create_from_url_or_path, asks_the_platform_for_the_working_directory)
{
    std::string const l_directory = env::get_current_working_directory_path();
    EXPECT_EQ(url_create_from_url_or_path("x y", ""), url_create_from_url_or_path("x y", l_directory));
    EXPECT_EQ(url_create_from_url_or_path("smb://h/s", ""), "smb://h/s");
}

TEST(unc, host_share_and_object)
{
    // Host, share and object joined by '|'.
    std::vector<pair_row> const l_rows = {
        {"\\\\h\\s\\d\\f", "h|s|\\d\\f"},
        {"\\\\h\\s", "h|s|"},
        {"\\\\h\\s\\", "h|s|\\"},
        {"\\\\h\\", "h||\\"},
        {"\\\\h", "h||"},
        {"\\\\", "||\\"},
        {"\\a\\b", "|a|\\b"},
        {"a\\b", "||a\\b"},
        {"", "||"},
    };
    for (pair_row const &l_row : l_rows) {
        EXPECT_EQ(unc_host(l_row.input) + "|" + unc_share(l_row.input) + "|" + unc_object(l_row.input), l_row.expected)
            << l_row.input;
    }
    EXPECT_EQ(unc_path_to_url("\\\\h\\s\\a b\\c", "smb"), "smb://h/s/a%20b/c");
    EXPECT_EQ(unc_path_to_url("\\\\h", "x"), "x://h/");
}

TEST(url_extract_to_unc_or_windows_path, this_machine_drive_and_unc)
{
    std::vector<pair_row> const l_rows = {
        {"smb://host/share/dir", "\\\\HOST\\share\\dir"},
        {"smb:/x/y", "\\\\LOCALHOST\\x\\y"},
        {"smb:", "\\\\LOCALHOST"},
        {"file:///C%3a/dir/f", "C:\\dir\\f"},
        {"file://localhost/C:/dir", "C:\\dir"},
        {"file://127.0.0.1/C%3a/x", "C:\\x"},
        {"x://[::1]/C:/d", "C:\\d"},
        {"x://[fe80::1]/C:/d", "C:\\d"},
        {"file://host/C:/dir", "\\\\HOST\\C:\\dir"},
        {"file://localhost/dir/f", "\\\\LOCALHOST\\dir\\f"},
        {"file://localhost/C:", "\\\\LOCALHOST\\C:"},
        {"file://LOCALHOST/C:/d", "\\\\LOCALHOST\\C:\\d"},
        {"file:///dir/f", "dir\\f"},
        {"x://host/a%20b", "\\\\HOST\\a b"},
    };
    for (pair_row const &l_row : l_rows) {
        EXPECT_EQ(url_extract_to_unc_or_windows_path(l_row.input), l_row.expected) << l_row.input;
        EXPECT_EQ(url_native_platform_path(l_row.input), l_row.expected) << l_row.input;
    }
    // The host does not count here.
    EXPECT_EQ(url_extract_windows_path("file://host/C:/dir"), "C:\\dir");
    EXPECT_EQ(url_extract_to_unc_path("file:///C%3a/dir"), "\\\\LOCALHOST\\C:\\dir");
}

TEST(windows_path, to_and_from_url_paths)
{
    std::vector<pair_row> const l_to_url = {
        {"C:\\dir\\f", "/C:/dir/f"}, {"dir\\f", "/dir/f"}, {"", "/"}, {"\\\\host\\share\\f", "/\\\\host/share/f"}};
    for (pair_row const &l_row : l_to_url) {
        EXPECT_EQ(windows_path_to_url_path(l_row.input), l_row.expected) << l_row.input;
    }
    std::vector<pair_row> const l_from_url = {
        {"/C:/dir/f", "C:\\dir\\f"}, {"/", ""}, {"/\\\\host/share/f", "\\\\host\\share\\f"}};
    for (pair_row const &l_row : l_from_url) {
        EXPECT_EQ(url_path_to_windows_path(l_row.input), l_row.expected) << l_row.input;
    }

    std::string const l_url = url_new_windows_path("file://", "\\\\host\\share\\f");
    EXPECT_EQ(l_url, "file:///%5c%5chost/share/f");
    EXPECT_EQ(url_extract_windows_path(l_url), "\\\\host\\share\\f");

    std::string l_edited = "file://h/old?q=1";
    EXPECT_EQ(&url_set_windows_path(l_edited, "C:\\a b"), &l_edited);
    EXPECT_EQ(l_edited, "file://h/C%3a/a%20b?q=1");
}

} // namespace
