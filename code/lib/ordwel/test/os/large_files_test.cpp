// SPDX-License-Identifier: MIT
// Reads and writes of more than the kernel moves in one call (2 GiB less 4 KiB on Linux), up to
// the 4 GiB less one that one call of file may move, and positions beyond 4 GiB. The files are
// sparse, so the disk holds little; the large buffers are real memory, and the tests skip when the
// machine has too little of it. Label "large": CI runs them in a step of their own.
#include <ordwel/file.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <ordwel/buffer.h>

#include "support/test_support.h"

#if defined(__linux__)
#include <cstdio>

#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#endif

namespace {

using namespace ordwel;

#if defined(__linux__)

constexpr uint64 k_gib = uint64(1) << 30;
// Above the kernel's limit of one call, below the 4 GiB of one call of file.
constexpr uint64 k_large = 3 * k_gib;

// Memory the system can hand out without swapping, from /proc/meminfo; 0 when unknown.
uint64 available_memory()
{
    std::FILE *const l_info = std::fopen("/proc/meminfo", "r");
    if (l_info == nullptr) {
        return 0;
    }
    char l_line[256];
    unsigned long long l_kib = 0;
    while (std::fgets(l_line, sizeof l_line, l_info) != nullptr) {
        if (std::sscanf(l_line, "MemAvailable: %llu kB", &l_kib) == 1) {
            break;
        }
    }
    std::fclose(l_info);
    return static_cast<uint64>(l_kib) * 1024;
}

// Free space on the file system that holds a_path.
uint64 free_space(std::string const &a_path)
{
    struct statvfs l_info {};
    if (statvfs(a_path.c_str(), &l_info) != 0) {
        return 0;
    }
    return static_cast<uint64>(l_info.f_bavail) * l_info.f_frsize;
}

// Bytes that the file system actually holds for a file.
uint64 allocated_bytes(std::string const &a_path)
{
    struct stat l_info {};
    return stat(a_path.c_str(), &l_info) == 0 ? static_cast<uint64>(l_info.st_blocks) * 512 : 0;
}

// A few places spread over a_size bytes, the ends among them, each with its own byte value.
struct sample {
    uint64 offset;
    unsigned char value;
};
std::vector<sample> samples_over(uint64 a_size)
{
    return {{0, 0x11}, {k_gib, 0x22}, {2 * k_gib - 1, 0x33}, {2 * k_gib + 4096, 0x44}, {a_size - 1, 0x55}};
}

// A sparse file of a_size bytes with the sampled bytes set; false when the file system refuses a
// sparse file (it allocated most of the size).
bool make_sparse_file(std::string const &a_path, uint64 a_size)
{
    file l_file(a_path, file_write | file_create, 420);
    for (sample const &l_sample : samples_over(a_size)) {
        l_file.seek(l_sample.offset, 0);
        EXPECT_EQ(l_file.write(&l_sample.value, 1), 1u);
    }
    l_file.close();
    return allocated_bytes(a_path) < a_size / 2;
}

// An anonymous mapping that the kernel backs only where it is touched.
class lazy_memory {
public:
    explicit lazy_memory(std::size_t a_size)
        : m_size(a_size),
          m_data(mmap(nullptr, a_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
    }
    ~lazy_memory()
    {
        if (m_data != MAP_FAILED) {
            munmap(m_data, m_size);
        }
    }
    lazy_memory(lazy_memory const &) = delete;
    lazy_memory &operator=(lazy_memory const &) = delete;
    bool ok() const { return m_data != MAP_FAILED; }
    void *data() const { return m_data; }

private:
    std::size_t m_size;
    void *m_data;
};

#endif

// One write of 3 GiB to a sink that keeps nothing: it costs no memory (the pages are never
// touched) and shows whether one call moves all of it.
TEST(large_files, one_write_moves_more_than_the_kernel_moves_per_call)
{
#if defined(__linux__)
    lazy_memory const l_memory(k_large);
    ASSERT_TRUE(l_memory.ok());
    file l_sink("/dev/null", file_write, 420);
    EXPECT_EQ(l_sink.write(l_memory.data(), k_large), k_large);
    l_sink.close();
#else
    GTEST_SKIP() << "writes to /dev/null through an untouched mapping, which needs Linux";
#endif
}

// Positions beyond 4 GiB: a write there and a read back, through a sparse file.
TEST(large_files, writes_and_reads_beyond_four_gib)
{
#if defined(__linux__)
    ordwel_test::temp_dir const l_dir;
    std::string const l_path = l_dir.path() + "/beyond";
    uint64 const l_offset = 4 * k_gib + 123;
    file l_file(l_path, file_read_write | file_create, 420);
    EXPECT_EQ(l_file.seek(l_offset, 0), l_offset);
    EXPECT_EQ(l_file.write("tail", 4), 4u);
    EXPECT_EQ(l_file.size(), l_offset + 4);
    if (allocated_bytes(l_path) > k_gib) {
        l_file.close();
        GTEST_SKIP() << "the file system under " << l_dir.path() << " does not keep sparse files";
    }
    EXPECT_EQ(l_file.seek(l_offset - 2, 0), l_offset - 2);
    char l_back[8] = {};
    EXPECT_EQ(l_file.read(l_back, sizeof l_back), 6u);
    EXPECT_EQ(std::string(l_back, 6), std::string("\0\0tail", 6));
    EXPECT_EQ(l_file.tell(), l_offset + 4);
    l_file.close();
#else
    GTEST_SKIP() << "relies on sparse files, which this test checks only on Linux";
#endif
}

// The whole-file helpers with 3 GiB: everything read, everything written, nothing lost at the
// kernel's limit per call.
TEST(large_files, whole_file_helpers_move_three_gib)
{
#if defined(__linux__)
    ordwel_test::temp_dir const l_dir;
    if (available_memory() < k_large + 2 * k_gib) {
        GTEST_SKIP() << "needs more than 5 GiB of free memory for a 3 GiB buffer";
    }
    if (free_space(l_dir.path()) < k_large + k_gib) {
        GTEST_SKIP() << "needs 4 GiB free on the file system under " << l_dir.path();
    }
    std::string const l_sparse = l_dir.path() + "/sparse";
    if (!make_sparse_file(l_sparse, k_large + 16)) {
        GTEST_SKIP() << "the file system under " << l_dir.path() << " does not keep sparse files";
    }
    std::string const l_written = l_dir.path() + "/written";
    {
        buffer l_bytes;
        fileutil::get_file_bytes(l_sparse, k_large, l_bytes);
        ASSERT_EQ(l_bytes.size(), k_large);
        for (sample const &l_sample : samples_over(k_large + 16)) {
            if (l_sample.offset < k_large) {
                EXPECT_EQ(l_bytes.begin()[l_sample.offset], l_sample.value) << "at " << l_sample.offset;
            }
        }
        EXPECT_EQ(l_bytes.begin()[k_large - 1], 0) << "beyond the samples the sparse file reads as zeros";
        remove(l_sparse.c_str());
        fileutil::set_file_content(l_written, l_bytes);
    }
    file l_check(l_written, 0, 420);
    EXPECT_EQ(l_check.size(), k_large);
    for (sample const &l_sample : samples_over(k_large + 16)) {
        if (l_sample.offset < k_large) {
            unsigned char l_byte = 0;
            l_check.seek(l_sample.offset, 0);
            ASSERT_EQ(l_check.read(&l_byte, 1), 1u);
            EXPECT_EQ(l_byte, l_sample.value) << "at " << l_sample.offset;
        }
    }
    l_check.close();
    remove(l_written.c_str());
#else
    GTEST_SKIP() << "checks sparse files and free memory in ways only Linux offers here";
#endif
}

} // namespace
