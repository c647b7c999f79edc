// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <ordwel/annexb.h>
#include <ordwel/bitstream.h>
#include <ordwel/codecs.h>
#include <ordwel/es.h>

#include "options.h"
#include "tool_io.h"

namespace ordwel_toolbox {

namespace {

using ordwel::buffer;
using ordwel::uint64;

// One way of a text codec: the bytes it takes in a group (the input goes through in chunks of
// whole groups), whether line breaks in the input are dropped, and the library's function.
struct coding {
    char const *m_name;
    std::size_t m_group;
    bool m_text_input;
    buffer (*m_code)(unsigned char const *, uint64);
};

coding const k_base64_encode = {"Base64", 3, false, ordwel::buffer_encode_base64};
coding const k_base64_decode = {"Base64", 4, true, ordwel::buffer_decode_base64};
coding const k_hex_encode = {"hex", 1, false, ordwel::buffer_encode_hex};
coding const k_hex_decode = {"hex", 2, true, ordwel::buffer_decode_hex};

// Drops the line breaks of a_bytes; gives the count left.
std::size_t without_line_breaks(unsigned char *a_bytes, std::size_t a_count)
{
    // Long lines are the rule: the bytes before the first break stay where they are.
    void const *const l_first = std::memchr(a_bytes, '\n', a_count);
    void const *const l_first_cr = std::memchr(a_bytes, '\r', a_count);
    if (l_first == nullptr && l_first_cr == nullptr) {
        return a_count;
    }
    std::size_t l_kept = 0;
    for (std::size_t l_index = 0; l_index < a_count; ++l_index) {
        if (a_bytes[l_index] != '\n' && a_bytes[l_index] != '\r') {
            a_bytes[l_kept++] = a_bytes[l_index];
        }
    }
    return l_kept;
}

// Codes a_size bytes and writes the result; false after an error line.
bool code_and_write(coding const &a_coding, std::string const &a_path, unsigned char const *a_bytes, std::size_t a_size)
{
    buffer l_coded;
    try {
        l_coded = a_coding.m_code(a_bytes, a_size);
    } catch (ordwel::es::arg const &) {
        // The decoder's complaint: a length that no text of the code can have.
        std::fprintf(stderr, "*** cannot decode `%s' as %s: its length is no multiple of %u\n", a_path.c_str(),
                     a_coding.m_name, static_cast<unsigned int>(a_coding.m_group));
        return false;
    }
    return write_out(l_coded.begin(), static_cast<std::size_t>(l_coded.size()));
}

// Streams the input through the codec in chunks of whole groups; what is left of a group at a
// chunk's end waits for the next chunk.
int run_coding(coding const &a_coding, command_input const &a_input, char const *a_command)
{
    if (a_input.m_words.size() > 1) {
        return usage_error(std::string(a_command) + " takes at most one file");
    }
    std::string const l_path = a_input.m_words.empty() ? std::string("-") : a_input.m_words.front();
    input l_input;
    if (!l_input.open(l_path)) {
        return k_exit_failed;
    }
    binary_stdout const l_binary;
    std::size_t const l_chunk = a_coding.m_group * 65536;
    std::vector<unsigned char> l_bytes(2 * l_chunk);
    std::size_t l_held = 0;
    bool l_wrote = false;
    for (;;) {
        std::size_t const l_read = l_input.read(l_bytes.data() + l_held, l_chunk);
        if (l_input.failed()) {
            return k_exit_failed;
        }
        l_held += a_coding.m_text_input ? without_line_breaks(l_bytes.data() + l_held, l_read) : l_read;
        bool const l_end = l_read == 0;
        // At the end the rest goes too, and the codec judges it.
        std::size_t const l_whole = l_end ? l_held : l_held - l_held % a_coding.m_group;
        if (l_whole > 0) {
            if (!code_and_write(a_coding, l_path, l_bytes.data(), l_whole)) {
                return k_exit_failed;
            }
            l_wrote = true;
            std::copy(l_bytes.begin() + static_cast<std::ptrdiff_t>(l_whole),
                      l_bytes.begin() + static_cast<std::ptrdiff_t>(l_held), l_bytes.begin());
            l_held -= l_whole;
        }
        if (l_end) {
            break;
        }
    }
    if (l_wrote && !a_coding.m_text_input && !write_out("\n", 1)) {
        return k_exit_failed;
    }
    return flush_out() ? k_exit_ok : k_exit_failed;
}

// One start code: where its 00 00 01 is, whether a zero byte comes before, and the byte after (-1
// at the end of the data).
void print_start_code(uint64 a_offset, bool a_zero_before, int a_next, bool a_json, bool a_first)
{
    if (a_json) {
        std::printf("%s{\"offset\": %llu, \"zero_before\": %s, \"next\": %d}", a_first ? "" : ",\n ",
                    static_cast<unsigned long long>(a_offset), a_zero_before ? "true" : "false", a_next);
        return;
    }
    char l_next[12] = "--";
    if (a_next >= 0) {
        std::snprintf(l_next, sizeof l_next, "%02x", static_cast<unsigned int>(a_next));
    }
    std::printf("%08llx  %s  %s\n", static_cast<unsigned long long>(a_offset),
                a_zero_before ? "00 00 00 01" : "   00 00 01", l_next);
}

// Prints each unit as it ends: the offset of its payload in hex, its size, its type and the type's
// name, or the same as a JSON object.
class unit_printer : public ordwel::annexb::unit_handler {
public:
    unit_printer(bool a_hevc, bool a_json) : m_hevc(a_hevc), m_json(a_json) {}

    void end(ordwel::annexb::unit const &a_unit) override
    {
        unsigned int const l_type =
            m_hevc ? ordwel::annexb::hevc_type(a_unit.m_header) : ordwel::annexb::h264_type(a_unit.m_header);
        char const *const l_name =
            m_hevc ? ordwel::annexb::hevc_type_name(l_type) : ordwel::annexb::h264_type_name(l_type);
        if (m_json) {
            std::printf("%s{\"start\": %llu, \"offset\": %llu, \"size\": %llu, \"type\": %u, \"name\": %s}",
                        m_first ? "" : ",\n ", static_cast<unsigned long long>(a_unit.m_start),
                        static_cast<unsigned long long>(a_unit.m_offset),
                        static_cast<unsigned long long>(a_unit.m_size), l_type, json_string(l_name).c_str());
        } else {
            std::printf("%08llx  %10llu  %2u  %s\n", static_cast<unsigned long long>(a_unit.m_offset),
                        static_cast<unsigned long long>(a_unit.m_size), l_type, l_name);
        }
        m_first = false;
    }

private:
    bool m_hevc;
    bool m_json;
    bool m_first = true;
};

} // namespace

int run_base64(command_input const &a_input)
{
    return run_coding(a_input.has(k_opt_decode) ? k_base64_decode : k_base64_encode, a_input, "base64");
}

int run_hex(command_input const &a_input)
{
    return run_coding(a_input.has(k_opt_decode) ? k_hex_decode : k_hex_encode, a_input, "hex");
}

int run_startcodes(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("startcodes takes one file");
    }
    input l_input;
    if (!l_input.open(a_input.m_words.front())) {
        return k_exit_failed;
    }
    constexpr std::size_t k_block = 65536;
    // The byte before a start code may lie a block back; the stream keeps two.
    input_stream l_stream(l_input, 2 * k_block + 8);
    ordwel::bitstream::rd const l_bits(l_stream, k_block);
    bool const l_json = a_input.has(k_opt_json);
    bool const l_count_only = a_input.has(k_opt_count);
    if (l_json && !l_count_only) {
        std::printf("{\"startcodes\": [");
    }
    uint64 l_count = 0;
    while (l_bits.find(1, 24, 8, 8)) {
        uint64 const l_offset = l_bits.tell() - 3;
        bool const l_zero_before = l_offset > 0 && l_stream.byte_at(l_offset - 1) == 0;
        int const l_next = l_bits.has_bits(8) ? static_cast<int>(l_bits.peek(8)) : -1;
        if (!l_count_only) {
            print_start_code(l_offset, l_zero_before, l_next, l_json, l_count == 0);
        }
        ++l_count;
    }
    if (l_input.failed()) {
        return k_exit_failed;
    }
    if (l_json) {
        std::printf(l_count_only ? "{\"count\": %llu}\n" : "], \"count\": %llu}\n",
                    static_cast<unsigned long long>(l_count));
    } else if (l_count_only) {
        std::printf("%llu\n", static_cast<unsigned long long>(l_count));
    }
    return flush_out() ? k_exit_ok : k_exit_failed;
}

int run_units(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("units takes one file");
    }
    std::string const *const l_codec = a_input.last(k_opt_codec);
    if (l_codec != nullptr && *l_codec != "h264" && *l_codec != "hevc") {
        return bad_value("no such codec `" + *l_codec + "' (h264, hevc)");
    }
    input l_input;
    if (!l_input.open(a_input.m_words.front())) {
        return k_exit_failed;
    }
    input_stream l_stream(l_input, 0);
    ordwel::annexb::unit_reader l_reader(l_stream);
    bool const l_json = a_input.has(k_opt_json);
    unit_printer l_printer(l_codec != nullptr && *l_codec == "hevc", l_json);
    if (l_json) {
        std::printf("{\"units\": [");
    }
    uint64 const l_count = l_reader.for_each(l_printer);
    if (l_input.failed()) {
        return k_exit_failed;
    }
    if (l_json) {
        std::printf("], \"count\": %llu, \"leading\": %llu}\n", static_cast<unsigned long long>(l_count),
                    static_cast<unsigned long long>(l_reader.leading()));
    } else if (l_reader.leading() != 0) {
        std::printf("(%llu byte%s before the first start code)\n", static_cast<unsigned long long>(l_reader.leading()),
                    l_reader.leading() == 1 ? "" : "s");
    }
    return flush_out() ? k_exit_ok : k_exit_failed;
}

} // namespace ordwel_toolbox
