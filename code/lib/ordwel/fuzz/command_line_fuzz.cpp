// SPDX-License-Identifier: MIT
// The child's command line and its reading by the Windows runtime's rules, on arbitrary text: no
// crash, and simple words (no blank, tab, quote or backslash) come back as they went in. The input
// is the program and the arguments, separated by NUL bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <ordwel/process.h>

#include "fuzz_check.h"

namespace {

bool simple(std::string const &a_word)
{
    return !a_word.empty() && a_word.find_first_of(" \t\"\\") == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    using namespace ordwel;
    std::string const l_text(reinterpret_cast<char const *>(a_data), a_size);
    (void)argv_with_command_line(l_text);

    std::vector<std::string> l_words;
    std::size_t l_start = 0;
    for (std::size_t l_end = l_text.find('\0'); l_end != std::string::npos; l_end = l_text.find('\0', l_start)) {
        l_words.push_back(l_text.substr(l_start, l_end - l_start));
        l_start = l_end + 1;
    }
    l_words.push_back(l_text.substr(l_start));
    std::string const l_program = l_words.front();
    std::vector<std::string> const l_args(l_words.begin() + 1, l_words.end());

    std::string const l_line = command_line_with_args(l_program, l_args);
    check(l_line.size() >= 3 && l_line.front() == '"' && l_line.back() == ' ');
    bool l_all_simple = simple(l_program);
    for (std::string const &l_arg : l_args) {
        l_all_simple = l_all_simple && simple(l_arg);
    }
    if (l_all_simple) {
        check(argv_with_command_line(l_line) == l_words);
    }

    std::map<std::string, std::string> l_env;
    for (std::size_t l_index = 0; l_index + 1 < l_words.size(); l_index += 2) {
        l_env[l_words[l_index]] = l_words[l_index + 1];
    }
    std::string l_block;
    try {
        if (environment_block_with_map(l_env, l_block) && !l_block.empty()) {
            check(l_block.size() <= 32768 && l_block.back() == '\0' && l_block[l_block.size() - 2] == '\0');
        }
    } catch (...) {
        // A block beyond its limit raises; that is the one failure.
    }
    return 0;
}
