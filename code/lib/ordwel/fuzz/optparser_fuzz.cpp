// SPDX-License-Identifier: MIT
// Command lines and help texts from fuzz input. The input is split at NUL bytes into words; the
// first byte steers how many words the callbacks claim. The words are parsed against a table of
// every option kind, then each word is written as a description (to /dev/null) at a width taken
// from the input.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <ordwel/optparser.h>

namespace {

struct claimer : public ordwel::arg::opt_functor {
    unsigned char m_mode = 0;
    unsigned int m_calls = 0;

    int operator()(int, std::vector<char const *> a_args) override
    {
        ++m_calls;
        int const l_size = static_cast<int>(a_args.size());
        switch ((m_mode + m_calls) % 5) {
        case 0:
            return -1;
        case 1:
            return l_size + 3;
        case 2:
            // Fewer than offered, but never 0 when a word may be attached.
            return l_size > 1 ? l_size / 2 : l_size;
        default:
            return l_size;
        }
    }
};

} // namespace

// The help text goes nowhere; the parser's "*** " lines stay on the standard error stream, beside
// libFuzzer's own report.
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        std::fprintf(stderr, "standard output stays open\n");
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size == 0) {
        return 0;
    }
    claimer l_functor;
    l_functor.m_mode = a_data[0];
    std::vector<std::string> l_words(1, "fuzz");
    std::string l_word;
    for (std::size_t l_index = 1; l_index < a_size; ++l_index) {
        if (a_data[l_index] == 0) {
            l_words.push_back(l_word);
            l_word.clear();
        } else {
            l_word += static_cast<char>(a_data[l_index]);
        }
    }
    l_words.push_back(l_word);
    std::vector<char *> l_argv;
    for (std::string &l_each : l_words) {
        l_argv.push_back(&l_each[0]);
    }
    l_argv.push_back(nullptr);

    ordwel::arg::optparser l_parser(&l_functor);
    l_parser.add_opt('a', "aaa", 0, 0);
    l_parser.add_opt('b', "bbb", 1, 0);
    l_parser.add_opt('c', "ccc", 0, 1);
    l_parser.add_opt('d', "ddd", 2, 4);
    l_parser.add_opt('e', "eee", 2, 255);
    l_parser.add_opt('i', nullptr, 0, 0);
    l_parser.add_opt('j', nullptr, 1, 0);
    l_parser.add_opt(-99, "l0", 0, 0);
    l_parser.add_opt(-95, "l2n", 2, 255);
    l_parser.add_opt(-128, "high", 1, 3);
    l_parser.parse(static_cast<unsigned int>(l_words.size()), l_argv.data());

    l_parser.set_text_line_width(a_data[0] % 100);
    if ((a_data[0] & 0x80) != 0) {
        l_parser.set_html_output();
    }
    for (std::string const &l_each : l_words) {
        l_parser.add_desc('e', l_each.c_str());
        l_parser.add_desc(l_each.c_str());
    }
    return 0;
}
