// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string>

#include <ordwel/string_helpers.h>

int main()
{
    std::string name = ordwel::string_with_format("take-%03d.mov", 7);       // "take-007.mov"
    std::string path = ordwel::string_truncate("/media/archive/2026/reel-0042/take-07.mov", 24,
                                               ordwel::truncate_middle);      // "/media/arch...ake-07.mov"
    std::string code = ordwel::string_with_fourcc(0x746d6364, '.');          // "tmcd"
    std::string text = ordwel::trimmed("  a b  ", " ");                        // "a b"
    std::printf("%s\n%s\n%s\n%s\n", name.c_str(), path.c_str(), code.c_str(), text.c_str());
}
