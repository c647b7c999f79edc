// SPDX-License-Identifier: MIT
#include <ordwel/path.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

TEST(path, getters)
{
    struct row {
        char const *path;
        char const *front, *back, *name, *suffix;
    } const l_rows[] = {
        {"", "", "", "", ""},
        {"/a/b", "", "b", "b", ""},
        {"a/b/c.txt", "a", "c.txt", "c", "txt"},
        {"dir.d/file", "dir.d", "file", "file", ""}, // the dot in the directory is not seen
        {".profile", ".profile", ".profile", "", "profile"},
        {"a.tar.gz", "a.tar.gz", "a.tar.gz", "a.tar", "gz"},
        {"a/b/", "a", "", "", ""},
        {"a.", "a.", "a.", "a", ""},
        {"d/.", "d", ".", "", ""},
        {"/", "", "", "", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.path);
        EXPECT_EQ(path_front(l_row.path, '/'), l_row.front);
        EXPECT_EQ(path_back(l_row.path, '/'), l_row.back);
        EXPECT_EQ(path_file(l_row.path, '/'), l_row.back);
        EXPECT_EQ(path_name(l_row.path, '/'), l_row.name);
        EXPECT_EQ(path_suffix(l_row.path, '/', 0), l_row.suffix);
    }
    // The separator is an argument; the dot is always '.'.
    EXPECT_EQ(path_file("C:\\dir.x\\f.txt", '\\'), "f.txt");
    EXPECT_EQ(path_suffix("C:\\dir.x\\f", '\\'), "");
    EXPECT_EQ(path_file("a/b", '\\'), "a/b");
}

TEST(path, suffix_count_takes_further_dots_of_the_file_part)
{
    struct row {
        char const *path;
        unsigned int count;
        char const *suffix, *new_suffix;
    } const l_rows[] = {
        {"a.tar.gz", 0, "gz", "a.tar.zip"}, {"a.tar.gz", 1, "tar.gz", "a.zip"}, {"a.tar.gz", 5, "tar.gz", "a.zip"},
        {"d.x/a.gz", 3, "gz", "d.x/a.zip"}, {".tar.gz", 1, "tar.gz", ".zip"},   {"a..gz", 1, ".gz", "a.zip"},
        {"plain", 2, "", "plain.zip"},      {"dir/", 1, "", "dir/.zip"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " count " + std::to_string(l_row.count));
        EXPECT_EQ(path_suffix(l_row.path, '/', l_row.count), l_row.suffix);
        EXPECT_EQ(path_new_suffix(l_row.path, "zip", '/', l_row.count), l_row.new_suffix);
    }
}

TEST(path, directory_levels)
{
    struct row {
        char const *path;
        unsigned int levels;
        char const *directory;
    } const l_rows[] = {{"/a/b/c.txt", 0, "/a/b/"},
                        {"/a/b/c.txt", 1, "/a/b"},
                        {"/a/b/c.txt", 2, "/a"},
                        {"/a/b/c.txt", 3, ""},
                        {"file", 0, ""},
                        {"a/b/", 0, "a/b/"},
                        {"a//b", 1, "a/"},
                        {"", 2, ""}};
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " levels " + std::to_string(l_row.levels));
        EXPECT_EQ(path_directory(l_row.path, '/', l_row.levels), l_row.directory);
    }
}

// Each changing operation, run in place and as its copying twin on the same arguments, must give
// the same text, and the in-place form must return its argument.
template <class... A, class... B>
void expect_twins(std::string &(*a_in_place)(std::string &, A...), std::string (*a_copying)(std::string const &, A...),
                  std::string const &a_path, std::string const &a_expected, B const &...a_args)
{
    std::string l_path = a_path;
    EXPECT_EQ(&a_in_place(l_path, a_args...), &l_path);
    EXPECT_EQ(l_path, a_expected);
    EXPECT_EQ(a_copying(a_path, a_args...), a_expected);
}

TEST(path, joining)
{
    struct row {
        char const *left, *right, *joined;
    } const l_rows[] = {
        {"a", "b", "a/b"},    {"a/", "/b", "a/b"},  {"a", "/b", "a/b"}, {"", "/b", "/b"}, {"a/", "", "a/"},
        {"a//", "b", "a//b"}, {"a", "//b", "a//b"}, {"", "", ""},       {"/", "/", "/"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.left) + " + " + l_row.right);
        expect_twins(path_append, path_appended, l_row.left, l_row.joined, l_row.right, '/');
        expect_twins(path_push_back, path_pushed_back, l_row.left, l_row.joined, l_row.right, '/');
        // Prepending changes the right side: the first argument is the path being changed.
        expect_twins(path_prepend, path_prepended, l_row.right, l_row.joined, l_row.left, '/');
        expect_twins(path_push_front, path_pushed_front, l_row.right, l_row.joined, l_row.left, '/');
    }
    EXPECT_EQ(path_prepended("b", "a", '/'), "a/b");
    EXPECT_EQ(path_appended("C:", "x", '\\'), "C:\\x");
}

TEST(path, popping)
{
    struct row {
        char const *path, *popped_back, *popped_front;
    } const l_rows[] = {
        {"a/b/", "a/b", "b/"}, {"/a", "", "a"}, {"a", "", ""}, {"", "", ""}, {"a/b/c", "a/b", "b/c"}, {"/", "", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.path);
        expect_twins(path_pop_back, path_popped_back, l_row.path, l_row.popped_back, '/');
        expect_twins(path_pop_front, path_popped_front, l_row.path, l_row.popped_front, '/');
    }
}

TEST(path, set_directory)
{
    struct row {
        char const *path, *directory;
        unsigned int levels;
        char const *expected;
    } const l_rows[] = {{"a/b.txt", "x/y", 0, "x/y/b.txt"},
                        {"a/b.txt", "x/y/", 0, "x/y/b.txt"},
                        {"a/b.txt", "x/y", 1, "x/y/b.txt"},
                        {"a/b.txt", "", 0, "b.txt"},
                        {"a/b.txt", "", 1, "/b.txt"},
                        {"file", "x", 0, "x/file"},
                        {"/a/b/c", "z", 2, "z/b/c"},
                        {"a/", "x", 0, "x/"},
                        {"", "x", 0, "x/"}};
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " <- " + l_row.directory + " levels " + std::to_string(l_row.levels));
        expect_twins(path_set_directory, path_new_directory, l_row.path, l_row.expected, l_row.directory, '/',
                     l_row.levels);
    }
}

TEST(path, set_file_and_name)
{
    struct row {
        char const *path, *part, *with_file, *with_name;
    } const l_rows[] = {
        {"a/b.txt", "c", "a/c", "a/c.txt"}, {"b.txt", "c", "c", "c.txt"},
        {"a/", "c", "a/c", "a/c"},          {"", "c", "c", "c"},
        {"d.x/f", "g", "d.x/g", "d.x/g"},   {"a.tar.gz", "b", "b", "b.gz"},
        {".rc", "x", "x", "x.rc"},          {"a/b.txt", "", "a/", "a/.txt"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " <- " + l_row.part);
        expect_twins(path_set_file, path_new_file, l_row.path, l_row.with_file, l_row.part, '/');
        expect_twins(path_set_name, path_new_name, l_row.path, l_row.with_name, l_row.part, '/');
    }
}

TEST(path, set_suffix)
{
    struct row {
        char const *path, *suffix, *expected;
    } const l_rows[] = {
        {"a.txt", "png", "a.png"},     {"a", "png", "a.png"},       {"a", ".png", "a.png"}, {"a.txt", ".png", "a..png"},
        {"a.txt", "", "a."},           {"dir/", "png", "dir/.png"}, {"", "png", "png"},     {"a.", "png", "a.png"},
        {"d.x/f", "png", "d.x/f.png"}, {"", ".png", ".png"},        {"a", "", "a"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " <- " + l_row.suffix);
        expect_twins(path_set_suffix, path_new_suffix, l_row.path, l_row.expected, l_row.suffix, '/', 0u);
    }
}

TEST(path, normalize)
{
    struct row {
        char const *path, *expected;
    } const l_rows[] = {
        {"", ""},         {"/", "/"},         {"a//b", "a/b"},       {"//a", "/a"},
        {"a//", "a/"},    {"/a/./b", "/a/b"}, {"a/b/.", "a/b/"},     {"./a", "/a"},
        {".", ""},        {"a/../b", "b"},    {"/a/../b", "/b"},     {"/a/b/../", "/a/"},
        {"a/..", ""},     {"/a/..", ""},      {"/../a", "a"},        {"../a", "../a"},
        {"../../a", "a"}, {"a/b/c", "a/b/c"}, {"..", ".."},          {"a/./././b", "a/b"},
        {"...", "..."},   {".a/b.", ".a/b."}, {"a/../../b", "../b"}, {"/a/b/../../..", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.path);
        expect_twins(path_normalize, path_normalized, l_row.path, l_row.expected, '/');
    }
    EXPECT_EQ(path_normalized("C:\\a\\..\\b\\.\\c", '\\'), "C:\\b\\c");
}

TEST(path, normalize_is_idempotent)
{
    // Every path of up to five components drawn from these, joined by '/': 1 + 5 + ... + 5^5 paths,
    // each extending one found before it.
    std::vector<std::string> const l_parts{"", ".", "..", "a", "bc"};
    std::vector<std::string> l_paths{""};
    for (std::size_t l_begin = 0; l_paths.size() < 3906; ++l_begin) {
        for (std::string const &l_part : l_parts) {
            l_paths.push_back(l_begin == 0 ? l_part : l_paths[l_begin] + "/" + l_part);
        }
    }
    for (std::string const &l_path : l_paths) {
        std::string const l_once = path_normalized(l_path, '/');
        EXPECT_EQ(path_normalized(l_once, '/'), l_once) << "from " << l_path;
        // A normal path holds no "." component and no empty one inside.
        EXPECT_EQ(l_once.find("//"), std::string::npos) << l_path;
        EXPECT_EQ(l_once.find("/./"), std::string::npos) << l_path;
    }
}

TEST(path, root)
{
    struct row {
        char const *path, *root, *expected;
    } const l_rows[] = {
        {"x", "", "/x"},    {"x", "/", "/x"},   {"x", "r", "/r/x"}, {"x", "/r/", "/r/x"},       {"", "r", "/r"},
        {"", "/r/", "/r/"}, {"/x", "/r", "/x"}, {"", "", "/"},      {"a/b", "r/s", "/r/s/a/b"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " under " + l_row.root);
        expect_twins(path_root, path_rooted, l_row.path, l_row.expected, l_row.root);
    }
}

TEST(path, unroot)
{
    struct row {
        char const *path, *root, *expected;
    } const l_rows[] = {
        {"/r/x", "/r", "x"}, {"/abc", "/ab", "c"}, {"/x/y", "/r", "x/y"}, {"", "/r", ""},     {"/", "/r", ""},
        {"//", "/r", "//"},  {"/r", "/r", ""},     {"/r/", "/r", "/"},    {"r//x", "r", "x"}, {"/x", "", "x"},
        {"//x", "/", "x"},   {"/x", "//", "x"},    {"/r/x", "/r/x", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " from " + l_row.root);
        expect_twins(path_unroot, path_unrooted, l_row.path, l_row.expected, l_row.root);
    }
    // Rooting and unrooting with the same root give a relative path back.
    for (char const *l_path : {"x", "a/b", "a/b/"}) {
        for (char const *l_root : {"r", "/r", "/r/", "r/s"}) {
            SCOPED_TRACE(std::string(l_path) + " under " + l_root);
            EXPECT_EQ(path_unrooted(path_rooted(l_path, l_root), l_root), l_path);
        }
    }
}

} // namespace
