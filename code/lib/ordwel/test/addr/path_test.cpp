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
        {"x.y/", "x.y", "", "", ""},
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
    } const l_rows[] = {
        {"/a/b/c.txt", 0, "/a/b/"},
        {"/a/b/c.txt", 1, "/a/b"},
        {"/a/b/c.txt", 2, "/a"},
        {"/a/b/c.txt", 3, ""},
        {"/a/b/c.txt", 9, ""},
        {"file", 0, ""},
        {"file", 1, ""},
        {"a/b/", 0, "a/b/"},
        {"a/b/", 1, "a/b"},
        {"a//b", 1, "a/"},
        {"", 2, ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " levels " + std::to_string(l_row.levels));
        EXPECT_EQ(path_directory(l_row.path, '/', l_row.levels), l_row.directory);
    }
}

// Each changing operation, run in place and as its copying twin, must give the same text, and the
// in-place form must return its argument.
template <typename t_in_place, typename t_copying>
void expect_twins(std::string const &a_path, std::string const &a_expected, t_in_place a_in_place, t_copying a_copying)
{
    std::string l_path = a_path;
    std::string &l_returned = a_in_place(l_path);
    EXPECT_EQ(&l_returned, &l_path);
    EXPECT_EQ(l_path, a_expected);
    EXPECT_EQ(a_copying(a_path), a_expected);
}

TEST(path, joining)
{
    struct row {
        char const *left, *right, *joined;
    } const l_rows[] = {
        {"a", "b", "a/b"}, {"a/", "/b", "a/b"}, {"a", "/b", "a/b"},    {"", "/b", "/b"},
        {"a/", "", "a/"},  {"a/", "b", "a/b"},  {"a//", "b", "a//b"},  {"a", "//b", "a//b"},
        {"", "", ""},      {"/", "/", "/"},     {"a/", "//b", "a//b"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.left) + " + " + l_row.right);
        std::string const l_right = l_row.right;
        std::string const l_left = l_row.left;
        expect_twins(
            l_left, l_row.joined,
            [&](std::string &a_path) -> std::string & { return path_append(a_path, l_right, '/'); },
            [&](std::string const &a_path) { return path_appended(a_path, l_right, '/'); });
        expect_twins(
            l_left, l_row.joined,
            [&](std::string &a_path) -> std::string & { return path_push_back(a_path, l_right, '/'); },
            [&](std::string const &a_path) { return path_pushed_back(a_path, l_right, '/'); });
        // Prepending changes the right side: the first argument is the path being changed.
        expect_twins(
            l_right, l_row.joined,
            [&](std::string &a_path) -> std::string & { return path_prepend(a_path, l_left, '/'); },
            [&](std::string const &a_path) { return path_prepended(a_path, l_left, '/'); });
        expect_twins(
            l_right, l_row.joined,
            [&](std::string &a_path) -> std::string & { return path_push_front(a_path, l_left, '/'); },
            [&](std::string const &a_path) { return path_pushed_front(a_path, l_left, '/'); });
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
        expect_twins(
            l_row.path, l_row.popped_back,
            [](std::string &a_path) -> std::string & { return path_pop_back(a_path, '/'); },
            [](std::string const &a_path) { return path_popped_back(a_path, '/'); });
        expect_twins(
            l_row.path, l_row.popped_front,
            [](std::string &a_path) -> std::string & { return path_pop_front(a_path, '/'); },
            [](std::string const &a_path) { return path_popped_front(a_path, '/'); });
    }
}

TEST(path, set_directory)
{
    struct row {
        char const *path, *directory;
        unsigned int levels;
        char const *expected;
    } const l_rows[] = {
        {"a/b.txt", "x/y", 0, "x/y/b.txt"},
        {"a/b.txt", "x/y/", 0, "x/y/b.txt"},
        {"a/b.txt", "x/y", 1, "x/y/b.txt"},
        {"a/b.txt", "x/y/", 1, "x/y/b.txt"},
        {"a/b.txt", "", 0, "b.txt"},
        {"a/b.txt", "", 1, "/b.txt"},
        {"file", "x", 0, "x/file"},
        {"file", "x/", 0, "x/file"},
        {"/a/b/c", "z", 2, "z/b/c"},
        {"/a/b/c", "z/", 2, "z/b/c"},
        {"a/", "x", 0, "x/"},
        {"", "x", 0, "x/"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " <- " + l_row.directory + " levels " + std::to_string(l_row.levels));
        std::string const l_directory = l_row.directory;
        unsigned int const l_levels = l_row.levels;
        expect_twins(
            l_row.path, l_row.expected,
            [&](std::string &a_path) -> std::string & {
                return path_set_directory(a_path, l_directory, '/', l_levels);
            },
            [&](std::string const &a_path) { return path_new_directory(a_path, l_directory, '/', l_levels); });
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
        std::string const l_part = l_row.part;
        expect_twins(
            l_row.path, l_row.with_file,
            [&](std::string &a_path) -> std::string & { return path_set_file(a_path, l_part, '/'); },
            [&](std::string const &a_path) { return path_new_file(a_path, l_part, '/'); });
        expect_twins(
            l_row.path, l_row.with_name,
            [&](std::string &a_path) -> std::string & { return path_set_name(a_path, l_part, '/'); },
            [&](std::string const &a_path) { return path_new_name(a_path, l_part, '/'); });
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
        std::string const l_suffix = l_row.suffix;
        expect_twins(
            l_row.path, l_row.expected,
            [&](std::string &a_path) -> std::string & { return path_set_suffix(a_path, l_suffix, '/', 0); },
            [&](std::string const &a_path) { return path_new_suffix(a_path, l_suffix, '/', 0); });
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
        expect_twins(
            l_row.path, l_row.expected,
            [](std::string &a_path) -> std::string & { return path_normalize(a_path, '/'); },
            [](std::string const &a_path) { return path_normalized(a_path, '/'); });
    }
    EXPECT_EQ(path_normalized("C:\\a\\..\\b\\.\\c", '\\'), "C:\\b\\c");
}

TEST(path, normalize_is_idempotent)
{
    // Every path of up to five components drawn from these, joined by '/'.
    std::vector<std::string> const l_parts{"", ".", "..", "a", "bc"};
    std::vector<std::string> l_paths{""};
    std::vector<std::string> l_level{""};
    for (int l_depth = 1; l_depth <= 5; ++l_depth) {
        std::vector<std::string> l_next;
        for (std::string const &l_path : l_level) {
            for (std::string const &l_part : l_parts) {
                l_next.push_back(l_depth == 1 ? l_part : l_path + "/" + l_part);
            }
        }
        l_paths.insert(l_paths.end(), l_next.begin(), l_next.end());
        l_level.swap(l_next);
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
        {"x", "", "/x"},     {"x", "/", "/x"},           {"x", "r", "/r/x"},
        {"x", "r/", "/r/x"}, {"x", "/r", "/r/x"},        {"x", "/r/", "/r/x"},
        {"", "r", "/r"},     {"", "/r/", "/r/"},         {"/x", "/r", "/x"},
        {"", "", "/"},       {"a/b", "r/s", "/r/s/a/b"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " under " + l_row.root);
        std::string const l_root = l_row.root;
        expect_twins(
            l_row.path, l_row.expected, [&](std::string &a_path) -> std::string & { return path_root(a_path, l_root); },
            [&](std::string const &a_path) { return path_rooted(a_path, l_root); });
    }
}

TEST(path, unroot)
{
    struct row {
        char const *path, *root, *expected;
    } const l_rows[] = {
        {"/r/x", "/r", "x"},   {"/r/x", "r", "x"}, {"/r/x", "/r/", "x"}, {"/abc", "/ab", "c"},
        {"/x/y", "/r", "x/y"}, {"", "/r", ""},     {"/", "/r", ""},      {"//", "/r", "//"},
        {"/r", "/r", ""},      {"/r/", "/r", "/"}, {"r//x", "r", "x"},   {"/x", "", "x"},
        {"/x", "/", "x"},      {"//x", "/", "x"},  {"/x", "//", "x"},    {"/r/x", "/r/x", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.path) + " from " + l_row.root);
        std::string const l_root = l_row.root;
        expect_twins(
            l_row.path, l_row.expected,
            [&](std::string &a_path) -> std::string & { return path_unroot(a_path, l_root); },
            [&](std::string const &a_path) { return path_unrooted(a_path, l_root); });
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
