// SPDX-License-Identifier: MIT
#include <cstdio>
#include <vector>

#include <ordwel/optparser.h>

struct command_line : ordwel::arg::opt_functor {
    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        if (a_id == 'o') {
            std::printf("output %s\n", a_args[0]);
        }
        if (a_id == 1) {
            std::printf("input %s\n", a_args[0]);    // a word of no option
        }
        return static_cast<int>(a_args.size());       // the words it used
    }
};

int main(int argc, char **argv)
{
    command_line cli;
    ordwel::arg::optparser parser(&cli);
    parser.add_opt('o', "output", 1, 1);               // -o F, -oF, --output F, --output=F
    if (!parser.parse(argc, argv)) {
        return 2;                                      // the "*** ..." line is on stderr already
    }
}
