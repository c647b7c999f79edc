// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TOOLBOX_TOOL_IO_H
#define ORDWEL_TOOLBOX_TOOL_IO_H

#include <chrono>
#include <cstdio>
#include <string>

#include <ordwel/stream.h>
#include <ordwel/types.h>

// Reading the commands' input (a file or standard input) in chunks, writing their output, and the
// small text helpers that several commands share.
namespace ordwel_toolbox {

// An input named on the command line: a file, or "-" for standard input, read in binary. Errors
// are reported as "*** " lines with the system's reason. On a terminal (standard error one,
// standard output not) a progress line shows how far a long read has come.
class input {
public:
    input() = default;
    input(input const &) = delete;
    input &operator=(input const &) = delete;
    ~input();

    // False after "*** cannot open file `<path>': <reason>".
    bool open(std::string const &a_path);
    // Up to a_size bytes; 0 at the end of the data or after a read error (failed() tells).
    std::size_t read(void *a_destination, std::size_t a_size);
    // Moves on by a_count bytes (seeking where the input can); false at a read error.
    bool skip(ordwel::uint64 a_count);
    // True after "*** cannot read file `<path>': <reason>" was written.
    bool failed() const { return m_failed; }
    ordwel::uint64 position() const { return m_position; }

private:
    void show_progress();

    std::FILE *m_file = nullptr;
    bool m_owned = false;
    bool m_failed = false;
    bool m_progress = false;
    bool m_shown_any = false;
    std::string m_path;
    ordwel::uint64 m_position = 0;
    ordwel::uint64 m_size = 0;
    std::chrono::steady_clock::time_point m_shown{};
};

// A stream::rd over an input. It remembers the last bytes it handed out, so that a reader behind
// it can look back at a byte it has passed.
class input_stream : public ordwel::stream::rd {
public:
    // a_history: how many of the last bytes stay available to byte_at.
    input_stream(input &a_input, std::size_t a_history);
    ordwel::uint64 read(void *a_destination, ordwel::uint64 a_size) override;
    ordwel::uint64 tell() override { return m_input->position(); }
    // The byte at a_position, -1 when it is no longer (or not yet) held.
    int byte_at(ordwel::uint64 a_position) const;

private:
    input *m_input;
    std::string m_history;
    std::size_t m_limit;
};

// While it lives, standard output is binary (Windows would turn "\n" into "\r\n" otherwise).
class binary_stdout {
public:
    binary_stdout();
    binary_stdout(binary_stdout const &) = delete;
    binary_stdout &operator=(binary_stdout const &) = delete;
    ~binary_stdout();

private:
    [[maybe_unused]] int m_mode;
};
// Writes a_size bytes to standard output; false after "*** cannot write the output: <reason>".
bool write_out(void const *a_bytes, std::size_t a_size);
// Flushes standard output; false after the same error line.
bool flush_out();

// A whole number, decimal or "0x" hex, unsigned; false for anything else or out of range.
bool unsigned_with_text(std::string const &a_text, ordwel::uint64 &a_number);
// A whole decimal number, optionally signed; false for anything else or out of range.
bool signed_with_text(std::string const &a_text, long long &a_number);

// a_text as a JSON string, quotes included.
std::string json_string(std::string const &a_text);
// a_text with the five XML special characters as entities.
std::string xml_text(std::string const &a_text);

} // namespace ordwel_toolbox

#endif
