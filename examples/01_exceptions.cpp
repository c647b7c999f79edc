// SPDX-License-Identifier: MIT
#include <cstdio>

#include <ordwel/es.h>

int main()
{
    try {
        ordwel::es::file::raise(ORDWEL_HERE, "No such file or directory", "open", "reel1.mov");
    } catch (ordwel::es::base const &e) {
        std::printf("%s (%s:%u)\n", e.what(), e.file(), e.line());
        // Failed to open file reel1.mov (No such file or directory) (01_exceptions.cpp:9)
    }
}
