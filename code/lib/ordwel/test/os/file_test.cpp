// SPDX-License-Identifier: MIT
#include <ordwel/file.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ordwel/ds.h>
#include <ordwel/es.h>

#include "support/test_support.h"

#if !defined(_WIN32)
#include <grp.h>
#include <pwd.h>
#include <unistd.h>
#endif

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::raised_at;
using ordwel_test::raised_text;
using ordwel_test::temp_dir;
using ordwel_test::text_of;

// The platform's text for a path that does not exist, as env::get_last_os_error gives it.
#if defined(_WIN32)
char const k_missing_reason[] = "File not found.";
#else
char const k_missing_reason[] = "No such file or directory";
#endif

// A text with every byte value, NUL and line ends included, so that no conversion goes unseen.
std::string all_bytes()
{
    std::string l_text;
    for (int l_round = 0; l_round < 3; ++l_round) {
        for (int l_byte = 0; l_byte < 256; ++l_byte) {
            l_text.push_back(static_cast<char>(l_byte));
        }
    }
    return l_text;
}

bool exists(std::string const &a_path)
{
    return !file::is_hidden_file(a_path) || !file::is_system_file(a_path);
}

TEST(fileutil, whole_file_round_trips)
{
    temp_dir const l_dir;
    std::string const l_path = l_dir.file("data.bin");
    std::string const l_bytes = all_bytes();

    fileutil::set_file_content(l_path, l_bytes);
    EXPECT_EQ(fileutil::string_with_file_content(l_path), l_bytes);
    std::string l_text = "old content that must go";
    fileutil::get_file_content(l_path, l_text);
    EXPECT_EQ(l_text, l_bytes);
    buffer l_buffer = buffer_of("old");
    fileutil::get_file_content(l_path, l_buffer);
    EXPECT_EQ(text_of(l_buffer), l_bytes);

    // A shorter content replaces the file whole, from the buffer form as well.
    fileutil::set_file_content(l_path, buffer_of("short"));
    EXPECT_EQ(fileutil::string_with_file_content(l_path), "short");

    fileutil::set_file_content(l_path, std::string());
    EXPECT_EQ(fileutil::string_with_file_content(l_path), "");
    buffer l_empty = buffer_of("x");
    fileutil::get_file_content(l_path, l_empty);
    EXPECT_EQ(l_empty.size(), 0u);
}

TEST(fileutil, get_file_bytes_takes_a_prefix)
{
    temp_dir const l_dir;
    std::string const l_path = l_dir.file("prefix.txt");
    fileutil::set_file_content(l_path, std::string("0123456789"));

    struct row {
        uint64 count;
        char const *expected;
    } const l_rows[] = {{0, ""}, {4, "0123"}, {10, "0123456789"}, {11, "0123456789"}, {1000, "0123456789"}};
    for (row const &l_row : l_rows) {
        buffer l_bytes = buffer_of("previous bytes");
        fileutil::get_file_bytes(l_path, l_row.count, l_bytes);
        EXPECT_EQ(text_of(l_bytes), l_row.expected) << l_row.count;
    }
}

TEST(fileutil, failures_name_the_path)
{
    temp_dir const l_dir;
    std::string const l_missing = l_dir.file("missing.txt");
    std::string l_text;
    buffer l_bytes;

    EXPECT_EQ(raised_text<es::arg>([&] { fileutil::get_file_content("", l_text); }), "failed to open file ''");
    EXPECT_THROW(fileutil::get_file_content("", l_bytes), es::arg);
    EXPECT_THROW(fileutil::get_file_bytes("", 4, l_bytes), es::arg);
    EXPECT_EQ(raised_text<es::arg>([] { fileutil::set_file_content("", std::string("x")); }),
              "failed to open/create file ''");
    EXPECT_THROW(fileutil::set_file_content("", buffer_of("x")), es::arg);

    // A path that exists nowhere fails in the open of file, with the platform's reason.
    EXPECT_EQ(raised_at<es::file>([&] { fileutil::get_file_content(l_missing, l_text); }),
              "Failed to open file " + l_missing + " (" + k_missing_reason + ") @ file.cpp");
    try {
        fileutil::get_file_content(l_missing, l_text);
    } catch (es::file const &l_error) {
        EXPECT_EQ(l_error.get_subject_file(), l_missing);
    }
    EXPECT_THROW(fileutil::set_file_content(l_dir.file("no/such/dir.txt"), std::string("x")), es::file);

    EXPECT_EQ(raised_text<es::arg>([&] { fileutil::remove_file(l_missing); }),
              "failed to remove file '" + l_missing + "' (No such file or directory)");
    fileutil::set_file_content(l_missing, std::string("now here"));
    EXPECT_TRUE(exists(l_missing));
    fileutil::remove_file(l_missing);
    EXPECT_FALSE(exists(l_missing));
}

TEST(file, open_states_and_copies)
{
    temp_dir const l_dir;
    std::string const l_path = l_dir.file("states.txt");
    fileutil::set_file_content(l_path, std::string("abcdef"));

    file l_unopened;
    EXPECT_FALSE(l_unopened.is_open());
    EXPECT_EQ(l_unopened.get_fd(), -1);
    l_unopened.open("", file_write, 420);
    EXPECT_FALSE(l_unopened.is_open()) << "an empty path does nothing";
    l_unopened.close();
    EXPECT_EQ(l_unopened.get_fd(), 0) << "close marks even an unopened file closed";

    file l_file(l_path);
    ASSERT_TRUE(l_file.is_open());
    file l_copy(l_file);
    char l_bytes[4] = {};
    EXPECT_EQ(l_copy.read(l_bytes, 3), 3u);
    EXPECT_EQ(std::string(l_bytes, 3), "abc");
    EXPECT_EQ(l_file.read(l_bytes, 3), 3u) << "the copy and the original share one position";
    EXPECT_EQ(std::string(l_bytes, 3), "def");
    EXPECT_EQ(l_file.read(l_bytes, 3), 0u) << "the end of the file reads 0 and raises nothing";

    l_copy.close();
    EXPECT_FALSE(l_copy.is_open());
    EXPECT_NO_THROW(l_copy.close()) << "a second close does nothing";
    EXPECT_TRUE(l_file.is_open()) << "the original keeps its stale handle";
    try {
        l_file.read(l_bytes, 1);
        ADD_FAILURE() << "a read through a stale handle succeeded";
    } catch (es::file const &l_error) {
        EXPECT_THAT(l_error.what(), testing::StartsWith("Failed to read file  ("));
        EXPECT_EQ(l_error.get_subject_file(), "");
    }

    file l_assigned;
    l_assigned = l_file;
    EXPECT_EQ(l_assigned.get_fd(), l_file.get_fd());
    l_assigned.set_fd(-1);
    EXPECT_FALSE(l_assigned.is_open());
    EXPECT_TRUE(l_file.is_open()) << "each copy has its own record";
}

TEST(file, seek_tell_and_size)
{
    temp_dir const l_dir;
    std::string const l_path = l_dir.file("seek.txt");
    fileutil::set_file_content(l_path, std::string("0123456789"));
    file l_file(l_path);
    EXPECT_EQ(l_file.size(), 10u);

    struct row {
        sint64 offset;
        int whence;
        uint64 position;
    } const l_rows[] = {{4, 0, 4}, {2, 1, 6}, {-3, 1, 3}, {0, 2, 10}, {-1, 2, 9}, {0, 0, 0}, {20, 0, 20}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(l_file.seek(static_cast<uint64>(l_row.offset), l_row.whence), l_row.position)
            << l_row.offset << " from " << l_row.whence;
        EXPECT_EQ(l_file.tell(), l_row.position);
    }
    l_file.seek(static_cast<uint64>(-1), 2);
    char l_byte = 0;
    EXPECT_EQ(l_file.read(&l_byte, 1), 1u);
    EXPECT_EQ(l_byte, '9');

    for (int l_whence : {3, -1, 100}) {
        EXPECT_EQ(raised_text<es::arg>([&] { l_file.seek(0, l_whence); }), "Invalid whence in seek()") << l_whence;
    }
    EXPECT_EQ(l_file.tell(), 10u) << "a bad whence leaves the position alone";
    EXPECT_THROW(l_file.seek(static_cast<uint64>(-11), 2), es::file) << "before the start";
    l_file.close();
    EXPECT_THROW(static_cast<void>(l_file.size()), es::file);
    EXPECT_THROW(static_cast<void>(l_file.tell()), es::file);
    EXPECT_THROW(l_file.seek(0, 0), es::file);
}

TEST(file, flags_choose_access_and_disposition)
{
    temp_dir const l_dir;
    std::string const l_path = l_dir.file("flags.txt");

    EXPECT_THROW(file(l_path, file_truncate), es::file) << "truncate needs an existing file";
    EXPECT_FALSE(exists(l_path));

    file l_made(l_path, file_write | file_exclusive);
    EXPECT_EQ(l_made.write("hello", 5), 5u);
    l_made.close();
    EXPECT_THROW(file(l_path, file_write | file_exclusive), es::file) << "exclusive fails on an existing file";

    file l_reader(l_path, 0);
    EXPECT_THROW(l_reader.write("x", 1), es::file) << "flags 0 open for reading only";
    l_reader.close();

    file l_both(l_path, file_read_write);
    char l_bytes[8] = {};
    EXPECT_EQ(l_both.read(l_bytes, 2), 2u);
    EXPECT_EQ(l_both.write("XY", 2), 2u);
    EXPECT_EQ(l_both.size(), 5u);
    l_both.close();
    EXPECT_EQ(fileutil::string_with_file_content(l_path), "heXYo");

    file l_created(l_path, file_write | file_create);
    EXPECT_EQ(l_created.size(), 0u) << "create empties an existing file";
    l_created.write("ab", 2);
    l_created.close();

    file l_truncated(l_path, file_write | file_truncate);
    EXPECT_EQ(l_truncated.size(), 0u);
    l_truncated.close();
    EXPECT_EQ(fileutil::string_with_file_content(l_path), "");
}

TEST(file, compare_by_signed_handle)
{
    file l_unopened;
    file l_closed;
    l_closed.close();
    file l_other(5);
    file_cmp const l_less;
    EXPECT_TRUE(l_less(l_unopened, l_closed)) << "-1 comes before 0";
    EXPECT_FALSE(l_less(l_closed, l_unopened));
    EXPECT_TRUE(l_less(l_closed, l_other));
    EXPECT_FALSE(l_less(l_other, l_other));

    file l_negative;
    l_negative.set_fd(-7);
    EXPECT_EQ(l_negative.get_fd(), -7);
    EXPECT_TRUE(l_negative.is_open());
    std::set<file, file_cmp> l_set;
    l_set.insert(l_other);
    l_set.insert(l_negative);
    l_set.insert(l_unopened);
    l_set.insert(file(5));
    ASSERT_EQ(l_set.size(), 3u);
    EXPECT_EQ(l_set.begin()->get_fd(), -7);
    EXPECT_EQ(l_set.rbegin()->get_fd(), 5);
}

TEST(file, attributes_and_aliases)
{
    temp_dir const l_dir;
    std::string const l_plain = l_dir.file("plain.txt");
    fileutil::set_file_content(l_plain, std::string("x"));
    EXPECT_FALSE(file::is_hidden_file(l_plain));
    EXPECT_FALSE(file::is_system_file(l_plain));
    EXPECT_FALSE(file::is_system_file(l_dir.path()));
    EXPECT_TRUE(file::is_hidden_file(l_dir.file("missing")));
    EXPECT_TRUE(file::is_system_file(l_dir.file("missing")));
    EXPECT_TRUE(file::is_hidden_file(""));
#if !defined(_WIN32)
    std::string const l_dotted = l_dir.file(".dotted");
    fileutil::set_file_content(l_dotted, std::string("x"));
    EXPECT_TRUE(file::is_hidden_file(l_dotted));
    EXPECT_FALSE(file::is_system_file(l_dotted));
    EXPECT_TRUE(file::is_system_file("/dev/null")) << "neither a regular file nor a directory";
#endif
    EXPECT_FALSE(file::is_alias(l_plain));
    EXPECT_FALSE(file::is_alias_to_file(l_plain));
    EXPECT_FALSE(file::is_alias_to_directory(l_dir.path()));
    EXPECT_EQ(file::resolve_alias(l_plain), l_plain);
}

TEST(fileutil, create_safe_filename_table)
{
    struct row {
        std::string input, expected;
    } const l_rows[] = {
        {"a b", "a_b"},
        {"a:b,c", "a.b.c"},
        {"x/y\\z", "x_y_z"},
        {"", ""},
        {"\xC3\xA9t\xE9", "__t_"},
        {"!#%()+-=@[]", "!#%()+-=@[]"},
        {",.:;", "...."},
        {"\"$&'*/<>?\\^_`", "_____________"},
        {"{|}~\x7F", "_____"},
        {std::string("a\0b", 3), "a_b"},
        {"\t\n\r ", "____"},
        {"AZaz09", "AZaz09"},
        {"report 2024: final?.txt", "report_2024._final_.txt"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(fileutil::create_safe_filename(l_row.input), l_row.expected) << l_row.input;
    }
}

TEST(directory, walk_lists_every_entry)
{
    temp_dir const l_dir;
    fileutil::set_file_content(l_dir.file("one.txt"), std::string("1"));
    fileutil::set_file_content(l_dir.file("two.bin"), std::string("22"));
    fileutil::set_file_content(l_dir.file("gr\xC3\xBC\xC3\x9F.txt"), std::string("3"));

    DIR *const l_walk = opendir(l_dir.path().c_str());
    ASSERT_NE(l_walk, nullptr);
    std::vector<std::string> l_names;
    for (dirent *l_entry = readdir(l_walk); l_entry != nullptr; l_entry = readdir(l_walk)) {
        l_names.emplace_back(l_entry->d_name);
    }
    EXPECT_EQ(readdir(l_walk), nullptr) << "the end stays the end";
    closedir(l_walk);
    EXPECT_THAT(l_names,
                testing::UnorderedElementsAre(".", "..", "one.txt", "two.bin", std::string("gr\xC3\xBC\xC3\x9F.txt")));

    EXPECT_EQ(opendir(l_dir.file("missing").c_str()), nullptr);
}

TEST(users, look_ups)
{
#if defined(_WIN32)
    EXPECT_EQ(name_with_uid(0), "");
    EXPECT_EQ(name_with_gid(0), "");
    EXPECT_EQ(uid_with_name("Administrator"), 0);
    EXPECT_EQ(gid_with_name("Users"), 0);
#else
    EXPECT_EQ(name_with_uid(0), "root");
    EXPECT_EQ(uid_with_name("root"), 0);
    struct passwd *const l_self = getpwuid(getuid());
    ASSERT_NE(l_self, nullptr);
    std::string const l_name = l_self->pw_name;
    EXPECT_EQ(name_with_uid(static_cast<int>(getuid())), l_name);
    EXPECT_EQ(uid_with_name(l_name.c_str()), static_cast<int>(getuid()));
    struct group *const l_group = getgrgid(getgid());
    ASSERT_NE(l_group, nullptr);
    std::string const l_group_name = l_group->gr_name;
    EXPECT_EQ(name_with_gid(static_cast<int>(getgid())), l_group_name);
    EXPECT_EQ(gid_with_name(l_group_name.c_str()), static_cast<int>(getgid()));
    EXPECT_EQ(uid_with_name("no such user, surely"), -1);
    EXPECT_EQ(gid_with_name("no such group, surely"), -1);
    EXPECT_EQ(uid_with_name(nullptr), -1);
    EXPECT_EQ(name_with_uid(-12345), "");
#endif
}

TEST(dump_buf, writes_only_when_asked)
{
    temp_dir const l_dir;
    std::string const l_path = l_dir.file("dump.bin");
    std::string const l_bytes = all_bytes();
    uint64 const k_off_channel = 40;
    ds_og::mask_clear_bit(k_off_channel);

    ds_og::dump_buf(k_off_channel, l_path.c_str(), l_bytes.data(), l_bytes.size());
    EXPECT_FALSE(exists(l_path)) << "a channel that is off";
    ds_og::dump_buf(0, l_path.c_str(), l_bytes.data(), 0);
    EXPECT_FALSE(exists(l_path)) << "a zero size";
    ds_og::dump_buf(0, nullptr, l_bytes.data(), l_bytes.size());
    ds_og::dump_buf(0, l_path.c_str(), nullptr, l_bytes.size());
    EXPECT_FALSE(exists(l_path)) << "null bytes";

    ds_og::dump_buf(0, l_path.c_str(), l_bytes.data(), l_bytes.size());
    EXPECT_EQ(fileutil::string_with_file_content(l_path), l_bytes);
    ds_og::dump_buf(0, l_path.c_str(), "over", 4);
    EXPECT_EQ(fileutil::string_with_file_content(l_path), "over") << "a dump replaces the file whole";

    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(ds_og::dump_buf(0, l_dir.file("no/such/dir.bin").c_str(), "x", 1));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: debug dump failed: couldn't open file\n");
}

} // namespace
