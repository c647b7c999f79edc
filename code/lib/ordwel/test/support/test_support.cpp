// SPDX-License-Identifier: MIT
#include "support/test_support.h"

namespace ordwel_test {

ordwel::buffer buffer_of(std::string const &a_text)
{
    auto const *l_bytes = reinterpret_cast<unsigned char const *>(a_text.data());
    return ordwel::buffer(l_bytes, l_bytes + a_text.size());
}

std::string text_of(ordwel::buffer const &a_bytes)
{
    return std::string(reinterpret_cast<char const *>(a_bytes.begin()), static_cast<std::size_t>(a_bytes.size()));
}

std::string random_bytes(std::mt19937 &a_random, std::size_t a_size)
{
    std::string l_bytes(a_size, '\0');
    for (char &l_byte : l_bytes) {
        l_byte = static_cast<char>(a_random() & 0xff);
    }
    return l_bytes;
}

} // namespace ordwel_test

#include <cstdio>
#if defined(_WIN32)
#include <io.h>
#include <process.h>
#else
#include <unistd.h>
#endif

namespace ordwel_test {

void redirect_stdout_to_stderr()
{
    std::fflush(stdout);
#if defined(_WIN32)
    _dup2(_fileno(stderr), _fileno(stdout));
#else
    dup2(fileno(stderr), fileno(stdout));
#endif
}

} // namespace ordwel_test

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace ordwel_test {

namespace {

std::atomic<unsigned> g_temp_counter{0};

unsigned process_number()
{
#if defined(_WIN32)
    return static_cast<unsigned>(_getpid());
#else
    return static_cast<unsigned>(getpid());
#endif
}

} // namespace

temp_dir::temp_dir()
{
    std::filesystem::path const l_base = std::filesystem::temp_directory_path();
    for (int l_try = 0; l_try < 100; ++l_try) {
        std::filesystem::path const l_path =
            l_base / ("ordwel_test_" + std::to_string(process_number()) + "_" + std::to_string(g_temp_counter++));
        std::error_code l_error;
        if (std::filesystem::create_directory(l_path, l_error)) {
            m_path = l_path.u8string();
            return;
        }
    }
    throw std::runtime_error("no temporary directory could be made");
}

temp_dir::~temp_dir()
{
    std::error_code l_error;
    std::filesystem::remove_all(std::filesystem::u8path(m_path), l_error);
}

std::string temp_dir::file(std::string const &a_name) const
{
    return (std::filesystem::u8path(m_path) / std::filesystem::u8path(a_name)).u8string();
}

} // namespace ordwel_test
