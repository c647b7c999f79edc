// SPDX-License-Identifier: MIT
#include <cstdio>

#include <ordwel/buffer.h>

int main()
{
    ordwel::buffer bytes;                         // capacity 1024, size 0
    unsigned char const start_code[] = {0, 0, 1, 0xb3};
    bytes.append(start_code, sizeof start_code);
    bytes.append(4, 0xff);                        // four 0xff bytes
    bytes.resize(2);                              // shrinking never moves or touches bytes
    std::printf("%zu bytes, capacity %zu\n", static_cast<std::size_t>(bytes.size()),
                static_cast<std::size_t>(bytes.capacity()));   // 2 bytes, capacity 1024
}
