// SPDX-License-Identifier: MIT
#include <ordwel/es.h>

#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

// Runs a raise and hands back the caught object's texts seen through std::exception and es::base.
struct caught {
    std::string std_what;
    std::string what;
    std::string msg;
    std::string file;
    uint32 line = 0;
};

template <class T> caught catch_as(std::function<void()> const &a_raise)
{
    caught l_result;
    try {
        a_raise();
        ADD_FAILURE() << "raise returned";
    } catch (T const &l_error) {
        auto const &l_base = dynamic_cast<es::base const &>(l_error);
        l_result.what = l_base.what();
        l_result.msg = l_base.msg();
        l_result.file = l_base.file();
        l_result.line = l_base.line();
        std::exception const &l_std = l_error;
        l_result.std_what = l_std.what();
    }
    return l_result;
}

// The classes that add nothing but their type: each must be caught as itself, as es::base and as
// std::exception, keep its location, and give "n/a" for a null message.
template <class T> class es_simple : public testing::Test {
};
using es_simple_types = testing::Types<es::alloc, es::arg, es::call, es::inuse, es::null, es::oflow, es::range,
                                       es::uflow, es::uninit, es::unsupp, es::uspec>;
TYPED_TEST_SUITE(es_simple, es_simple_types);

TYPED_TEST(es_simple, carries_location_and_message_and_matches_three_handlers)
{
    caught const l_null = catch_as<TypeParam>([] { TypeParam::raise("site.cpp", 7, nullptr); });
    EXPECT_EQ(l_null.what, "n/a");
    EXPECT_EQ(l_null.msg, "n/a");
    EXPECT_EQ(l_null.std_what, "n/a");
    EXPECT_EQ(l_null.file, "site.cpp");
    EXPECT_EQ(l_null.line, 7u);
    EXPECT_EQ(catch_as<std::exception>([] { TypeParam::raise("site.cpp", 7, ""); }).std_what, "");
    EXPECT_EQ(catch_as<es::base>([] { TypeParam::raise("site.cpp", 7, "boom"); }).msg, "boom");
}

TEST(es, texts_are_owned_copies)
{
    std::string l_file = "short-lived.cpp";
    std::string l_msg = "short-lived message";
    try {
        es::arg::raise(l_file.c_str(), 3, l_msg.c_str());
        ADD_FAILURE() << "raise returned";
    } catch (es::arg const &l_error) {
        l_file.assign(l_file.size(), 'x');
        l_msg.assign(l_msg.size(), 'y');
        EXPECT_STREQ(l_error.file(), "short-lived.cpp");
        EXPECT_STREQ(l_error.what(), "short-lived message");
    }
}

TEST(es, call_with_error_number_composes_bounded_text)
{
    struct row {
        int error;
        char const *msg;
        std::string expected;
    } const l_rows[] = {
        {5, "open failed", "open failed (err = 5)"},
        {5, nullptr, "n/a (err = 5)"},
        {-22, "bad", "bad (err = -22)"},
        {0, "", " (err = 0)"},
    };
    for (row const &l_row : l_rows) {
        caught const l_caught = catch_as<es::call>([&] { es::call::raise(l_row.error, "c.cpp", 1, l_row.msg); });
        EXPECT_EQ(l_caught.what, l_row.expected);
        EXPECT_EQ(l_caught.file, "c.cpp");
    }
    std::string const l_long(1000, 'm');
    caught const l_cut = catch_as<es::call>([&] { es::call::raise(1, "c.cpp", 1, l_long.c_str()); });
    EXPECT_EQ(l_cut.what, std::string(255, 'm'));
}

TEST(es, file_composes_what_from_operation_subject_and_reason)
{
    try {
        es::file::raise("f.cpp", 12, "denied", "open", "a.txt");
        ADD_FAILURE() << "raise returned";
    } catch (es::file &l_error) {
        es::base const &l_base = l_error;
        EXPECT_STREQ(l_error.what(), "Failed to open file a.txt (denied)");
        EXPECT_STREQ(l_base.msg(), "Failed to open file a.txt (denied)");
        EXPECT_EQ(l_base.message(), "");

        l_error.set_subject_file("b.txt");
        EXPECT_STREQ(l_error.what(), "Failed to open file b.txt (denied)");
        l_error.set_subject_file(l_error.get_subject_file());
        EXPECT_EQ(l_error.get_subject_file(), "b.txt");
        EXPECT_STREQ(l_base.file(), "f.cpp");
        EXPECT_EQ(l_base.line(), 12u);

        es::file const l_copy(l_error);
        EXPECT_EQ(l_copy.get_subject_file(), "b.txt");
        EXPECT_STREQ(l_copy.what(), "Failed to open file b.txt (denied)");
        EXPECT_STREQ(static_cast<es::base const &>(l_copy).file(), "f.cpp");
    }
    caught const l_no_subject = catch_as<std::exception>([] { es::file::raise("f.cpp", 1, "gone", "read"); });
    EXPECT_EQ(l_no_subject.std_what, "Failed to read file  (gone)");
}

// The text of what() is composed when the subject changes, not on each call: a pointer from one
// call stays good across the next, and readers on several threads see one settled text.
TEST(es, file_what_is_stable_across_calls_and_threads)
{
    es::file l_error("f.cpp", 3, "no space left on device", "write", "/var/spool/output/a-long-name.bin");
    char const *const l_first = l_error.what();
    char const *const l_second = l_error.what();
    EXPECT_EQ(l_first, l_second) << "a second what() must not move the text of the first";
    EXPECT_STREQ(l_first, "Failed to write file /var/spool/output/a-long-name.bin (no space left on device)");
    EXPECT_EQ(static_cast<es::base const &>(l_error).msg(), l_first);

    es::file const l_copy(l_error);
    l_error.set_subject_file("b.txt");
    EXPECT_STREQ(l_error.what(), "Failed to write file b.txt (no space left on device)");
    EXPECT_STREQ(l_copy.what(), "Failed to write file /var/spool/output/a-long-name.bin (no space left on device)")
        << "mending the original leaves its copy alone";

    es::file const &l_shared = l_error;
    std::string const l_expected = l_shared.what();
    std::vector<int> l_mismatches(4, 0);
    std::vector<std::thread> l_readers;
    for (std::size_t l_index = 0; l_index < l_mismatches.size(); ++l_index) {
        l_readers.emplace_back([&l_shared, &l_expected, &l_mismatches, l_index] {
            for (int l_round = 0; l_round < 2000; ++l_round) {
                if (std::strcmp(l_shared.what(), l_expected.c_str()) != 0) {
                    ++l_mismatches[l_index];
                }
            }
        });
    }
    for (std::thread &l_reader : l_readers) {
        l_reader.join();
    }
    EXPECT_EQ(l_mismatches, std::vector<int>(4, 0));
}

TEST(es, api_code_keeps_code_and_message)
{
    try {
        es::api_code::raise("a.cpp", 4, -3, std::string("custom failure"));
        ADD_FAILURE() << "raise returned";
    } catch (es::api_code const &l_error) {
        EXPECT_EQ(l_error.code(), -3);
        EXPECT_STREQ(l_error.what(), "custom failure");
        es::api_code const l_copy(l_error);
        EXPECT_EQ(l_copy.code(), -3);
    }
}

TEST(es, test_fail_what_is_fixed_and_message_kept)
{
    caught const l_caught = catch_as<es::base>([] { test::fail::raise("t.cpp", 9, "expected 3"); });
    EXPECT_EQ(l_caught.what, "unit-test");
    EXPECT_EQ(l_caught.msg, "unit-test");
    EXPECT_EQ(l_caught.std_what, "unit-test");
    EXPECT_EQ(l_caught.line, 9u);
    try {
        test::fail::raise("t.cpp", 9, "expected 3");
        ADD_FAILURE() << "raise returned";
    } catch (test::fail const &l_fail) {
        EXPECT_EQ(l_fail.message(), "expected 3");
    }
}

TEST(es, here_macro_gives_file_name_without_directories)
{
    static_assert(source_basename("a/b/c.cpp")[0] == 'c', "");
    EXPECT_STREQ(source_basename("/x/y/z.cpp"), "z.cpp");
    EXPECT_STREQ(source_basename("x\\y\\w.cpp"), "w.cpp");
    EXPECT_STREQ(source_basename("plain.cpp"), "plain.cpp");
    caught const l_caught = catch_as<es::base>([] { es::uspec::raise(ORDWEL_HERE, "here"); });
    EXPECT_EQ(l_caught.file, "es_test.cpp");
    EXPECT_GT(l_caught.line, 0u);
}

} // namespace
