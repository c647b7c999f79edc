// SPDX-License-Identifier: MIT
#include "tool_io.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#define ORDWEL_TOOLBOX_ISATTY _isatty
#define ORDWEL_TOOLBOX_FILENO _fileno
#else
#include <unistd.h>
#define ORDWEL_TOOLBOX_ISATTY isatty
#define ORDWEL_TOOLBOX_FILENO fileno
#endif

namespace ordwel_toolbox {

namespace {

using ordwel::uint64;

// Progress is worth showing only where someone watches it and the output does not already show it.
bool progress_wanted()
{
    return ORDWEL_TOOLBOX_ISATTY(2) != 0 && ORDWEL_TOOLBOX_ISATTY(1) == 0;
}

void set_binary(std::FILE *a_file)
{
#if defined(_WIN32)
    _setmode(_fileno(a_file), _O_BINARY);
#else
    (void)a_file;
#endif
}

bool seek_forward(std::FILE *a_file, uint64 a_count)
{
#if defined(_WIN32)
    return _fseeki64(a_file, static_cast<long long>(a_count), SEEK_CUR) == 0;
#else
    return fseeko(a_file, static_cast<off_t>(a_count), SEEK_CUR) == 0;
#endif
}

} // namespace

input::~input()
{
    if (m_shown_any) {
        std::fprintf(stderr, "\r%*s\r", 60, "");
    }
    if (m_owned && m_file != nullptr) {
        std::fclose(m_file);
    }
}

bool input::open(std::string const &a_path)
{
    m_path = a_path;
    if (a_path == "-") {
        m_file = stdin;
        set_binary(stdin);
        return true;
    }
    m_file = std::fopen(a_path.c_str(), "rb");
    if (m_file == nullptr) {
        std::fprintf(stderr, "*** cannot open file `%s': %s\n", a_path.c_str(), std::strerror(errno));
        return false;
    }
    m_owned = true;
    struct stat l_stat;
    if (stat(a_path.c_str(), &l_stat) == 0) {
        m_size = static_cast<uint64>(l_stat.st_size);
    }
    m_progress = progress_wanted();
    // Nothing for the first second: a short run shows no progress at all.
    m_shown = std::chrono::steady_clock::now();
    return true;
}

std::size_t input::read(void *a_destination, std::size_t a_size)
{
    if (m_failed || a_size == 0) {
        return 0;
    }
    std::size_t const l_count = std::fread(a_destination, 1, a_size, m_file);
    if (l_count < a_size && std::ferror(m_file) != 0) {
        m_failed = true;
        std::fprintf(stderr, "*** cannot read file `%s': %s\n", m_path.c_str(), std::strerror(errno));
        return 0;
    }
    m_position += l_count;
    if (m_progress) {
        show_progress();
    }
    return l_count;
}

bool input::skip(uint64 a_count)
{
    if (m_owned && seek_forward(m_file, a_count)) {
        m_position += a_count;
        return true;
    }
    char l_chunk[65536];
    while (a_count > 0) {
        std::size_t const l_count =
            read(l_chunk, a_count < sizeof l_chunk ? static_cast<std::size_t>(a_count) : sizeof l_chunk);
        if (l_count == 0) {
            break;
        }
        a_count -= l_count;
    }
    return !m_failed;
}

void input::show_progress()
{
    auto const l_now = std::chrono::steady_clock::now();
    if (l_now - m_shown < std::chrono::seconds(1)) {
        return;
    }
    m_shown = l_now;
    m_shown_any = true;
    if (m_size > 0) {
        std::fprintf(stderr, "\r%s: %llu of %llu MB (%u%%)", m_path.c_str(),
                     static_cast<unsigned long long>(m_position >> 20), static_cast<unsigned long long>(m_size >> 20),
                     static_cast<unsigned int>(m_position * 100 / m_size));
    } else {
        std::fprintf(stderr, "\r%s: %llu MB", m_path.c_str(), static_cast<unsigned long long>(m_position >> 20));
    }
    std::fflush(stderr);
}

input_stream::input_stream(input &a_input, std::size_t a_history) : m_input(&a_input), m_limit(a_history)
{
}

uint64 input_stream::read(void *a_destination, uint64 a_size)
{
    std::size_t const l_count = m_input->read(a_destination, static_cast<std::size_t>(a_size));
    char const *const l_bytes = static_cast<char const *>(a_destination);
    if (l_count >= m_limit) {
        m_history.assign(l_bytes + l_count - m_limit, m_limit);
    } else {
        m_history.append(l_bytes, l_count);
        if (m_history.size() > m_limit) {
            m_history.erase(0, m_history.size() - m_limit);
        }
    }
    return l_count;
}

int input_stream::byte_at(uint64 a_position) const
{
    uint64 const l_end = m_input->position();
    if (a_position >= l_end || l_end - a_position > m_history.size()) {
        return -1;
    }
    return static_cast<unsigned char>(m_history[m_history.size() - static_cast<std::size_t>(l_end - a_position)]);
}

binary_stdout::binary_stdout() : m_mode(0)
{
#if defined(_WIN32)
    std::fflush(stdout);
    m_mode = _setmode(_fileno(stdout), _O_BINARY);
#endif
}

binary_stdout::~binary_stdout()
{
#if defined(_WIN32)
    std::fflush(stdout);
    if (m_mode != -1) {
        _setmode(_fileno(stdout), m_mode);
    }
#endif
}

bool write_out(void const *a_bytes, std::size_t a_size)
{
    if (a_size > 0 && std::fwrite(a_bytes, 1, a_size, stdout) != a_size) {
        std::fprintf(stderr, "*** cannot write the output: %s\n", std::strerror(errno));
        return false;
    }
    return true;
}

bool flush_out()
{
    if (std::fflush(stdout) != 0) {
        std::fprintf(stderr, "*** cannot write the output: %s\n", std::strerror(errno));
        return false;
    }
    return true;
}

bool unsigned_with_text(std::string const &a_text, uint64 &a_number)
{
    bool const l_hex = a_text.size() > 2 && a_text[0] == '0' && (a_text[1] == 'x' || a_text[1] == 'X');
    std::string const l_digits = l_hex ? a_text.substr(2) : a_text;
    if (l_digits.empty() ||
        l_digits.find_first_not_of(l_hex ? "0123456789abcdefABCDEF" : "0123456789") != std::string::npos) {
        return false;
    }
    errno = 0;
    unsigned long long const l_number = std::strtoull(l_digits.c_str(), nullptr, l_hex ? 16 : 10);
    if (errno != 0) {
        return false;
    }
    a_number = l_number;
    return true;
}

bool signed_with_text(std::string const &a_text, long long &a_number)
{
    if (a_text.empty()) {
        return false;
    }
    char *l_end = nullptr;
    errno = 0;
    long long const l_number = std::strtoll(a_text.c_str(), &l_end, 10);
    if (errno != 0 || l_end == nullptr || *l_end != '\0') {
        return false;
    }
    a_number = l_number;
    return true;
}

std::string json_string(std::string const &a_text)
{
    std::string l_json = "\"";
    for (char const l_char : a_text) {
        auto const l_byte = static_cast<unsigned char>(l_char);
        if (l_char == '"' || l_char == '\\') {
            l_json += '\\';
            l_json += l_char;
        } else if (l_byte < 0x20) {
            char l_escape[8];
            std::snprintf(l_escape, sizeof l_escape, "\\u%04x", l_byte);
            l_json += l_escape;
        } else {
            l_json += l_char;
        }
    }
    return l_json + "\"";
}

std::string xml_text(std::string const &a_text)
{
    std::string l_xml;
    for (char const l_char : a_text) {
        switch (l_char) {
        case '<':
            l_xml += "&lt;";
            break;
        case '>':
            l_xml += "&gt;";
            break;
        case '&':
            l_xml += "&amp;";
            break;
        case '"':
            l_xml += "&quot;";
            break;
        case '\'':
            l_xml += "&apos;";
            break;
        default:
            l_xml += static_cast<unsigned char>(l_char) < 0x20 && l_char != '\n' && l_char != '\t' ? '?' : l_char;
        }
    }
    return l_xml;
}

} // namespace ordwel_toolbox
