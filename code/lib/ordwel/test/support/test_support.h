// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TEST_SUPPORT_H
#define ORDWEL_TEST_SUPPORT_H

#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <ordwel/buffer.h>
#include <ordwel/es.h>

namespace ordwel_test {

// A buffer holding the bytes of a text, for compact expectations.
ordwel::buffer buffer_of(std::string const &a_text);
// The bytes of a buffer as a text.
std::string text_of(ordwel::buffer const &a_bytes);
// The bytes of a text, for the functions that take unsigned char const *.
inline unsigned char const *bytes_of(std::string const &a_text)
{
    return reinterpret_cast<unsigned char const *>(a_text.data());
}
// a_size bytes from a_random.
std::string random_bytes(std::mt19937 &a_random, std::size_t a_size);

// Sends the standard output to the standard error stream, so that a death test can match what a
// dying process printed to its standard output.
void redirect_stdout_to_stderr();

// A fresh directory under the system's temporary directory, removed with all it holds at the end
// of its scope.
class temp_dir {
public:
    temp_dir();
    ~temp_dir();
    temp_dir(temp_dir const &) = delete;
    temp_dir &operator=(temp_dir const &) = delete;

    // The directory, as a UTF-8 path with the platform's separators.
    std::string const &path() const { return m_path; }
    // The path of a_name inside the directory.
    std::string file(std::string const &a_name) const;

private:
    std::string m_path;
};

// Waits (a bounded while) until a_condition holds, so that a test fails on a lost wake-up instead
// of hanging. false when the condition still fails after ten seconds.
template <class F> bool eventually(F a_condition)
{
    auto const l_end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!a_condition()) {
        if (std::chrono::steady_clock::now() > l_end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// The what() of the E that a_action raises, or "nothing raised"; any other exception passes on.
// The one way for tests to check a failure and its message.
template <class E = ordwel::es::base, class F> std::string raised_text(F a_action)
{
    try {
        a_action();
    } catch (E const &l_error) {
        return l_error.what();
    }
    return "nothing raised";
}

// As raised_text, for the library's own exceptions: "<what()> @ <file()>", so that a test also
// checks which source file raised it.
template <class E = ordwel::es::base, class F> std::string raised_at(F a_action)
{
    try {
        a_action();
    } catch (E const &l_error) {
        return std::string(l_error.what()) + " @ " + static_cast<ordwel::es::base const &>(l_error).file();
    }
    return "nothing raised";
}

} // namespace ordwel_test

#endif
