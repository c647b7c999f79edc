// SPDX-License-Identifier: MIT
#include <cstdio>

#include <ordwel/ordwel.h>

int main()
{
    if (!ordwel::library_matches_headers()) {
        std::printf("library %s does not match headers %s\n", ordwel::library_version_string(),
                    ordwel::k_version_string);
        return 1;
    }
    ordwel::buffer l_bytes(4, static_cast<unsigned char>('x'));
    std::string const l_text = ordwel::string_with_format("ordwel %s: %llu bytes", ordwel::k_version_string,
                                                          static_cast<unsigned long long>(l_bytes.size()));
    std::puts(l_text.c_str());
    return l_text.empty() ? 1 : 0;
}
