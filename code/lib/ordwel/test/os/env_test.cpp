// SPDX-License-Identifier: MIT
#include <ordwel/env.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/test_support.h"

#if defined(_WIN32)
#include <process.h>
#include <windows.h>
#else
#include <cerrno>
#include <unistd.h>
#endif

namespace {

using namespace ordwel;
using env::os_version;

void set_variable(char const *a_name, char const *a_value)
{
#if defined(_WIN32)
    // _putenv("X=") would remove the variable; the runtime's own table is what getenv reads.
    _putenv_s(a_name, a_value);
#else
    setenv(a_name, a_value, 1);
#endif
}

void unset_variable(char const *a_name)
{
#if defined(_WIN32)
    _putenv_s(a_name, "");
#else
    unsetenv(a_name);
#endif
}

env::os_version_info version_info(uint32 a_platform, uint32 a_major, uint32 a_minor, uint8 a_product,
                                  uint16 a_suite = 0, char const *a_pack = "")
{
    env::os_version_info l_info{};
    l_info.m_size = sizeof l_info;
    l_info.m_platform_id = a_platform;
    l_info.m_major = a_major;
    l_info.m_minor = a_minor;
    l_info.m_product_type = a_product;
    l_info.m_suite_mask = a_suite;
    std::strncpy(l_info.m_service_pack, a_pack, sizeof l_info.m_service_pack - 1);
    return l_info;
}

TEST(env, os_version_strings)
{
    EXPECT_EQ(env::get_os_version_string(env::os_version_unknown), "unknown");
    EXPECT_EQ(env::get_os_version_string(env::os_version_windows), "Windows");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(7)), "Windows Millenium");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(13)), "Windows XP Professional 64");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(24)), "Windows 8.1");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(26)), "Windows Server 2016");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(33)), "OS X Mountain Lion");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(34)), "Unknown");
    EXPECT_EQ(env::get_os_version_string(static_cast<os_version>(-1)), "Unknown");
}

// Each row of the version table with a made-up record, and the cases around it that no row names.
TEST(env, windows_version_table)
{
    struct row {
        uint32 platform, major, minor;
        uint8 product;
        uint16 suite;
        char const *pack;
        uint16 architecture;
        int server_r2;
        int expected;
    } const l_rows[] = {
        {0, 3, 1, 0, 0, "", 0, 0, 2},       {0, 9, 9, 1, 0, "", 0, 0, 2},       {1, 4, 0, 0, 0, "", 0, 0, 3},
        {1, 4, 0, 0, 0, "B", 0, 0, 4},      {1, 4, 0, 0, 0, "C", 0, 0, 4},      {1, 4, 0, 0, 0, "A", 0, 0, 3},
        {1, 4, 10, 0, 0, "", 0, 0, 5},      {1, 4, 10, 0, 0, "A", 0, 0, 6},     {1, 4, 10, 0, 0, "B", 0, 0, 5},
        {1, 4, 90, 0, 0, "", 0, 0, 7},      {1, 4, 91, 0, 0, "", 0, 0, 1},      {1, 5, 0, 0, 0, "", 0, 0, 1},
        {2, 3, 51, 1, 0, "", 0, 0, 8},      {2, 4, 0, 1, 0, "", 0, 0, 9},       {2, 4, 0, 3, 0, "", 0, 0, 10},
        {2, 4, 0, 2, 0, "", 0, 0, 1},       {2, 5, 0, 3, 0, "", 0, 0, 11},      {2, 5, 1, 1, 0, "", 0, 0, 12},
        {2, 5, 2, 1, 0x8000, "", 9, 1, 14}, {2, 5, 2, 3, 0x8000, "", 0, 0, 14}, {2, 5, 2, 1, 0x8001, "", 9, 0, 13},
        {2, 5, 2, 1, 0, "", 9, 1, 13},      {2, 5, 2, 1, 0, "", 0, 1, 16},      {2, 5, 2, 3, 0, "", 9, 1, 16},
        {2, 5, 2, 3, 0, "", 9, 0, 15},      {2, 5, 3, 1, 0, "", 0, 0, 1},       {2, 6, 0, 1, 0, "", 0, 0, 17},
        {2, 6, 0, 3, 0, "", 0, 0, 18},      {2, 6, 1, 1, 0, "", 0, 0, 20},      {2, 6, 1, 2, 0, "", 0, 0, 19},
        {2, 6, 2, 1, 0, "", 0, 0, 23},      {2, 6, 2, 3, 0, "", 0, 0, 21},      {2, 6, 3, 1, 0, "", 0, 0, 24},
        {2, 6, 3, 3, 0, "", 0, 0, 22},      {2, 6, 4, 1, 0, "", 0, 0, 1},       {2, 10, 0, 1, 0, "", 0, 0, 25},
        {2, 10, 0, 3, 0, "", 0, 0, 26},     {2, 10, 0, 0, 0, "", 0, 0, 26},     {2, 10, 1, 1, 0, "", 0, 0, 1},
        {2, 11, 0, 1, 0, "", 0, 0, 1},      {3, 10, 0, 1, 0, "", 0, 0, 1},
    };
    for (row const &l_row : l_rows) {
        env::system_info l_system{};
        l_system.m_processor_architecture = l_row.architecture;
        os_version const l_version = env::os_version_with_version_info(
            version_info(l_row.platform, l_row.major, l_row.minor, l_row.product, l_row.suite, l_row.pack), l_system,
            l_row.server_r2);
        EXPECT_EQ(static_cast<int>(l_version), l_row.expected)
            << "platform " << l_row.platform << ", " << l_row.major << "." << l_row.minor << ", product "
            << int(l_row.product) << ", suite " << l_row.suite << ", pack '" << l_row.pack << "'";
    }
    env::system_info const l_system{};
    EXPECT_EQ(env::get_os_version_string(env::os_version_with_version_info(version_info(2, 6, 4, 1), l_system, 0)),
              "Windows");
}

TEST(env, registry_product_type_table)
{
    struct row {
        char const *text;
        uint32 major, minor;
        int expected;
    } const l_rows[] = {
        {"WINNT", 4, 0, 9},     {"winnt", 3, 51, 9},    {"WINNT", 5, 0, 1},    {"LANMANNT", 5, 2, 15},
        {"LanManNT", 5, 0, 11}, {"LANMANNT", 4, 0, 9},  {"LANMANNT", 5, 1, 1}, {"LANMANNT", 6, 0, 1},
        {"SERVERNT", 5, 2, 15}, {"servernt", 5, 0, 11}, {"SERVERNT", 4, 0, 9}, {"SERVERNT", 5, 1, 1},
        {"WINNT ", 4, 0, 1},    {"", 4, 0, 1},          {"SERVER", 5, 2, 1},   {"LANMANNTX", 5, 2, 1},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(static_cast<int>(env::os_version_with_product_type(l_row.text, l_row.major, l_row.minor)),
                  l_row.expected)
            << "'" << l_row.text << "' " << l_row.major << "." << l_row.minor;
    }
}

TEST(env, kernel_version_word)
{
    EXPECT_EQ(env::kernel_version_with_word(0x23F00206U), "6.2 (9200)");
    EXPECT_EQ(env::kernel_version_with_word(0x0A28000AU), "10.0 (2600)");
    EXPECT_EQ(env::kernel_version_with_word(0xC0000A04U), "4.10 (0)") << "top bit set: build 0";
    EXPECT_EQ(env::kernel_version_with_word(0x7FFFFFFFU), "255.255 (32767)");
    EXPECT_EQ(env::kernel_version_with_word(0), "0.0 (0)");
}

TEST(env, cpu_utilization_arithmetic)
{
    // total = user + kernel deltas, busy = total less the idle delta.
    EXPECT_DOUBLE_EQ(env::cpu_utilization_with_times(50, 100, 100, 0, 0, 0), 0.75);
    EXPECT_DOUBLE_EQ(env::cpu_utilization_with_times(150, 200, 200, 50, 100, 100), 0.5);
    EXPECT_DOUBLE_EQ(env::cpu_utilization_with_times(10, 10, 0, 0, 0, 0), 0.0);
    EXPECT_DOUBLE_EQ(env::cpu_utilization_with_times(0, 0, 40, 0, 0, 0), 1.0);
    EXPECT_DOUBLE_EQ(env::cpu_utilization_with_times(5, 5, 5, 5, 5, 5), 0.0) << "no time between two samples";

    double const l_first = env::get_cpu_utilization();
    double const l_second = env::get_cpu_utilization();
    EXPECT_GE(l_first, 0.0);
    EXPECT_LE(l_first, 1.0);
    EXPECT_GE(l_second, 0.0);
    EXPECT_LE(l_second, 1.0);
}

TEST(env, file_system_name_rule)
{
    struct row {
        char const *name;
        bool native;
    } const l_rows[] = {
        {"NTFS", true},  {"FAT", true},   {"FAT32", false}, {"exFAT", false}, {"CDFS", false},
        {"ntfs", false}, {"Ntfs", false}, {"NTFS ", false}, {"", false},      {"ext4", true},
        {"xfs", true},   {"tmpfs", true}, {"vfat", false},  {"nfs", false},   {"iso9660", false},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(env::is_native_file_system(l_row.name), l_row.native) << "'" << l_row.name << "'";
    }
    EXPECT_EQ(env::volume_root_with_path("C:\\data\\file.txt"), "C:\\");
    EXPECT_EQ(env::volume_root_with_path("C:\\data\\"), "C:\\");
    EXPECT_EQ(env::volume_root_with_path("\\data"), "\\");
    EXPECT_EQ(env::volume_root_with_path(""), "\\");
    EXPECT_EQ(env::volume_root_with_path("D:"), "D:\\");
}

TEST(env, native_volumes_are_not_foreign)
{
    ordwel_test::temp_dir const l_dir;
    EXPECT_FALSE(env::has_local_non_native_access(""));
    EXPECT_FALSE(env::has_local_non_native_access("Q:\\no\\such\\volume"));
    // The system's temporary directory is on a native file system of the test machines, so the
    // answer stays false whether the path exists or not, with or without a trailing separator.
    bool const l_answer = env::has_local_non_native_access(l_dir.path());
    EXPECT_EQ(env::has_local_non_native_access(l_dir.path() + "\\"), l_answer);
    EXPECT_FALSE(env::has_local_non_native_access(l_dir.file("missing")));
}

TEST(env, environment_variables)
{
    set_variable("ORDWEL_ENV_TEST_SET", "value 1");
    EXPECT_EQ(env::get_environment_variable("ORDWEL_ENV_TEST_SET"), std::make_pair(true, std::string("value 1")));
    unset_variable("ORDWEL_ENV_TEST_SET");
    EXPECT_EQ(env::get_environment_variable("ORDWEL_ENV_TEST_SET"), std::make_pair(false, std::string()));
#if !defined(_WIN32)
    // The Windows runtime cannot hold a variable set to the empty string.
    set_variable("ORDWEL_ENV_TEST_EMPTY", "");
    EXPECT_EQ(env::get_environment_variable("ORDWEL_ENV_TEST_EMPTY"), std::make_pair(true, std::string()));
    unset_variable("ORDWEL_ENV_TEST_EMPTY");
#endif
}

TEST(env, execute_command_appends_and_gives_the_status)
{
    std::string l_output = "before:";
    EXPECT_EQ(env::execute_command("echo first", l_output), 0);
    EXPECT_EQ(env::execute_command("echo second", l_output), 0);
    std::string::size_type const l_first = l_output.find("first");
    std::string::size_type const l_second = l_output.find("second");
    EXPECT_EQ(l_output.compare(0, 7, "before:"), 0) << l_output;
    ASSERT_NE(l_first, std::string::npos) << l_output;
    ASSERT_NE(l_second, std::string::npos) << l_output;
    EXPECT_LT(l_first, l_second);

    std::string l_quiet;
    EXPECT_EQ(env::execute_command("exit 3", l_quiet), 3);
    EXPECT_EQ(l_quiet, "");
}

TEST(env, constants_and_plain_answers)
{
    EXPECT_EQ(env::get_optimal_io_size(""), 1048576u);
    EXPECT_EQ(env::get_optimal_io_size("C:\\whatever\\it\\is"), 0x100000u);
    EXPECT_GE(env::get_num_cpus(), 1u);
    EXPECT_GT(env::get_mem_size_MiB(), 0u);
    EXPECT_LE(env::get_avail_mem_MiB(), env::get_mem_size_MiB());
    EXPECT_NE(env::get_user_name(), "");
    EXPECT_FALSE(env::get_kernel_version().empty());
    EXPECT_NO_THROW(static_cast<void>(env::get_cpu_frequency_Mhz()));
#if defined(_WIN32)
    EXPECT_EQ(env::get_isa(), "x86_64");
    EXPECT_EQ(env::get_kernel_name(), "WINDOWS");
    EXPECT_EQ(env::get_pid(), static_cast<unsigned>(_getpid()));
    EXPECT_NE(env::get_os_version(), env::os_version_unknown);
#else
    EXPECT_EQ(env::get_kernel_name(), "LINUX");
    EXPECT_EQ(env::get_pid(), static_cast<unsigned>(getpid()));
    EXPECT_EQ(env::get_os_version(), env::os_version_unknown);
    EXPECT_FALSE(env::get_is_server());
    char l_host[256] = {};
    gethostname(l_host, sizeof l_host - 1);
    EXPECT_EQ(env::get_host_name(), l_host);
#endif
    EXPECT_EQ(env::get_os_version(), env::systeminfo::instance().get_windows_version());
    EXPECT_EQ(&env::systeminfo::instance(), &env::systeminfo::instance());
}

TEST(env, paths_of_the_process)
{
    std::string const l_executable = env::get_executable();
    std::string const l_directory = env::get_executable_path();
    ASSERT_FALSE(l_directory.empty());
    EXPECT_EQ(l_executable.compare(0, l_directory.size(), l_directory), 0);
    EXPECT_NE(l_executable.find("ordwel_env_test"), std::string::npos) << l_executable;
    char const l_separator = l_directory.back();
    EXPECT_TRUE(l_separator == '/' || l_separator == '\\') << l_directory;

    std::string const l_tmp = env::get_default_tmp_path();
    ASSERT_FALSE(l_tmp.empty());
    EXPECT_TRUE(l_tmp.back() == '/' || l_tmp.back() == '\\') << l_tmp;
    EXPECT_FALSE(env::get_current_working_directory_path().empty());
    EXPECT_FALSE(env::get_user_home_path().empty());
}

TEST(env, last_os_error_is_the_trimmed_platform_text)
{
#if defined(_WIN32)
    SetLastError(ERROR_FILE_NOT_FOUND);
    std::string const l_text = env::get_last_os_error();
    EXPECT_EQ(l_text, "File not found.") << "Wine's text for error 2, without its line end";
#else
    errno = ENOENT;
    std::string const l_text = env::get_last_os_error();
    EXPECT_EQ(l_text, "No such file or directory");
#endif
}

TEST(env, stack_vector_copies_all_elements)
{
    stack_vector<char, 256> l_first;
    for (int l_index = 0; l_index < 256; ++l_index) {
        l_first.begin()[l_index] = static_cast<char>(l_index);
    }
    stack_vector<char, 256> l_second;
    l_second = l_first;
    EXPECT_EQ(std::memcmp(l_first.begin(), l_second.begin(), 256), 0);
    EXPECT_NE(l_first.begin(), l_second.begin());
}

} // namespace
