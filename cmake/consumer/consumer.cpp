#include <cstdio>

#include <ordwel/ordwel.h>

int main()
{
    ordwel::buffer l_bytes(4, static_cast<unsigned char>('x'));
    std::string const l_text = ordwel::string_with_format("ordwel %s: %llu bytes", ordwel::k_version_string,
                                                          static_cast<unsigned long long>(l_bytes.size()));
    std::puts(l_text.c_str());
    return l_text.empty() ? 1 : 0;
}
