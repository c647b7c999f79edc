// SPDX-License-Identifier: MIT
// optparser against the C library's getopt_long on the same command line, in one run: flags, a
// cluster with an attached value, short and long options with one value each, and loose words.
#include <cstring>
#include <string>
#include <vector>

#include <getopt.h>

#include <benchmark/benchmark.h>

#include <ordwel/optparser.h>

namespace {

using namespace ordwel;

std::vector<std::string> const k_words = {"prog", "-a",    "-b",    "value", "--ccc", "4",     "-ij1",
                                          "in1",  "--aaa", "--bbb", "other", "in2",   "-k",    "in3",
                                          "-c",   "5",     "in4",   "-ai",   "in5",   "--ccc", "6"};

// The command line as a C program gets it, rebuilt before every parse since getopt_long reorders it.
struct command_line {
    std::vector<std::string> m_words = k_words;
    std::vector<char *> m_pristine;
    std::vector<char *> m_argv;

    command_line()
    {
        for (std::string &l_word : m_words) {
            m_pristine.push_back(&l_word[0]);
        }
        m_pristine.push_back(nullptr);
        m_argv = m_pristine;
    }
    char **fresh()
    {
        std::memcpy(m_argv.data(), m_pristine.data(), m_pristine.size() * sizeof(char *));
        return m_argv.data();
    }
    int argc() const { return static_cast<int>(m_words.size()); }
};

struct counter : public arg::opt_functor {
    long m_options = 0;
    long m_words = 0;

    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        if (a_id == 1) {
            ++m_words;
        } else {
            ++m_options;
        }
        return static_cast<int>(a_args.size());
    }
};

void bm_optparser(benchmark::State &a_state)
{
    command_line l_line;
    counter l_counter;
    arg::optparser l_parser(&l_counter);
    l_parser.add_opt('a', "aaa", 0, 0);
    l_parser.add_opt('b', "bbb", 1, 1);
    l_parser.add_opt('c', "ccc", 1, 1);
    l_parser.add_opt('i', nullptr, 0, 0);
    l_parser.add_opt('j', nullptr, 1, 1);
    l_parser.add_opt('k', nullptr, 0, 0);
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(l_parser.parse(static_cast<unsigned int>(l_line.argc()), l_line.fresh()));
    }
    if (l_counter.m_options != 12 * static_cast<long>(a_state.iterations()) ||
        l_counter.m_words != 5 * static_cast<long>(a_state.iterations())) {
        a_state.SkipWithError("optparser counted wrongly");
    }
    a_state.SetItemsProcessed(static_cast<int64_t>(a_state.iterations() * (k_words.size() - 1)));
}

void bm_getopt_long(benchmark::State &a_state)
{
    command_line l_line;
    static option const k_long[] = {{"aaa", no_argument, nullptr, 'a'},
                                    {"bbb", required_argument, nullptr, 'b'},
                                    {"ccc", required_argument, nullptr, 'c'},
                                    {nullptr, 0, nullptr, 0}};
    long l_options = 0;
    long l_words = 0;
    opterr = 0;
    for (auto _ : a_state) {
        char **const l_argv = l_line.fresh();
        optind = 0;
        while (getopt_long(l_line.argc(), l_argv, "ab:c:ij:k", k_long, nullptr) != -1) {
            ++l_options;
        }
        // A getopt program goes on to visit the words that are left, as optparser hands each over.
        for (int l_word = optind; l_word < l_line.argc(); ++l_word) {
            benchmark::DoNotOptimize(l_argv[l_word]);
            ++l_words;
        }
    }
    if (l_options != 12 * static_cast<long>(a_state.iterations()) ||
        l_words != 5 * static_cast<long>(a_state.iterations())) {
        a_state.SkipWithError("getopt_long counted wrongly");
    }
    a_state.SetItemsProcessed(static_cast<int64_t>(a_state.iterations() * (k_words.size() - 1)));
}

} // namespace

BENCHMARK(bm_optparser);
BENCHMARK(bm_getopt_long);
